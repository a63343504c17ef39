// A day's roads with nothing scripted: a whole day, as the demo runs it, then
// the Z reduction's tape, the reduction record and the fiscal memory checked
// against the sales made; a day that goes on after the application stopped in
// the middle of a coupon; payments found by name and the walk that starts over.
#include <cmath>
#include <cstdio>
#include <map>

#include "e2e/model.h"

using namespace e2e;

namespace {

// The record's entry for `label`: its value and tax figures (tax 0 if none).
std::pair<long long, long long> entry(const std::string& record, const std::string& label) {
  std::istringstream in(record);
  for (std::string e; std::getline(in, e, ',');)
    if (e.size() >= 28 && e.compare(0, 15, (label + std::string(15, ' ')).substr(0, 15)) == 0)
      return {std::stoll(e.substr(15, 13)), e.size() >= 44 ? std::stoll(e.substr(28, 16)) : 0};
  ADD_FAILURE() << "no entry " << label;
  return {-1, -1};
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
  ASSERT_EQ(E4IniCP(17, "61"), 0);
  ASSERT_EQ(E4Print("VIA DO CLIENTE"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  ASSERT_EQ(E4IniCP(19, ""), 0);
  ASSERT_EQ(E4OpeCNF(41, "+", "SUPRIMENTO", "100,00"), 0);
  ASSERT_EQ(E4RegPag(60, "100,00"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  ASSERT_EQ(E4IniCP(20, "1"), 0);
  ASSERT_EQ(E4Print("CONFERENCIA DO CAIXA"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  ASSERT_EQ(E4IniCP(4, ""), 0);
  ASSERT_EQ(E4IniCP(5, ""), 0);
  EXPECT_EQ(value(3), 6);  // coupon, voucher, supply, report, X, Z

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
  ASSERT_FALSE(saved.empty());
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

std::string step(unsigned short (*read)(unsigned char, char*, char*, unsigned char*)) {
  char compl_[100] = "", sinal = 0;
  unsigned char rp = 0;
  const unsigned short ret = read(5, compl_, &sinal, &rp);
  return ret != 0 ? std::to_string(ret) : std::to_string(rp) + ":" + compl_ + ":" + std::string(1, sinal);
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
  ASSERT_EQ(E4RPPrim(5), 0);
  std::vector<std::string> cycled;
  for (int i = 0; i < 7; ++i) cycled.push_back(step(E4RPLe_JP));
  EXPECT_EQ(cycled, (std::vector<std::string>{"60:DINHEIRO:0", "61:CARTAO:1", "62:OUTROS:0", "2867", "60:DINHEIRO:0",
                                              "61:CARTAO:1", "62:OUTROS:0"}));
}

}  // namespace
