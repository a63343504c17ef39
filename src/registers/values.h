// General registers: reading one register's current value, with or without a
// check that the register is programmed, and the value switch used by the
// exported value query.
#pragma once

#include <array>
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

// ---- value switches as tables -------------------------------------------------

// One register read of a switch line: the register (kMesmoNumero: the number
// requested) and whether the programmed check comes first.
struct Parcela {
  int reg;
  int verifica;
};
inline constexpr int kMesmoNumero = -1;

// What a sum does when one of its reads fails; the reads stop there.
enum class FalhaSoma : std::uint8_t {
  Interrompe,     // nothing is written, the failure is the result
  AceitaAusente,  // a 2582 (register the printer lacks) still writes what was read, result 0
  AceitaParcial,  // after at least one good read, what was read is written, result 0
};

// A value the library computes rather than reads; writes at most 19 bytes.
using CalculoValor = std::uint16_t (*)(char* Valor);

// One line of a value switch: the requested numbers de..ate are served by
// `calculo` when it is set, otherwise by reading the first `n` parts with
// command 133. One part gives the register's text; more give their sum as 18
// characters.
struct LinhaValor {
  std::uint32_t de = 0;
  std::uint32_t ate = 0;
  std::array<Parcela, 4> partes{};
  std::size_t n = 0;
  FalhaSoma falha = FalhaSoma::Interrompe;
  CalculoValor calculo = nullptr;
};

// Numbers de..ate read from register `reg` (or each from itself).
constexpr LinhaValor LinhaLeitura(std::uint32_t de, std::uint32_t ate, int reg = kMesmoNumero, int verifica = 0) {
  LinhaValor l;
  l.de = de;
  l.ate = ate;
  l.partes[0] = {reg, verifica};
  l.n = 1;
  return l;
}

// Number `numero` as the sum of the registers `partes` (at most four).
constexpr LinhaValor LinhaSoma(std::uint32_t numero, std::initializer_list<Parcela> partes,
                               FalhaSoma falha = FalhaSoma::Interrompe) {
  LinhaValor l;
  l.de = l.ate = numero;
  for (const Parcela& p : partes)
    if (l.n < l.partes.size()) l.partes[l.n++] = p;
  l.falha = falha;
  return l;
}

// Number `numero` computed by `calculo`.
constexpr LinhaValor LinhaCalculo(std::uint32_t numero, CalculoValor calculo) {
  LinhaValor l;
  l.de = l.ate = numero;
  l.calculo = calculo;
  return l;
}

// A value switch: its name in the trace, its lines (the first that holds a
// number serves it) and the number whose value is one signed byte rather
// than a text (-1: none).
struct MapaValores {
  const char* nome;
  std::span<const LinhaValor> linhas;
  int numero_byte;
};

// Serves `Reg` through `mapa` into Valor (19 bytes; NULL is not written):
// entry and exit lines under the switch's name, 2869 without a session, and
// the "Registrador invalido" line with 2049 for a number no line holds.
// Returns the translated code.
std::uint16_t Ler_Valor_Mapeado(const MapaValores& mapa, int Reg, char* Valor);

// Reads the registers in order with `Comando` (no programmed check) and adds
// their values up; stops at the first failure, `soma` then holding what was
// read before it. Returns 0 or the translated code of the failed read.
std::uint16_t Soma_Registradores(int Comando, std::initializer_list<int> Regs, long long& soma);

// Writes a computed value as 18 digits, zero-filled in front, into Valor
// (which should hold 19 bytes; a smaller span gets the value cut).
void Escreve_Soma(long long soma, std::span<char> Valor);

}  // namespace orbelan
