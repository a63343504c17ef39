// The library against the virtual printer's fiscal model, nothing scripted: documents, refusals, registers, readings,
// persistence; then a day's roads: a whole day against its Z reduction, a stop mid-coupon, payments found by name.
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
  const std::string tape = read_file(vp_tape_path());
  const std::size_t at = tape.rfind(title);
  std::vector<std::string> out;
  std::istringstream in(at == std::string::npos ? "" : tape.substr(tape.rfind('\n', at) + 1));
  for (std::string line; std::getline(in, line) && line.find("(corte)") == std::string::npos;) out.push_back(line);
  return out;
}

// Each of `parts` is in `text`, by default the paper tape.
void holds(std::initializer_list<std::string> parts, const std::string& text = read_file(vp_tape_path())) {
  for (const auto& part : parts) EXPECT_NE(text.find(part), std::string::npos) << part;
}

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
// Each {label, figure} of `want` is printed on `tape`.
void shows(const std::vector<std::string>& tape, const std::vector<std::pair<std::string, std::string>>& want) {
  for (const auto& [label, fig] : want) EXPECT_EQ(figure(tape, label), fig) << label;
}

// A figure the library reads as text for `reg` (E4ValAtu and the like).
template <typename Reg>
long long read_figure(unsigned short (*read)(Reg, char*), int reg) {
  char v[40] = "";
  EXPECT_EQ(read(static_cast<Reg>(reg), v), 0) << "register " << reg;
  return std::stoll("0" + std::string(v));
}
long long value(int reg) { return read_figure(E4ValAtu, reg); }

// Registers' values as {register, cents}, in the model or as `read` gets them.
void regs(std::initializer_list<std::pair<int, long long>> want, long long (*read)(int) = vp_register_value) {
  for (const auto& [reg, cents] : want) EXPECT_EQ(read(reg), cents) << "register " << reg;
}

// Cents below 1.000,00 as the tape prints them.
std::string money(long long c) { return std::to_string(c / 100) + "," + std::to_string(100 + c % 100).substr(1); }

// The results of calls made in order: `want`, or all success.
void rets(const std::vector<unsigned short>& got, const std::vector<unsigned short>& want = {}) {
  EXPECT_EQ(got, want.empty() ? std::vector<unsigned short>(got.size(), 0) : want);
}

void item(const char* price = "11,00") { ASSERT_EQ(E4IteCF(20, "7891", "ARROZ", "1,000", price), 0); }

// A coupon of one item paid exactly with `method`.
void coupon(const char* price, unsigned char method = 60) {
  rets({E4IniCP(2, ""), E4IteCF(20, "7891", "ARROZ", "1,000", price), E4RegPag(method, price), E4FimCP(0, "")});
}

// 10,00 at 18 % and 2 x 2,50 at 7 %, paid with 20,00 in cash: 15,00 of sales, 5,00 of change.
void sale() {
  rets({E4IniCP(2, ""), E4IteCF(20, "1", "ARROZ", "1,000", "10,00"), E4IteCF(22, "2", "FEIJAO", "2,000", "2,50"),
        E4RegPag(60, "20,00"), E4FimCP(0, "")});
}

// `ret` is success, and the document is then in `state`.
void ok_in(unsigned short ret, int state) {
  EXPECT_EQ(ret, 0) << "towards state " << state;
  EXPECT_EQ(vp_doc_state(), state);
}

// The document the library says is open.
int open_doc() {
  unsigned char opc = 99, resposta = 0;
  EXPECT_EQ(E4StaECF(&opc, &resposta), 0);
  return opc;
}

unsigned short create(unsigned char cat, const char* name, const char* param, unsigned char reg) {
  return E4RPCria(cat, name, param, &reg);
}

