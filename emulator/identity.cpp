// The identity a default virtual printer reports when a session opens.
#include <algorithm>
#include <array>
#include <string_view>

#include "printer.h"

namespace {

// One canned reply: `length` bytes, zero but for the pieces placed at their
// offsets; a one-byte escape such as "\x06" is a binary field.
struct Piece {
  std::size_t at = 0;
  std::string_view bytes;
};

struct CannedReply {
  std::string_view what;
  int cmd;
  int length;
  std::array<Piece, 4> pieces;
};

constexpr CannedReply kIdentity[] = {
    {"serial", 21, 22, {{{0, "\x01"}, {1, "ZD010203040506070809"}}}},
    {"model, firmware", 86, 10, {{{0, "\x06"}, {1, "V01.05.02"}}}},
    {"make, model text", 236, 18, {{{0, "ZANDOR"}, {7, "MZ-5600 FI"}}}},
    {"owner tax numbers", 28, 57,
     {{{1, "\x02"}, {14, "12.345.678/0001-90"}, {33, "123.456.789.110"}, {49, "4455667"}}}},
    {"sequence number", 61, 4, {{{0, "001"}}}},
    {"rounding (IAT)", 53, 1, {}},
    {"dates", 10, 33, {{{12, "22112026"}, {20, "1030"}, {25, "22112026"}}}},
    {"clock", 63, 15, {{{1, "22112026103000"}}}},
};

constexpr std::size_t kReplyRoom = 64;

constexpr bool fits(const CannedReply& r) {
  if (r.length < 0 || static_cast<std::size_t>(r.length) > kReplyRoom) return false;
  return std::ranges::all_of(r.pieces, [&r](const Piece& p) {
    return p.at + p.bytes.size() <= static_cast<std::size_t>(r.length);
  });
}
static_assert(std::ranges::all_of(kIdentity, fits), "a canned reply overflows its length");

}  // namespace

extern "C" __attribute__((visibility("default"))) void vp_answer_identity(void) {
  for (const CannedReply& r : kIdentity) {
    std::array<unsigned char, kReplyRoom> buf{};
    for (const Piece& p : r.pieces) std::ranges::copy(p.bytes, buf.begin() + p.at);
    vp_set_reply(r.cmd, 0, buf.data(), r.length);
  }
}
