// Management reports and free printing.
#include <algorithm>
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Bytes = std::vector<std::uint8_t>;

// The texts of the free lines (command 130) sent, in order.
std::vector<std::string> printed() {
  std::vector<std::string> out;
  for (const auto& c : operations())
    if (c.cmd == 130) out.emplace_back(reinterpret_cast<const char*>(c.in + 2));
  return out;
}

using Report = Session;

}  // namespace

TEST_F(Report, OpenedOnItsKindAndClosedWithTheOperator) {
  EXPECT_EQ(E4IniCP(20, ""), 0);
  EXPECT_EQ(last_input(220).size(), 4u);
  EXPECT_EQ(last_input(220)[2], 't');
  EXPECT_EQ(E4IniCP(20, "19"), 0);
  EXPECT_EQ(last_input(220)[2], 135);
  EXPECT_EQ(read_file("EcfZandor.cpm"), "RGR");

  vp_clear_calls();
  stick(6, 0, {26, 0});
  EXPECT_EQ(E4FimCP(0, nullptr), 0);
  EXPECT_EQ(commands(), (std::vector<int>{6, 221, 224}));
  EXPECT_EQ(last_input(221).size(), 4u);
}

TEST_F(Report, PrintPaysOutAmountsFirstInPaymentPhase) {
  EXPECT_EQ(E4Print(""), 2049);
  EXPECT_EQ(E4Print(nullptr), 2049);
  vp_clear_calls();  // the error queries that follow a failure
  stick(6, 0, {26, 0});
  EXPECT_EQ(E4Print("linha livre"), 0);
  EXPECT_EQ(commands(), (std::vector<int>{6, 130}));
  EXPECT_EQ(printed(), std::vector<std::string>{"linha livre"});

  vp_clear_calls();
  stick(6, 0, {24, 0});
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
}

TEST_F(Report, FilePrintingFailuresAreNotTranslated) {
  EXPECT_EQ(E4ImpVinc("falta.txt", "3"), 2902);
  EXPECT_TRUE(logged("E4ImpVinc5600 Erro na abertura do Arquivo "));

  write_file("vinc.txt", "um\ndois\ntres\n");
  push(130, 0);
  push(130, 1);
  EXPECT_EQ(E4ImpVinc("vinc.txt", "3"), 2904);
  EXPECT_EQ(printed(), (std::vector<std::string>{"um", "dois"}));
  EXPECT_FALSE(logged("E4ImpVinc5600 - fim com ret=2904 "));
}

TEST_F(Report, SmallOperations) {
  EXPECT_EQ(E4ConImp('B', 3, 4), 0);
  EXPECT_TRUE(commands().empty());
  EXPECT_EQ(E4ExpDoc(), 0);
  EXPECT_EQ(commands(), std::vector<int>{71});
  EXPECT_EQ(last_input(71).size(), 2u);
}
