// Authentication of a document inserted by the operator, through the document
// processor library ("autentica") or the printer's document station.
#pragma once

#include <cstdint>

namespace orbelan {

// Mode codes handed to the library's "autentica".
inline constexpr int kAutHorizontalComTracao = 57;  // E4Aut, E4AutEsp type 1
inline constexpr int kAutHorizontalSemTracao = 56;  // E4AutEsp type 2
inline constexpr int kAutVertical = 55;             // E4AutEsp type 3

// Fills the fiscal data records from the printer and hands them to the
// library's "carregaECF". Returns the library's value (0 = success); 2900 when
// the entry point is not resolved.
int CarregaDadosECF();

}  // namespace orbelan
