// Fiscal memory and electronic journal: the printed fiscal-memory reading, the
// transfers to a file, and the journal's capacity figures.
#pragma once

#include <cstdint>

namespace orbelan {

// The journal's size in bytes as text ("268435456", "536870912" or
// "1073741824"; empty for an unknown size code; Tamanho holds 11 bytes) and
// its free share as "0" and four digits in hundredths of a percent
// (PercentualLivre holds 6 bytes). NULL outputs are not written. Returns the
// translated code.
std::uint16_t Ler_Detalhes_MFD(char* Tamanho, char* PercentualLivre);

// Free bytes of the journal, 16 characters zero-filled in front (Valor holds
// 17 bytes). Returns the translated code of the details read.
std::uint16_t Calcular_Qtde_MFD_Disponivel(char* Valor);

// Used share of the journal in hundredths of a percent, 6 characters
// zero-filled in front (Valor holds 7 bytes). Returns the translated code.
std::uint16_t Calcular_Percentual_MFD_Utilizada(char* Valor);

// Reductions the fiscal memory can still take, 4 characters zero-filled in
// front (Valor holds 5 bytes). Returns the code of the register read.
std::uint16_t Calcular_Qtde_Reducoes_Restantes(char* Valor);

// The journal's serial number, 14 characters and a NUL (Serie holds 15 bytes).
// Returns the translated code.
std::uint16_t ConsultaNumeroSerieMFD(char* Serie);

}  // namespace orbelan
