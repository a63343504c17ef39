// Variants of the partial-register and register-value functions for the
// second application family: the exported E4RPCria_JP, E4RPLe_JP,
// E4RPProx_JP, E4ValAtu_JP and E4ValAtuEsp_JP (declared in orbelan.h) and the
// register switch behind the value queries.
#pragma once

#include <cstdint>

#include "orbelan.h"

namespace orbelan {

// The current value of register `Reg` as the variant family numbers it (store
// number, journal figures, daily totals and sums besides the printer's own
// registers). Valor holds 19 bytes (NULL is not written). Returns the
// translated code; 2049 for a number the variant does not serve.
std::uint16_t Ler_Valor_Atual_Reg_Fiscal_JP(std::uint32_t Reg, char* Valor);

}  // namespace orbelan
