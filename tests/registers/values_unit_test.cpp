// General register reads: the read command, the programmed check and the
// register number switch.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "registers/values.h"
#include "support/fixture.h"

using namespace orbtest;
using orbelan::Executa_Leitura_Registrador_Geral;
using orbelan::Ler_Valor_Atual_Reg_Fiscal;

namespace {

using Bytes = std::vector<std::uint8_t>;

// The parameters of every `cmd` sent, after the two sequence bytes.
std::vector<Bytes> sent(int cmd) {
  std::vector<Bytes> out;
  for (const auto& c : operations())
    if (c.cmd == cmd) {
      const Bytes in = input(c);
      out.emplace_back(in.begin() + 2, in.end());
    }
  return out;
}

// A register reply: the value text from byte 1.
void reply(int cmd, const std::string& value, int result = 0) { push(cmd, result, bytes_with(30, 1, value)); }

using RegisterRead = Session;

TEST_F(RegisterRead, SendsTheRegisterAndCopiesTheBoundedText) {
  reply(134, "000123");
  char valor[19] = "old";
  EXPECT_EQ(Executa_Leitura_Registrador_Geral(134, 3, valor, 0), 0);
  EXPECT_STREQ(valor, "000123");
  EXPECT_EQ(sent(134), std::vector<Bytes>{{3}});
  EXPECT_EQ(operations()[0].flag, 1);
  EXPECT_TRUE(logged("Executa_Leitura_Registrador_Geral5600 - fim com ret=0 Valor=000123 "));

  reply(133, "1234567890123456789012345678");
  EXPECT_EQ(Executa_Leitura_Registrador_Geral(133, 1, valor, 0, 8), 0);
  EXPECT_STREQ(valor, "1234567");
  reply(133, "999", 22);
  EXPECT_EQ(Executa_Leitura_Registrador_Geral(133, 3, valor, 0), 2582);
  EXPECT_STREQ(valor, "");
}

TEST_F(RegisterRead, ProgrammedCheckReadsOnlyListedRegisters) {
  const std::string zeros(16, '0');
  char valor[19] = "";
  push(37, 0, {2, 20, 22, 24, 0});
  reply(133, "4711");
  EXPECT_EQ(Executa_Leitura_Registrador_Geral(133, 22, valor, 1), 0);
  EXPECT_STREQ(valor, "4711");
  EXPECT_EQ(commands(), (std::vector<int>{37, 133}));
  EXPECT_EQ(sent(37), std::vector<Bytes>{{2}});

  vp_clear_calls();
  push(37, 0, {2, 20, 21, 0});  // not listed
  push(37, 0, {2, 20, 22});     // the last reply byte is not part of the list
  push(37, 0, {2, 0, 0});       // empty list
  push(37, 0, {4, 36, 134, 0}); // 128 and above never match
  for (int reg : {22, 22, 22, 134}) {
    EXPECT_EQ(Executa_Leitura_Registrador_Geral(133, reg, valor, 1), 0);
    EXPECT_EQ(valor, zeros);
  }
  // A reply too short to scan leaves the register readable; a failed list
  // is returned.
  push(37, 0, {5, 60});
  EXPECT_EQ(Executa_Leitura_Registrador_Geral(133, 61, valor, 1), 0);
  EXPECT_EQ(vp_count_cmd(133), 1);
  push(37, 22);
  EXPECT_EQ(Executa_Leitura_Registrador_Geral(133, 40, valor, 1), 2582);
  EXPECT_EQ(vp_count_cmd(133), 1);
}

TEST_F(RegisterRead, ProgrammedCheckAsksForTheRegistersCategory) {
  stick(37, 0, {0, 0, 0});
  char valor[19];
  for (int reg : {20, 34, 36, 40, 54, 60, 78, 100, 135, 3, 35, 55, 79, 115, 136})
    Executa_Leitura_Registrador_Geral(133, reg, valor, 1);
  EXPECT_EQ(sent(37), (std::vector<Bytes>{{2}, {2}, {4}, {1}, {1}, {5}, {5}, {4}, {4}}));
  EXPECT_EQ(vp_count_cmd(133), 6);
}

using CurrentValue = Session;

TEST_F(CurrentValue, MapsNumbersAndRefusesUnservedOnes) {
  char valor[19];
  for (int reg : {0, 3, 15, 16, 79, 80, 95, 103, 104, 116, 133}) Ler_Valor_Atual_Reg_Fiscal(reg, valor);
  EXPECT_EQ(sent(133), (std::vector<Bytes>{{0}, {3}, {136}, {16}, {79}, {137}, {80}, {115}, {138}, {116}, {133}}));
  vp_clear_calls();
  for (int reg : {6, 10, 35, 55, 96, 102, 132, 134, 201, -1}) {
    EXPECT_EQ(Ler_Valor_Atual_Reg_Fiscal(reg, valor), 2049) << reg;
    EXPECT_STREQ(valor, "");
  }
  EXPECT_EQ(vp_count_cmd(133), 0);
  EXPECT_TRUE(logged("Ler_Valor_Atual_Reg_Fiscal5600 Registrador invalido: 96 "));
}

TEST_F(CurrentValue, SumsAreEighteenDigitsAndStopAtAFailure) {
  char valor[19] = "";
  reply(133, "100");
  reply(133, "20");
  reply(133, "3");
  EXPECT_EQ(Ler_Valor_Atual_Reg_Fiscal(7, valor), 0);
  EXPECT_STREQ(valor, "000000000000000123");
  EXPECT_EQ(sent(133), (std::vector<Bytes>{{7}, {17}, {114}}));

  vp_clear_calls();
  reply(133, "100");
  reply(133, "", 1);
  EXPECT_EQ(Ler_Valor_Atual_Reg_Fiscal(9, valor), 2561);
  EXPECT_STREQ(valor, "");
  EXPECT_EQ(sent(133), (std::vector<Bytes>{{9}, {135}}));

  // Register 8 stands alone on a printer that lacks register 134.
  reply(133, "250");
  reply(133, "", 22);
  EXPECT_EQ(Ler_Valor_Atual_Reg_Fiscal(8, valor), 0);
  EXPECT_STREQ(valor, "000000000000000250");
}

TEST_F(CurrentValue, JournalFiguresComeFromItsDetailsAndTheReductionCount) {
  char valor[19] = "";
  Bytes detalhes(30, 0);
  for (std::size_t i = 0; i < 4; ++i) detalhes[9 + i] = static_cast<std::uint8_t>("2500"[i]);
  push(14, 0, detalhes);
  EXPECT_EQ(Ler_Valor_Atual_Reg_Fiscal(101, valor), 0);
  EXPECT_STREQ(valor, "007500");  // 25% free

  reply(133, "0190");
  EXPECT_EQ(Ler_Valor_Atual_Reg_Fiscal(106, valor), 0);
  EXPECT_STREQ(valor, "2000");
  EXPECT_EQ(sent(133), std::vector<Bytes>{{4}});

  push(14, 0, detalhes);
  EXPECT_EQ(Ler_Valor_Atual_Reg_Fiscal(100, valor), 0);
  EXPECT_EQ(std::string(valor).size(), 16u);
  EXPECT_EQ(vp_count_cmd(14), 2);

  push(14, 1);
  EXPECT_EQ(Ler_Valor_Atual_Reg_Fiscal(100, valor), 2561);
  EXPECT_STREQ(valor, "");
}

TEST_F(CurrentValue, OneCharacterValues) {
  char valor[19] = "xxxx";
  EXPECT_EQ(Ler_Valor_Atual_Reg_Fiscal(105, valor), 0);
  EXPECT_TRUE(valor[0] == 'A' || valor[0] == 'T');
  EXPECT_EQ(valor[1], '\0');
  push(241, 0, {0xFF});
  EXPECT_EQ(Ler_Valor_Atual_Reg_Fiscal(200, valor), 0);
  EXPECT_EQ(static_cast<unsigned char>(valor[0]), 0xFF);
  EXPECT_TRUE(logged("Ler_Valor_Atual_Reg_Fiscal5600 - fim com ret=0 - Valor=-1 "));
  EXPECT_EQ(vp_count_cmd(133), 0);
}

TEST_F(Fresh, RegisterReadsWithoutSessionSendNothing) {
  char valor[19] = "old";
  EXPECT_EQ(Executa_Leitura_Registrador_Geral(133, 22, valor, 1), 2869);
  EXPECT_STREQ(valor, "");
  EXPECT_EQ(Ler_Valor_Atual_Reg_Fiscal(3, valor), 2869);
  EXPECT_EQ(vp_count_cmd(133) + vp_count_cmd(37), 0);
}

}  // namespace
