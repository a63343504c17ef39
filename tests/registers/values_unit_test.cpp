// Internal register helpers: the general register read, the day's sales sums,
// the first free partial register, and the date helpers of the journal readings
// with the bound of the date-to-COO search.
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
  // With the check, only a register in its category's list is read; the last
  // reply byte is not part of the list and 128 and above never match.
  vp_clear_calls();
  push(37, 0, {2, 20, 22, 24, 0});
  reply(133, "4711");
  EXPECT_EQ(rd(133, 22, 1), "0:4711");
  EXPECT_EQ(commands(), (Cmds{37, 133}));
  for (const auto& [list, reg] : {std::pair{Bytes{2, 20, 21, 0}, 22},
                                  {Bytes{2, 20, 22}, 22},
                                  {Bytes{2, 0, 0}, 22},
                                  {Bytes{4, 36, 134, 0}, 134}}) {
    push(37, 0, list);
    EXPECT_EQ(rd(133, reg, 1), "0:" + std::string(16, '0')) << reg;
  }
  // A reply too short to scan leaves the register readable; a failed list is returned.
  push(37, 0, {5, 60});
  rd(133, 61, 1);
  push(37, 22);
  EXPECT_EQ(rd(133, 40, 1).substr(0, 5), "2582:");
  EXPECT_EQ(vp_count_cmd(133), 2);
  EXPECT_EQ(payloads(37), (std::vector<Bytes>{{2}, {2}, {2}, {2}, {4}, {5}, {1}}));
}

using Regs = std::vector<int>;
Regs range(int from, int to) {
  Regs r(static_cast<std::size_t>(to - from + 1));
  std::iota(r.begin(), r.end(), from);
  return r;
}
Regs operator+(Regs a, const Regs& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}
long sum(const Regs& regs) { return std::accumulate(regs.begin(), regs.end(), 0L); }
std::string digits18(long n) {
  const std::string s = std::to_string(n);
  return "0:" + std::string(18 - s.size(), '0') + s;
}
// The reads of the gross sales and the deductions of the net sales, in order.
const Regs kBruta = Regs{8, 134, 7, 11, 12, 13} + range(20, 34) + range(36, 39) + range(100, 114) + Regs{135};
const Regs kDeducoes = Regs{7, 8} + range(36, 39) + range(100, 110) + Regs{114, 134};

// Each read answers its register's number as value; the read at position
// `falha` fails with driver code 1 (the reads it skips are not scripted).
void script(const Regs& regs, std::size_t falha = SIZE_MAX) {
  vp_clear_calls();
  for (std::size_t i = 0; i < regs.size(); ++i)
    push(133, i == falha ? 1 : 0, bytes_with(30, 1, i == falha ? "" : std::to_string(regs[i])));
}
// The registers read with command 133, in order.
Regs read() {
  Regs out;
  for (const auto& c : operations())
    if (c.cmd == 133) out.push_back(input(c)[2]);
  return out;
}
// A sales figure, rendered "ret:value".
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
  Bytes full5(19), full6(16);
  std::iota(full5.begin(), full5.end(), 60);
  std::iota(full6.begin(), full6.end(), 116);
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

std::string minus_plus(const char* data, int dias, int subtrai) {
  std::array<char, 9> out{};
  timeMinusPlus(data, dias, subtrai, out);
  return out.data();
}

TEST(Dates, MaskComparisonAndDaysCountedFromTheDayAfter) {
  EXPECT_EQ(comparaComMascara("12/03/2024 and more", "NN/NN/NNNN"), 1);
  EXPECT_EQ(comparaComMascara("12-03.2024", "NN/NN/NNNN"), 1);  // any punctuation
  EXPECT_EQ(comparaComMascara("12/03/202", "NN/NN/NNNN"), 0);   // shorter than the mask
  EXPECT_EQ(comparaComMascara("1a/03/2024", "NN/NN/NNNN"), 0);
  EXPECT_EQ(comparaComMascara("12\t3x", "NN N?"), 1);  // any white space; "?" anything
  EXPECT_EQ(comparaComMascara("12x34", "NN NN"), 0);
  EXPECT_EQ(comparaComMascara(nullptr, "N"), 0);
  EXPECT_EQ(timeCompare("10/03/2024", "10032024"), 0);
  EXPECT_EQ(timeCompare("11032024", "10/03/2024"), 1);
  EXPECT_EQ(timeCompare("31122024", "01012025"), 2);
  EXPECT_EQ(timeCompare(nullptr, "01012000"), 2);
  EXPECT_EQ(minus_plus("10032024", 0, 0), "11032024");
  EXPECT_EQ(minus_plus("10032024", 20, 1), "20022024");  // leap year
  EXPECT_EQ(minus_plus("31122023", 0, 0), "01012024");
  EXPECT_EQ(minus_plus("15012024", 1800, 1), "11022019");
  EXPECT_EQ(minus_plus("31022024", 0, 0), "03032024");  // carried over as a calendar does
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
