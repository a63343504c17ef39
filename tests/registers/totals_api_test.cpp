// Register values seen by the application: current and last-reduction values,
// tax values, the coupon in progress and reductions kept in fiscal memory.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Sent = std::vector<Bytes>;
using RegisterValues = Session;

TEST_F(RegisterValues, CurrentValueMapsNumbersAndRefusesUnservedOnes) {
  char valor[19];
  for (int reg : {0, 3, 15, 16, 79, 80, 95, 103, 104, 116, 133}) E4ValAtu(static_cast<unsigned char>(reg), valor);
  EXPECT_EQ(payloads(133), (Sent{{0}, {3}, {136}, {16}, {79}, {137}, {80}, {115}, {138}, {116}, {133}}));
  vp_clear_calls();
  for (int reg : {6, 10, 35, 55, 96, 102, 132, 134, 201}) {
    std::strcpy(valor, "old");
    EXPECT_EQ(E4ValAtu(static_cast<unsigned char>(reg), valor), 2049) << reg;
    EXPECT_STREQ(valor, "");
  }
  EXPECT_EQ(vp_count_cmd(133), 0);
}

TEST_F(RegisterValues, SumsAreEighteenDigitsAndStopAtAFailure) {
  char valor[19] = "";
  for (const char* v : {"100", "20", "3"}) reply(133, v);
  EXPECT_EQ(E4ValAtu(7, valor), 0);
  EXPECT_STREQ(valor, "000000000000000123");
  EXPECT_EQ(payloads(133), (Sent{{7}, {17}, {114}}));

  vp_clear_calls();
  reply(133, "100");
  reply(133, "", 1);
  EXPECT_EQ(E4ValAtu(9, valor), 2561);
  EXPECT_STREQ(valor, "");
  EXPECT_EQ(payloads(133), (Sent{{9}, {135}}));

  // Register 8 stands alone on a printer that lacks register 134.
  reply(133, "250");
  reply(133, "", 22);
  EXPECT_EQ(E4ValAtu(8, valor), 0);
  EXPECT_STREQ(valor, "000000000000000250");
}

TEST_F(RegisterValues, JournalFiguresAndOneCharacterValues) {
  char valor[19] = "";
  push(14, 0, bytes_with(30, 9, "2500"));
  EXPECT_EQ(E4ValAtu(101, valor), 0);
  EXPECT_STREQ(valor, "007500");  // the journal's used share
  reply(133, "0190");
  EXPECT_EQ(E4ValAtu(106, valor), 0);
  EXPECT_STREQ(valor, "2000");  // reductions left

  EXPECT_EQ(E4ValAtu(105, valor), 0);  // the rounding mode
  EXPECT_TRUE(valor[0] == 'A' || valor[0] == 'T');
  EXPECT_EQ(valor[1], '\0');
  push(241, 0, {0xFF});
  EXPECT_EQ(E4ValAtu(200, valor), 0);  // a byte, not a text
  EXPECT_EQ(static_cast<unsigned char>(valor[0]), 0xFF);
  EXPECT_TRUE(logged("E4ValAtu5600 - fim com ret=0 - Valor=-1"));
}

TEST_F(RegisterValues, ReductionAndTaxRegistersAreJudgedAfterTheCommand) {
  char valor[19] = "";
  reply(135, "0042");
  EXPECT_EQ(E4ValRed(4, valor), 0);
  EXPECT_STREQ(valor, "0042");
  EXPECT_EQ(E4ValRed(2, valor), 2840);
  reply(136, std::string(29, '9'));  // cut to the caller's 19 bytes
  EXPECT_EQ(E4ValImp(36, valor), 0);
  EXPECT_EQ(std::string(valor), std::string(18, '9'));
  EXPECT_EQ(E4ValImp(35, valor), 2841);
  EXPECT_EQ(payloads(135), (Sent{{4}, {2}}));
  EXPECT_EQ(payloads(136), (Sent{{36}, {35}}));
}

