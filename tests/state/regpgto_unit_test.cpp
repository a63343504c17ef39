// The store-number procedure run by the register creation and the openings.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

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

}  // namespace

TEST_F(Session, SettingTheTemporaryNumber) {
  estado("00042");
  push(245, 2302);
  push(245, 2302);
  EXPECT_EQ(trataArqRegPgtoStatus(1, "0"), 0);
  EXPECT_EQ(vp_count_cmd(245), 3);
  // Every attempt repeats the same command, sequence field included.
  std::vector<Bytes> tentativas;
  for (const auto& op : operations())
    if (op.cmd == 245) tentativas.push_back(input(op));
  ASSERT_EQ(tentativas.size(), 3U);
  EXPECT_EQ(tentativas[0], tentativas[2]);
  EXPECT_EQ(tentativas[0].size(), 7U);
  EXPECT_EQ(read_file(kArquivo), "20042");

  // Three refusals leave the procedure at its first step.
  estado("00042");
  for (int i = 0; i < 3; ++i) push(245, 2302);
  EXPECT_NE(trataArqRegPgtoStatus(1, "0"), 0);
  EXPECT_EQ(vp_count_cmd(245), 3);
  EXPECT_EQ(read_file(kArquivo), "10042");
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
