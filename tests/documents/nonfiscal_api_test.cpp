// Non-fiscal coupons: operations, opening (E4IniCP 19) and closing (E4FimCP).
#include <cstdio>
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Bytes = std::vector<std::uint8_t>;

// The input of the last `cmd` after its two sequence bytes.
Bytes payload(int cmd) {
  Bytes in = last_input(cmd);
  return in.size() < 2 ? Bytes{} : Bytes(in.begin() + 2, in.end());
}

Bytes cat(std::initializer_list<Bytes> parts) {
  Bytes out;
  for (const auto& p : parts) out.insert(out.end(), p.begin(), p.end());
  return out;
}

Bytes text(const std::string& s) { return cat({Bytes(s.begin(), s.end()), Bytes{0}}); }

using NonFiscal = Session;

}  // namespace

TEST_F(NonFiscal, OperationOnlyOnRegisters40To54) {
  EXPECT_EQ(E4OpeCNF(39, "+", "Sangria", "10,00"), 2049);
  EXPECT_EQ(E4OpeCNF(55, "+", "Sangria", "10,00"), 2049);
  EXPECT_EQ(vp_count_cmd(159), 0);
  EXPECT_FALSE(file_exists("EcfZandor.cpm"));
  EXPECT_TRUE(logged("E4OpeCNF5600 - Registrador invalido "));

  EXPECT_EQ(E4OpeCNF(40, "+", "Suprimento", "12,5"), 0);
  EXPECT_EQ(payload(159), cat({Bytes{40, 0}, text("12,50")}));
  EXPECT_EQ(E4OpeCNF(54, nullptr, nullptr, "3"), 0);
  EXPECT_EQ(payload(159), cat({Bytes{54, 0}, text("3,00")}));
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CNF");
}

TEST_F(NonFiscal, RefusedOperationStillRecordsTheType) {
  push(159, 1);
  EXPECT_EQ(E4OpeCNF(41, "", "", "1,00"), 2561);
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CNF");
}

TEST_F(NonFiscal, OpeningCarriesInformationAndConsumerOnce) {
  EXPECT_EQ(E4IniCP(19, ""), 0);
  EXPECT_EQ(last_input(157).size(), 7u);
  EXPECT_EQ(payload(157), (Bytes{0, 0, 0, 0, 0}));

  EXPECT_EQ(E4IniCP(19, std::string(100, 'x').c_str()), 0);
  EXPECT_EQ(payload(157), cat({Bytes{0, 0, 0, 0}, text(std::string(84, 'x'))}));

  ASSERT_EQ(E4Cons("Ana", "123", "Rua A"), 0);
  EXPECT_EQ(E4IniCP(19, "Info"), 0);
  EXPECT_EQ(payload(157), cat({Bytes{0}, text("Ana"), text("123"), text("Rua A"), text("Info")}));
  EXPECT_EQ(E4IniCP(19, "Info"), 0);
  EXPECT_EQ(payload(157), cat({Bytes{0, 0, 0, 0}, text("Info")}));
}

TEST_F(NonFiscal, ClosingSendsOperatorAndCutsOnlyWhenAccepted) {
  stick(6, 0, {21, 0});
  ASSERT_EQ(E4ProgOp("Operadora de caixa numero 1"), 0);
  EXPECT_EQ(E4FimCP(0, "Volte sempre"), 0);
  EXPECT_EQ(commands(), (std::vector<int>{6, 130, 158, 224}));
  EXPECT_EQ(payload(158), cat({Bytes{5}, text("Operadora de caixa n")}));

  vp_clear_calls();
  std::remove("NomeOper.cfg");
  push(158, 1);
  EXPECT_EQ(E4FimCP(0, nullptr), 2561);
  EXPECT_EQ(payload(158), (Bytes{5, 0}));
  EXPECT_EQ(vp_count_cmd(224), 0);
  EXPECT_TRUE(logged("Finaliza_Cupom_Nao_Fiscal5600 - fim com ret=2561 "));
}