using Entry = std::tuple<int, std::string, char>;  // RP, description, sign
// The entries read from `cat` until the end of the category, from its first one unless `restart` is false.
std::vector<Entry> walk(unsigned char cat, bool restart = true,
                        unsigned short (*read)(unsigned char, char*, char*, unsigned char*) = E4RPLe) {
  EXPECT_EQ(restart ? E4RPPrim(cat) : 0, 0);
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

// A coupon paid partly by card (its discount spread over the items in proportion, 19,3 + 5,7 cents, the remainder to
// the larger), its voucher, then the coupon cancelled: the voucher is reversed first.
TEST_F(OnModel, CancellingACouponReversesItsVoucherFirst) {
  ok_in(E4IniCP(2, ""), 2);
  rets({E4IteCF(20, "7891", "ARROZ", "2,000", "5,50"), E4IteCF(13, "7892", "SAL", "1,000", "325"),  // 11,00; 3,25
        E4DesCup(0, "0,25")});
  ok_in(E4RegPag(61, "5,00"), 14);
  ok_in(E4RegPag(60, "10,00"), 15);  // 15,00 paid for 14,00: change due
  ok_in(E4FimCP(0, ""), 0);
  regs({{20, 1080}, {13, 320}, {8, 25}, {60, 900}, {61, 500}, {79, 100}});
  ok_in(E4IniCP(17, "61"), 17);  // the card payment's voucher
  ok_in(E4Print("VIA DO CLIENTE"), 18);
  ok_in(E4FimCP(0, ""), 0);
  ok_in(E4CanCup(), 0);  // COO 3 reverses the voucher, COO 4 cancels the coupon
  EXPECT_EQ(vp_coo(), 4);
  holds({"001 7891 ARROZ\n    2,000 Un X 5,50               T18,00%  11,00", "COO DO COMPROVANTE ESTORNADO: 000002",
         "COO DO DOCUMENTO CANCELADO: 000001"});
  regs({{20, 0}, {13, 0}, {7, 1400}, {60, 0}, {61, 0}, {79, 0}});
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
  EXPECT_EQ(read_figure(E4InfCup, 504), before);  // the subtotal
}

TEST_F(OnModel, NonFiscalDocuments) {
  ok_in(E4OpeCNF(41, "+", "SUPRIMENTO", "150,00"), 20);
  ok_in(E4RegPag(60, "150,00"), 0);  // in state 20 the payment closes it
  regs({{41, 15000}, {16, 15000}});
  EXPECT_EQ(figure(tape_from("COMPROVANTE NAO-FISCAL"), "SUPRIMENTO"), "150,00");
  orbtest::write_file("fechamento.txt", "CAIXA 01\nABERTURA 08:00\nFECHAMENTO 18:00\n");
  ASSERT_EQ(E4IniCP(20, "1"), 0);
  EXPECT_EQ(open_doc(), 13);
  orbtest::state(0);  // a scripted reply is answered before the model's
  EXPECT_EQ(open_doc(), 0);
  vp_clear_reply(6);
  ASSERT_EQ(E4ImpVinc("fechamento.txt", "3"), 0);
  ok_in(E4FimCP(0, ""), 0);
  EXPECT_EQ(vp_coo(), 2);
  // a paid non-fiscal coupon, its voucher and second copy, then its cancellation
  ASSERT_EQ(create(1, "RECEBIMENTO", "+", 42), 0);
  ok_in(E4IniCP(19, "CONTA 123"), 19);
  EXPECT_EQ(E4FimCP(0, ""), 2634);  // nothing in it yet
  ok_in(E4OpeCNF(42, "+", "RECEBIMENTO", "80,00"), 22);
  EXPECT_EQ(E4IteCF(20, "1", "X", "1,000", "1,00"), 2561);  // no sale in it
  ok_in(E4RegPag(61, "50,00"), 23);
  ok_in(E4RegPag(60, "40,00"), 24);
  ok_in(E4FimCP(0, ""), 0);
  regs({{60, 3000}, {79, 1000}});  // 40,00 less the change
  // one voucher per payment, one second copy
  rets({E4IniCP(17, "61"), E4FimCP(0, ""), E4IniCP(17, "61"), E4IniCP(21, ""), E4IniCP(21, "")},
       {0, 0, 2561, 0, 2561});
  ASSERT_EQ(E4CanCup(), 0);  // the voucher is reversed, then the coupon before it cancelled
  regs({{42, 0}, {17, 8000}});
  holds({"RELATORIO GERENCIAL", "\nCAIXA 01\nABERTURA 08:00\nFECHAMENTO 18:00\n", "SEGUNDA VIA",
         "COMPROVANTE NAO-FISCAL CANCELADO"});
}

// Each case from a factory-fresh printer: what is done first, the refused call, its result, E4GetError's code.
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
       [] { create(1, "RECEBIMENTO", "+", 42); E4OpeCNF(42, "+", "RECEBIMENTO", "10,00"); },
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
  coupon("11,00");
  vp_set_clock(2026, 11, 23, 0, 5, 0);
  char data[9] = "", hora[5] = "", movimento[9] = "";
  unsigned char verao = 9, reducao = 9;
  ASSERT_EQ(E4RdData(data, hora, &verao, movimento, &reducao), 0);
  EXPECT_EQ(std::string(data) + " " + hora + " " + movimento, "23112026 0005 22112026");
  EXPECT_EQ(reducao, 0);
  ASSERT_EQ(E4IniCP(5, ""), 0);  // yesterday's reduction
  char mf[21] = "";
  ASSERT_EQ(E4RegMemFisc(1, mf), 0);
  EXPECT_EQ(std::string(mf).substr(0, 12), "221120260005");  // the day reduced, the time it was
  ASSERT_EQ(E4IniCP(2, ""), 0);                              // which leaves today open
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
  char percent[16] = "10,00";  // on the last item
  // item 2 cancelled, not twice, no item 9; one adjustment per item, taken back; no sale after the subtotal
  rets({E4CanIt(20, 2), E4CanIt(20, 2), E4CanIt(20, 9), E4DesIt(0, 20, 1, "1,00", nullptr),
        E4AcrIt(2, 20, 0, percent, nullptr), E4DesIt(0, 20, 1, "1,00", nullptr), E4DesIt(1, 20, 1, "", nullptr),
        E4AcrCup(0, "2,00"), E4IteCF(20, "1", "X", "1,000", "1,00")},
       {0, 2561, 2049, 0, 0, 2561, 0, 0, 2561});
  EXPECT_STREQ(percent, "3.00");
  regs({{20, 1000 + 3000 + 300 + 200}, {7, 2000}, {8, 0}, {9, 500}});
  ok_in(E4RegPag(60, "45,00"), 16);  // paid exactly
  ASSERT_EQ(E4FimCP(0, ""), 0);
  shows(tape_from("CUPOM FISCAL"), {{"CANCELAMENTO ITEM 002", "-20,00"}, {"ACRESCIMO ITEM 003", "+3,00"}});
}

