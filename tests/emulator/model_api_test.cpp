// The virtual printer's fiscal model through the library: document states,
// refusals, registers and totals, readings, the paper tape and scripted replies.
#include <functional>
#include <tuple>

#include "e2e/model.h"

using namespace e2e;
using orbtest::read_file;

namespace {

void item(const char* price = "11,00") { ASSERT_EQ(E4IteCF(20, "7891", "ARROZ", "1,000", price), 0); }

// 10,00 at 18 % and 2 x 2,50 at 7 %, paid with 20,00 in cash: 15,00 of sales, 5,00 of change.
void sale() {
  ASSERT_EQ(E4IniCP(2, ""), 0);
  ASSERT_EQ(E4IteCF(20, "1", "ARROZ", "1,000", "10,00"), 0);
  ASSERT_EQ(E4IteCF(22, "2", "FEIJAO", "2,000", "2,50"), 0);
  ASSERT_EQ(E4RegPag(60, "20,00"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
}

// `ret` is success, and the document is then in `state`.
void ok_in(unsigned short ret, int state) {
  EXPECT_EQ(ret, 0) << "towards state " << state;
  EXPECT_EQ(vp_doc_state(), state);
}

using Entry = std::tuple<int, std::string, char>;  // RP, description, sign
std::vector<Entry> walk(unsigned char cat) {
  std::vector<Entry> out;
  EXPECT_EQ(E4RPPrim(cat), 0);
  char compl_[100] = "", sinal = 0;
  unsigned char rp = 0;
  unsigned short ret = 0;
  while (out.size() < 30 && (ret = E4RPLe(cat, compl_, &sinal, &rp)) == 0) out.emplace_back(rp, compl_, sinal);
  EXPECT_EQ(ret, 2867);  // the end of the category
  return out;
}

TEST_F(OnModel, WholeSaleWithVoucherThenCancelledWithItsReversal) {
  ASSERT_EQ(E4ProgOp("MARIA"), 0);
  EXPECT_EQ(read_file("NomeOper.cfg"), "MARIA");
  ASSERT_EQ(E4Cons("JOAO", "123.456.789-09", ""), 0);
  ok_in(E4IniCP(2, ""), 2);
  EXPECT_EQ(vp_coo(), 1);
  EXPECT_EQ(vp_ccf(), 1);
  ASSERT_EQ(E4IteCF(20, "7891", "ARROZ", "2,000", "5,50"), 0);  // 11,00 at 18 %
  ASSERT_EQ(E4IteCF(13, "7892", "SAL", "1,000", "325"), 0);     // 3,25, implied decimals
  ASSERT_EQ(E4DesCup(0, "0,25"), 0);
  ok_in(E4RegPag(61, "5,00"), 14);
  ok_in(E4RegPag(60, "10,00"), 15);  // 15,00 paid for 14,00: change due
  ok_in(E4FimCP(0, "OBRIGADO PELA PREFERENCIA"), 0);
  // the discount spread in proportion (19,3 + 5,7 cents, the remainder to the larger), the change taken from cash
  for (const auto& [reg, cents] : {std::pair{20, 1080}, {13, 320}, {8, 25}, {60, 900}, {61, 500}, {79, 100}})
    EXPECT_EQ(vp_register_value(reg), cents) << "register " << reg;
  const auto coupon = tape_from("CUPOM FISCAL");
  for (const auto& [label, fig] : {std::pair<std::string, std::string>{"DESCONTO R$", "-0,25"},
                                   {"TOTAL R$", "14,00"}, {"CARTAO", "5,00"}, {"TROCO R$", "1,00"}})
    EXPECT_EQ(figure(coupon, label), fig) << label;
  for (const char* text : {"22/11/2026 10:30", "CCF:000001 COO:000001", "CPF/CNPJ CONSUMIDOR: 123.456.789-09",
                           "001 7891 ARROZ\n    2,000 Un X 5,50               T18,00%  11,00",
                           "\nOBRIGADO PELA PREFERENCIA\n", "OPERADOR: MARIA"})
    EXPECT_TRUE(printed(text)) << text;
  ok_in(E4IniCP(17, "61"), 17);  // the card payment's voucher
  ok_in(E4Print("VIA DO CLIENTE"), 18);
  ok_in(E4FimCP(0, ""), 0);
  EXPECT_EQ(vp_coo(), 2);
  EXPECT_TRUE(printed("COO DO DOCUMENTO VINCULADO: 000001"));
  // cancelling now reverses the voucher (COO 3) and cancels the coupon (COO 4)
  ok_in(E4CanCup(), 0);
  EXPECT_EQ(vp_coo(), 4);
  EXPECT_TRUE(printed("COO DO COMPROVANTE ESTORNADO: 000002"));
  EXPECT_TRUE(printed("COO DO DOCUMENTO CANCELADO: 000001"));
  EXPECT_EQ(vp_register_value(20) + vp_register_value(13), 0);
  EXPECT_EQ(vp_register_value(7), 1400);
  EXPECT_EQ(vp_register_value(60) + vp_register_value(61) + vp_register_value(79), 0);
  EXPECT_EQ(E4CanCup(), 2561);  // nothing left to cancel
}

TEST_F(OnModel, ItemValuesFollowTheRoundingFlag) {
  ASSERT_EQ(E4IniCP(2, ""), 0);
  long long before = 0;
  for (const auto& [qty, price, truncate, cents] : {std::tuple{"1,005", "1,50", 0, 151}, {"1,005", "1,50", 1, 150},
                                                    {"2500", "199", 0, 498}, {"0,5", "0,99", 1, 49}}) {
    ASSERT_EQ(E4IteCFEsp2(20, "1", "X", qty, price, "kg", static_cast<unsigned char>(truncate)), 0) << qty;
    EXPECT_EQ(vp_register_value(20) - before, cents) << qty << " x " << price;
    before = vp_register_value(20);
  }
  char subtotal[32] = "";
  ASSERT_EQ(E4InfCup(504, subtotal), 0);
  EXPECT_EQ(std::stoll(subtotal), before);
}

TEST_F(OnModel, NonFiscalDocuments) {
  ok_in(E4OpeCNF(41, "+", "SUPRIMENTO", "150,00"), 20);
  ok_in(E4RegPag(60, "150,00"), 0);  // in state 20 the payment closes it
  EXPECT_EQ(vp_register_value(41), 15000);
  EXPECT_EQ(vp_register_value(16), 15000);
  EXPECT_EQ(figure(tape_from("COMPROVANTE NAO-FISCAL"), "SUPRIMENTO"), "150,00");

  orbtest::write_file("fechamento.txt", "CAIXA 01\nABERTURA 08:00\nFECHAMENTO 18:00\n");
  ASSERT_EQ(E4IniCP(20, "1"), 0);
  unsigned char opc = 0, resposta = 0;
  ASSERT_EQ(E4StaECF(&opc, &resposta), 0);
  EXPECT_EQ(opc, 13);
  orbtest::state(0);  // a scripted reply is answered before the model's
  ASSERT_EQ(E4StaECF(&opc, &resposta), 0);
  EXPECT_EQ(opc, 0);
  vp_clear_reply(6);
  ASSERT_EQ(E4ImpVinc("fechamento.txt", "3"), 0);
  ok_in(E4FimCP(0, ""), 0);
  EXPECT_EQ(vp_coo(), 2);
  EXPECT_TRUE(printed("RELATORIO GERENCIAL"));
  EXPECT_TRUE(printed("\nCAIXA 01\nABERTURA 08:00\nFECHAMENTO 18:00\n"));

  // a paid non-fiscal coupon, its voucher and second copy, then its cancellation
  unsigned char reg = 42;
  ASSERT_EQ(E4RPCria(1, "RECEBIMENTO", "+", &reg), 0);
  ok_in(E4IniCP(19, "CONTA 123"), 19);
  EXPECT_EQ(E4FimCP(0, ""), 2634);  // nothing in it yet
  ok_in(E4OpeCNF(42, "+", "RECEBIMENTO", "80,00"), 22);
  EXPECT_EQ(E4IteCF(20, "1", "X", "1,000", "1,00"), 2561);  // no sale in it
  ok_in(E4RegPag(61, "50,00"), 23);
  ok_in(E4RegPag(60, "40,00"), 24);
  ok_in(E4FimCP(0, ""), 0);
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

// Each case from a factory-fresh printer: what is done first, the refused
// call, its result and the printer's code that E4GetError then reports.
TEST_F(OnModel, WrongStateCommandsAreRefusedWithTheListedCodes) {
  using Case = std::tuple<const char*, std::function<void()>, std::function<unsigned short()>, unsigned short, unsigned>;
  const std::vector<Case> cases = {
      {"payment, no coupon", [] {}, [] { return E4RegPag(60, "1,00"); }, 2561, 21},
      {"second opening", [] { E4IniCP(2, ""); }, [] { return E4IniCP(2, ""); }, 2561, 132},
      {"unprogrammed rate", [] {}, [] { return E4IteCF(25, "1", "X", "1,000", "1,00"); }, 2582, 22},
      {"closing unpaid", [] { item(); E4RegPag(60, "5,00"); }, [] { return E4FimCP(0, ""); }, 2561, 145},
      {"voucher on cash", sale, [] { return E4IniCP(17, "60"); }, 2561, 154},
      {"cover open", [] { vp_set_condition(VP_COND_COVER_OPEN, 1); }, [] { return E4IniCP(2, ""); }, 2871, 44},
      {"day not reduced", [] { sale(); vp_set_clock(2026, 11, 23, 8, 0, 0); }, [] { return E4IniCP(2, ""); },
       2561, 153},
      {"reading over a coupon", [] { E4IniCP(2, ""); }, [] { return E4IniCP(4, ""); }, 2561, 132},
      {"day reduced", [] { sale(); E4IniCP(5, ""); }, [] { return E4IniCP(2, ""); }, 2561, 151},
      {"non-fiscal unpaid",  // the first closing in state 22 only totals it
       [] {
         unsigned char reg = 42;
         E4RPCria(1, "RECEBIMENTO", "+", &reg);
         E4OpeCNF(42, "+", "RECEBIMENTO", "10,00");
         E4FimCP(0, "");
       },
       [] { return E4FimCP(0, ""); }, 2634, 74},
  };
  for (const auto& [what, before, call, result, code] : cases) {
    vp_model_reset();
    vp_set_clock(2026, 11, 22, 10, 30, 0);
    before();
    const int coo = vp_coo();
    EXPECT_EQ(call(), result) << what;
    unsigned err = 0;
    E4GetError(&err);
    EXPECT_EQ(err, code) << what;
    EXPECT_EQ(vp_coo(), coo) << what;  // a refused document takes no COO
  }
}

TEST_F(OnModel, IdentityBusinessDayAndConditions) {
  char serie[32] = "", cgc[32] = "", ie[32] = "", im[32] = "", cliche[300] = "", firm[16] = "", seq[16] = "";
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
  item();
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
  std::array<char, 21> mf{};
  ASSERT_EQ(E4RegMemFisc(1, mf.data()), 0);
  EXPECT_EQ(std::string(mf.data()).substr(0, 12), "221120260005");  // the day reduced, the time it was
  ASSERT_EQ(E4IniCP(2, ""), 0);                                     // which leaves today open
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

TEST_F(OnModel, ItemAndCouponAdjustmentsMoveTheirRegisters) {
  ASSERT_EQ(E4IniCP(2, ""), 0);
  for (const char* price : {"10,00", "20,00", "30,00"}) item(price);
  ASSERT_EQ(E4CanIt(20, 2), 0);
  EXPECT_EQ(E4CanIt(20, 2), 2561);  // already cancelled
  EXPECT_EQ(E4CanIt(20, 9), 2049);  // no such item
  ASSERT_EQ(E4DesIt(0, 20, 1, "1,00", nullptr), 0);
  char percent[16] = "10,00";
  ASSERT_EQ(E4AcrIt(2, 20, 0, percent, nullptr), 0);  // 10 % on the last item
  EXPECT_STREQ(percent, "3.00");
  EXPECT_EQ(E4DesIt(0, 20, 1, "1,00", nullptr), 2561);  // one adjustment per item
  ASSERT_EQ(E4DesIt(1, 20, 1, "", nullptr), 0);         // taken back
  ASSERT_EQ(E4AcrCup(0, "2,00"), 0);
  EXPECT_EQ(E4IteCF(20, "1", "X", "1,000", "1,00"), 2561);  // no sale after the subtotal
  for (const auto& [reg, cents] : {std::pair{20, 1000 + 3000 + 300 + 200}, {7, 2000}, {8, 0}, {9, 500}})
    EXPECT_EQ(vp_register_value(reg), cents) << "register " << reg;
  ok_in(E4RegPag(60, "45,00"), 16);  // paid exactly
  ASSERT_EQ(E4FimCP(0, ""), 0);
  const auto coupon = tape_from("CUPOM FISCAL");
  EXPECT_EQ(figure(coupon, "CANCELAMENTO ITEM 002"), "-20,00");
  EXPECT_EQ(figure(coupon, "ACRESCIMO ITEM 003"), "+3,00");
  EXPECT_EQ(figure(coupon, "TOTAL R$"), "45,00");
}

TEST_F(OnModel, CreatedRegistersJoinTheDefaultProgrammingAndSurviveARestart) {
  char d[100] = "", s = 0;
  EXPECT_EQ(E4VerRP(61, d, &s), 0);
  EXPECT_STREQ(d, "CARTAO");
  EXPECT_EQ(s, '1');
  EXPECT_EQ(E4VerRP(45, d, &s), 2582);  // not programmed
  unsigned char reg = 42;
  EXPECT_EQ(E4RPCria(1, "TROCO INICIAL", "+", &reg), 0);
  reg = 23;
  EXPECT_EQ(E4RPCria(2, "25", "", &reg), 0);
  reg = 3;
  EXPECT_EQ(E4RPCria(6, "CONFERENCIA", "", &reg), 0);
  EXPECT_EQ(reg, 119);
  reg = 63;  // a payment method: the store number procedure runs its X reading
  EXPECT_EQ(E4RPCria(5, "CHEQUE", "0", &reg), 0);
  EXPECT_TRUE(printed("LEITURA X"));
  EXPECT_EQ(read_file("ArqRegPgto.sts"), "00001");
  reg = 42;  // the same programming again is accepted; another name on the number is not
  EXPECT_EQ(E4RPCria(1, "TROCO INICIAL", "+", &reg), 0);
  EXPECT_EQ(E4RPCria(1, "OUTRO", "+", &reg), 2049);

  E4Close();
  vp_model_reload();
  ASSERT_EQ(E4Open(0, 0), 0);
  const std::vector<std::tuple<int, std::vector<Entry>>> walks{
      {1, {{40, "SANGRIA", '-'}, {41, "SUPRIMENTO", '+'}, {42, "TROCO INICIAL", '+'}}},
      {2, {{20, "18,00", ' '}, {21, "12,00", ' '}, {22, "07,00", ' '}, {23, "25,00", ' '}}},
      {4, {{36, "05,00", ' '}}},
      {5, {{60, "DINHEIRO", '0'}, {61, "CARTAO", '1'}, {62, "OUTROS", '0'}, {63, "CHEQUE", '0'}}},
      {6, {{0, "GERAL", ' '}, {1, "TEF", ' '}, {3, "CONFERENCIA", ' '}}},
  };
  for (const auto& [cat, want] : walks) EXPECT_EQ(walk(static_cast<unsigned char>(cat)), want) << "category " << cat;
  ASSERT_EQ(E4IniCP(2, ""), 0);  // the new method takes payments like any other
  item("6,00");
  ASSERT_EQ(E4RegPag(63, "6,00"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  EXPECT_EQ(value(63), 600);
  EXPECT_EQ(figure(tape_from("CUPOM FISCAL"), "CHEQUE"), "6,00");
}

TEST_F(OnModel, ASaleItsReadingsItsReductionOnceAndTheTransfersOfTheDay) {
  sale();
  for (const auto& [reg, want] : {std::pair{3, 1}, {80, 1}, {20, 1000}, {22, 500}, {60, 1500}, {0, 1500}})
    EXPECT_EQ(value(static_cast<unsigned char>(reg)), want) << "register " << reg;  // 80: the CCF; 60: less the change
  char v[40] = "";
  EXPECT_EQ(E4ValImp(20, v), 0);
  EXPECT_EQ(std::stoll(v), 180);
  EXPECT_EQ(E4InfCup(501, v), 0);  // received on the last coupon
  EXPECT_EQ(std::stoll(v), 2000);
  ASSERT_EQ(E4IniCP(4, ""), 0);  // a reading takes a COO and changes no total
  EXPECT_EQ(value(3), 2);
  EXPECT_EQ(figure(tape_from("LEITURA X"), "VENDA BRUTA DIARIA"), "15,00");
  ASSERT_EQ(E4LMF(1, 0, "0001", "0001"), 0);  // the fiscal memory, printed
  EXPECT_EQ(value(3), 3);
  EXPECT_TRUE(printed("LEITURA DA MEMORIA FISCAL"));
  EXPECT_EQ(value(20), 1000);

  ASSERT_EQ(E4IniCP(5, ""), 0);
  EXPECT_EQ(value(4), 1);
  EXPECT_EQ(value(106), 2189);  // reductions left in the fiscal memory
  EXPECT_EQ(E4ValRed(4, v), 0);
  EXPECT_STREQ(v, "000001");
  EXPECT_EQ(E4ValRed(0, v), 0);
  EXPECT_EQ(std::stoll(v), 1500);
  char data[9] = "", hora[5] = "", movimento[9] = "";
  unsigned char verao = 9, reducao = 0;
  EXPECT_EQ(E4RdData(data, hora, &verao, movimento, &reducao), 0);
  EXPECT_EQ(reducao, 1);
  std::vector<char> buf(2300, '\0');
  ASSERT_EQ(E4DadosReducao(buf.data()), 0);  // the day just closed
  const std::string rec(buf.data(), buf.size());
  // label, value (the last 13 digits), tax (16 digits), comma
  EXPECT_EQ(rec.substr(0, 45), "01T1800        " "0000000001000" "0000000000000180" ",");
  EXPECT_EQ(rec.substr(45, 45), "02T1200        " "0000000000000" "0000000000000000" ",");
  EXPECT_EQ(rec.substr(90, 45), "03T0700        " "0000000000500" "0000000000000035" ",");
  EXPECT_EQ(rec.substr(135, 15), "01S0500        ");
  EXPECT_NE(rec.find("SANGRIA        0000000000000,"), std::string::npos);
  char mf[21] = "";
  EXPECT_EQ(E4RegMemFisc(2, mf), 2582);  // not made yet
  ASSERT_EQ(E4LeMFD(1, "1", "999999", "mfd.txt"), 0);  // the journal, by COO
  const std::string mfd = read_file("mfd.txt");
  EXPECT_NE(mfd.find("ARROZ"), std::string::npos);
  EXPECT_NE(mfd.find("REDUCAO Z"), std::string::npos);
  EXPECT_GT(vp_count_cmd(199), 3);  // more than one 253-byte packet of data
  ASSERT_EQ(E4LeMFD(1, "1", "1", "coupon.txt"), 0);
  const std::string coupon = read_file("coupon.txt");
  EXPECT_NE(coupon.find("ARROZ"), std::string::npos);
  EXPECT_EQ(coupon.find("REDUCAO Z"), std::string::npos);
  ASSERT_EQ(E4LeMFD(2, "0001", "0001", "day.txt"), 0);  // by reduction number
  EXPECT_EQ(read_file("day.txt"), mfd);
  ASSERT_EQ(E4LeMFD(2, "0002", "0002", "none.txt"), 0);
  EXPECT_EQ(read_file("none.txt"), "");
  ASSERT_EQ(E4LMFSerial(1, 0, "0001", "0001", "mf.txt"), 0);  // number, restart counter, the reduction's COO, the day
  EXPECT_NE(read_file("mf.txt").find("0001 001 000004  22/11/2026"), std::string::npos);

  vp_set_clock(2026, 11, 23, 9, 0, 0);
  EXPECT_EQ(value(20), 1000);  // the day reduced stays readable until the next day's first document
  EXPECT_EQ(E4IniCP(5, ""), 0);
  EXPECT_EQ(value(4), 2);
  EXPECT_EQ(value(20), 0);
}

}  // namespace
