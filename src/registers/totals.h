// Daily totals the printer does not keep itself: the gross and the net sales
// of the day, each a sum over many general registers.
#pragma once

#include <cstdint>

namespace orbelan {

// Gross sales of the day, 18 characters zero-filled in front (Valor holds 19
// bytes; NULL is not written). Verifica non-zero asks every register read for
// the programmed check first. Returns the code untranslated: the caller
// translates.
std::uint16_t Calcular_Venda_Bruta_Diaria(int Verifica, char* Valor);

// Net sales of the day: the gross sales less the cancellations, discounts and
// the service registers. Same output and result as the gross sales.
std::uint16_t Calcular_Venda_Liquida_Diaria(int Verifica, char* Valor);

// A register switch: the value of one number into a 19-byte text.
using LeitorValor = std::uint16_t (*)(int Reg, char* Valor);

// The steps of E4ValAtu with `quem` naming the function in the trace and
// `ler` the register switch; the number `numero_byte` (-1: none) yields one
// signed byte instead of a text. Valor holds 19 bytes (NULL is not written).
// Translated result.
std::uint16_t Le_Valor_Atual(const char* quem, std::uint8_t Reg, char* Valor, LeitorValor ler, int numero_byte);

}  // namespace orbelan
