// Internal helpers: the general register read, daily sales sums, the free register search, journal date helpers.
#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

#include "orbelan.h"
#include "registers/dates.h"
#include "registers/partials.h"
#include "registers/totals.h"
#include "registers/values.h"
#include "support/fixture.h"

using namespace orbtest;
using namespace orbelan;

namespace {

// One general register read, rendered "ret:value" (the value starts as "old").
std::string rd(int cmd, int reg, int verifica = 0, std::size_t tam = kTamValorRegistrador) {
  char v[30] = "old";
  const std::uint16_t ret = Executa_Leitura_Registrador_Geral(cmd, reg, v, verifica, tam);
  return std::to_string(ret) + ":" + v;
}

TEST_F(Session, GeneralReadAndItsProgrammedCheck) {
  reply(133, "1234567890123456789012345678");
  EXPECT_EQ(rd(133, 1, 0, 8), "0:1234567");
  EXPECT_EQ(operations()[0].flag, 1);
  // With the check, only a listed register is read; the reply's last byte is no part of the list.
  vp_clear_calls();
  push(37, 0, {2, 20, 22, 24, 0});
  reply(133, "4711");
  EXPECT_EQ(rd(133, 22, 1), "0:4711");
  EXPECT_EQ(commands(), (Cmds{37, 133}));
  for (const Bytes& list : {Bytes{2, 20, 21, 0}, Bytes{2, 20, 22}, Bytes{2, 0, 0}}) {
    push(37, 0, list);
    EXPECT_EQ(rd(133, 22, 1), "0:" + std::string(16, '0'));
  }
  push(37, 22);  // a failed list read is the result
  EXPECT_EQ(rd(133, 40, 1).substr(0, 5), "2582:");
  EXPECT_EQ(vp_count_cmd(133), 1);
  EXPECT_EQ(payloads(37), (std::vector<Bytes>{{2}, {2}, {2}, {2}, {1}}));
}

using Regs = std::vector<int>;
Regs range(int from, int to) {
  Regs r;
  for (int i = from; i <= to; ++i) r.push_back(i);
  return r;
}
Regs operator+(Regs a, const Regs& b) { a.insert(a.end(), b.begin(), b.end()); return a; }
long sum(const Regs& regs) { return std::accumulate(regs.begin(), regs.end(), 0L); }
std::string digits18(long n) { return "0:" + std::string(18 - std::to_string(n).size(), '0') + std::to_string(n); }
// The reads of the gross sales and the deductions of the net sales, in order.
const Regs kBruta = Regs{8, 134, 7, 11, 12, 13} + range(20, 34) + range(36, 39) + range(100, 114) + Regs{135};
const Regs kDeducoes = Regs{7, 8} + range(36, 39) + range(100, 110) + Regs{114, 134};

// Each read answers its register's number; the read at `falha` fails with code 1 (those it skips are unscripted).
void script(const Regs& regs, std::size_t falha = SIZE_MAX) {
  vp_clear_calls();
  for (std::size_t i = 0; i < regs.size(); ++i)
    push(133, i == falha ? 1 : 0, bytes_with(30, 1, i == falha ? "" : std::to_string(regs[i])));
}
Regs read() {
  Regs out;
  for (const auto& c : operations())
    if (c.cmd == 133) out.push_back(input(c)[2]);
  return out;
}
std::string sales(std::uint16_t (*f)(int, char*), int verifica = 0) {
  char v[19] = "old";
  const std::uint16_t ret = f(verifica, v);
  return std::to_string(ret) + ":" + v;
}

TEST_F(Session, DailySalesOverEveryRegisterMaskingFailedLoopsUnlessTheyEndIt) {
  script(kBruta + kBruta + kDeducoes);
  EXPECT_EQ(sales(Calcular_Venda_Bruta_Diaria), digits18(sum(kBruta)));
  // What stays of the net: the tax rates on goods, 11..13, 111..113 and 135.
  EXPECT_EQ(sales(Calcular_Venda_Liquida_Diaria),
            digits18(sum(Regs{11, 12, 13} + range(20, 34) + range(111, 113)) + 135));
  EXPECT_EQ(read(), kBruta + kBruta + kDeducoes);
  // With the check: 134 and 135 in the list never match, 7 and 8 are read unchecked.
  stick(37, 0, {2, 20, 36, 100, 111, 112, 113, 114, 134, 135, 0});
  const Regs lidos{8, 7, 11, 12, 13, 20, 36, 100, 111, 112, 113, 114};
  script(lidos);
  EXPECT_EQ(sales(Calcular_Venda_Bruta_Diaria, 1), digits18(sum(lidos)));
  EXPECT_EQ(read(), lidos);
  char valor[19];  // a computed value is never negative
  Escreve_Soma(-5, valor);
  EXPECT_EQ(std::string(valor), std::string(18, '0'));
  // 22 fails: 23..34 are never read and the service registers follow.
  const Regs bruta = Regs{8, 134, 7, 11, 12, 13, 20, 21, 22} + range(36, 39) + range(100, 114) + Regs{135};
  script(bruta, 8);
  EXPECT_EQ(sales(Calcular_Venda_Bruta_Diaria), digits18(sum(bruta) - 22));
  // The net sales: 37 fails, 38 and 39 are skipped, 114 is read regardless.
  const Regs deducoes = Regs{7, 8, 36, 37} + range(100, 110) + Regs{114, 134};
  script(kBruta + deducoes, kBruta.size() + 3);
  EXPECT_EQ(sales(Calcular_Venda_Liquida_Diaria), digits18(sum(kBruta) + 37 - sum(deducoes)));
  EXPECT_EQ(read(), kBruta + deducoes);
  // A failure among 11..13 or 111..114, or of the net's 8 or 114, is the result.
  for (const Regs& reads : {Regs{8, 134, 7, 11, 12}, Regs(kBruta.begin(), kBruta.end() - 3), kBruta + Regs{7, 8},
                            kBruta + Regs{7, 8} + range(36, 39) + range(100, 110) + Regs{114}}) {
    script(reads, reads.size() - 1);
    EXPECT_EQ(sales(Calcular_Venda_Liquida_Diaria), "2561:");
    EXPECT_EQ(read(), reads);
  }
}

TEST_F(Session, FreeNumberSearch) {
  const Regs r5 = range(60, 78), r6 = range(116, 131);
  const Bytes full5(r5.begin(), r5.end()), full6(r6.begin(), r6.end());
  // Category, the list read's result and list, the result and the number found (132 is never offered).
  using Case = std::tuple<int, int, Bytes, std::uint16_t, int>;
  for (const auto& [tipo, lido, list, ret, want] :
       std::vector<Case>{{5, 0, {20, 40, 60, 61, 63, 116}, 0, 62}, {5, 0, full5, 2582, 0}, {5, 0, {61, 62}, 0, 60},
                         {6, 0, full6, 2582, 0}, {3, 0, {}, 0, 0}, {3, 0, {20, 40}, 2582, 0}, {5, 10, {}, 2570, 0}}) {
    push(38, lido, list);
    std::uint8_t livre = 0xEE;
    EXPECT_EQ(Proximo_Registrador_Livre(tipo, &livre), ret) << tipo << " " << want;
    EXPECT_EQ(livre, want) << tipo;
  }
  EXPECT_EQ(TamListaRegistradores, 0);  // the walk's cache is not touched
}

TEST(Dates, MaskComparisonAndDaysCountedFromTheDayAfter) {
  // Any punctuation or white space matches; "?" anything; a text shorter than the mask does not.
  using Texts = std::tuple<const char*, const char*, int>;
  for (const auto& [text, mask, want] : {Texts{"12/03/2024 and more", "NN/NN/NNNN", 1}, {"12-03.2024", "NN/NN/NNNN", 1},
                                         {"12/03/202", "NN/NN/NNNN", 0}, {"1a/03/2024", "NN/NN/NNNN", 0},
                                         {"12\t3x", "NN N?", 1}, {"12x34", "NN NN", 0}, {nullptr, "N", 0}})
    EXPECT_EQ(comparaComMascara(text, mask), want) << (text ? text : "NULL");
  for (const auto& [a, b, want] : {Texts{"10/03/2024", "10032024", 0}, {"11032024", "10/03/2024", 1},
                                   {"31122024", "01012025", 2}, {nullptr, "01012000", 2}})
    EXPECT_EQ(timeCompare(a, b), want) << b;
  // Leap years, and days past the month's end carried over as a calendar does.
  for (const auto& [data, dias, subtrai, want] :
       {std::tuple{"10032024", 0, 0, "11032024"}, {"10032024", 20, 1, "20022024"}, {"31122023", 0, 0, "01012024"},
        {"15012024", 1800, 1, "11022019"}, {"31022024", 0, 0, "03032024"}}) {
    std::array<char, 9> out{};
    timeMinusPlus(data, dias, subtrai, out);
    EXPECT_STREQ(out.data(), want) << data;
  }
}

TEST_F(Session, DateSearchGivesUpAfterEighteenHundredDays) {
  push(10, 0, bytes_with(40, 25, "15032024"));
  push(133, 0, bytes_with(8, 1, "000500"));
  for (int i = 0; i < 180; ++i) {
    push(194, 0, bytes_with(60, 2, "0001 001 000100  12/03/2024 22:00:00\r\n\r\n"));
    push(194, 0, {0, 0, 0xCF, 0xDE, 0xB3, 0xD1});
    push(194, 0);
  }
  std::array<char, 7> cooi{'x'}, coof{'y'};
  EXPECT_EQ(pegaCOOEntreDatas("10032024", "15032024", cooi.data(), coof.data()), 2);
  EXPECT_EQ(vp_count_cmd(194), 180 * 3);
  const auto last = operations()[operations().size() - 3];  // the last reading's first packet
  EXPECT_EQ(std::string(last.in + 2, last.in + 10), "07042019");
  EXPECT_EQ(std::string(cooi.data()) + coof.data(), "xy");
  EXPECT_FALSE(file_exists("espelho.log") || file_exists("datas.log"));
}

}  // namespace
