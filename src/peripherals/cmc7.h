// Reading the CMC7 magnetic line of a cheque, from the document processor
// library or from the printer's document station.
#pragma once

#include <cstddef>

namespace orbelan {

// Maps the printer's separator symbols to the ones applications expect, in
// place, up to the text's NUL or `size` bytes, in one pass: "/" -> ">",
// "=" -> "<", "^" -> "=" (an "=" produced here is not mapped again). NULL is
// left alone.
void Prepara_Buffer_CMC7(char* text, std::size_t size);

}  // namespace orbelan
