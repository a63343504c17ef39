// General registers: reading one register's current value, with or without a
// check that the register is programmed, and the value switch used by the
// exported value query.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

namespace orbelan {

// Room the register reads use in a value output: 18 characters and a NUL.
inline constexpr std::size_t kTamValorRegistrador = 19;

// Reads general register `Reg` with `Comando` (133 current value, 134 coupon
// value, 137 coupon value of a non-fiscal totaliser) into Valor, which holds
// `Tam` bytes (NULL is not written). With Verifica non-zero a tax, totaliser,
// payment or discount register is first looked up in the printer's list of
// programmed registers; an unprogrammed one reads as sixteen "0". Returns the
// translated code.
std::uint16_t Executa_Leitura_Registrador_Geral(int Comando, int Reg, char* Valor, int Verifica,
                                                std::size_t Tam = kTamValorRegistrador);

// The current value of register `Reg` as the application numbers it (some
// numbers are mapped, 7, 8 and 9 are sums). Valor holds 19 bytes; for Reg 200
// it receives one signed byte. Returns the translated code.
std::uint16_t Ler_Valor_Atual_Reg_Fiscal(int Reg, char* Valor);

// Reads the registers in order with `Comando` (no programmed check) and adds
// their values up; stops at the first failure, `soma` then holding what was
// read before it. Returns 0 or the translated code of the failed read.
std::uint16_t Soma_Registradores(int Comando, std::initializer_list<int> Regs, long long& soma);

// Writes a computed value as 18 digits, zero-filled in front, into Valor
// (which should hold 19 bytes; a smaller span gets the value cut).
void Escreve_Soma(long long soma, std::span<char> Valor);

}  // namespace orbelan
