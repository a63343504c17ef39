// General register reads: the read command, the bounded text and the check
// that the register is programmed.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "registers/values.h"
#include "support/fixture.h"

using namespace orbtest;
using orbelan::Executa_Leitura_Registrador_Geral;

namespace {

using RegisterRead = Session;

TEST_F(RegisterRead, SendsTheRegisterAndCopiesTheBoundedText) {
  reply(134, "000123");
  char valor[19] = "old";
  EXPECT_EQ(Executa_Leitura_Registrador_Geral(134, 3, valor, 0), 0);
  EXPECT_STREQ(valor, "000123");
  EXPECT_EQ(payloads(134), std::vector<Bytes>{{3}});
  EXPECT_EQ(operations()[0].flag, 1);

  reply(133, "1234567890123456789012345678");
  EXPECT_EQ(Executa_Leitura_Registrador_Geral(133, 1, valor, 0, 8), 0);
  EXPECT_STREQ(valor, "1234567");
  reply(133, "999", 22);
  EXPECT_EQ(Executa_Leitura_Registrador_Geral(133, 3, valor, 0), 2582);
  EXPECT_STREQ(valor, "");
}

TEST_F(RegisterRead, ProgrammedCheckReadsOnlyListedRegisters) {
  char valor[19] = "";
  push(37, 0, {2, 20, 22, 24, 0});
  reply(133, "4711");
  EXPECT_EQ(Executa_Leitura_Registrador_Geral(133, 22, valor, 1), 0);
  EXPECT_STREQ(valor, "4711");
  EXPECT_EQ(commands(), (Cmds{37, 133}));

  vp_clear_calls();
  push(37, 0, {2, 20, 21, 0});   // not listed
  push(37, 0, {2, 20, 22});      // the last reply byte is not part of the list
  push(37, 0, {2, 0, 0});        // empty list
  push(37, 0, {4, 36, 134, 0});  // 128 and above never match
  for (int reg : {22, 22, 22, 134}) {
    EXPECT_EQ(Executa_Leitura_Registrador_Geral(133, reg, valor, 1), 0);
    EXPECT_EQ(valor, std::string(16, '0'));
  }
  // A reply too short to scan leaves the register readable; a failed list
  // is returned.
  push(37, 0, {5, 60});
  EXPECT_EQ(Executa_Leitura_Registrador_Geral(133, 61, valor, 1), 0);
  EXPECT_EQ(vp_count_cmd(133), 1);
  push(37, 22);
  EXPECT_EQ(Executa_Leitura_Registrador_Geral(133, 40, valor, 1), 2582);
  EXPECT_EQ(vp_count_cmd(133), 1);

  // The list asked for is the register's category; unprogrammable numbers
  // are read unchecked.
  vp_clear_calls();
  stick(37, 0, {0, 0, 0});
  for (int reg : {20, 34, 36, 40, 54, 60, 78, 100, 135, 3, 35, 55, 79, 115, 136})
    Executa_Leitura_Registrador_Geral(133, reg, valor, 1);
  EXPECT_EQ(payloads(37), (std::vector<Bytes>{{2}, {2}, {4}, {1}, {1}, {5}, {5}, {4}, {4}}));
  EXPECT_EQ(vp_count_cmd(133), 6);
}

}  // namespace
