// The store-number procedure: the steps run by the register creation and the
// openings, and the status file every session open reads.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "orbelan.h"
#include "state/regpgto.h"
#include "support/fixture.h"

using namespace orbelan;
using namespace orbtest;

namespace {

constexpr const char* kArquivo = "ArqRegPgto.sts";

void estado(const char* conteudo) {
  char buf[6] = {};
  std::memcpy(buf, conteudo, 5);
  ASSERT_EQ(readWriteArqRegPgto(2, "w+", buf), 0);
  vp_clear_calls();
}

// The commands of the procedure among those sent.
Cmds procedimento() {
  Cmds out;
  for (int c : commands())
    if (c == 160 || c == 224 || c == 245 || c == 246) out.push_back(c);
  return out;
}

}  // namespace

TEST_F(Session, SettingTheTemporaryNumber) {
  estado("00042");
  push(245, 2302);
  push(245, 2302);
  EXPECT_EQ(trataArqRegPgtoStatus(1, "0"), 0);
  // Every attempt repeats the same command, sequence field included.
  std::vector<Bytes> tentativas;
  for (const auto& op : operations())
    if (op.cmd == 245) tentativas.push_back(input(op));
  ASSERT_EQ(tentativas.size(), 3U);
  EXPECT_EQ(tentativas[0], tentativas[2]);
  EXPECT_EQ(tentativas[0].size(), 7U);
  EXPECT_EQ(read_file(kArquivo), "20042");
}

TEST_F(Session, RestoringTheSavedNumber) {
  estado("20042");
  EXPECT_EQ(trataArqRegPgtoStatus(3, "0"), 0);
  EXPECT_EQ(commands(), (Cmds{245, 160, 224}));
  EXPECT_EQ(payload(245), texts({"0042"}));
  EXPECT_EQ(last_input(160).size(), 4U);
  EXPECT_NE(last_input(160)[0], last_input(245)[0]);  // a new sequence number
  EXPECT_EQ(read_file(kArquivo), "00042");
  // Asked for, a management report follows.
  estado("20042");
  EXPECT_EQ(trataArqRegPgtoStatus(3, "1"), 0);
  EXPECT_EQ(commands(), (Cmds{245, 160, 224, 220}));
  // A failed cut does not hold the procedure: the closing was printed.
  estado("20042");
  push(224, 1);
  EXPECT_EQ(trataArqRegPgtoStatus(3, "0"), 0);
  EXPECT_EQ(read_file(kArquivo), "00042");
  // The closing command refused: the next open closes it.
  estado("20042");
  push(160, 2302);
  EXPECT_NE(trataArqRegPgtoStatus(3, "1"), 0);
  EXPECT_EQ(vp_count_cmd(224) + vp_count_cmd(220), 0);
  EXPECT_EQ(read_file(kArquivo), "40042");
  // Other states do nothing.
  estado("00042");
  EXPECT_EQ(trataArqRegPgtoStatus(2, nullptr), 0);
  EXPECT_TRUE(commands().empty());
  EXPECT_EQ(read_file(kArquivo), "00042");
}

TEST_F(Fresh, SessionOpenReadsTheStatusFile) {
  // Status file before (none when empty), a command the printer refuses (or 0),
  // the result (-1: any failure), the procedure's commands, the file after.
  const std::tuple<const char*, int, int, Cmds, const char*> casos[] = {
      {"", 0, 0, {246}, "00042"},          // the first open saves the printer's number
      {"00077", 0, 0, {246}, "00042"},     // every open refreshes it
      {"20042", 0, 0, {}, "20042"},        // the temporary number waits for the next document
      {"10042", 245, -1, {245}, "10042"},  // a failed step is left for the next open
      {"00042", 246, -1, {246}, "00042"},  // and so is a failed refresh
      {"004", 0, 2903, {}, "004"},         // too short: nothing resumed
  };
  vp_answer_identity();
  stick(246, 0, bytes_with(5, 0, "0042"));
  for (const auto& [antes, recusado, ret, proc, depois] : casos) {
    SCOPED_TRACE(antes);
    std::remove(kArquivo);
    if (*antes != '\0') write_file(kArquivo, antes);
    if (recusado != 0) push(recusado, 2302);
    vp_clear_calls();
    const int r = E4Open(0, 0);
    EXPECT_TRUE(ret < 0 ? r != 0 : r == ret) << r;
    EXPECT_EQ(procedimento(), proc);
    EXPECT_EQ(read_file(kArquivo), depois);
    if (*antes == '\0') {
      // After the identity queries, before the document spacing.
      const auto cmds = commands();
      ASSERT_GE(cmds.size(), 3U);
      EXPECT_EQ(Cmds(cmds.end() - 3, cmds.end()), (Cmds{246, 6, 215}));
      EXPECT_EQ(last_input(246).size(), 2U);
    }
    E4Close();
  }
}