TEST_F(OnModel, CreatedRegistersJoinTheDefaultProgrammingAndSurviveARestart) {
  char d[100] = "", s = 0;
  EXPECT_EQ(E4VerRP(61, d, &s), 0);
  EXPECT_EQ(std::string(d) + s, "CARTAO1");
  EXPECT_EQ(E4VerRP(45, d, &s), 2582);  // not programmed
  rets({create(1, "TROCO INICIAL", "+", 42), create(2, "25", "", 23)});
  unsigned char reg = 3;
  EXPECT_EQ(E4RPCria(6, "CONFERENCIA", "", &reg), 0);
  EXPECT_EQ(reg, 119);
  EXPECT_EQ(create(5, "CHEQUE", "0", 63), 0);  // a payment method: the store number procedure runs its X reading
  holds({"LEITURA X"});
  EXPECT_EQ(read_file("ArqRegPgto.sts"), "00001");
  // the same programming again is accepted; another name on the number is not
  rets({create(1, "TROCO INICIAL", "+", 42), create(1, "OUTRO", "+", 42)}, {0, 2049});
  E4Close();
  vp_model_reload();
  ASSERT_EQ(E4Open(0, 0), 0);
  const std::vector<std::tuple<unsigned char, std::vector<Entry>>> walks{
      {1, {{40, "SANGRIA", '-'}, {41, "SUPRIMENTO", '+'}, {42, "TROCO INICIAL", '+'}}},
      {2, {{20, "18,00", ' '}, {21, "12,00", ' '}, {22, "07,00", ' '}, {23, "25,00", ' '}}},
      {4, {{36, "05,00", ' '}}},
      {5, {{60, "DINHEIRO", '0'}, {61, "CARTAO", '1'}, {62, "OUTROS", '0'}, {63, "CHEQUE", '0'}}},
      {6, {{0, "GERAL", ' '}, {1, "TEF", ' '}, {3, "CONFERENCIA", ' '}}},
  };
  for (const auto& [cat, want] : walks) EXPECT_EQ(walk(cat), want) << "category " << int(cat);
  coupon("6,00", 63);  // the new method takes payments like any other
  EXPECT_EQ(value(63), 600);
  EXPECT_EQ(figure(tape_from("CUPOM FISCAL"), "CHEQUE"), "6,00");
}

