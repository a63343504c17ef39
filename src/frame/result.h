// Result codes: the translation of printer codes into the library's own.
#pragma once

#include <cstdint>

namespace orbelan {

// Last raw printer code seen by TrataRetorno (0..386 or 8192..8196).
extern std::int32_t HWError;

// The library code for a driver code (unchanged when the table has no entry).
std::uint16_t traduz_codigo(std::int32_t code);

// Every operation's final result passes through here: remembers printer codes,
// reads the driver's last error after a failure, translates and traces.
std::uint16_t TrataRetorno(std::int32_t code);

}  // namespace orbelan
