// The X reading and the Z reduction, requested through the coupon opening (an
// X reading with its operator, and a reduction waiting out a busy printer, are
// in the document scenarios).
#include <cstdio>
#include <string>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Readings = Session;

TEST_F(Readings, XReadingCutsAndMayOpenAReport) {
  EXPECT_EQ(E4IniCP(4, "1"), 0);
  EXPECT_EQ(commands(), (Cmds{160, 224, 220}));
  EXPECT_EQ(payload(160), (Bytes{0, 0}));

  vp_clear_calls();
  push(160, 1);
  EXPECT_EQ(E4IniCP(4, "1"), 2561);
  EXPECT_EQ(vp_count_cmd(224) + vp_count_cmd(220), 0);
}

TEST_F(Readings, ReductionCarriesTheFlagAndTheCountOfTheTime) {
  write_file("NomeOper.cfg", "JO");
  EXPECT_EQ(E4IniCP(5, ""), 0);
  EXPECT_EQ(payload(162), (Bytes{'J', 'O', 0, 0}));
  EXPECT_EQ(operations().front().flag, 0);
  // Available at the first poll: one short wait, then the cut and the
  // reduction state.
  EXPECT_EQ(commands(), (Cmds{162, 1, 224, 10}));
  EXPECT_TRUE(last_input(1).empty());
  ASSERT_EQ(waits().size(), 1u);
  EXPECT_TRUE(waits()[0].micro && waits()[0].amount == 100000u);

  std::remove("NomeOper.cfg");
  const std::pair<const char*, std::uint8_t> cases[] = {
      {"10130", 2}, {"10400", 4}, {"10401", 5}, {"10900", 5}, {"10000", 0}, {"S", 0}};
  for (const auto& [hora, minutos] : cases) {
    EXPECT_EQ(E4IniCP(5, hora), 0) << hora;
    EXPECT_EQ(payload(162), (Bytes{0, 0, static_cast<std::uint8_t>(hora[0]), minutos})) << hora;
  }
}

TEST_F(Readings, ReductionPollStopsAtTheFirstAnswer) {
  push(1, 1);
  push(1, 1);
  EXPECT_EQ(E4IniCP(5, ""), 0);
  EXPECT_EQ(commands(), (Cmds{162, 1, 1, 1, 224, 10}));
  const auto w = waits();
  ASSERT_EQ(w.size(), 3u);
  EXPECT_EQ(w[1].amount, 5u);
  EXPECT_EQ(w[2].amount, 1u);
}

TEST_F(Readings, RefusedReductionOrCutEndsTheReduction) {
  push(162, 1);
  EXPECT_EQ(E4IniCP(5, ""), 2561);
  EXPECT_EQ(vp_count_cmd(1) + vp_count_cmd(224) + vp_count_cmd(10), 0);
  EXPECT_TRUE(waits().empty());

  push(224, 1);
  EXPECT_EQ(E4IniCP(5, ""), 2561);
  EXPECT_EQ(vp_count_cmd(10), 0);
}

}  // namespace
