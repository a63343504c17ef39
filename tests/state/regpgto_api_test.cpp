// The store-number procedure resumed by the session open.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

constexpr const char* kArquivo = "ArqRegPgto.sts";

// Opens a session with the status file holding `conteudo` (none when empty);
// the printer's store number is 0042. Returns E4Open's result.
int abre(const std::string& conteudo) {
  if (!conteudo.empty()) write_file(kArquivo, conteudo);
  vp_answer_identity();
  stick(246, 0, bytes_with(5, 0, "0042"));
  vp_clear_calls();
  return E4Open(0, 0);
}

// The commands of the procedure among those sent.
std::vector<int> procedimento() {
  std::vector<int> out;
  for (int c : commands())
    if (c == 160 || c == 224 || c == 245 || c == 246) out.push_back(c);
  return out;
}

std::vector<std::uint8_t> parametros(int cmd) {
  const auto in = last_input(cmd);
  return in.size() < 2 ? in : std::vector<std::uint8_t>(in.begin() + 2, in.end());
}

}  // namespace

TEST_F(Fresh, FirstOpenSavesTheStoreNumber) {
  ASSERT_EQ(abre(""), 0);
  EXPECT_EQ(procedimento(), std::vector<int>{246});
  // After the identity queries, before the document spacing.
  const auto cmds = commands();
  ASSERT_GE(cmds.size(), 3U);
  EXPECT_EQ(std::vector<int>(cmds.end() - 3, cmds.end()), (std::vector<int>{246, 6, 215}));
  EXPECT_EQ(last_input(246).size(), 2U);
  EXPECT_EQ(read_file(kArquivo), "00042");
  EXPECT_TRUE(logged("trataArqRegPgtoOpen5600 - fim com ret=0 "));
  E4Close();

  // In the normal state every open refreshes the saved number.
  stick(246, 0, bytes_with(5, 0, "0077"));
  vp_clear_calls();
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_EQ(procedimento(), std::vector<int>{246});
  EXPECT_EQ(read_file(kArquivo), "00077");
  E4Close();
}

TEST_F(Fresh, InterruptedProcedureResumesStepByStep) {
  // Stopped before "9999" was sent.
  ASSERT_EQ(abre("10042"), 0);
  EXPECT_EQ(procedimento(), std::vector<int>{245});
  EXPECT_EQ(parametros(245), (std::vector<std::uint8_t>{'9', '9', '9', '9', 0}));
  EXPECT_EQ(read_file(kArquivo), "20042");
  E4Close();

  // "9999" in force: the open leaves it for the next document.
  vp_clear_calls();
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_TRUE(procedimento().empty());
  EXPECT_EQ(read_file(kArquivo), "20042");
  E4Close();

  // Stopped while restoring: the saved number goes back.
  write_file(kArquivo, "30042");
  vp_clear_calls();
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_EQ(procedimento(), std::vector<int>{245});
  EXPECT_EQ(parametros(245), (std::vector<std::uint8_t>{'0', '0', '4', '2', 0}));
  EXPECT_EQ(read_file(kArquivo), "40042");
  E4Close();

  // Restored: the closing command and the cut end it.
  vp_clear_calls();
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_EQ(procedimento(), (std::vector<int>{160, 224}));
  EXPECT_EQ(parametros(160), (std::vector<std::uint8_t>{0, 0}));
  EXPECT_EQ(read_file(kArquivo), "00042");
  E4Close();
}

TEST_F(Fresh, FailedStepIsLeftForTheNextOpen) {
  push(245, 2302);
  EXPECT_NE(abre("10042"), 0);
  EXPECT_EQ(procedimento(), std::vector<int>{245});
  EXPECT_EQ(read_file(kArquivo), "10042");

  push(246, 2302);
  EXPECT_NE(abre("00042"), 0);
  EXPECT_EQ(read_file(kArquivo), "00042");
}

TEST_F(Fresh, ShortStatusFileRefusesTheOpen) {
  EXPECT_EQ(abre("004"), 2903);
  EXPECT_TRUE(procedimento().empty());
  EXPECT_EQ(read_file(kArquivo), "004");
  EXPECT_TRUE(logged("E4Open5600 - fim com ret=2903 "));
}
