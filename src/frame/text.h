// Small helpers for the texts that cross the C interface: a NULL text reads as
// empty, a NULL output is not written, every copy is bounded by its buffer.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>

namespace orbelan {

// A caller's text for the trace: NULL reads as empty.
inline const char* txt(const char* s) { return s != nullptr ? s : ""; }

// A caller's text; NULL reads as empty.
inline std::string_view in_text(const char* s) { return s != nullptr ? std::string_view{s} : std::string_view{}; }

// A caller's text read at most `max` characters far (the rest is never looked at).
inline std::string_view in_text(const char* s, std::size_t max) {
  return s != nullptr ? std::string_view{s, strnlen(s, max)} : std::string_view{};
}

// Copies `src` into `dst` cut to its size and NUL-terminated; returns the length
// copied. An empty span writes nothing.
inline std::size_t copy_text(std::span<char> dst, std::string_view src) {
  if (dst.empty()) return 0;
  const std::size_t n = std::min(src.size(), dst.size() - 1);
  if (n != 0) std::memcpy(dst.data(), src.data(), n);
  dst[n] = '\0';
  return n;
}

template <std::size_t N>
std::size_t copy_text(std::array<char, N>& dst, std::string_view src) {
  return copy_text(std::span<char>{dst}, src);
}

// The text held in a fixed buffer, up to its NUL (or the buffer's end).
template <std::size_t N>
std::string_view view(const std::array<char, N>& a) {
  return {a.data(), strnlen(a.data(), N)};
}
inline std::string_view view(const char* s, std::size_t n) { return {s, strnlen(s, n)}; }

// Writes `src` and a NUL to a caller's output whose size the interface does not
// tell; `room` is the most the library ever writes there. NULL is not written.
inline void copy_out(char* dst, std::string_view src, std::size_t room) {
  if (dst == nullptr) return;
  copy_text(std::span<char>{dst, room}, src);
}

}  // namespace orbelan
