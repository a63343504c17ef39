// Register values: current, last reduction, tax, journal figures, coupon in progress, fiscal-memory reductions.
#include <string>
#include <tuple>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Sent = std::vector<Bytes>;
using RegisterValues = Session;

// One query, rendered "ret:value" (the value starts as "old").
template <class R>
std::string q(unsigned short (*f)(R, char*), int reg) {
  char v[21] = "old";
  const unsigned short ret = f(static_cast<R>(reg), v);
  return std::to_string(ret) + ":" + v;
}
std::string d18(const std::string& v) { return "0:" + std::string(18 - v.size(), '0') + v; }

TEST_F(RegisterValues, CurrentValuesOfRegistersSumsAndJournalFigures) {
  for (int reg : {0, 3, 15, 16, 79, 80, 95, 103, 104, 116, 133}) q(E4ValAtu, reg);
  EXPECT_EQ(payloads(133), (Sent{{0}, {3}, {136}, {16}, {79}, {137}, {80}, {115}, {138}, {116}, {133}}));
  vp_clear_calls();
  for (int reg : {6, 10, 35, 55, 96, 102, 132, 134, 201}) EXPECT_EQ(q(E4ValAtu, reg), "2049:") << reg;
  EXPECT_EQ(vp_count_cmd(133), 0);
  // Sums are eighteen digits and stop at a failure...
  for (const char* v : {"100", "20", "3"}) reply(133, v);
  EXPECT_EQ(q(E4ValAtu, 7), d18("123"));
  reply(133, "100");
  reply(133, "", 1);
  EXPECT_EQ(q(E4ValAtu, 9), "2561:");
  EXPECT_EQ(payloads(133), (Sent{{7}, {17}, {114}, {9}, {135}}));
  // ...but register 8 stands alone on a printer that lacks register 134.
  reply(133, "250");
  reply(133, "", 22);
  EXPECT_EQ(q(E4ValAtu, 8), d18("250"));
  // Command 14: the journal's size code at 8, its free share (hundredths of a percent) at 9..12. 100: the free bytes in
  // single precision (33124935.27 here), 0 for an unknown size; 101: the used share.
  using Figure = std::tuple<int, std::uint8_t, const char*, const char*>;
  for (const auto& [reg, size_code, free, want] :
       {Figure{100, 1, "1234", "0000000033124936"}, {100, 3, "2500", "0000000268435456"},
        {100, 9, "1234", "0000000000000000"}, {101, 1, "2500", "007500"}, {101, 1, "9999", "000001"}}) {
    push(14, 0, Bytes(8, 0) + Bytes{size_code} + bytes_with(21, 0, free));
    EXPECT_EQ(q(E4ValAtu, reg), std::string("0:") + want) << free;
  }
  push(14, 1);
  EXPECT_EQ(q(E4ValAtu, 100), "2561:");
  // The reductions left of the fiscal memory's 2190.
  for (const auto& [made, left] : {std::pair{"0100", "0:2090"}, {"2190", "0:0000"}, {"2500", "0:0000"}}) {
    reply(133, made);
    EXPECT_EQ(q(E4ValAtu, 106), left);
  }
  EXPECT_EQ(payloads(133).back(), Bytes{4});
}

TEST_F(RegisterValues, ReductionTaxAndCouponRegisters) {
  // The served numbers are judged after the command.
  reply(135, "0042");
  EXPECT_EQ(q(E4ValRed, 4), "0:0042");
  EXPECT_EQ(q(E4ValRed, 2), "2840:");
  reply(136, std::string(29, '9'));  // cut to the caller's 19 bytes
  EXPECT_EQ(q(E4ValImp, 36), "0:" + std::string(18, '9'));
  EXPECT_EQ(q(E4ValImp, 35), "2841:");
  EXPECT_EQ(payloads(135), (Sent{{4}, {2}}));
  EXPECT_EQ(payloads(136), (Sent{{36}, {35}}));
  for (const char* v : {"100", "23"}) reply(134, v);
  EXPECT_EQ(q(E4InfCup, 7), d18("123"));
  EXPECT_EQ(q(E4InfCup, 79), "2049:");
  // No coupon open: what the payment registers received beyond register 79.
  for (const auto& [r79, due] : {std::pair{"1200", "800"}, {"2500", "0"}}) {
    push(6, 0, {0, 0});
    push(38, 0, {60, 3, 61});
    for (const char* v : {"1500", "500", r79}) reply(134, v);
    EXPECT_EQ(q(E4InfCup, 504), d18(due));
  }
  EXPECT_EQ(payloads(134), (Sent{{7}, {114}, {60}, {61}, {79}, {60}, {61}, {79}}));
  // A coupon open: its subtotal.
  push(6, 0, {2, 0});
  push(138, 0, bytes_with(20, 0, "123456"));
  EXPECT_EQ(q(E4InfCup, 504), d18("123456"));
  push(15, 0, {0, 0, 0x2C, 0x01});
  EXPECT_EQ(q(E4InfCup, 505), "0:300");
}

// A fiscal-memory record: type, DDMMYYhhmm packed in 1..5, a 16-digit value in 6..13, the reduction in 14..15.
Bytes registro(std::uint8_t tipo, std::uint8_t red = 0) {
  return Bytes{tipo, 0x25, 0x12, 0x24, 0x10, 0x30, 0, 0, 0, 0x01, 0x23, 0x45, 0x67, 0x89, 0x00, red} + Bytes(239, 0);
}

TEST_F(RegisterValues, FiscalMemoryReductionsScannedWithinBounds) {
  push(174, 0, registro(1, 0x01));
  push(174, 0, registro(2, 0x12));  // not a reduction record
  push(174, 1);                     // a failed read is passed over
  push(174, 0, registro(1, 0x12));
  std::string valor(21, 'x');
  EXPECT_EQ(E4RegMemFisc(12, valor.data()), 0);
  EXPECT_EQ(valor, std::string("25122024103023456789") + '\0');
  EXPECT_EQ(payloads(174), (Sent{{1, 0}, {2, 0}, {3, 0}, {4, 0}}));
  // The end of the records, a number past the memory, the current reduction.
  vp_clear_calls();
  push(174, 0, registro(1, 0x01));
  push(174, 0, registro(7));
  valor.assign(21, 'x');
  EXPECT_EQ(E4RegMemFisc(5, valor.data()), 2582);
  EXPECT_EQ(valor, std::string(21, '\0'));
  EXPECT_EQ(q(E4RegMemFisc, 2191), "2049:");
  reply(133, "0042");
  EXPECT_EQ(q(E4RegMemFisc, 0), "0:0042");
  EXPECT_EQ(vp_count_cmd(174), 2);
  EXPECT_EQ(payloads(133), Sent{{4}});
  // A printer failing every read is asked up to record 4096, then given up.
  vp_clear_calls();
  stick(174, 1);
  EXPECT_EQ(E4RegMemFisc(7, valor.data()), 2582);
  EXPECT_EQ(vp_count_cmd(174), 4096);
  EXPECT_EQ(payloads(174).back(), (Bytes{0x00, 0x10}));
}

}  // namespace
