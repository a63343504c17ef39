// Free printing in a management report (the report's opening and closing are
// in the document scenarios).
#include <algorithm>
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

// The texts of the free lines (command 130) sent, in order.
std::vector<std::string> printed() {
  std::vector<std::string> out;
  for (const auto& p : payloads(130)) out.emplace_back(reinterpret_cast<const char*>(p.data()));
  return out;
}

using Report = Session;

}  // namespace

TEST_F(Report, PrintPaysOutAmountsFirstInPaymentPhase) {
  EXPECT_EQ(E4Print(""), 2049);
  EXPECT_EQ(E4Print(nullptr), 2049);
  vp_clear_calls();  // the error queries that follow a failure
  state(26);
  EXPECT_EQ(E4Print("linha livre"), 0);
  EXPECT_EQ(commands(), (Cmds{6, 130}));
  EXPECT_EQ(printed(), std::vector<std::string>{"linha livre"});

  vp_clear_calls();
  state(24);
  EXPECT_EQ(E4Print("texto"), 0);
  const auto cmds = commands();
  const auto at = [&](int c) { return std::find(cmds.begin(), cmds.end(), c) - cmds.begin(); };
  EXPECT_LT(at(188), at(189));
  EXPECT_EQ(at(130), static_cast<long>(cmds.size()) - 1);

  vp_clear_calls();
  push(188, 1);
  EXPECT_EQ(E4Print("texto"), 2561);
  EXPECT_EQ(vp_count_cmd(130), 0);
}

TEST_F(Report, FilePrinting) {
  write_file("vinc.txt", std::string(80, 'a') + "\r\ncurta\n\nultima");
  EXPECT_EQ(E4ImpVinc("vinc.txt", "10"), 0);
  EXPECT_EQ(printed(), (std::vector<std::string>{std::string(56, 'a'), "curta", "", "ultima"}));
  vp_clear_calls();
  EXPECT_EQ(E4ImpVinc("vinc.txt", "2"), 0);
  EXPECT_EQ(printed().size(), 2u);
  vp_clear_calls();
  EXPECT_EQ(E4ImpVinc("vinc.txt", "0"), 0);
  EXPECT_EQ(E4ImpVinc("vinc.txt", "abc"), 0);
  EXPECT_TRUE(commands().empty());

  // Failures are not translated.
  EXPECT_EQ(E4ImpVinc("falta.txt", "3"), 2902);
  write_file("vinc.txt", "um\ndois\ntres\n");
  push(130, 0);
  push(130, 1);
  EXPECT_EQ(E4ImpVinc("vinc.txt", "3"), 2904);
  EXPECT_EQ(printed(), (std::vector<std::string>{"um", "dois"}));
  EXPECT_FALSE(logged("E4ImpVinc5600 - fim com ret=2904 "));  // returned without its exit line
}