TEST_F(OnModel, ASaleItsReadingsItsReductionOnceAndTheTransfersOfTheDay) {
  sale();
  regs({{3, 1}, {80, 1}, {20, 1000}, {22, 500}, {60, 1500}, {0, 1500}}, value);  // 80: the CCF; 60: less the change
  EXPECT_EQ(read_figure(E4ValImp, 20), 180);
  EXPECT_EQ(read_figure(E4InfCup, 501), 2000);  // received on the last coupon
  ASSERT_EQ(E4IniCP(4, ""), 0);                  // a reading takes a COO and changes no total
  EXPECT_EQ(value(3), 2);
  EXPECT_EQ(figure(tape_from("LEITURA X"), "VENDA BRUTA DIARIA"), "15,00");
  ASSERT_EQ(E4LMF(1, 0, "0001", "0001"), 0);  // the fiscal memory, printed
  regs({{3, 3}, {20, 1000}}, value);
  holds({"LEITURA DA MEMORIA FISCAL"});
  ASSERT_EQ(E4IniCP(5, ""), 0);
  regs({{4, 1}, {106, 2189}}, value);  // 106: reductions left in the fiscal memory
  EXPECT_EQ(read_figure(E4ValRed, 0), 1500);
  std::vector<char> buf(2300, '\0');
  ASSERT_EQ(E4DadosReducao(buf.data()), 0);  // the day just closed
  const std::string rec(buf.data(), buf.size());
  EXPECT_EQ(rec.substr(135, 15), "01S0500        ");
  holds({"SANGRIA        0000000000000,"}, rec);
  char mf[21] = "";  // no second reduction yet; the journal, by COO
  rets({E4RegMemFisc(2, mf), E4LeMFD(1, "1", "999999", "mfd.txt")}, {2582, 0});
  EXPECT_GT(vp_count_cmd(199), 3);  // more than one 253-byte packet of data
  const std::string mfd = read_file("mfd.txt");
  holds({"ARROZ", "REDUCAO Z"}, mfd);
  // the first coupon alone; the day by its reduction number; the fiscal memory's figures
  rets({E4LeMFD(1, "1", "1", "coupon.txt"), E4LeMFD(2, "0001", "0001", "day.txt"),
        E4LMFSerial(1, 0, "0001", "0001", "mf.txt")});
  const std::string coupon = read_file("coupon.txt");
  EXPECT_TRUE(coupon.find("ARROZ") != std::string::npos && coupon.find("REDUCAO Z") == std::string::npos) << coupon;
  EXPECT_EQ(read_file("day.txt"), mfd);
  holds({"0001 001 000004  22/11/2026"}, read_file("mf.txt"));  // number, restarts, the reduction's COO, the day
  vp_set_clock(2026, 11, 23, 9, 0, 0);
  EXPECT_EQ(value(20), 1000);  // the day reduced stays readable until the next day's first document
  EXPECT_EQ(E4IniCP(5, ""), 0);
  regs({{4, 2}, {20, 0}}, value);
}

