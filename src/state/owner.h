// The printer's owner data.
#pragma once

#include <cstdint>

namespace orbelan {

// out[0] = index of the current owner, out[1] = owner changes still possible.
std::uint16_t Ler_Indice_Proprietario(std::uint8_t* out);
// The current owner's registration date and time, 12 digits and a NUL (13
// bytes). Returns the driver's result untranslated.
std::int32_t Ler_DataHora_Proprietario_Atual(char* out);

}  // namespace orbelan
