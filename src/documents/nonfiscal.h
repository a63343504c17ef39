// Non-fiscal coupons: opening, their operations (E4OpeCNF) and closing.
#pragma once

#include <cstdint>

namespace orbelan {

// Opens a non-fiscal coupon (command 157), carrying the stored consumer
// identification when there is one. `Informacao` (NULL = absent) is cut to 84
// characters.
std::uint16_t Abre_Cupom_Nao_Fiscal(const char* Informacao);

// Closes the non-fiscal coupon (command 158) with the operator's name, after
// printing `msg` (NULL or empty = no message); then advances `qtdeAvanco` lines
// when at least 1 and cuts when `CortaPapel` is non-zero.
std::uint16_t Finaliza_Cupom_Nao_Fiscal(const char* msg, std::int32_t qtdeAvanco, char CortaPapel);

}  // namespace orbelan
