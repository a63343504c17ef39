// Fuzz mode of the virtual printer.
//
// The fed input is read front to back, one reply per FC_Operacao call:
//
//   result      1 byte: below 0xC0 success (0); 0xC0 to 0xEF a 16-bit driver
//               code follows (2 bytes, low first); 0xF0 and above a whole
//               32-bit result follows (4 bytes, low first), of which the
//               library keeps the low half.
//   size        1 byte: below 0x80 the number of reply bytes; otherwise a
//               second byte follows and the size is (first & 0x7F) << 8 |
//               second, at most VP_MAX_REPLY.
//   reported    1 byte: the reply length told to the caller. Below 0xE0 the
//               size itself; 0xE0 to 0xEF a shorter length (0 to 15); 0xF0 -1;
//               0xF1 INT_MAX; 0xF2 INT_MIN; 0xF3 and above a raw 32-bit value
//               follows (4 bytes, low first).
//   bytes       `size` reply bytes (fewer if the input ends first).
//
// Missing bytes at the end of the input read as 0; once nothing is left, each
// command answers an empty success.
//
// The driver has no way to learn the size of the caller's reply buffer, and a
// real printer never writes more than the reply of the command. The fuzz
// printer therefore writes no more bytes than AddressSanitizer allows at the
// buffer (its shadow memory knows where the caller's object ends), so every
// overrun found is the library's and not the stand-in's. Without
// AddressSanitizer nothing tells the size, and only results and reported
// lengths are fuzzed: no reply bytes are written.
#include "fuzz.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <vector>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VP_FUZZ_ASAN 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define VP_FUZZ_ASAN 1
#endif
#ifdef VP_FUZZ_ASAN
#include <sanitizer/asan_interface.h>
#endif

namespace vprinter {
namespace {

// Calls kept in the record in fuzz mode before it is cleared.
constexpr int kKeptCalls = 64;

struct FuzzInput {
  bool active = false;
  std::vector<std::uint8_t> bytes;
  std::size_t pos = 0;

  std::size_t left() const { return bytes.size() - pos; }
  std::uint8_t u8() { return pos < bytes.size() ? bytes[pos++] : 0; }
  std::uint32_t u32() {
    std::uint32_t v = 0;
    for (int i = 0; i < 4; ++i) v |= static_cast<std::uint32_t>(u8()) << (8 * i);
    return v;
  }
};

FuzzInput& input() {
  static FuzzInput in;
  return in;
}

// How many of the `want` bytes at `p` the caller's object can take.
std::size_t writable(const unsigned char* p, std::size_t want) {
  if (p == nullptr || want == 0) return 0;
#ifdef VP_FUZZ_ASAN
  const void* bad = __asan_region_is_poisoned(const_cast<unsigned char*>(p), want);
  return bad == nullptr ? want : static_cast<std::size_t>(static_cast<const unsigned char*>(bad) - p);
#else
  return 0;
#endif
}

int result_from(FuzzInput& in) {
  const std::uint8_t sel = in.u8();
  if (sel < 0xC0) return 0;
  if (sel < 0xF0) {
    const std::uint8_t lo = in.u8();
    return lo | (in.u8() << 8);
  }
  return static_cast<int>(in.u32());
}

std::size_t size_from(FuzzInput& in) {
  const std::uint8_t first = in.u8();
  if (first < 0x80) return first;
  const std::size_t size = static_cast<std::size_t>(first & 0x7F) << 8 | in.u8();
  return size < VP_MAX_REPLY ? size : VP_MAX_REPLY;
}

int reported_from(FuzzInput& in, std::size_t size) {
  const std::uint8_t sel = in.u8();
  if (sel < 0xE0) return static_cast<int>(size);
  if (sel < 0xF0) return sel - 0xE0;
  switch (sel) {
    case 0xF0: return -1;
    case 0xF1: return INT_MAX;
    case 0xF2: return INT_MIN;
    default: return static_cast<int>(in.u32());
  }
}

struct Transcript {
  bool on = false;
  std::vector<std::uint8_t> bytes;

