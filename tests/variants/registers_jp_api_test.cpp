// Register variants: the walk that starts over after its end, creation at the
// first free number, and the value queries over the family's numbering.
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Sent = std::vector<Bytes>;

// One E4RPLe_JP step, rendered "ret:description:RP".
std::string next_jp(unsigned char cat) {
  char compl_[100];
  char sinal = 0;
  unsigned char rp = 0xEE;
  const unsigned short ret = E4RPLe_JP(cat, compl_, &sinal, &rp);
  return std::to_string(ret) + ":" + compl_ + ":" + std::to_string(rp);
}
// One value query, rendered "ret:value".
std::string jp(unsigned short (*f)(unsigned char, char*), int reg) {
  char v[19] = "old";
  const unsigned short ret = f(static_cast<unsigned char>(reg), v);
  return std::to_string(ret) + ":" + v;
}

}  // namespace

TEST_F(Session, WalkStartsTheCategoryOverAfterItsEnd) {
  stick(38, 0, {40, 60, 61});
  stick(33, 0, bytes_with(0, 3, "PIX"));
  EXPECT_EQ(next_jp(5), "0:PIX:60");
  EXPECT_EQ(next_jp(5), "0:PIX:61");
  EXPECT_EQ(next_jp(5), "2867::0");
  EXPECT_EQ(next_jp(5), "0:PIX:60");
  // The end reads the list again at once; the next call needs no list read.
  EXPECT_EQ(sent(), (Cmds{38, 33, 33, 38, 33}));
  EXPECT_TRUE(logged("E4RPLe_JP5600 - inicio - Cat=5"));
  // The second entry point starts over the same way.
  EXPECT_EQ(next_jp(5), "0:PIX:61");
  EXPECT_EQ(E4RPProx_JP(5, nullptr, nullptr, nullptr), 2867);
  EXPECT_EQ(next_jp(5), "0:PIX:60");
}

TEST_F(Session, CreationTakesTheFirstFreeNumber) {
  const struct {
    unsigned char cat, reg;
    const char* param;
    int cmd;
    Cmds before;          // commands ahead of the creation
    unsigned char after;  // the number sent and handed back
  } cases[] = {
      {5, 0, "1", 59, {38}, 62},
      {1, 45, "+", 32, {}, 45},  // a number given is used as it is
      {6, 0, "", 213, {}, 116},  // report types are never looked for
  };
  stick(38, 0, {20, 60, 61, 63, 116});
  for (const auto& c : cases) {
    SCOPED_TRACE(int(c.cat));
    vp_clear_calls();
    unsigned char reg = c.reg;
    EXPECT_EQ(E4RPCria_JP(c.cat, "NOVO", c.param, &reg), 0);
    EXPECT_EQ(reg, c.after);
    Cmds expected = c.before;
    expected.insert(expected.end(), {c.cmd, 38});  // the list is refreshed
    const Cmds got = sent();
    ASSERT_GE(got.size(), expected.size());
    EXPECT_EQ(Cmds(got.begin(), got.begin() + static_cast<long>(expected.size())), expected);
    EXPECT_EQ(payloads(c.cmd).at(0).at(0), c.after);
  }
}

TEST_F(Session, ValuesOfTheVariantNumbering) {
  // Plain reads, some of them mapped elsewhere.
  for (int reg : {0, 15, 80, 83, 87, 88, 92, 103}) EXPECT_EQ(jp(E4ValAtu_JP, reg).substr(0, 2), "0:") << reg;
  EXPECT_EQ(payloads(133), (Sent{{0}, {136}, {137}, {135}, {7}, {114}, {133}, {115}}));
  EXPECT_TRUE(logged("E4ValAtu_JP5600 - fim com ret=0 - Valor="));
  // Numbers the base serves but the variant does not, and the reverse.
  vp_clear_calls();
  for (int reg : {6, 10, 35, 59, 91, 95, 100, 104, 116, 200}) EXPECT_EQ(jp(E4ValAtu_JP, reg), "2049:") << reg;
  EXPECT_EQ(payloads(133), Sent{});
  EXPECT_EQ(jp(E4ValAtu, 95), "0:");
  EXPECT_EQ(payloads(133), Sent{{80}});
  push(246, 0, {'0', '0', '4', '2'});
  EXPECT_EQ(jp(E4ValAtu_JP, 90), "0:0042");
  // A tax rate the printer does not list reads as zeros, without a read.
  vp_clear_calls();
  push(37, 0, {0, 21, 0});
  EXPECT_EQ(jp(E4ValAtu_JP, 20), "0:0000000000000000");
  EXPECT_EQ(payloads(133), Sent{});
}

TEST_F(Session, SumsOfTheVariant) {
  // 8 adds register 134 read with the check, which always reads as zeros.
  reply(133, "250");
  EXPECT_EQ(jp(E4ValAtuEsp_JP, 8), "0:000000000000000250");
  EXPECT_EQ(payloads(37), Sent{{4}});
  // Unlike the base, a missing register is not tolerated.
  reply(133, "250");
  push(37, 22);
  EXPECT_EQ(jp(E4ValAtu_JP, 8), "2582:");
  // 86 keeps what the service registers gave before a failure, and fails only
  // when none could be read.
  vp_clear_calls();
  stick(37, 0, {0, 36, 37, 38, 39, 0});
  reply(133, "100");
  reply(133, "20");
  reply(133, "", 10);
  EXPECT_EQ(jp(E4ValAtu_JP, 86), "0:000000000000000120");
  EXPECT_EQ(payloads(133), (Sent{{36}, {37}, {38}}));
  reply(133, "", 10);
  EXPECT_EQ(jp(E4ValAtu_JP, 86), "2570:");
  // E4ValAtuEsp_JP serves 8 and 9 only.
  vp_clear_calls();
  EXPECT_EQ(jp(E4ValAtuEsp_JP, 7), "2049:");
  EXPECT_EQ(sent(), Cmds{});
}