TEST_F(OnModel, TheReductionAddsUpTheDaysSales) {
  rets({E4ProgOp("MARIA"), E4Cons("JOAO DA SILVA", "123.456.789-09", "RUA DAS PALMEIRAS, 12"), E4IniCP(2, "")});
  std::map<int, long long> by_rate;
  for (const auto& [rp, qty, price, cents] :  // cents: quantity x price
       {std::tuple{20, "2,000", "22,90", 4580}, {22, "1,000", "8,49", 849}, {13, "3,000", "2,15", 645},
        {20, "0,750", "10,00", 750}}) {
    ASSERT_EQ(E4IteCF(static_cast<unsigned char>(rp), "789", "PRODUTO", qty, price), 0);
    by_rate[rp] += cents;
  }
  const long long gross = by_rate[20] + by_rate[22] + by_rate[13], discount = 500, net = gross - discount;
  const long long card = 4000, cash = 3000;  // the change comes out of the cash
  rets({E4DesCup(0, "5,00"), E4RegPag(61, "40,00"), E4RegPag(60, "30,00"),
        E4FimCP(0, "OBRIGADO PELA PREFERENCIA")});
  shows(tape_from("CUPOM FISCAL"), {{"DESCONTO R$", "-5,00"}, {"TOTAL R$", money(net)}, {"CARTAO", "40,00"},
                                    {"TROCO R$", money(card + cash - net)}});
  rets({E4IniCP(17, "61"), E4Print("VIA DO CLIENTE"), E4FimCP(0, "")});
  holds({"CCF:000001 COO:000001", "CPF/CNPJ CONSUMIDOR: 123.456.789-09", "\nOBRIGADO PELA PREFERENCIA\n",
         "OPERADOR: MARIA", "COO DO DOCUMENTO VINCULADO: 000001"});
  // a supply, a management report, a reading, then the reduction
  rets({E4IniCP(19, ""), E4OpeCNF(41, "+", "SUPRIMENTO", "100,00"), E4RegPag(60, "100,00"), E4FimCP(0, ""),
        E4IniCP(20, "1"), E4Print("CONFERENCIA DO CAIXA"), E4FimCP(0, ""), E4IniCP(4, ""), E4IniCP(5, "")});
  std::vector<char> buf(2300, '\0');
  ASSERT_EQ(E4DadosReducao(buf.data()), 0);
  const std::string record(buf.data());
  const auto z = tape_from("REDUCAO Z");
  shows(z, {{"MOVIMENTO DO DIA", "22/11/2026"}, {"VENDA BRUTA DIARIA", money(gross)},
            {"DESCONTOS ICMS", money(discount)}, {"VENDA LIQUIDA", money(net)}, {"GRANDE TOTAL", money(gross)},
            {"CRZ", "0001"}, {"COO FINAL", "000006"}, {"CARTAO", money(card)}, {"TROCO", money(card + cash - net)},
            {"DINHEIRO", money(net - card)}, {"SUPRIMENTO", money(10000)}});
  EXPECT_EQ(entry(record, "DT").first, discount);
  EXPECT_EQ(entry(record, "SUPRIMENTO").first, 10000);
  // Each rate keeps its sales less its share of the discount, its tax is that base at the rate; tape and record agree.
  long long bases = 0;
  for (const auto& [rp, label, code, rate] :
       {std::tuple{20, "T18,00%", "01T1800", 1800}, {22, "T07,00%", "03T0700", 700}, {13, "N1", "N1", 0}}) {
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
  // The fiscal memory keeps the day's date, then the time, and its gross sales.
  char mf[21] = "";
  ASSERT_EQ(E4RegMemFisc(1, mf), 0);
  EXPECT_EQ(std::string(mf).substr(0, 8) + std::string(mf).substr(12), "22112026" "0000" + std::to_string(gross));
  EXPECT_EQ(value(4), 1);  // reductions made
  EXPECT_EQ(E4IniCP(5, ""), 2561);
}

TEST_F(OnModel, ACouponOpenAtARestartIsReadBackFromTheStateFileAndCancelled) {
  rets({E4ProgOp("ANA 100%"), E4Cons("JOSE DA SILVA", "1", "RUA A, 1"), E4IniCP(2, ""),
        E4IteCF(20, "7%9", "CAFE 500 G", "1,000", "4,00"), E4DesCup(2, "10,00"), E4Close()});
  const std::string saved = read_file(vp_state_path());
  vp_model_reload();                       // the application and the printer's driver start again
  vp_set_condition(VP_COND_PAPER_LOW, 0);  // unchanged, written again
  EXPECT_EQ(read_file(vp_state_path()), saved);
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_EQ(open_doc(), 2);
  EXPECT_EQ(value(20), 360);
  ASSERT_EQ(E4CanCup(), 0);
  holds({"CAFE 500 G", "CUPOM FISCAL CANCELADO"});  // the tape goes on too
  EXPECT_EQ(value(7), 360);
  coupon("4,00");  // and the day goes on
  EXPECT_EQ(vp_ccf(), 2);
  std::remove(vp_state_path());  // without its state file the printer is back in its factory state
  vp_model_reload();
  EXPECT_EQ(vp_coo(), 0);
}

TEST_F(OnModel, PaymentOnOutrosAndTheWalkThatStartsOver) {
  // the payment method found by its name, then remembered
  rets({E4IniCP(2, ""), E4IteCF(20, "1", "LEITE", "2,000", "6,00"), E4RegPag_JP(0, "500"), E4RegPag_JP(0, "700"),
        E4FimCP(0, "")});
  EXPECT_EQ(figures(tape_from("CUPOM FISCAL"), "OUTROS"), (std::vector<std::string>{"5,00", "7,00"}));
  EXPECT_EQ(value(62), 1200);
  const std::vector<Entry> methods{{60, "DINHEIRO", '0'}, {61, "CARTAO", '1'}, {62, "OUTROS", '0'}};
  EXPECT_EQ(walk(5, true, E4RPLe_JP), methods);
  EXPECT_EQ(walk(5, false, E4RPLe_JP), methods);  // then it starts over
}

}  // namespace
