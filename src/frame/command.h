// Laying out a driver command's input and issuing it.
//
//   Input in;
//   in.seq().byte(reg).text(name).u16(item);
//   Reply<60> r;
//   std::uint16_t ret = executa(28, 1, in, r);
//
// The input builder refuses to grow past its capacity (the command is then not
// sent, result 2049); the reply buffer is zeroed before the call and the reply
// length the driver reports is clamped to it.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace orbelan {

// Writes the next sequence field into the first two bytes of buf.
void Proximo_Sequencial(std::uint8_t* buf);

class Input {
 public:
  static constexpr std::size_t kCapacity = 1024;

  // The two-byte sequence field of the command.
  Input& seq() {
    if (room(2)) {
      Proximo_Sequencial(bytes_.data() + len_);
      len_ += 2;
    }
    return *this;
  }
  Input& byte(std::uint8_t b) {
    if (room(1)) bytes_[len_++] = b;
    return *this;
  }
  // 16-bit value, low byte first.
  Input& u16(std::uint16_t v) { return byte(static_cast<std::uint8_t>(v & 0xFF)).byte(static_cast<std::uint8_t>(v >> 8)); }
  // Raw bytes, no terminator.
  Input& raw(const void* data, std::size_t n) {
    if (room(n)) {
      if (n != 0) std::memcpy(bytes_.data() + len_, data, n);
      len_ += n;
    }
    return *this;
  }
  Input& raw(std::string_view s) { return raw(s.data(), s.size()); }
  // A text followed by its NUL terminator.
  Input& text(std::string_view s) { return raw(s).byte(0); }
  // n zero bytes.
  Input& zeros(std::size_t n) {
    if (room(n)) len_ += n;  // the buffer starts zeroed
    return *this;
  }

  bool ok() const { return !overrun_; }
  int size() const { return static_cast<int>(len_); }
  std::uint8_t* data() { return bytes_.data(); }
  const std::uint8_t* data() const { return bytes_.data(); }

 private:
  bool room(std::size_t n) {
    if (overrun_ || n > kCapacity - len_) {
      overrun_ = true;
      return false;
    }
    return true;
  }
  std::array<std::uint8_t, kCapacity> bytes_{};
  std::size_t len_ = 0;
  bool overrun_ = false;
};

// A zeroed reply buffer of N bytes and the reply length (clamped to N).
template <std::size_t N>
struct Reply {
  std::array<std::uint8_t, N> b{};
  std::int32_t len = 0;

  std::uint8_t operator[](std::size_t i) const { return i < N ? b[i] : 0; }
  // The NUL-terminated text starting at `from`, bounded by the buffer.
  std::string_view text(std::size_t from) const {
    if (from >= N) return {};
    const auto* p = reinterpret_cast<const char*>(b.data() + from);
    return {p, strnlen(p, N - from)};
  }
  // `n` bytes from `from` as text (stops at the buffer's end, not at NULs).
  std::string_view field(std::size_t from, std::size_t n) const {
    if (from >= N) return {};
    return {reinterpret_cast<const char*>(b.data() + from), std::min(n, N - from)};
  }
};

// Issues one driver command through Executa_FC_Operacao with zeroed aux and
// length words; returns the low 16 bits of the driver's result (or 2900/2049).
std::uint16_t executa_raw(int cmd, int flag, int mode, Input& in, std::uint8_t* out,
                          std::size_t outsize, std::int32_t& outlen);

template <std::size_t N>
std::uint16_t executa(int cmd, int flag, Input& in, Reply<N>& r, int mode = 0) {
  r.b.fill(0);
  r.len = 0;
  return executa_raw(cmd, flag, mode, in, r.b.data(), N, r.len);
}

}  // namespace orbelan
