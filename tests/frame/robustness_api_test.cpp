// Callers passing NULL, and a driver reporting more reply bytes than the
// reply buffer holds.
#include <cstring>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

void call_everything_with_null() {
  E4GetError(nullptr);
  E4InfECF(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  for (int opc = -1; opc <= 11; ++opc) E4InfEspECF(opc, nullptr);
  E4Status(nullptr);
  E4StaECF(nullptr, nullptr);
  E4RdData(nullptr, nullptr, nullptr, nullptr, nullptr);
}

// A reply filling `size` bytes with no terminator anywhere, reported as far
// longer than any reply buffer.
void oversized(int cmd, std::size_t size, std::uint8_t marker_at, std::uint8_t marker) {
  std::vector<std::uint8_t> b(size, 'A');
  b[marker_at] = marker;
  vp_set_reply_len(cmd, 0, b.data(), static_cast<int>(b.size()), 100000);
}

}  // namespace

TEST_F(Fresh, NullArgumentsClosedAndOpen) {
  call_everything_with_null();
  vp_answer_identity();
  ASSERT_EQ(E4OpenEsp(nullptr, 0), 0);
  push(30, 0, {1, 'C', 0, 'X', 0, 'E', 0});
  push(27, 0, {2});
  call_everything_with_null();
  EXPECT_EQ(E4Close(), 0);
}

TEST_F(Fresh, ReplyLengthsBeyondTheBufferAreClamped) {
  oversized(21, 25, 0, 1);
  oversized(86, 10, 0, 6);
  oversized(236, 50, 0, 'A');
  oversized(28, 60, 1, 2);
  oversized(61, 10, 0, 'A');
  oversized(53, 10, 0, 1);
  oversized(10, 40, 0, 'A');
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_TRUE(logged("Executa_FC_Operacao5600 - fim com ret=0 tamanho=100000 "));

  oversized(30, 255, 0, 1);
  oversized(5, 20, 0, 'A');
  oversized(6, 10, 0, 'A');
  oversized(3, 15, 0, 'A');
  oversized(27, 10, 0, 'A');
  oversized(24, 10, 0, 'A');
  char big[600];
  char small[32];
  unsigned char b1, b2;
  unsigned int err;
  EXPECT_EQ(E4InfECF(small, small, small, small, big, small, small, &b1), 0);
  EXPECT_EQ(std::strlen(big), 254u + 2);
  for (int opc = 0; opc <= 10; ++opc) EXPECT_EQ(E4InfEspECF(opc, big), 0) << opc;
  unsigned char model;  // option 0 writes one byte
  EXPECT_EQ(E4InfEspECF(0, reinterpret_cast<char*>(&model)), 0);
  EXPECT_EQ(model, 6);
  EXPECT_EQ(E4Status(small), 0);
  EXPECT_EQ(E4StaECF(&b1, &b2), 0);
  EXPECT_EQ(E4RdData(small, small, &b1, small, &b2), 0);
  EXPECT_EQ(E4Verao(1), 0);
  EXPECT_EQ(E4GetError(&err), 0);
  EXPECT_EQ(err, 0x4141u);
  EXPECT_EQ(E4Close(), 0);
}
