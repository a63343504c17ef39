// Variants of the coupon and payment functions for the second application
// family: the exported E4IniCP_JP, E4RegPag_JP, E4RegPagEsp_JP,
// E4EstornaPgto_JP, E4CanCP_JP, E4CanCPEsp_JP, E4CanCupEsp_JP, E4FimCPEsp_JP
// and E4FimDoc_JP (declared in orbelan.h), and the additional coupon print.
#pragma once

#include <cstdint>

#include "orbelan.h"

namespace orbelan {

// The payment register last found described as "OUTROS"; tried first by the
// next payment asked for on register 0. Initially 0.
extern std::uint8_t RPPag;

// Prints the additional coupon (command 201). Returns the translated code.
std::uint16_t ImprimeCupomAdicional();

}  // namespace orbelan
