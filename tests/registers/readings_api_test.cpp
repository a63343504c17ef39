// The X reading and the Z reduction, requested through the coupon opening.
#include <cstdio>
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Bytes = std::vector<std::uint8_t>;
using Commands = std::vector<int>;

// The parameters of the last `cmd`, after its two sequence bytes.
Bytes params(int cmd) {
  const Bytes in = last_input(cmd);
  return in.size() >= 2 ? Bytes(in.begin() + 2, in.end()) : Bytes{};
}

using Readings = Session;

TEST_F(Readings, XReadingSendsTheOperatorCutsAndMayOpenAReport) {
  write_file("NomeOper.cfg", "MARIA");
  EXPECT_EQ(E4IniCP(4, "0"), 0);
  EXPECT_EQ(commands(), (Commands{160, 224}));
  EXPECT_EQ(params(160), (Bytes{'M', 'A', 'R', 'I', 'A', 0, 0}));
  EXPECT_TRUE(logged("LeituraX5600 - fim com ret=0 "));

  std::remove("NomeOper.cfg");
  vp_clear_calls();
  EXPECT_EQ(E4IniCP(4, "1"), 0);
  EXPECT_EQ(commands(), (Commands{160, 224, 220}));
  EXPECT_EQ(params(160), (Bytes{0, 0}));

  vp_clear_calls();
  push(160, 1);
  EXPECT_EQ(E4IniCP(4, "1"), 2561);
  EXPECT_EQ(vp_count_cmd(224) + vp_count_cmd(220), 0);
}

TEST_F(Readings, ReductionCarriesTheFlagAndTheCountOfTheTime) {
  write_file("NomeOper.cfg", "JO");
  EXPECT_EQ(E4IniCP(5, ""), 0);
  EXPECT_EQ(params(162), (Bytes{'J', 'O', 0, 0}));
  EXPECT_EQ(operations().front().flag, 0);
  // Available at the first poll: one short wait, then the cut and the
  // reduction state.
  EXPECT_EQ(commands(), (Commands{162, 1, 224, 10}));
  EXPECT_TRUE(last_input(1).empty());
  ASSERT_EQ(waits().size(), 1u);
  EXPECT_TRUE(waits()[0].micro && waits()[0].amount == 100000u);

  std::remove("NomeOper.cfg");
  const std::pair<const char*, std::uint8_t> cases[] = {
      {"10130", 2}, {"10400", 4}, {"10401", 5}, {"10900", 5}, {"10000", 0}, {"S", 0}};
  for (const auto& [hora, minutos] : cases) {
    EXPECT_EQ(E4IniCP(5, hora), 0) << hora;
    EXPECT_EQ(params(162), (Bytes{0, 0, static_cast<std::uint8_t>(hora[0]), minutos})) << hora;
  }
  EXPECT_TRUE(logged("ReducaoZ5600 - inicio - Hora=10130 "));
}

TEST_F(Readings, ReductionWaitsOutABusyPrinterAndSucceeds) {
  stick(1, 1);
  EXPECT_EQ(E4IniCP(5, ""), 0);
  EXPECT_EQ(vp_count_cmd(1), 10);
  EXPECT_EQ(vp_count_cmd(224) + vp_count_cmd(10), 2);
  const auto w = waits();
  ASSERT_EQ(w.size(), 11u);
  EXPECT_FALSE(w[1].micro);
  EXPECT_EQ(w[1].amount, 5u);
  for (std::size_t i = 2; i < w.size(); ++i) EXPECT_TRUE(!w[i].micro && w[i].amount == 1u) << i;
  EXPECT_TRUE(logged("ReducaoZ5600 Aguardando 5s para impressao automatica da MF..."));
  EXPECT_TRUE(logged("ReducaoZ5600 Aguardando mais 1s..."));
  EXPECT_TRUE(logged("ReducaoZ5600 verificada a disponibilidade ret=1"));
}

TEST_F(Readings, ReductionPollStopsAtTheFirstAnswer) {
  push(1, 1);
  push(1, 1);
  EXPECT_EQ(E4IniCP(5, ""), 0);
  EXPECT_EQ(commands(), (Commands{162, 1, 1, 1, 224, 10}));
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
