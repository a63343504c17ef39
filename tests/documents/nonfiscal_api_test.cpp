// Non-fiscal coupons: operations, opening (E4IniCP 19) and closing (E4FimCP).
#include <cstdio>
#include <string>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

using NonFiscal = Session;

TEST_F(NonFiscal, OperationOnlyOnRegisters40To54) {
  EXPECT_EQ(E4OpeCNF(39, "+", "Sangria", "10,00"), 2049);
  EXPECT_EQ(E4OpeCNF(55, "+", "Sangria", "10,00"), 2049);
  EXPECT_EQ(vp_count_cmd(159), 0);
  EXPECT_FALSE(file_exists("EcfZandor.cpm"));

  EXPECT_EQ(E4OpeCNF(40, "+", "Suprimento", "12,5"), 0);
  EXPECT_EQ(payload(159), (Bytes{40, 0} + texts({"12,50"})));
  EXPECT_EQ(E4OpeCNF(54, nullptr, nullptr, "3"), 0);
  EXPECT_EQ(payload(159), (Bytes{54, 0} + texts({"3,00"})));
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CNF");
  // A refused operation still records the type.
  std::remove("EcfZandor.cpm");
  push(159, 1);
  EXPECT_EQ(E4OpeCNF(41, "", "", "1,00"), 2561);
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CNF");
}

TEST_F(NonFiscal, OpeningCarriesInformationAndConsumerOnce) {
  write_file("EcfAcresItens.cpf", "000041 0011.00\r\n");
  stick(133, 0, bytes_with(10, 1, "000124"));
  EXPECT_EQ(E4IniCP(19, std::string(100, 'x').c_str()), 0);
  EXPECT_EQ(payload(157), (Bytes{0, 0, 0, 0} + texts({std::string(84, 'x')})));
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000124#");
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "\nCNF000124");
  EXPECT_EQ(read_file("EcfAcresItens.cpf"), "000041 0011.00\r\n");  // fiscal coupons only
  ASSERT_EQ(E4Cons("Ana", "123", "Rua A"), 0);
  EXPECT_EQ(E4IniCP(19, "Info"), 0);
  EXPECT_EQ(payload(157), Bytes{0} + texts({"Ana", "123", "Rua A", "Info"}));
  EXPECT_EQ(E4IniCP(19, "Info"), 0);
  EXPECT_EQ(payload(157), (Bytes{0, 0, 0, 0} + texts({"Info"})));
}

TEST_F(NonFiscal, ClosingSendsOperatorAndCutsOnlyWhenAccepted) {
  state(21);
  ASSERT_EQ(E4ProgOp("Operadora de caixa numero 1"), 0);
  EXPECT_EQ(E4FimCP(0, "Volte sempre"), 0);
  EXPECT_EQ(commands(), (Cmds{6, 130, 158, 224}));
  EXPECT_EQ(payload(158), Bytes{5} + texts({"Operadora de caixa n"}));

  vp_clear_calls();
  std::remove("NomeOper.cfg");
  push(158, 1);
  EXPECT_EQ(E4FimCP(0, nullptr), 2561);
  EXPECT_EQ(payload(158), (Bytes{5, 0}));
  EXPECT_EQ(vp_count_cmd(224), 0);
}
