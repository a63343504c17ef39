// The store-number procedure resumed by the session open (each step resumed
// across sessions is in the document scenarios).
#include <gtest/gtest.h>

#include <string>

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
Cmds procedimento() {
  Cmds out;
  for (int c : commands())
    if (c == 160 || c == 224 || c == 245 || c == 246) out.push_back(c);
  return out;
}

}  // namespace

TEST_F(Fresh, FirstOpenSavesTheStoreNumberAndEveryOpenRefreshesIt) {
  ASSERT_EQ(abre(""), 0);
  EXPECT_EQ(procedimento(), Cmds{246});
  // After the identity queries, before the document spacing.
  const auto cmds = commands();
  ASSERT_GE(cmds.size(), 3U);
  EXPECT_EQ(Cmds(cmds.end() - 3, cmds.end()), (Cmds{246, 6, 215}));
  EXPECT_EQ(last_input(246).size(), 2U);
  EXPECT_EQ(read_file(kArquivo), "00042");
  E4Close();

  stick(246, 0, bytes_with(5, 0, "0077"));
  vp_clear_calls();
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_EQ(procedimento(), Cmds{246});
  EXPECT_EQ(read_file(kArquivo), "00077");
  E4Close();
}

TEST_F(Fresh, TemporaryNumberInForceIsLeftForTheNextDocument) {
  ASSERT_EQ(abre("20042"), 0);
  EXPECT_TRUE(procedimento().empty());
  EXPECT_EQ(read_file(kArquivo), "20042");
  E4Close();
}

TEST_F(Fresh, FailedStepIsLeftForTheNextOpen) {
  push(245, 2302);
  EXPECT_NE(abre("10042"), 0);
  EXPECT_EQ(procedimento(), Cmds{245});
  EXPECT_EQ(read_file(kArquivo), "10042");

  push(246, 2302);
  EXPECT_NE(abre("00042"), 0);
  EXPECT_EQ(read_file(kArquivo), "00042");
}

TEST_F(Fresh, ShortStatusFileRefusesTheOpen) {
  EXPECT_EQ(abre("004"), 2903);
  EXPECT_TRUE(procedimento().empty());
  EXPECT_EQ(read_file(kArquivo), "004");
}
