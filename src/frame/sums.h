// Adding up the values the printer reports as text. A reply can hold any
// number of digits, so a value is read with the conversion that stops at the
// ends of the 64-bit range, and sums, differences and whole numbers taken from
// such values stop there too instead of overflowing.
#pragma once

#include <climits>
#include <cstdlib>

namespace orbelan {

// The number a value text starts with (blanks, sign and digits), or the
// nearest end of the range when it has more digits than that holds.
inline long long valor_texto(const char* texto) {
  return texto != nullptr ? std::strtoll(texto, nullptr, 10) : 0;
}

// a + b, held at the end of the range it would pass.
inline long long soma_limitada(long long a, long long b) {
  long long r = 0;
  if (__builtin_add_overflow(a, b, &r)) return b > 0 ? LLONG_MAX : LLONG_MIN;
  return r;
}

// a - b, held at the end of the range it would pass.
inline long long diferenca_limitada(long long a, long long b) {
  long long r = 0;
  if (__builtin_sub_overflow(a, b, &r)) return b < 0 ? LLONG_MAX : LLONG_MIN;
  return r;
}

// A figure computed in floating point as a whole number (truncated toward
// zero), held at the ends of the range; 0 for a figure that is not a number.
inline long long inteiro_limitado(double v) {
  if (v != v) return 0;
  if (v >= 9223372036854775808.0) return LLONG_MAX;
  if (v < -9223372036854775808.0) return LLONG_MIN;
  return static_cast<long long>(v);
}

}  // namespace orbelan
