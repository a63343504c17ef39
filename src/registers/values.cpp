// General registers: one register's value as the printer returns it, the
// check that a partial register is programmed, and the number switch behind
// the exported value query.
#include "registers/values.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <initializer_list>
#include <span>
#include <string_view>

#include "documents/adjustments.h"
#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/encodings.h"
#include "frame/identity.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"
#include "registers/journal.h"

namespace orbelan {

namespace {

constexpr std::uint16_t kArgumentoInvalido = 2049;
constexpr std::uint16_t kRegistradorNaoEncontrado = 2582;

// Leading characters the programmed check writes for a register it finds
// unprogrammed.
constexpr std::size_t kZerosNaoProgramado = 16;

// Registers whose programmed state the check looks up: the tax rates, the
// non-fiscal totalisers, the payment methods and the service registers.
bool verificavel(int reg) {
  return (reg >= 20 && reg <= 34) || (reg >= 36 && reg <= 39) || (reg >= 40 && reg <= 54) ||
         (reg >= 60 && reg <= 78) || (reg >= 100 && reg <= 114) || reg == 134 || reg == 135;
}

// The category whose list holds the register (command 37).
std::uint8_t categoria_da_lista(int reg) {
  if (reg >= 20 && reg <= 34) return 2;
  if (reg >= 40 && reg <= 54) return 1;
  if (reg >= 60 && reg <= 78) return 5;
  return 4;
}

// The register a requested number is read from, or -1 when the number is not
// served by a plain read (sums and computed entries are handled apart).
int registrador_mapeado(int reg) {
  if ((reg >= 0 && reg <= 5) || (reg >= 11 && reg <= 14) || (reg >= 16 && reg <= 34) ||
      (reg >= 36 && reg <= 54) || (reg >= 60 && reg <= 79) || (reg >= 81 && reg <= 94) ||
      (reg >= 116 && reg <= 131) || reg == 133)
    return reg;
  switch (reg) {
    case 15: return 136;
    case 80: return 137;
    case 95: return 80;
    case 103: return 115;
    case 104: return 138;
    default: return -1;
  }
}

}  // namespace

// Amounts the printer keeps are never negative; a difference that would be
// (a net figure read across a failed read) is written as zero rather than as
// a wrapped number. A sum too large for ten digits keeps all its digits.
void Escreve_Soma(long long soma, std::span<char> Valor) {
  std::array<char, 21> digitos{};
  const auto fim = std::to_chars(digitos.data(), digitos.data() + digitos.size() - 1, soma < 0 ? 0 : soma);
  *fim.ptr = '\0';
  std::array<char, 19> alinhado{};
  LeftPad(view(digitos), alinhado, 18);
  copy_text(Valor, view(alinhado));
}

std::uint16_t Soma_Registradores(int Comando, std::initializer_list<int> Regs, long long& soma) {
  soma = 0;
  for (int reg : Regs) {
    std::array<char, 50> texto{};
    const std::uint16_t ret = Executa_Leitura_Registrador_Geral(Comando, reg, texto.data(), 0, texto.size());
    if (ret != 0) return ret;
    soma += std::atoll(texto.data());
  }
  return 0;
}

std::uint16_t Executa_Leitura_Registrador_Geral(int Comando, int Reg, char* Valor, int Verifica,
                                                std::size_t Tam) {
  ORB_LOG("Executa_Leitura_Registrador_Geral%s - inicio - Reg=%d \n", Reg);
  // The value is built here and handed out once, bounded by the caller's room.
  std::array<char, 30> valor{};
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  bool ler = true;

  if (ret == 0 && Verifica != 0 && verificavel(Reg)) {
    for (std::size_t i = 0; i < kZerosNaoProgramado; ++i) valor[i] = '0';
    Input in;
    in.seq().byte(categoria_da_lista(Reg));
    Reply<30> r;
    ret = executa(37, 1, in, r);
    if (ret == 0 && r[1] != 0) {
      // A reply too short to scan leaves the register readable.
      for (std::int32_t i = 1; i < r.len - 1; ++i) {
        if (Reg == static_cast<std::int8_t>(r[static_cast<std::size_t>(i)])) {
          ler = true;
          valor.fill('\0');
          break;
        }
        ler = false;
      }
    } else {
      ler = false;
    }
  }

  if (ret == 0 && ler) {
    Input in;
    in.seq().byte(static_cast<std::uint8_t>(Reg));
    Reply<30> r;
    ret = executa(Comando, 1, in, r);
    if (ret == 0) copy_text(valor, r.text(1));
  }

  if (Valor != nullptr && Tam != 0) copy_text(std::span<char>{Valor, Tam}, view(valor));
  ret = TrataRetorno(ret);
  ORB_LOG("Executa_Leitura_Registrador_Geral%s - fim com ret=%d Valor=%s \n", ret, valor.data());
  return ret;
}

std::uint16_t Ler_Valor_Atual_Reg_Fiscal(int Reg, char* Valor) {
  ORB_LOG("Ler_Valor_Atual_Reg_Fiscal%s - inicio - Reg=%d \n", Reg);
  std::array<char, kTamValorRegistrador> valor{};
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;

  if (ret == 0) {
    long long soma = 0;
    switch (Reg) {
      case 7:
        ret = Soma_Registradores(133, {7, 17, 114}, soma);
        if (ret == 0) Escreve_Soma(soma, valor);
        break;
      case 8:
        // A printer without register 134 answers 2582 for it: register 8
        // alone is then the value.
        ret = Soma_Registradores(133, {8, 134}, soma);
        if (ret == 0 || ret == kRegistradorNaoEncontrado) {
          Escreve_Soma(soma, valor);
          ret = 0;
        }
        break;
      case 9:
        ret = Soma_Registradores(133, {9, 135}, soma);
        if (ret == 0) Escreve_Soma(soma, valor);
        break;
      // The journal's figures, computed from its details and the reduction count.
      case 100:
        ret = Calcular_Qtde_MFD_Disponivel(valor.data());
        break;
      case 101:
        ret = Calcular_Percentual_MFD_Utilizada(valor.data());
        break;
      case 106:
        ret = Calcular_Qtde_Reducoes_Restantes(valor.data());
        break;
      case 105:
        Ler_Valor_IAT(valor.data());
        valor[1] = '\0';
        break;
      case 200: {
        std::uint8_t indicador = 0;
        ret = Ler_Indicador_Desconto(&indicador);
        valor[0] = static_cast<char>(indicador);
        break;
      }
      default: {
        const int interno = registrador_mapeado(Reg);
        if (interno < 0) {
          ORB_LOG("Ler_Valor_Atual_Reg_Fiscal%s Registrador invalido: %d \n", Reg);
          ret = kArgumentoInvalido;
        } else {
          ret = Executa_Leitura_Registrador_Geral(133, interno, valor.data(), 0, valor.size());
        }
        break;
      }
    }
  }

  if (Valor != nullptr) {
    if (Reg == 200)
      Valor[0] = valor[0];
    else
      copy_out(Valor, view(valor), valor.size());
  }
  ret = TrataRetorno(ret);
  if (Reg == 200)
    ORB_LOG("Ler_Valor_Atual_Reg_Fiscal%s - fim com ret=%d - Valor=%d \n", ret, static_cast<signed char>(valor[0]));
  else
    ORB_LOG("Ler_Valor_Atual_Reg_Fiscal%s - fim com ret=%d - Valor=%s \n", ret, valor.data());
  return ret;
}

}  // namespace orbelan
