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

  // The second entry point starts over the same way.
  EXPECT_EQ(next_jp(5), "0:PIX:61");
  EXPECT_EQ(E4RPProx_JP(5, nullptr, nullptr, nullptr), 2867);
  EXPECT_EQ(next_jp(5), "0:PIX:60");
}

TEST_F(Session, CreationTakesTheFirstFreeNumber) {
  struct Case {
    unsigned char cat, reg;
    const char* param;
    int cmd;
    Cmds before;          // commands ahead of the creation
    unsigned char after;  // the number sent and handed back
  } cases[] = {
      {5, 0, "1", 59, {38}, 62},
      {1, 45, "+", 32, {}, 45},  // a number given is used as it is
      {6, 0, "", 213, {}, 116},
  };
  stick(38, 0, {20, 60, 61, 63, 116});
  for (const auto& c : cases) {
    SCOPED_TRACE(int(c.cat));
    vp_clear_calls();
    unsigned char reg = c.reg;
    EXPECT_EQ(E4RPCria_JP(c.cat, "NOVO", c.param, &reg), 0);
    EXPECT_EQ(reg, c.after);
    Cmds expected = c.before;
    expected.push_back(c.cmd);
    expected.push_back(38);  // the list is refreshed
    const Cmds got = sent();
    ASSERT_GE(got.size(), expected.size());
    EXPECT_EQ(Cmds(got.begin(), got.begin() + static_cast<long>(expected.size())), expected);
    EXPECT_EQ(payloads(c.cmd).at(0).at(0), c.after);
  }
}

TEST_F(Session, ValuesOfTheVariantNumbering) {
  char valor[19] = "";
  // Plain reads, some of them mapped elsewhere.
  for (unsigned char reg : {0, 15, 80, 83, 87, 88, 92, 103}) EXPECT_EQ(E4ValAtu_JP(reg, valor), 0) << int(reg);
  EXPECT_EQ(payloads(133), (Sent{{0}, {136}, {137}, {135}, {7}, {114}, {133}, {115}}));

  // Numbers the base serves but the variant does not, and the reverse.
  vp_clear_calls();
  for (unsigned char reg : {6, 10, 35, 59, 91, 95, 100, 104, 116, 200}) {
    EXPECT_EQ(E4ValAtu_JP(reg, valor), 2049) << int(reg);
    EXPECT_STREQ(valor, "");
  }
  EXPECT_EQ(payloads(133), Sent{});
  EXPECT_EQ(E4ValAtu(95, valor), 0);
  EXPECT_EQ(payloads(133), Sent{{80}});

  push(246, 0, {'0', '0', '4', '2'});
  EXPECT_EQ(E4ValAtu_JP(90, valor), 0);
  EXPECT_STREQ(valor, "0042");

  // A tax rate the printer does not list reads as zeros, without a read.
  vp_clear_calls();
  push(37, 0, {0, 21, 0});
  EXPECT_EQ(E4ValAtu_JP(20, valor), 0);
  EXPECT_STREQ(valor, "0000000000000000");
  EXPECT_EQ(payloads(133), Sent{});
}

TEST_F(Session, SumsOfTheVariant) {
  char valor[19] = "";
  // 8 adds register 134 read with the check, which always reads as zeros.
  reply(133, "250");
  EXPECT_EQ(E4ValAtuEsp_JP(8, valor), 0);
  EXPECT_STREQ(valor, "000000000000000250");
  EXPECT_EQ(payloads(37), Sent{{4}});
  // Unlike the base, a missing register is not tolerated.
  reply(133, "250");
  push(37, 22);
  EXPECT_EQ(E4ValAtu_JP(8, valor), 2582);
  EXPECT_STREQ(valor, "");

  // 86 keeps what the service registers gave before a failure...
  vp_clear_calls();
  stick(37, 0, {0, 36, 37, 38, 39, 0});
  reply(133, "100");
  reply(133, "20");
  reply(133, "", 10);
  EXPECT_EQ(E4ValAtu_JP(86, valor), 0);
  EXPECT_STREQ(valor, "000000000000000120");
  EXPECT_EQ(payloads(133), (Sent{{36}, {37}, {38}}));
  // ...and fails only when none could be read.
  reply(133, "", 10);
  EXPECT_EQ(E4ValAtu_JP(86, valor), 2570);
  EXPECT_STREQ(valor, "");

  // E4ValAtuEsp_JP serves 8 and 9 only.
  vp_clear_calls();
  EXPECT_EQ(E4ValAtuEsp_JP(7, valor), 2049);
  EXPECT_EQ(sent(), Cmds{});
}