TEST_F(RegisterValues, CouponSumsAndTheAmountDue) {
  char valor[19] = "";
  reply(134, "100");
  reply(134, "11");
  EXPECT_EQ(E4InfCup(7, valor), 0);
  EXPECT_STREQ(valor, "000000000000000111");
  EXPECT_EQ(E4InfCup(79, valor), 2049);
  // No coupon open: what the payment registers received beyond register 79.
  for (const auto& [r79, due] : {std::pair{"1200", "000000000000000800"}, std::pair{"2500", "000000000000000000"}}) {
    push(6, 0, {0, 0});
    push(38, 0, {60, 3, 61});
    for (const char* v : {"1500", "500", r79}) reply(134, v);
    EXPECT_EQ(E4InfCup(504, valor), 0);
    EXPECT_STREQ(valor, due);
  }
  EXPECT_EQ(payloads(134), (Sent{{7}, {114}, {60}, {61}, {79}, {60}, {61}, {79}}));
  // A coupon open: its subtotal.
  push(6, 0, {2, 0});
  push(138, 0, bytes_with(20, 0, "123456"));
  EXPECT_EQ(E4InfCup(504, valor), 0);
  EXPECT_STREQ(valor, "000000000000123456");
  push(15, 0, {0, 0, 0x2C, 0x01});
  EXPECT_EQ(E4InfCup(505, valor), 0);
  EXPECT_STREQ(valor, "300");
}

// A fiscal-memory record: type, date and time DDMMYYhhmm packed in bytes
// 1..5, a 16-digit value in 6..13, the reduction number in 14..15.
Bytes registro(std::uint8_t tipo, std::uint8_t reducao_bcd = 0) {
  Bytes b{tipo, 0x25, 0x12, 0x24, 0x10, 0x30, 0, 0, 0, 0x01, 0x23, 0x45, 0x67, 0x89, 0x00, reducao_bcd};
  b.resize(255);
  return b;
}

TEST_F(RegisterValues, FiscalMemoryReductionFoundAmongOtherRecords) {
  push(174, 0, registro(1, 0x01));
  push(174, 0, registro(2, 0x12));  // not a reduction record
  push(174, 1);                     // a failed read is passed over
  push(174, 0, registro(1, 0x12));
  char valor[21];
  std::fill(valor, valor + 21, 'x');
  EXPECT_EQ(E4RegMemFisc(12, valor), 0);
  EXPECT_EQ(std::string(valor, 21), std::string("25122024103023456789") + '\0');
  EXPECT_EQ(payloads(174), (Sent{{1, 0}, {2, 0}, {3, 0}, {4, 0}}));
}

TEST_F(RegisterValues, FiscalMemoryNotFoundLimitsAndTheCurrentReduction) {
  char valor[21];
  std::fill(valor, valor + 21, 'x');
  push(174, 0, registro(1, 0x01));
  push(174, 0, registro(7));  // end of the records
  EXPECT_EQ(E4RegMemFisc(5, valor), 2582);
  EXPECT_EQ(std::string(valor, 21), std::string(21, '\0'));
  EXPECT_EQ(E4RegMemFisc(2191, valor), 2049);
  reply(133, "0042");
  EXPECT_EQ(E4RegMemFisc(0, valor), 0);
  EXPECT_STREQ(valor, "0042");
  EXPECT_EQ(vp_count_cmd(174), 2);
  EXPECT_EQ(payloads(133), Sent{{4}});

  // A printer failing every read is asked up to record 4096, then given up.
  vp_clear_calls();
  stick(174, 1);
  EXPECT_EQ(E4RegMemFisc(7, valor), 2582);
  EXPECT_EQ(vp_count_cmd(174), 4096);
  EXPECT_EQ(payloads(174).back(), (Bytes{0x00, 0x10}));
}

}  // namespace
