// Management reports and free printing.
#pragma once

#include <cstdint>

namespace orbelan {

// Characters per printed line; lines read from a file are cut to it.
extern std::int32_t CPL;

// Opens a management report of kind `tipo` (command 220, sent as 't' + tipo).
std::uint16_t Abre_Gerencial(int tipo);

// Closes the management report (command 221) with the operator's name.
std::uint16_t Finaliza_Relatorio_Gerencial(std::int32_t qtdeAvanco, char CortaPapel);

}  // namespace orbelan
