// The library against the virtual printer's fiscal model, nothing scripted. The
// model: documents and their states, refusals, registers and totals, readings,
// persistence. Then a day's roads: a whole day checked against the Z reduction's
// tape, record and fiscal memory; a day going on after a stop in the middle of a
// coupon; payments found by name and the walk that starts over.
#include <cmath>
#include <cstdio>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using orbtest::read_file;

namespace {

class OnModel : public orbtest::Fresh {
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

// The paper tape from its last line holding `title` up to the next cut.
std::vector<std::string> tape_from(const std::string& title) {
  std::vector<std::string> all, out;
  std::istringstream in(orbtest::read_file(vp_tape_path()));
  for (std::string line; std::getline(in, line);) all.push_back(line);
  std::size_t i = all.size();
  for (std::size_t j = 0; j < all.size(); ++j)
    if (all[j].find(title) != std::string::npos) i = j;
  for (; i < all.size() && all[i].find("(corte)") == std::string::npos; ++i) out.push_back(all[i]);
  return out;
}

bool printed(const std::string& text) { return orbtest::read_file(vp_tape_path()).find(text) != std::string::npos; }

// The figures printed after `label` on the tape lines it starts.
std::vector<std::string> figures(const std::vector<std::string>& tape, const std::string& label) {
  std::vector<std::string> out;
  for (const auto& l : tape) {
    if (l.rfind(label + " ", 0) != 0) continue;
    std::istringstream in(l.substr(label.size()));
    for (std::string f; in >> f;) out.push_back(f);
  }
  return out;
}
// The last of them ("" when none is printed).
std::string figure(const std::vector<std::string>& tape, const std::string& label) {
  const auto f = figures(tape, label);
  return f.empty() ? "" : f.back();
}

// A register's current value as the library reads it.
long long value(unsigned char reg) {
  char v[40] = "";
  EXPECT_EQ(E4ValAtu(reg, v), 0) << "register " << int(reg);
  return std::stoll("0" + std::string(v));
}

// Cents below 1.000,00 as the tape prints them.
std::string money(long long cents) {
  char text[32];
  std::snprintf(text, sizeof text, "%lld,%02lld", cents / 100, cents % 100);
  return text;
}

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
// The entries read from `cat` until the end of the category.
std::vector<Entry> walk(unsigned char cat,
                        unsigned short (*read)(unsigned char, char*, char*, unsigned char*) = E4RPLe) {
  std::vector<Entry> out;
  char compl_[100] = "", sinal = 0;
  unsigned char rp = 0;
  unsigned short ret = 0;
  while (out.size() < 30 && (ret = read(cat, compl_, &sinal, &rp)) == 0) out.emplace_back(rp, compl_, sinal);
  EXPECT_EQ(ret, 2867);  // the end of the category
  return out;
}

// The record's entry for `label`: its value and tax figures (tax 0 if none).
std::pair<long long, long long> entry(const std::string& record, const std::string& label) {
  std::istringstream in(record);
  for (std::string e; std::getline(in, e, ',');)
    if (e.size() >= 28 && e.compare(0, 15, (label + std::string(15, ' ')).substr(0, 15)) == 0)
      return {std::stoll(e.substr(15, 13)), e.size() >= 44 ? std::stoll(e.substr(28, 16)) : 0};
  ADD_FAILURE() << "no entry " << label;
  return {-1, -1};
}

// A coupon paid partly by card (its discount spread over the items in proportion,
// 19,3 + 5,7 cents, the remainder to the larger), its voucher, then the coupon
// cancelled: the voucher is reversed first.
TEST_F(OnModel, CancellingACouponReversesItsVoucherFirst) {
  ok_in(E4IniCP(2, ""), 2);
  ASSERT_EQ(E4IteCF(20, "7891", "ARROZ", "2,000", "5,50"), 0);  // 11,00 at 18 %
  ASSERT_EQ(E4IteCF(13, "7892", "SAL", "1,000", "325"), 0);     // 3,25, implied decimals
  ASSERT_EQ(E4DesCup(0, "0,25"), 0);
  ok_in(E4RegPag(61, "5,00"), 14);
  ok_in(E4RegPag(60, "10,00"), 15);  // 15,00 paid for 14,00: change due
  ok_in(E4FimCP(0, ""), 0);
  for (const auto& [reg, cents] : {std::pair{20, 1080}, {13, 320}, {8, 25}, {60, 900}, {61, 500}, {79, 100}})
    EXPECT_EQ(vp_register_value(reg), cents) << "register " << reg;
  EXPECT_TRUE(printed("001 7891 ARROZ\n    2,000 Un X 5,50               T18,00%  11,00"));
  ok_in(E4IniCP(17, "61"), 17);  // the card payment's voucher
  ok_in(E4Print("VIA DO CLIENTE"), 18);
  ok_in(E4FimCP(0, ""), 0);
  ok_in(E4CanCup(), 0);  // COO 3 reverses the voucher, COO 4 cancels the coupon
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
      {"day reduced", [] { sale(); E4IniCP(5, ""); }, [] { return E4IniCP(2, ""); }, 2561, 151},
      {"non-fiscal unpaid",  // the first closing in state 22 only totals it
       [] { unsigned char reg = 42; E4RPCria(1, "RECEBIMENTO", "+", &reg); E4OpeCNF(42, "+", "RECEBIMENTO", "10,00"); },
       [] { return E4FimCP(0, ""), E4FimCP(0, ""); }, 2634, 74},
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

// The business date is the day's until a reduction, whatever the clock says.
TEST_F(OnModel, BusinessDayAndConditions) {
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
  for (const auto& [cat, want] : walks) {
    EXPECT_EQ(E4RPPrim(static_cast<unsigned char>(cat)), 0);
    EXPECT_EQ(walk(static_cast<unsigned char>(cat)), want) << "category " << cat;
  }
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
  EXPECT_EQ(E4ValRed(0, v), 0);
  EXPECT_EQ(std::stoll(v), 1500);
  std::vector<char> buf(2300, '\0');
  ASSERT_EQ(E4DadosReducao(buf.data()), 0);  // the day just closed
  const std::string rec(buf.data(), buf.size());
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
  ASSERT_EQ(E4LMFSerial(1, 0, "0001", "0001", "mf.txt"), 0);  // number, restart counter, the reduction's COO, the day
  EXPECT_NE(read_file("mf.txt").find("0001 001 000004  22/11/2026"), std::string::npos);
  vp_set_clock(2026, 11, 23, 9, 0, 0);
  EXPECT_EQ(value(20), 1000);  // the day reduced stays readable until the next day's first document
  EXPECT_EQ(E4IniCP(5, ""), 0);
  EXPECT_EQ(value(4), 2);
  EXPECT_EQ(value(20), 0);
}

TEST_F(OnModel, TheReductionAddsUpTheDaysSales) {
  ASSERT_EQ(E4ProgOp("MARIA"), 0);
  ASSERT_EQ(E4Cons("JOAO DA SILVA", "123.456.789-09", "RUA DAS PALMEIRAS, 12"), 0);
  ASSERT_EQ(E4IniCP(2, ""), 0);
  long long gross = 0;
  std::map<int, long long> by_rate;
  for (const auto& [rp, qty, price, cents] :  // cents: quantity x price
       {std::tuple{20, "2,000", "22,90", 4580}, {22, "1,000", "8,49", 849}, {13, "3,000", "2,15", 645},
        {20, "0,750", "10,00", 750}}) {
    ASSERT_EQ(E4IteCF(static_cast<unsigned char>(rp), "789", "PRODUTO", qty, price), 0);
    gross += cents;
    by_rate[rp] += cents;
  }
  ASSERT_EQ(E4DesCup(0, "5,00"), 0);
  const long long discount = 500, net = gross - discount, card = 4000, cash = 3000;
  ASSERT_EQ(E4RegPag(61, "40,00"), 0);
  ASSERT_EQ(E4RegPag(60, "30,00"), 0);
  ASSERT_EQ(E4FimCP(0, "OBRIGADO PELA PREFERENCIA"), 0);
  const auto coupon = tape_from("CUPOM FISCAL");
  for (const auto& [label, fig] : std::vector<std::pair<std::string, std::string>>{
           {"DESCONTO R$", "-5,00"}, {"TOTAL R$", money(net)}, {"CARTAO", "40,00"},
           {"TROCO R$", money(card + cash - net)}})
    EXPECT_EQ(figure(coupon, label), fig) << label;
  ASSERT_EQ(E4IniCP(17, "61"), 0);
  ASSERT_EQ(E4Print("VIA DO CLIENTE"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  for (const char* text : {"CCF:000001 COO:000001", "CPF/CNPJ CONSUMIDOR: 123.456.789-09",
                           "\nOBRIGADO PELA PREFERENCIA\n", "OPERADOR: MARIA", "COO DO DOCUMENTO VINCULADO: 000001"})
    EXPECT_TRUE(printed(text)) << text;
  ASSERT_EQ(E4IniCP(19, ""), 0);
  ASSERT_EQ(E4OpeCNF(41, "+", "SUPRIMENTO", "100,00"), 0);
  ASSERT_EQ(E4RegPag(60, "100,00"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  ASSERT_EQ(E4IniCP(20, "1"), 0);
  ASSERT_EQ(E4Print("CONFERENCIA DO CAIXA"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  ASSERT_EQ(E4IniCP(4, ""), 0);
  ASSERT_EQ(E4IniCP(5, ""), 0);
  std::vector<char> buf(2300, '\0');
  ASSERT_EQ(E4DadosReducao(buf.data()), 0);
  const std::string record(buf.data());
  const auto z = tape_from("REDUCAO Z");
  ASSERT_FALSE(z.empty());
  for (const auto& [label, fig] : std::vector<std::pair<std::string, std::string>>{  // the change came out of the cash
           {"MOVIMENTO DO DIA", "22/11/2026"}, {"VENDA BRUTA DIARIA", money(gross)}, {"DESCONTOS ICMS", money(discount)},
           {"VENDA LIQUIDA", money(net)}, {"GRANDE TOTAL", money(gross)}, {"CRZ", "0001"}, {"COO FINAL", "000006"},
           {"CARTAO", money(card)}, {"TROCO", money(card + cash - net)}, {"DINHEIRO", money(net - card)},
           {"SUPRIMENTO", money(10000)}})
    EXPECT_EQ(figure(z, label), fig) << label;
  EXPECT_EQ(entry(record, "DT").first, discount);
  EXPECT_EQ(entry(record, "SUPRIMENTO").first, 10000);
  // Each rate keeps its sales less its share of the discount, and its tax is
  // that base at the rate, rounded; the tape and the record agree.
  long long bases = 0;
  for (const auto& [rp, label, code, rate] : {std::tuple{20, "T18,00%", "01T1800", 1800},
                                              std::tuple{22, "T07,00%", "03T0700", 700}, std::tuple{13, "N1", "N1", 0}}) {
    SCOPED_TRACE(label);
    const auto [base, tax] = entry(record, code);
    EXPECT_LE(base, by_rate[rp]);
    EXPECT_GE(base, by_rate[rp] - discount);
    EXPECT_EQ(tax, std::llround(static_cast<double>(base) * rate / 10000.0));
    const auto want = rate != 0 ? std::vector{money(base), money(tax)} : std::vector{money(base)};
    EXPECT_EQ(figures(z, label), want);
    bases += base;
  }
  EXPECT_EQ(bases, net);
  // The fiscal memory keeps the day's date and its gross sales.
  char mf[21] = "";
  ASSERT_EQ(E4RegMemFisc(1, mf), 0);
  EXPECT_EQ(std::string(mf).substr(0, 8), "22112026");  // then the time
  EXPECT_EQ(std::string(mf).substr(12), "0000" + std::to_string(gross));
  EXPECT_EQ(value(4), 1);  // reductions made
  EXPECT_EQ(E4IniCP(5, ""), 2561);
}

TEST_F(OnModel, ACouponOpenAtARestartIsReadBackFromTheStateFileAndCancelled) {
  ASSERT_EQ(E4ProgOp("ANA 100%"), 0);
  ASSERT_EQ(E4Cons("JOSE DA SILVA", "1", "RUA A, 1"), 0);
  ASSERT_EQ(E4IniCP(2, ""), 0);
  ASSERT_EQ(E4IteCF(20, "7%9", "CAFE 500 G", "1,000", "4,00"), 0);
  ASSERT_EQ(E4DesCup(2, "10,00"), 0);
  ASSERT_EQ(E4Close(), 0);
  const std::string saved = orbtest::read_file(vp_state_path());
  vp_model_reload();                       // the application and the printer's driver start again
  vp_set_condition(VP_COND_PAPER_LOW, 0);  // unchanged, written again
  EXPECT_EQ(orbtest::read_file(vp_state_path()), saved);
  ASSERT_EQ(E4Open(0, 0), 0);
  unsigned char opc = 0, resposta = 0;
  ASSERT_EQ(E4StaECF(&opc, &resposta), 0);
  EXPECT_EQ(opc, 2);
  EXPECT_EQ(value(20), 360);
  ASSERT_EQ(E4CanCup(), 0);
  EXPECT_TRUE(printed("CUPOM FISCAL CANCELADO"));
  EXPECT_EQ(value(7), 360);
  ASSERT_EQ(E4StaECF(&opc, &resposta), 0);
  EXPECT_EQ(opc, 0);
  ASSERT_EQ(E4IniCP(2, ""), 0);  // and the day goes on
  ASSERT_EQ(E4IteCF(20, "1", "PAO", "1,000", "4,00"), 0);
  ASSERT_EQ(E4RegPag(60, "4,00"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  EXPECT_EQ(vp_ccf(), 2);
  std::remove(vp_state_path());  // without its state file the printer is back in its factory state
  vp_model_reload();
  EXPECT_EQ(vp_coo(), 0);
}

TEST_F(OnModel, PaymentOnOutrosAndTheWalkThatStartsOver) {
  ASSERT_EQ(E4IniCP(2, ""), 0);
  ASSERT_EQ(E4IteCF(20, "1", "LEITE", "2,000", "6,00"), 0);
  ASSERT_EQ(E4RegPag_JP(0, "500"), 0);  // found by its name
  ASSERT_EQ(E4RegPag_JP(0, "700"), 0);  // and remembered
  EXPECT_EQ(vp_doc_state(), 16);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  EXPECT_EQ(figures(tape_from("CUPOM FISCAL"), "OUTROS"), (std::vector<std::string>{"5,00", "7,00"}));
  EXPECT_EQ(value(62), 1200);
  const std::vector<Entry> methods{{60, "DINHEIRO", '0'}, {61, "CARTAO", '1'}, {62, "OUTROS", '0'}};
  ASSERT_EQ(E4RPPrim(5), 0);
  EXPECT_EQ(walk(5, E4RPLe_JP), methods);
  EXPECT_EQ(walk(5, E4RPLe_JP), methods);  // then it starts over
}

}  // namespace
