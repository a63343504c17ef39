// Cash drawer and bar code commands.
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Drawer = Session;

TEST_F(Drawer, StatusIsOpenOnlyWhenThePrinterAnswersZero) {
  for (const auto& [result, reply, expected] : {std::tuple{0, 0, 1}, {0, 7, 0}, {38, 0, 0}}) {
    unsigned char status = 9;
    push(96, result, {static_cast<std::uint8_t>(reply)});
    EXPECT_EQ(E4StatGv(&status), result == 0 ? 0 : 2872);
    EXPECT_EQ(status, expected) << "reply " << reply << " result " << result;
  }
  EXPECT_EQ(last_input(96).size(), 2u);
  EXPECT_EQ(E4OpenGv(), 0);
  EXPECT_EQ(last_input(95).size(), 2u);
  EXPECT_EQ(commands(), (Cmds{96, 96, 96, 3, 95}));
}

TEST_F(Drawer, BarCodeLayoutAndItsLimit) {
  EXPECT_EQ(E4ImpCodB(0x102, 1, 80, -1, "789012345678"), 0);
  EXPECT_EQ(payload(255), (Bytes{0x50, 0x03, 0xFF, 0x01, 0x02} + texts({"789012345678"})));

  const std::string longest(42, '7');
  EXPECT_EQ(E4ImpCodB(8, 0, 50, 0, longest.c_str()), 0);
  EXPECT_EQ(last_input(255).size(), 50u);
  EXPECT_EQ(E4ImpCodB(8, 0, 50, 0, (longest + "7").c_str()), 2049);
  EXPECT_EQ(E4ImpCodB(8, 0, 50, 0, nullptr), 0);
  EXPECT_EQ(last_input(255).size(), 8u);
  EXPECT_EQ(vp_count_cmd(255), 3);
}

}  // namespace
