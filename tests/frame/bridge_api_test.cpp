// The driver bridge seen through the exported functions: the sequence field,
// the 16-bit results and the driver's lifecycle.
#include <algorithm>
#include <cstdint>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

// The sequence fields of the recorded calls that carry one.
std::vector<int> sequences() {
  std::vector<int> out;
  for (const auto& c : operations())
    if (c.inlen > 0) {
      EXPECT_EQ(c.in[1], 0) << "cmd " << c.cmd;
      out.push_back(c.in[0] | (c.in[1] << 8));
    }
  return out;
}

}  // namespace

TEST_F(Fresh, SequenceRunsFromOneToTwoHundredFiftyFiveAcrossCommandsAndSessions) {
  vp_answer_identity();
  ASSERT_EQ(E4Open(0, 0), 0);
  // The first command of the process carries 1, each further one the next
  // number, whatever the command; the date query has no sequence field.
  EXPECT_EQ(last_input(10).size(), 0u);
  auto seen = sequences();
  ASSERT_GE(seen.size(), 6u);
  for (std::size_t i = 0; i < seen.size(); ++i) EXPECT_EQ(seen[i], static_cast<int>(i) + 1);

  // The counter is not reset by closing and reopening.
  const int first = static_cast<int>(seen.size()) + 1;
  ASSERT_EQ(E4Close(), 0);
  vp_clear_calls();
  ASSERT_EQ(E4Open(0, 0), 0);
  seen = sequences();
  EXPECT_EQ(seen.front(), first);

  const int next = seen.back() + 1;
  vp_clear_calls();
  for (int i = 0; i < 300; ++i) ASSERT_EQ(E4Verao(1), 0);
  seen = sequences();
  ASSERT_EQ(seen.size(), 300u);
  for (std::size_t i = 0; i < seen.size(); ++i) ASSERT_EQ(seen[i], (next - 1 + static_cast<int>(i)) % 255 + 1) << i;
  EXPECT_EQ(seen[static_cast<std::size_t>(255 - next)], 255);
  EXPECT_EQ(seen[static_cast<std::size_t>(256 - next)], 1);
  E4Close();
}

TEST_F(Session, OnlyTheLowSixteenBitsOfTheDriverResultCount) {
  push(24, 65536 + 5);
  EXPECT_EQ(E4Verao(1), 5);
  EXPECT_TRUE(logged("Executa_FC_Operacao5600 - fim com ret=5 tamanho=0 "));
  EXPECT_EQ(commands(), (Cmds{24, 3}));  // the error read follows a failure

  vp_clear_calls();
  push(24, 65536, {1, 2, 3});
  EXPECT_EQ(E4Verao(1), 0);
  EXPECT_EQ(commands(), Cmds{24});
}

TEST_F(Session, GetErrorReadsTheDriversLastError) {
  push(3, 0, {0, 0x34, 0x12, 0x56});
  unsigned int err = 99;
  EXPECT_EQ(E4GetError(&err), 0);
  EXPECT_EQ(err, 0x1234u);
  const auto call = operations().back();
  EXPECT_EQ((Cmds{call.cmd, call.flag, call.mode, call.inlen}), (Cmds{3, 1, 1, 0}));
  EXPECT_TRUE(logged("E4GetError5600 - fim com Erro=4660 "));

  push(3, 38, {0, 1, 1});
  EXPECT_EQ(E4GetError(&err), 2872);
  EXPECT_EQ(err, 0u);
}
