// The library against the virtual printer's fiscal model, nothing scripted:
// the states a printer goes through, its counters and registers, the paper
// tape, its refusals, and its state surviving a restart.
#include <cstdio>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

class Model : public Fresh {
 protected:
  void SetUp() override {
    Fresh::SetUp();
    vp_use_model(1);
    vp_model_reset();
    vp_set_clock(2026, 11, 22, 10, 30, 0);
    ASSERT_EQ(E4Open(0, 0), 0);
  }
  void TearDown() override {
    E4Close();
    vp_use_model(0);
  }
};

std::vector<std::string> tape() {
  std::vector<std::string> lines;
  std::istringstream in(read_file(vp_tape_path()));
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// Whether the tape has a line holding `left` and ending with `right`.
bool printed(const std::string& left, const std::string& right = "") {
  for (const auto& l : tape()) {
    const auto at = l.find(left);
    if (at != std::string::npos && l.size() >= at + left.size() + right.size() &&
        l.compare(l.size() - right.size(), right.size(), right) == 0)
      return true;
  }
  return false;
}

unsigned last_error() {
  unsigned err = 0;
  E4GetError(&err);
  return err;
}

void sell(const char* value = "11,00") { ASSERT_EQ(E4IteCF(20, "7891", "ARROZ", "1,000", value), 0); }

TEST_F(Model, WholeSaleWithVoucherThenCancelledWithItsReversal) {
  ASSERT_EQ(E4ProgOp("MARIA"), 0);
  ASSERT_EQ(E4Cons("JOAO", "123.456.789-09", ""), 0);
  ASSERT_EQ(E4IniCP(2, ""), 0);
  EXPECT_EQ(vp_doc_state(), 2);
  EXPECT_EQ(vp_coo(), 1);
  EXPECT_EQ(vp_ccf(), 1);
  ASSERT_EQ(E4IteCF(20, "7891", "ARROZ", "2,000", "5,50"), 0);  // 11,00 at 18 %
  ASSERT_EQ(E4IteCF(13, "7892", "SAL", "1,000", "325"), 0);     // 3,25, implied decimals
  ASSERT_EQ(E4DesCup(0, "0,25"), 0);
  ASSERT_EQ(E4RegPag(61, "5,00"), 0);
  EXPECT_EQ(vp_doc_state(), 14);
  ASSERT_EQ(E4RegPag(60, "10,00"), 0);
  EXPECT_EQ(vp_doc_state(), 15);  // 15,00 paid for 14,00: change due
  ASSERT_EQ(E4FimCP(0, "OBRIGADO PELA PREFERENCIA"), 0);
  EXPECT_EQ(vp_doc_state(), 0);

  // the discount spread in proportion (19,3 + 5,7 cents, the remainder to the
  // larger), the change taken from cash
  EXPECT_EQ(vp_register_value(20), 1080);
  EXPECT_EQ(vp_register_value(13), 320);
  EXPECT_EQ(vp_register_value(8), 25);
  EXPECT_EQ(vp_register_value(60), 900);
  EXPECT_EQ(vp_register_value(61), 500);
  EXPECT_EQ(vp_register_value(79), 100);
  for (const auto& [left, right] : std::vector<std::pair<std::string, std::string>>{
           {"22/11/2026 10:30", "CCF:000001 COO:000001"},
           {"CPF/CNPJ CONSUMIDOR: 123.456.789-09", ""},
           {"001 7891 ARROZ", ""},
           {"    2,000 Un X 5,50", "T18,00%  11,00"},
           {"DESCONTO R$", "-0,25"},
           {"TOTAL R$", "14,00"},
           {"CARTAO", "5,00"},
           {"TROCO R$", "1,00"},
           {"OBRIGADO PELA PREFERENCIA", ""},
           {"OPERADOR: MARIA", ""},
       })
    EXPECT_TRUE(printed(left, right)) << left << " ... " << right;

  // the card payment's voucher
  ASSERT_EQ(E4IniCP(17, "61"), 0);
  EXPECT_EQ(vp_doc_state(), 17);
  ASSERT_EQ(E4Print("VIA DO CLIENTE"), 0);
  EXPECT_EQ(vp_doc_state(), 18);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  EXPECT_EQ(vp_coo(), 2);
  EXPECT_TRUE(printed("COO DO DOCUMENTO VINCULADO: 000001"));

  // cancelling now reverses the voucher (COO 3) and cancels the coupon (COO 4)
  ASSERT_EQ(E4CanCup(), 0);
  EXPECT_EQ(vp_doc_state(), 0);
  EXPECT_EQ(vp_coo(), 4);
  EXPECT_TRUE(printed("COO DO COMPROVANTE ESTORNADO: 000002"));
  EXPECT_TRUE(printed("COO DO DOCUMENTO CANCELADO: 000001"));
  EXPECT_EQ(vp_register_value(20), 0);
  EXPECT_EQ(vp_register_value(13), 0);
  EXPECT_EQ(vp_register_value(7), 1400);
  EXPECT_EQ(vp_register_value(60) + vp_register_value(61) + vp_register_value(79), 0);
  // and a second cancellation finds nothing left to cancel
  EXPECT_EQ(E4CanCup(), 2561);
}

TEST_F(Model, ItemValuesFollowTheRoundingFlag) {
  ASSERT_EQ(E4IniCP(2, ""), 0);
  struct Case {
    const char *qty, *price;
    unsigned char truncate;
    long long cents;
  };
  long long before = 0;
  for (const Case& c : {Case{"1,005", "1,50", 0, 151}, Case{"1,005", "1,50", 1, 150},
                        Case{"2500", "199", 0, 498}, Case{"0,5", "0,99", 1, 49}}) {
    ASSERT_EQ(E4IteCFEsp2(20, "1", "X", c.qty, c.price, "kg", c.truncate), 0) << c.qty;
    EXPECT_EQ(vp_register_value(20) - before, c.cents) << c.qty << " x " << c.price;
    before = vp_register_value(20);
  }
  char subtotal[32] = "";
  ASSERT_EQ(E4InfCup(504, subtotal), 0);
  EXPECT_EQ(std::stoll(subtotal), before);
}

TEST_F(Model, NonFiscalSupplyAndManagementReport) {
  ASSERT_EQ(E4OpeCNF(41, "+", "SUPRIMENTO", "150,00"), 0);
  EXPECT_EQ(vp_doc_state(), 20);
  ASSERT_EQ(E4RegPag(60, "150,00"), 0);  // in state 20 the payment closes it
  EXPECT_EQ(vp_doc_state(), 0);
  EXPECT_EQ(vp_register_value(41), 15000);
  EXPECT_EQ(vp_register_value(16), 15000);

  ASSERT_EQ(E4IniCP(20, "1"), 0);
  unsigned char opc = 0, resposta = 0;
  ASSERT_EQ(E4StaECF(&opc, &resposta), 0);
  EXPECT_EQ(opc, 13);
  ASSERT_EQ(E4Print("FECHAMENTO DO CAIXA"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  EXPECT_EQ(vp_doc_state(), 0);
  EXPECT_EQ(vp_coo(), 2);
  EXPECT_TRUE(printed("SUPRIMENTO", "150,00"));
  EXPECT_TRUE(printed("FECHAMENTO DO CAIXA"));
}

// Each case from a factory-fresh printer: what is done first, the refused
// call, its result and the printer's code that E4GetError then reports.
TEST_F(Model, WrongStateCommandsAreRefusedWithTheListedCodes) {
  const auto sale = [] {
    E4IniCP(2, "");
    sell();
    E4RegPag(60, "11,00");
    E4FimCP(0, "");
  };
  struct Case {
    const char* what;
    std::function<void()> before;
    std::function<unsigned short()> call;
    unsigned short result;
    unsigned code;
  };
  const std::vector<Case> cases = {
      {"payment, no coupon", [] {}, [] { return E4RegPag(60, "1,00"); }, 2561, 21},
      {"second opening", [] { E4IniCP(2, ""); }, [] { return E4IniCP(2, ""); }, 2561, 132},
      {"unprogrammed rate", [] {}, [] { return E4IteCF(25, "1", "X", "1,000", "1,00"); }, 2582, 22},
      {"closing unpaid", [] { sell(); E4RegPag(60, "5,00"); }, [] { return E4FimCP(0, ""); }, 2561, 145},
      {"voucher on cash", sale, [] { return E4IniCP(17, "60"); }, 2561, 154},
      {"cover open", [] { vp_set_condition(VP_COND_COVER_OPEN, 1); }, [] { return E4IniCP(2, ""); }, 2871, 44},
      {"day not reduced", [&] { sale(); vp_set_clock(2026, 11, 23, 8, 0, 0); },
       [] { return E4IniCP(2, ""); }, 2561, 153},
      {"day reduced", [&] { sale(); E4IniCP(5, ""); }, [] { return E4IniCP(2, ""); }, 2561, 151},
      {"non-fiscal unpaid",
       [] {
         unsigned char reg = 42;
         E4RPCria(1, "RECEBIMENTO", "+", &reg);
         E4OpeCNF(42, "+", "RECEBIMENTO", "10,00");
         E4FimCP(0, "");  // state 22: only totals it
       },
       [] { return E4FimCP(0, ""); }, 2634, 74},
  };
  for (const auto& c : cases) {
    vp_model_reset();
    vp_set_clock(2026, 11, 22, 10, 30, 0);
    c.before();
    EXPECT_EQ(c.call(), c.result) << c.what;
    EXPECT_EQ(last_error(), c.code) << c.what;
  }
}

TEST_F(Model, IdentityClockAndConditionsAsTheLibraryReadsThem) {
  char serie[32] = "", cgc[32] = "", ie[32] = "", im[32] = "", cliche[300] = "", firm[16] = "",
       seq[16] = "";
  unsigned char modelo = 0;
  ASSERT_EQ(E4InfECF(serie, cgc, ie, im, cliche, firm, seq, &modelo), 0);
  EXPECT_STREQ(serie, "ZD010203040506070809");
  EXPECT_STREQ(cgc, "12.345.678/0001-90");
  EXPECT_STREQ(im, "4455667");
  EXPECT_STREQ(cliche, "LOJA MODELO LTDA\r\nRUA DAS FLORES, 100 - CENTRO - SAO PAULO - SP");
  EXPECT_STREQ(firm, "010502");
  EXPECT_EQ(modelo, 6);

  // the business date is the day's until a reduction, whatever the clock says
  vp_set_clock(2026, 11, 22, 23, 59, 0);
  sell();
  ASSERT_EQ(E4RegPag(60, "11,00"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  vp_set_clock(2026, 11, 23, 0, 5, 0);
  char data[9] = "", hora[5] = "", movimento[9] = "";
  unsigned char verao = 9, reducao = 9;
  ASSERT_EQ(E4RdData(data, hora, &verao, movimento, &reducao), 0);
  EXPECT_STREQ(data, "23112026");
  EXPECT_STREQ(hora, "0005");
  EXPECT_STREQ(movimento, "22112026");
  EXPECT_EQ(verao, 0);
  EXPECT_EQ(reducao, 0);
  EXPECT_EQ(E4IniCP(2, ""), 2561);  // yesterday waits for its reduction
  ASSERT_EQ(E4IniCP(5, ""), 0);
  ASSERT_EQ(E4IniCP(2, ""), 0);     // which leaves today open
  ASSERT_EQ(E4RdData(data, hora, &verao, movimento, &reducao), 0);
  EXPECT_STREQ(movimento, "23112026");

  char status[16] = "";
  vp_set_condition(VP_COND_PAPER_LOW, 1);
  ASSERT_EQ(E4Status(status), 0);
  EXPECT_STREQ(status, "00001000000000");
  unsigned char gaveta = 9;
  ASSERT_EQ(E4StatGv(&gaveta), 0);
  EXPECT_EQ(gaveta, 0);
  ASSERT_EQ(E4OpenGv(), 0);
  ASSERT_EQ(E4StatGv(&gaveta), 0);
  EXPECT_EQ(gaveta, 1);
}

TEST_F(Model, ItemAndCouponAdjustmentsMoveTheirRegisters) {
  ASSERT_EQ(E4IniCP(2, ""), 0);
  sell("10,00");
  sell("20,00");
  sell("30,00");
  ASSERT_EQ(E4CanIt(20, 2), 0);
  EXPECT_EQ(E4CanIt(20, 2), 2561);  // already cancelled
  EXPECT_EQ(E4CanIt(20, 9), 2049);  // no such item
  ASSERT_EQ(E4DesIt(0, 20, 1, "1,00", nullptr), 0);
  char percent[16] = "10,00";
  ASSERT_EQ(E4AcrIt(2, 20, 0, percent, nullptr), 0);  // 10 % on the last item
  EXPECT_STREQ(percent, "3.00");
  EXPECT_EQ(E4DesIt(0, 20, 1, "1,00", nullptr), 2561);  // one adjustment per item
  ASSERT_EQ(E4DesIt(1, 20, 1, "", nullptr), 0);        // taken back
  ASSERT_EQ(E4AcrCup(0, "2,00"), 0);
  EXPECT_EQ(E4IteCF(20, "1", "X", "1,000", "1,00"), 2561);  // no sale after the subtotal
  EXPECT_EQ(vp_register_value(20), 1000 + 3000 + 300 + 200);
  EXPECT_EQ(vp_register_value(7), 2000);
  EXPECT_EQ(vp_register_value(8), 0);
  EXPECT_EQ(vp_register_value(9), 500);
  ASSERT_EQ(E4RegPag(60, "45,00"), 0);
  EXPECT_EQ(vp_doc_state(), 16);  // paid exactly
  ASSERT_EQ(E4FimCP(0, ""), 0);
  EXPECT_TRUE(printed("CANCELAMENTO ITEM 002", "-20,00"));
  EXPECT_TRUE(printed("ACRESCIMO ITEM 003", "+3,00"));
  EXPECT_TRUE(printed("TOTAL R$", "45,00"));
}

TEST_F(Model, PaidNonFiscalCouponVoucherCopyAndCancellation) {
  unsigned char reg = 42;
  ASSERT_EQ(E4RPCria(1, "RECEBIMENTO", "+", &reg), 0);
  ASSERT_EQ(E4IniCP(19, "CONTA 123"), 0);
  EXPECT_EQ(vp_doc_state(), 19);
  EXPECT_EQ(E4FimCP(0, ""), 2634);  // nothing in it yet
  ASSERT_EQ(E4OpeCNF(42, "+", "RECEBIMENTO", "80,00"), 0);
  EXPECT_EQ(vp_doc_state(), 22);
  ASSERT_EQ(E4RegPag(61, "50,00"), 0);
  EXPECT_EQ(vp_doc_state(), 23);
  ASSERT_EQ(E4RegPag(60, "40,00"), 0);
  EXPECT_EQ(vp_doc_state(), 24);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  EXPECT_EQ(vp_register_value(60), 3000);  // 40,00 less the change
  EXPECT_EQ(vp_register_value(79), 1000);

  ASSERT_EQ(E4IniCP(17, "61"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  EXPECT_EQ(E4IniCP(17, "61"), 2561);  // one voucher per payment
  ASSERT_EQ(E4IniCP(21, ""), 0);       // second copy
  EXPECT_EQ(E4IniCP(21, ""), 2561);
  EXPECT_TRUE(printed("SEGUNDA VIA"));

  // the voucher is reversed, then the coupon before it cancelled
  ASSERT_EQ(E4CanCup(), 0);
  EXPECT_EQ(vp_register_value(42), 0);
  EXPECT_EQ(vp_register_value(17), 8000);
  EXPECT_TRUE(printed("COMPROVANTE NAO-FISCAL CANCELADO"));
}

TEST_F(Model, TheStateFileReadsBackToTheSameState) {
  ASSERT_EQ(E4ProgOp("ANA 100%"), 0);
  ASSERT_EQ(E4Cons("JOSE DA SILVA", "1", "RUA A, 1"), 0);
  ASSERT_EQ(E4IniCP(2, ""), 0);
  ASSERT_EQ(E4IteCF(20, "7%9", "CAFE 500 G", "1,000", "9,90"), 0);
  ASSERT_EQ(E4DesCup(2, "10,00"), 0);
  const std::string saved = read_file(vp_state_path());
  ASSERT_FALSE(saved.empty());
  vp_model_reload();
  vp_set_condition(VP_COND_PAPER_LOW, 0);  // unchanged, written again
  EXPECT_EQ(read_file(vp_state_path()), saved);
}

TEST_F(Model, ACouponOpenAtARestartIsFoundOpenAndCancelled) {
  ASSERT_EQ(E4IniCP(2, ""), 0);
  sell("7,50");
  ASSERT_EQ(E4Close(), 0);

  vp_model_reload();  // a new process: the state comes from the state file
  EXPECT_EQ(vp_doc_state(), 2);
  EXPECT_EQ(vp_register_value(20), 750);
  ASSERT_EQ(E4Open(0, 0), 0);
  unsigned char opc = 0, resposta = 0;
  ASSERT_EQ(E4StaECF(&opc, &resposta), 0);
  EXPECT_EQ(opc, 2);
  ASSERT_EQ(E4CanCup(), 0);
  EXPECT_EQ(vp_doc_state(), 0);
  EXPECT_EQ(vp_register_value(20), 0);
  EXPECT_EQ(vp_register_value(7), 750);
  EXPECT_TRUE(printed("CUPOM FISCAL CANCELADO"));

  // without its state file the printer comes back in its factory state
  std::remove(vp_state_path());
  vp_model_reload();
  EXPECT_EQ(vp_coo(), 0);
}

}  // namespace