  void u8(std::uint8_t b) { bytes.push_back(b); }
  void u32(std::uint32_t v) {
    for (int i = 0; i < 4; ++i) u8(static_cast<std::uint8_t>(v >> (8 * i)));
  }
};

Transcript& transcript() {
  static Transcript t;
  return t;
}

}  // namespace

void transcribe(const Reply& reply) {
  Transcript& t = transcript();
  if (!t.on) return;
  if (reply.result == 0) {
    t.u8(0);
  } else if (reply.result > 0 && reply.result <= 0xFFFF) {
    t.u8(0xC0);
    t.u8(static_cast<std::uint8_t>(reply.result & 0xFF));
    t.u8(static_cast<std::uint8_t>(reply.result >> 8));
  } else {
    t.u8(0xF0);
    t.u32(static_cast<std::uint32_t>(reply.result));
  }
  const std::size_t size = std::min<std::size_t>(reply.data.size(), 0x7FFF);
  if (size < 0x80) {
    t.u8(static_cast<std::uint8_t>(size));
  } else {
    t.u8(static_cast<std::uint8_t>(0x80 | size >> 8));
    t.u8(static_cast<std::uint8_t>(size & 0xFF));
  }
  if (reply.reported == static_cast<int>(size)) {
    t.u8(0);
  } else if (reply.reported >= 0 && reply.reported < 16) {
    t.u8(static_cast<std::uint8_t>(0xE0 + reply.reported));
  } else {
    t.u8(0xF3);
    t.u32(static_cast<std::uint32_t>(reply.reported));
  }
  t.bytes.insert(t.bytes.end(), reply.data.begin(), reply.data.begin() + static_cast<std::ptrdiff_t>(size));
}

bool take_fuzzed(const unsigned char* outbuf, Reply& out) {
  FuzzInput& in = input();
  if (!in.active) return false;
  // The call has been recorded (its input bytes copied, which also checks the
  // input length the library gave); a fuzzer makes too many calls to keep them.
  if (vp_call_count() > kKeptCalls) vp_clear_calls();
  out = Reply{};
  if (in.left() == 0) return true;
  out.result = result_from(in);
  const std::size_t size = size_from(in);
  out.reported = reported_from(in, size);
  const std::size_t taken = size < in.left() ? size : in.left();
  const std::size_t kept = writable(outbuf, taken);
  out.data.assign(in.bytes.begin() + static_cast<std::ptrdiff_t>(in.pos),
                  in.bytes.begin() + static_cast<std::ptrdiff_t>(in.pos + kept));
  in.pos += taken;
  return true;
}

}  // namespace vprinter

extern "C" {

__attribute__((visibility("default"))) void vp_fuzz_feed(const void* data, int size) {
  auto& in = vprinter::input();
  in.active = true;
  in.pos = 0;
  in.bytes.clear();
  if (data != nullptr && size > 0) {
    const auto* p = static_cast<const std::uint8_t*>(data);
    in.bytes.assign(p, p + size);
  }
}

__attribute__((visibility("default"))) void vp_fuzz_end(void) {
  auto& in = vprinter::input();
  in.active = false;
  in.bytes.clear();
  in.pos = 0;
}

__attribute__((visibility("default"))) void vp_fuzz_transcribe(int on) {
  auto& t = vprinter::transcript();
  if (on != 0 && !t.on) t.bytes.clear();
  t.on = on != 0;
}

__attribute__((visibility("default"))) const unsigned char* vp_fuzz_transcript(int* size) {
  const auto& t = vprinter::transcript();
  if (size != nullptr) *size = static_cast<int>(t.bytes.size());
  return t.bytes.data();
}

__attribute__((visibility("default"))) int vp_fuzz_remaining(void) {
  const auto& in = vprinter::input();
  return in.active ? static_cast<int>(in.left()) : 0;
}

}  // extern "C"
