// Cash drawer and bar code: thin commands on devices attached to the printer.
// Only the exported functions (E4OpenGv, E4StatGv, E4ImpCodB) live here.
#pragma once

#include <cstddef>

namespace orbelan {

// Longest bar code the library sends: it and its NUL fill the 50-byte input
// behind the 7 bytes of header.
inline constexpr std::size_t kMaxCodBarra = 42;

}  // namespace orbelan
