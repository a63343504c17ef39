// Findings of the fuzz targets, and the fuzz mode of the virtual printer they
// rely on.
#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz.h"
#include "orbelan.h"
#include "support/fixture.h"

extern "C" int FC_Operacao(int cmd, int flag, int mode, int inlen, unsigned char* inbuf, int* aux,
                           int* outlen, unsigned char* outbuf);

using namespace orbtest;

namespace {

struct Answer {
  int result;
  int outlen;
  std::vector<std::uint8_t> bytes;
};

Answer ask(int cmd) {
  std::vector<std::uint8_t> out(256, 0);
  unsigned char in[2] = {1, 0};
  int aux = 0, outlen = 0;
  const int result = FC_Operacao(cmd, 1, 0, 2, in, &aux, &outlen, out.data());
  return {result, outlen, out};
}

}  // namespace

// A printer that answers every fiscal-memory read with an empty success never
// shows the end mark: the search for a reduction gives up after 4096 records
// instead of walking the whole 16-bit index (65535 commands).
TEST_F(Session, RegMemFiscStopsOnAPrinterThatNeverEnds) {
  stick(174, 0);
  char valor[21] = {'x'};
  EXPECT_EQ(E4RegMemFisc(12, valor), 2582);
  EXPECT_EQ(vp_count_cmd(174), 4096);
  EXPECT_EQ(std::vector<char>(valor, valor + 21), std::vector<char>(21, '\0'));
}

// Register values, subtotals and payment totals arrive as texts of any length.
// A reply full of nines is read as the largest value; the sums, differences
// and whole-number conversions built on it stay at the end of the range
// instead of overflowing (which wrapped them to zero or garbage, and is
// undefined). Values keep their last 18 digits when written.
TEST_F(Session, HugeValuesInRepliesSaturate) {
  const std::string nines(25, '9');
  const std::string largest = "223372036854775807";  // LLONG_MAX cut to 18 digits
  char valor[19];
  // Registers 7, 17 and 114 summed.
  stick(133, 0, bytes_with(30, 1, nines));
  ASSERT_EQ(E4ValAtu(7, valor), 0);
  EXPECT_EQ(std::string(valor), largest);
  // Gross daily sales, some forty registers; the net is gross less deductions.
  ASSERT_EQ(E4ValAtu_JP(85, valor), 0);
  EXPECT_EQ(std::string(valor), largest);
  EXPECT_EQ(E4ValAtu_JP(93, valor), 0);
  // Reductions left, from a reduction count far below zero.
  stick(133, 0, bytes_with(30, 1, "-" + nines));
  EXPECT_EQ(E4ValAtu(106, valor), 0);
  // The amount due: a subtotal beyond the range of a whole number.
  state(2);
  stick(138, 0, bytes_with(20, 0, "9999999999999999999"));
  ASSERT_EQ(E4InfCup(504, valor), 0);
  EXPECT_EQ(std::string(valor), largest);
  // What was received: the payment registers summed.
  state(0);
  stick(38, 0, {60, 61, 62});
  stick(134, 0, bytes_with(30, 1, nines));
  EXPECT_EQ(E4InfCup(501, valor), 0);
  // A percentage increase between subtotals at the two ends of the range adds
  // nothing that can be written: the text stays as given.
  state(2);
  stick(133, 0, bytes_with(10, 1, "000042"));
  push(138, 0, bytes_with(20, 0, "-9999999999999999999"));
  push(138, 0, bytes_with(20, 0, "9999999999999999999"));
  char acrescimo[13] = "15,00";
  EXPECT_EQ(E4AcrIt(2, 20, 1, acrescimo, nullptr), 0);
  EXPECT_STREQ(acrescimo, "15,00");
}

// A transcript fed back replays the same results and reported lengths (the
// two-byte size form and the odd lengths included); once it is used up every
// command answers an empty success, and scripted replies are not consulted.
TEST_F(Fresh, FuzzModeReplaysATranscript) {
  struct Scripted {
    int result;
    std::vector<std::uint8_t> bytes;
    int reported;
  };
  const std::vector<Scripted> kReplies = {
      {0, {}, 0},          {2582, {1, 2, 3}, 3}, {65536 + 5, {9}, -1},
      {0, std::vector<std::uint8_t>(200, 7), 200}, {7, {1, 2}, 14},  {0, {1}, INT_MIN},
      {-3, {}, INT_MAX},   {0, {4, 5}, 100000},
  };
  for (std::size_t i = 0; i < kReplies.size(); ++i) {
    const auto& r = kReplies[i];
    vp_push_reply_len(50, r.result, r.bytes.data(), static_cast<int>(r.bytes.size()), r.reported);
  }
  vp_fuzz_transcribe(1);
  std::vector<Answer> first;
  for (std::size_t i = 0; i < kReplies.size(); ++i) first.push_back(ask(50));
  vp_fuzz_transcribe(0);

  int size = 0;
  const unsigned char* t = vp_fuzz_transcript(&size);
  const std::vector<unsigned char> transcript(t, t + size);
  stick(50, 99);
  vp_fuzz_feed(transcript.data(), size);
  for (std::size_t i = 0; i < kReplies.size(); ++i) {
    const Answer again = ask(50);
    EXPECT_EQ(again.result, first[i].result) << i;
    EXPECT_EQ(again.outlen, first[i].outlen) << i;
#if defined(__SANITIZE_ADDRESS__)
    // The bytes are written only where AddressSanitizer tells the buffer's size.
    EXPECT_EQ(again.bytes, first[i].bytes) << i;
#endif
  }
  EXPECT_EQ(vp_fuzz_remaining(), 0);
  const Answer spent = ask(50);
  EXPECT_EQ(spent.result, 0);
  EXPECT_EQ(spent.outlen, 0);
  vp_fuzz_end();
  EXPECT_EQ(ask(50).result, 99);
}
