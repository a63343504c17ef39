// The gross and net sales of the day, summed over the general registers.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "registers/totals.h"
#include "registers/values.h"
#include "support/fixture.h"

using namespace orbtest;
using orbelan::Calcular_Venda_Bruta_Diaria;
using orbelan::Calcular_Venda_Liquida_Diaria;

namespace {

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
std::string digits18(long v) {
  const std::string s = std::to_string(v);
  return std::string(18 - s.size(), '0') + s;
}

// The reads of the gross sales and the deductions of the net sales, in order.
const Regs kBruta = Regs{8, 134, 7, 11, 12, 13} + range(20, 34) + range(36, 39) + range(100, 114) + Regs{135};
const Regs kDeducoes = Regs{7, 8} + range(36, 39) + range(100, 110) + Regs{114, 134};

// Each read answers its register's number as value; the read at position
// `falha` fails with driver code 1 (the reads it skips are not scripted).
void script(const Regs& regs, std::size_t falha = SIZE_MAX) {
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

using DailySales = Session;

TEST_F(DailySales, GrossAndNetOverEveryRegister) {
  char valor[19] = "";
  script(kBruta + kBruta + kDeducoes);
  EXPECT_EQ(Calcular_Venda_Bruta_Diaria(0, valor), 0);
  EXPECT_EQ(valor, digits18(sum(kBruta)));
  EXPECT_TRUE(logged("Calcular_Venda_Bruta_Diaria5600 - ret=0  20+i3- 23"));
  EXPECT_EQ(Calcular_Venda_Liquida_Diaria(0, valor), 0);
  EXPECT_EQ(read(), kBruta + kBruta + kDeducoes);
  // What stays: the tax rates on goods, 11..13, 111..113 and 135.
  EXPECT_EQ(valor, digits18(sum(Regs{11, 12, 13} + range(20, 34) + Regs{111, 112, 113, 135})));
}

TEST_F(DailySales, FailedLoopsAreMaskedUnlessTheyEndTheCalculation) {
  char valor[19] = "";
  // 22 fails: 23..34 are never read and the service registers follow.
  const Regs bruta = Regs{8, 134, 7, 11, 12, 13, 20, 21, 22} + range(36, 39) + range(100, 114) + Regs{135};
  script(bruta, 8);
  EXPECT_EQ(Calcular_Venda_Bruta_Diaria(0, valor), 0);
  EXPECT_EQ(valor, digits18(sum(bruta) - 22));
  // The net sales: 37 fails, 38 and 39 are skipped, 114 is read regardless.
  const Regs deducoes = Regs{7, 8, 36, 37} + range(100, 110) + Regs{114, 134};
  vp_clear_calls();
  script(kBruta + deducoes, kBruta.size() + 3);
  EXPECT_EQ(Calcular_Venda_Liquida_Diaria(0, valor), 0);
  EXPECT_EQ(read(), kBruta + deducoes);
  EXPECT_EQ(valor, digits18(sum(kBruta) - sum(deducoes) + 37));

  // A failure among 11..13 or 111..114, or of the net's 8 or 114, is the result.
  for (const Regs& reads : {Regs{8, 134, 7, 11, 12}, Regs(kBruta.begin(), kBruta.end() - 3), kBruta + Regs{7, 8},
                            kBruta + Regs{7, 8} + range(36, 39) + range(100, 110) + Regs{114}}) {
    vp_clear_calls();
    script(reads, reads.size() - 1);
    std::strcpy(valor, "old");
    EXPECT_EQ(Calcular_Venda_Liquida_Diaria(0, valor), 2561);
    EXPECT_STREQ(valor, "");
    EXPECT_EQ(read(), reads);
  }
}

TEST_F(DailySales, ProgrammedCheckSkipsUnprogrammedAndHighRegisters) {
  // One list answers every category: 20, 36, 100 and 111..114 are programmed;
  // 134 and 135 in the list never match.
  stick(37, 0, {2, 20, 36, 100, 111, 112, 113, 114, 134, 135, 0});
  const Regs lidos{8, 7, 11, 12, 13, 20, 36, 100, 111, 112, 113, 114};
  script(lidos);
  char valor[19] = "";
  EXPECT_EQ(Calcular_Venda_Bruta_Diaria(1, valor), 0);
  EXPECT_EQ(read(), lidos);
  EXPECT_EQ(valor, digits18(sum(lidos)));
  EXPECT_TRUE(logged("Calcular_Venda_Bruta_Diaria5600 - ret=0  134- 0000000000000000"));
}

TEST(ComputedValue, NeverNegativeAndNeverWrapped) {
  char valor[19];
  orbelan::Escreve_Soma(-5, valor);
  EXPECT_EQ(std::string(valor), std::string(18, '0'));
  orbelan::Escreve_Soma(12345678901LL, valor);
  EXPECT_STREQ(valor, "000000012345678901");
}

}  // namespace
