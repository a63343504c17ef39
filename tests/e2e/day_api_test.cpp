// A whole day, as the demo runs it, then the Z reduction's tape, the
// reduction record and the fiscal memory checked against the sales made.
#include <cmath>
#include <map>
#include <sstream>

#include "e2e/model.h"

using namespace e2e;

namespace {

struct Item {
  unsigned char rp;
  const char *qty, *price;
  long long cents;  // quantity x price
};
const Item kItems[] = {{20, "2,000", "22,90", 4580}, {22, "1,000", "8,49", 849},
                       {13, "3,000", "2,15", 645}, {20, "0,750", "10,00", 750}};
const std::map<int, std::pair<std::string, int>> kRates = {  // label, hundredths of a percent
    {20, {"T18,00%", 1800}}, {22, {"T07,00%", 700}}, {13, {"N1", 0}}};

// The record's entry for `label`: its value and tax figures (tax empty if none).
std::pair<long long, long long> entry(const std::string& record, const std::string& label) {
  std::istringstream in(record);
  for (std::string e; std::getline(in, e, ',');) {
    if (e.size() < 28 || e.compare(0, 15, (label + std::string(15, ' ')).substr(0, 15)) != 0) continue;
    return {std::stoll(e.substr(15, 13)), e.size() >= 44 ? std::stoll(e.substr(28, 16)) : 0};
  }
  ADD_FAILURE() << "no entry " << label;
  return {-1, -1};
}

// The two figures of a tape line (accumulated value and tax of a rate).
std::pair<std::string, std::string> rate_line(const std::vector<std::string>& tape,
                                              const std::string& label) {
  for (const auto& l : tape) {
    if (l.rfind(label + " ", 0) != 0) continue;
    std::istringstream in(l.substr(label.size()));
    std::string a, b;
    in >> a >> b;
    return b.empty() ? std::pair{std::string(), a} : std::pair{a, b};
  }
  return {};
}

TEST_F(OnModel, TheReductionAddsUpTheDaysSales) {
  ASSERT_EQ(E4ProgOp("MARIA"), 0);
  ASSERT_EQ(E4Cons("JOAO DA SILVA", "123.456.789-09", "RUA DAS PALMEIRAS, 12"), 0);
  ASSERT_EQ(E4IniCP(2, ""), 0);
  long long gross = 0;
  std::map<int, long long> by_rate;
  for (const Item& it : kItems) {
    ASSERT_EQ(E4IteCF(it.rp, "789", "PRODUTO", it.qty, it.price), 0);
    gross += it.cents;
    by_rate[it.rp] += it.cents;
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
  const long long coo = value(3);
  EXPECT_EQ(coo, 6);  // coupon, voucher, supply, report, X, Z

  std::vector<char> buf(2300, '\0');
  ASSERT_EQ(E4DadosReducao(buf.data()), 0);
  const std::string record(buf.data());
  const auto z = tape_from("REDUCAO Z");
  ASSERT_FALSE(z.empty());
  EXPECT_EQ(figure(z, "MOVIMENTO DO DIA"), "09/03/2026");
  EXPECT_EQ(figure(z, "VENDA BRUTA DIARIA"), money(gross));
  EXPECT_EQ(figure(z, "DESCONTOS ICMS"), money(discount));
  EXPECT_EQ(figure(z, "VENDA LIQUIDA"), money(net));
  EXPECT_EQ(figure(z, "GRANDE TOTAL"), money(gross));
  EXPECT_EQ(figure(z, "CRZ"), "0001");
  EXPECT_EQ(figure(z, "COO FINAL"), "00000" + std::to_string(coo));
  EXPECT_EQ(entry(record, "DT").first, discount);

  // Each rate keeps its sales less its share of the discount, and its tax is
  // that base at the rate, rounded; the tape and the record agree.
  long long bases = 0;
  for (const auto& [rp, rate] : kRates) {
    SCOPED_TRACE(rate.first);
    const auto [base, tax] = entry(record, rp == 20 ? "01T1800" : rp == 22 ? "03T0700" : "N1");
    EXPECT_LE(base, by_rate[rp]);
    EXPECT_GE(base, by_rate[rp] - discount);
    EXPECT_EQ(tax, std::llround(static_cast<double>(base) * rate.second / 10000.0));
    const auto [printed_base, printed_tax] = rate_line(z, rate.first);
    if (rate.second != 0) {
      EXPECT_EQ(printed_base, money(base));
    }
    EXPECT_EQ(printed_tax, money(rate.second != 0 ? tax : base));
    bases += base;
  }
  EXPECT_EQ(bases, net);

  // Payments: the change comes out of the cash.
  EXPECT_EQ(figure(z, "CARTAO"), money(card));
  EXPECT_EQ(figure(z, "TROCO"), money(card + cash - net));
  EXPECT_EQ(figure(z, "DINHEIRO"), money(net - card));
  EXPECT_EQ(figure(z, "SUPRIMENTO"), money(10000));
  EXPECT_EQ(entry(record, "SUPRIMENTO").first, 10000);

  // The fiscal memory keeps the day's date and its gross sales.
  std::array<char, 21> mf{};
  ASSERT_EQ(E4RegMemFisc(1, mf.data()), 0);
  EXPECT_EQ(std::string(mf.data()).substr(0, 8), "09032026");
  EXPECT_EQ(std::stoll(std::string(mf.data()).substr(12)), gross);
  EXPECT_EQ(value(4), 1);  // reductions made
  EXPECT_EQ(E4IniCP(5, ""), 2561);
}

}  // namespace
