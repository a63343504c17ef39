// Register values seen by the application: current and last-reduction values,
// tax values, the coupon in progress and reductions kept in fiscal memory.
#include <algorithm>
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Bytes = std::vector<std::uint8_t>;
using Sent = std::vector<Bytes>;

// The parameters of every `cmd` sent, after the two sequence bytes.
Sent sent(int cmd) {
  Sent out;
  for (const auto& c : operations())
    if (c.cmd == cmd) {
      const Bytes in = input(c);
      out.emplace_back(in.begin() + 2, in.end());
    }
  return out;
}

// A register reply: the value text from byte 1.
void reply(int cmd, const std::string& value, int result = 0) { push(cmd, result, bytes_with(30, 1, value)); }

using RegisterValues = Session;

TEST_F(RegisterValues, CurrentValueMapsNumbersAndToleratesAMissing134) {
  char valor[19] = "";
  reply(133, "000000012345");
  EXPECT_EQ(E4ValAtu(15, valor), 0);
  EXPECT_STREQ(valor, "000000012345");
  EXPECT_TRUE(logged("E4ValAtu5600 - fim com ret=0 - Valor=000000012345"));
  EXPECT_EQ(E4ValAtu(95, valor), 0);
  EXPECT_EQ(E4ValAtu(96, valor), 2049);
  reply(133, "250");
  reply(133, "", 22);
  EXPECT_EQ(E4ValAtu(8, valor), 0);
  EXPECT_STREQ(valor, "000000000000000250");
  EXPECT_EQ(sent(133), (Sent{{136}, {80}, {8}, {134}}));
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
  EXPECT_EQ(sent(135), (Sent{{4}, {2}}));
  EXPECT_EQ(sent(136), (Sent{{36}, {35}}));
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
    reply(134, "1500");
    reply(134, "500");
    reply(134, r79);
    EXPECT_EQ(E4InfCup(504, valor), 0);
    EXPECT_STREQ(valor, due);
  }
  EXPECT_EQ(sent(134), (Sent{{7}, {114}, {60}, {61}, {79}, {60}, {61}, {79}}));
  // A coupon open: its subtotal.
  push(6, 0, {2, 0});
  push(138, 0, bytes_with(20, 0, "123456"));
  EXPECT_EQ(E4InfCup(504, valor), 0);
  EXPECT_STREQ(valor, "000000000000123456");
  push(15, 0, {0, 0, 0x2C, 0x01});
  EXPECT_EQ(E4InfCup(505, valor), 0);
  EXPECT_STREQ(valor, "300");
}

TEST_F(Fresh, RegisterValuesWithoutSessionSendNothing) {
  char valor[21] = "old";
  EXPECT_EQ(E4ValAtu(3, valor), 2869);
  EXPECT_STREQ(valor, "");
  EXPECT_EQ(E4ValRed(0, valor) & E4ValImp(20, valor) & E4InfCup(1, valor) & E4RegMemFisc(3, valor), 2869);
  EXPECT_EQ(vp_call_count(), 0);
}

// A fiscal-memory record: type, date and time DDMMYYhhmm packed in bytes
// 1..5, a 16-digit value in 6..13, the reduction number in 14..15.
Bytes registro(std::uint8_t tipo, std::uint8_t reducao_bcd = 0) {
  Bytes b{tipo, 0x25, 0x12, 0x24, 0x10, 0x30, 0, 0, 0, 0x01, 0x23, 0x45, 0x67, 0x89, 0x00, reducao_bcd};
  b.resize(255);
  return b;
}

using FiscalMemory = Session;

TEST_F(FiscalMemory, FindsTheReductionAmongOtherRecords) {
  push(174, 0, registro(1, 0x01));
  push(174, 0, registro(2, 0x12));  // not a reduction record
  push(174, 1);                     // a failed read is passed over
  push(174, 0, registro(1, 0x12));
  char valor[21];
  std::fill(valor, valor + 21, 'x');
  EXPECT_EQ(E4RegMemFisc(12, valor), 0);
  EXPECT_EQ(std::string(valor, 21), std::string("25122024103023456789") + '\0');
  EXPECT_EQ(sent(174), (Sent{{1, 0}, {2, 0}, {3, 0}, {4, 0}}));
}

TEST_F(FiscalMemory, NotFoundLimitsAndTheCurrentReduction) {
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
  EXPECT_EQ(sent(133), Sent{{4}});

  // A printer failing every read is asked up to the last 16-bit index.
  vp_clear_calls();
  stick(174, 1);
  EXPECT_EQ(E4RegMemFisc(7, valor), 2582);
  EXPECT_EQ(vp_count_cmd(174), 65535);
  EXPECT_EQ(sent(174).back(), (Bytes{0xFF, 0xFF}));
}

}  // namespace
