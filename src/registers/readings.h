// X reading and Z reduction.
#pragma once

#include <cstdint>

namespace orbelan {

// Prints the X reading; a Param starting with "1" opens management report 0
// after it. Returns the translated code.
std::uint16_t LeituraX(const char* Param);

// Turns the time "HHMM" (first four characters of Texto) into the count 0..5
// the reduction command carries. Always returns 0.
std::uint16_t CalcularMinutos(const char* Texto, std::uint8_t* Valor);

// Prints the Z reduction. Hora: byte 0 a flag character (NUL: none), bytes 1..4
// a time HHMM passed on with it. Returns the translated code.
std::uint16_t ReducaoZ(const char* Hora);

}  // namespace orbelan
