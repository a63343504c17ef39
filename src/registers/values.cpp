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
#include "frame/sums.h"
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

// The numbers E4ValAtu serves. 100, 101 and 106 are the journal's figures,
// computed from its details and the reduction count.
constexpr std::array kLinhasBase = {
    LinhaLeitura(0, 5), LinhaLeitura(11, 14), LinhaLeitura(16, 34), LinhaLeitura(36, 54), LinhaLeitura(60, 79),
    LinhaLeitura(81, 94), LinhaLeitura(116, 131), LinhaLeitura(133, 133),
    LinhaLeitura(15, 15, 136), LinhaLeitura(80, 80, 137), LinhaLeitura(95, 95, 80), LinhaLeitura(103, 103, 115),
    LinhaLeitura(104, 104, 138),
    LinhaSoma(7, {{7, 0}, {17, 0}, {114, 0}}),
    // A printer without register 134 answers 2582 for it: register 8 alone
    // is then the value.
    LinhaSoma(8, {{8, 0}, {134, 0}}, FalhaSoma::AceitaAusente),
    LinhaSoma(9, {{9, 0}, {135, 0}}),
    LinhaCalculo(100, Calcular_Qtde_MFD_Disponivel),
    LinhaCalculo(101, Calcular_Percentual_MFD_Utilizada),
    LinhaCalculo(106, Calcular_Qtde_Reducoes_Restantes),
    LinhaCalculo(105,
                 [](char* Valor) -> std::uint16_t {
                   Ler_Valor_IAT(Valor);
                   Valor[1] = '\0';
                   return 0;
                 }),
    LinhaCalculo(200,
                 [](char* Valor) {
                   std::uint8_t indicador = 0;
                   const std::uint16_t ret = Ler_Indicador_Desconto(&indicador);
                   Valor[0] = static_cast<char>(indicador);
                   return ret;
                 }),
};

// Reads one register with `Comando` into a zeroed text and adds its value.
std::uint16_t soma_parcela(int Comando, const Parcela& p, long long& soma) {
  std::array<char, 50> texto{};
  const std::uint16_t ret = Executa_Leitura_Registrador_Geral(Comando, p.reg, texto.data(), p.verifica, texto.size());
  if (ret == 0) soma = soma_limitada(soma, valor_texto(texto.data()));
  return ret;
}

// Serves one switch line for the requested number `Reg`.
std::uint16_t serve_linha(const LinhaValor& l, std::uint32_t Reg, std::span<char> valor) {
  if (l.calculo != nullptr) return l.calculo(valor.data());
  if (l.n == 1) {
    const int reg = l.partes[0].reg == kMesmoNumero ? static_cast<int>(Reg) : l.partes[0].reg;
    return Executa_Leitura_Registrador_Geral(133, reg, valor.data(), l.partes[0].verifica, valor.size());
  }
  long long soma = 0;
  std::uint16_t ret = 0;
  std::size_t lidas = 0;
  for (; lidas < l.n; ++lidas) {
    ret = soma_parcela(133, l.partes[lidas], soma);
    if (ret != 0) break;
  }
  const bool escreve = ret == 0 || (l.falha == FalhaSoma::AceitaAusente && ret == kRegistradorNaoEncontrado) ||
                       (l.falha == FalhaSoma::AceitaParcial && lidas > 0);
  if (escreve) {
    Escreve_Soma(soma, valor);
    ret = 0;
  }
  return ret;
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
    const std::uint16_t ret = soma_parcela(Comando, {reg, 0}, soma);
    if (ret != 0) return ret;
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

std::uint16_t Ler_Valor_Mapeado(const MapaValores& mapa, int Reg, char* Valor) {
  dumpLog("%s%s - inicio - Reg=%d \n", mapa.nome, trace_version(), Reg);
  std::array<char, kTamValorRegistrador> valor{};
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;

  if (ret == 0) {
    // A negative number is no line's.
    const auto numero = static_cast<std::uint32_t>(Reg);
    const LinhaValor* linha = nullptr;
    for (const LinhaValor& l : mapa.linhas) {
      if (numero >= l.de && numero <= l.ate) {
        linha = &l;
        break;
      }
    }
    if (linha == nullptr) {
      dumpLog("%s%s Registrador invalido: %d \n", mapa.nome, trace_version(), Reg);
      ret = kArgumentoInvalido;
    } else {
      ret = serve_linha(*linha, numero, valor);
    }
  }

  const bool um_byte = mapa.numero_byte >= 0 && Reg == mapa.numero_byte;
  if (Valor != nullptr) {
    if (um_byte)
      Valor[0] = valor[0];
    else
      copy_out(Valor, view(valor), valor.size());
  }
  ret = TrataRetorno(ret);
  if (um_byte)
    dumpLog("%s%s - fim com ret=%d - Valor=%d \n", mapa.nome, trace_version(), ret,
            static_cast<signed char>(valor[0]));
  else
    dumpLog("%s%s - fim com ret=%d - Valor=%s \n", mapa.nome, trace_version(), ret, valor.data());
  return ret;
}

std::uint16_t Ler_Valor_Atual_Reg_Fiscal(int Reg, char* Valor) {
  return Ler_Valor_Mapeado({"Ler_Valor_Atual_Reg_Fiscal", kLinhasBase, 200}, Reg, Valor);
}

}  // namespace orbelan
