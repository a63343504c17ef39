// Register values for the application: the current value of a general
// register, the last reduction's values, the tax on a tax register, the values
// of the coupon in progress, a past reduction kept in fiscal memory, and the
// gross and net sales of the day.
#include "registers/totals.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>

#include "documents/items.h"
#include "documents/payments.h"
#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/encodings.h"
#include "frame/identity.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/sums.h"
#include "frame/text.h"
#include "orbelan.h"
#include "registers/values.h"

namespace orbelan {

namespace {

constexpr std::uint16_t kArgumentoInvalido = 2049;
constexpr std::uint16_t kReducaoNaoEncontrada = 2582;
constexpr std::uint16_t kRegistradorReducao = 2840;
constexpr std::uint16_t kRegistradorImposto = 2841;

// Reduction numbers the fiscal memory can hold.
constexpr unsigned kMaxReducoes = 2191;
// The last fiscal-memory record a scan asks for. The memory holds at most 2190
// reductions and far fewer records of other kinds, so a printer that has not
// shown the end mark by this record fails or answers every read with nothing:
// the scan stops instead of tying the terminal up for the whole 16-bit index
// range (thousands of commands).
constexpr unsigned kMaxRegistroMF = 4096;

// Room of a value output, and of E4RegMemFisc's.
using TextoValor = std::array<char, kTamValorRegistrador>;
constexpr std::size_t kTamRegMemFisc = 21;

// One register read with command 133 and the caller's check, into a zeroed
// text; the value is added to `soma` when the read succeeds.
std::uint16_t le_e_soma(int reg, int Verifica, std::array<char, 50>& texto, long long& soma) {
  texto.fill('\0');
  const std::uint16_t ret = Executa_Leitura_Registrador_Geral(133, reg, texto.data(), Verifica, texto.size());
  if (ret == 0) soma = soma_limitada(soma, valor_texto(texto.data()));
  return ret;
}

// The reply of a last-reduction or tax query: command `cmd` on `Reg`, the
// value copied only for the registers the query serves. The command goes out
// before the number is judged.
std::uint16_t le_valor_de_consulta(int cmd, std::uint8_t Reg, bool servido, std::uint16_t recusa, TextoValor& valor) {
  if (OPENOK == 0) return kNaoAberto;
  Input in;
  in.seq().byte(Reg);
  Reply<40> r;
  std::uint16_t ret = executa(cmd, 1, in, r);
  if (ret == 0) {
    if (servido)
      copy_text(valor, r.text(1));
    else
      ret = recusa;
  }
  return ret;
}

// The amount still due on the coupon in progress: the subtotal while the
// printer reports a document, otherwise what was received beyond register 79.
std::uint16_t valor_a_pagar(TextoValor& valor) {
  std::uint8_t estado = 0;
  std::uint16_t ret = Estado_Cupom_Atual(&estado, nullptr);
  if (ret != 0) return ret;
  long long devido = 0;
  if (estado != 0) {
    float subtotal = 0;
    ret = Ler_Valor_Subtotal(&subtotal);
    devido = inteiro_limitado(subtotal);  // truncated toward zero
  } else {
    TextoValor recebido{};
    ret = CalculaTotalRecebido(recebido.data());
    long long r79 = 0;
    if (ret == 0) ret = Soma_Registradores(134, {79}, r79);
    devido = diferenca_limitada(valor_texto(recebido.data()), r79);  // floored at 0 when written
  }
  if (ret == 0) Escreve_Soma(devido, valor);
  return ret;
}

// Looks up reduction nRedZ among the fiscal-memory records and lays out its
// date, time and value; a record that is not there leaves `valor` zeroed.
std::uint16_t procura_reducao(unsigned nRedZ, std::array<char, kTamRegMemFisc>& valor) {
  Reply<255> r;
  bool achou = false;
  for (unsigned k = 1; k <= kMaxRegistroMF && !achou; ++k) {
    Input in;
    in.seq().u16(static_cast<std::uint16_t>(k));
    // A failed read does not end the scan: the next record is asked for.
    if (executa(174, 1, in, r) != 0) continue;
    if (r[0] == 7) break;  // end of the records
    if (r[0] != 1) continue;
    std::array<char, 5> numero{};
    Expande(std::span<const std::uint8_t>{r.b.data() + 14, 2}, numero, 4);
    achou = static_cast<unsigned>(std::atoi(numero.data())) == nRedZ;
  }
  valor.fill('\0');
  if (!achou) return kReducaoNaoEncontrada;

  std::array<char, 10> d{};
  std::array<char, 16> e{};
  Expande(std::span<const std::uint8_t>{r.b.data() + 1, 5}, d, 10);
  Expande(std::span<const std::uint8_t>{r.b.data() + 6, 8}, e, 16);
  // DDMM, the century, YYhhmm, then the last eight digits of the value.
  std::size_t o = 0;
  for (std::size_t i = 0; i < 4; ++i) valor[o++] = d[i];
  valor[o++] = '2';
  valor[o++] = '0';
  for (std::size_t i = 4; i < 10; ++i) valor[o++] = d[i];
  for (std::size_t i = 8; i < 16; ++i) valor[o++] = e[i];
  return 0;
}

}  // namespace

std::uint16_t Calcular_Venda_Bruta_Diaria(int Verifica, char* Valor) {
  if (Valor != nullptr) Valor[0] = '\0';
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Calcular_Venda_Bruta_Diaria%s - inicio\n");
  long long total = 0;
  std::array<char, 50> texto{};

  if (ret == 0) {
    ret = le_e_soma(8, Verifica, texto, total);
    ORB_LOG("Calcular_Venda_Bruta_Diaria%s - ret=%d  8- %s\n", ret, texto.data());
  }
  if (ret == 0) {
    ret = le_e_soma(134, Verifica, texto, total);
    ORB_LOG("Calcular_Venda_Bruta_Diaria%s - ret=%d  134- %s\n", ret, texto.data());
  }
  if (ret == 0) {
    ret = le_e_soma(7, Verifica, texto, total);
    ORB_LOG("Calcular_Venda_Bruta_Diaria%s - ret=%d  7- %s\n", ret, texto.data());
  }
  for (int i = 0; ret == 0 && i < 3; ++i) {
    ret = le_e_soma(11 + i, Verifica, texto, total);
    ORB_LOG("Calcular_Venda_Bruta_Diaria%s - ret=%d  11+i%d- %s\n", ret, i, texto.data());
  }
  if (ret == 0) {
    // Each of these loops ends at its own failure and the next one starts
    // anyway, its first read replacing the code: only a failure in the last
    // loop ends the calculation. Printers without some of these registers
    // still give a total this way.
    for (int i = 0; i < 15; ++i) {
      ret = le_e_soma(20 + i, Verifica, texto, total);
      ORB_LOG("Calcular_Venda_Bruta_Diaria%s - ret=%d  20+i%d- %s\n", ret, i, texto.data());
      if (ret != 0) break;
    }
    for (int i = 0; i < 4; ++i) {
      ret = le_e_soma(36 + i, Verifica, texto, total);
      ORB_LOG("Calcular_Venda_Bruta_Diaria%s - ret=%d  36+i%d- %s\n", ret, i, texto.data());
      if (ret != 0) break;
    }
    for (int i = 0; i < 11; ++i) {
      ret = le_e_soma(100 + i, Verifica, texto, total);
      ORB_LOG("Calcular_Venda_Bruta_Diaria%s - ret=%d  100+i%d- %s\n", ret, i, texto.data());
      if (ret != 0) break;
    }
    for (int i = 0; i < 4; ++i) {
      ret = le_e_soma(111 + i, Verifica, texto, total);
      ORB_LOG("Calcular_Venda_Bruta_Diaria%s - ret=%d  111+i%d- %s\n", ret, i, texto.data());
      if (ret != 0) break;
    }
  }
  if (ret == 0) {
    ret = le_e_soma(135, Verifica, texto, total);
    ORB_LOG("Calcular_Venda_Bruta_Diaria%s - ret=%d  135- %s\n", ret, texto.data());
  }

  if (ret == 0) {
    TextoValor valor{};
    Escreve_Soma(total, valor);
    copy_out(Valor, view(valor), valor.size());
    ORB_LOG("Calcular_Venda_Bruta_Diaria%s - Venda Bruta Diaria=%s \n", valor.data());
  }
  ORB_LOG("Calcular_Venda_Bruta_Diaria%s - fim com ret=%d\n", ret);
  return ret;
}

std::uint16_t Calcular_Venda_Liquida_Diaria(int Verifica, char* Valor) {
  if (Valor != nullptr) Valor[0] = '\0';
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Calcular_Venda_Liquida_Diaria%s - inicio\n");
  TextoValor valor{};
  long long deducoes = 0;
  std::array<char, 50> texto{};

  if (ret == 0) ret = Calcular_Venda_Bruta_Diaria(Verifica, valor.data());
  const long long bruta = valor_texto(valor.data());
  valor.fill('\0');

  if (ret == 0) {
    ret = le_e_soma(7, Verifica, texto, deducoes);
    ORB_LOG("Calcular_Venda_Liquida_Diaria%s - ret=%d  7- %s\n", ret, texto.data());
  }
  if (ret == 0) {
    ret = le_e_soma(8, Verifica, texto, deducoes);
    ORB_LOG("Calcular_Venda_Liquida_Diaria%s - ret=%d  8- %s\n", ret, texto.data());
  }
  // A failure of register 7 or 8 ends the calculation: going on would report a
  // net figure without the day's cancellations or discounts as a success.
  if (ret == 0) {
    // As in the gross sales, these loops end at their own failure only;
    // register 114 is read whatever they gave.
    for (int i = 0; i < 4; ++i) {
      ret = le_e_soma(36 + i, Verifica, texto, deducoes);
      ORB_LOG("Calcular_Venda_Liquida_Diaria%s - ret=%d  36+i%d- %s\n", ret, i, texto.data());
      if (ret != 0) break;
    }
    for (int i = 0; i < 11; ++i) {
      ret = le_e_soma(100 + i, Verifica, texto, deducoes);
      ORB_LOG("Calcular_Venda_Liquida_Diaria%s - ret=%d  100+i%d- %s\n", ret, i, texto.data());
      if (ret != 0) break;
    }
    ret = le_e_soma(114, Verifica, texto, deducoes);
    ORB_LOG("Calcular_Venda_Liquida_Diaria%s - ret=%d  114- %s\n", ret, texto.data());
    if (ret == 0) {
      ret = le_e_soma(134, Verifica, texto, deducoes);
      ORB_LOG("Calcular_Venda_Liquida_Diaria%s - ret=%d  134- %s\n", ret, texto.data());
    }
  }

  if (ret == 0) {
    Escreve_Soma(diferenca_limitada(bruta, deducoes), valor);
    copy_out(Valor, view(valor), valor.size());
  }
  ORB_LOG("Calcular_Venda_Liquida_Diaria%s - fim com ret=%d - Venda Liquida Diaria=%s \n", ret, valor.data());
  return ret;
}

std::uint16_t Le_Valor_Atual(const char* quem, std::uint8_t Reg, char* Valor, LeitorValor ler, int numero_byte) {
  if (Valor != nullptr) Valor[0] = '\0';
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  dumpLog("%s%s - inicio - Reg=%d\n", quem, trace_version(), Reg);
  TextoValor valor{};
  if (ret == 0) ret = ler(Reg, valor.data());
  ret = TrataRetorno(ret);
  if (Reg == numero_byte) {
    // One byte, not a text (the discount indicator).
    if (Valor != nullptr) Valor[0] = valor[0];
    dumpLog("%s%s - fim com ret=%d - Valor=%d\n", quem, trace_version(), ret, static_cast<signed char>(valor[0]));
  } else {
    copy_out(Valor, view(valor), valor.size());
    dumpLog("%s%s - fim com ret=%d - Valor=%s\n", quem, trace_version(), ret, valor.data());
  }
  return ret;
}

}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4ValAtu(unsigned char Reg, char* Valor) {
  ORB_LOCK();
  return Le_Valor_Atual("E4ValAtu", Reg, Valor, Ler_Valor_Atual_Reg_Fiscal, 200);
}

ORBELAN_API unsigned short E4ValRed(unsigned char Reg, char* Valor) {
  ORB_LOCK();
  if (Valor != nullptr) Valor[0] = '\0';
  ORB_LOG("E4ValRed%s - inicio - Reg=%d \n", Reg);
  TextoValor valor{};
  const bool servido = Reg == 0 || Reg == 1 || Reg == 3 || Reg == 4;
  std::uint16_t ret = le_valor_de_consulta(135, Reg, servido, kRegistradorReducao, valor);
  copy_out(Valor, view(valor), valor.size());
  ret = TrataRetorno(ret);
  ORB_LOG("E4ValRed%s - fim com ret=%d - Reg=%d - Valor=%s \n", ret, Reg, valor.data());
  return ret;
}

ORBELAN_API unsigned short E4ValImp(unsigned char Reg, char* Valor) {
  ORB_LOCK();
  if (Valor != nullptr) Valor[0] = '\0';
  ORB_LOG("E4ValImp%s - inicio - Reg=%d \n", Reg);
  TextoValor valor{};
  const bool servido = (Reg >= 20 && Reg <= 34) || (Reg >= 36 && Reg <= 39);
  std::uint16_t ret = le_valor_de_consulta(136, Reg, servido, kRegistradorImposto, valor);
  copy_out(Valor, view(valor), valor.size());
  ret = TrataRetorno(ret);
  ORB_LOG("E4ValImp%s - fim com ret=%d - Reg=%d - Valor=%s \n", ret, Reg, valor.data());
  return ret;
}

ORBELAN_API unsigned short E4InfCup(unsigned short Reg, char* Valor) {
  ORB_LOCK();
  if (Valor != nullptr) Valor[0] = '\0';
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4InfCup%s - inicio - Reg=%d \n", Reg);
  TextoValor valor{};
  if (ret == 0) {
    long long soma = 0;
    switch (Reg) {
      case 1:
        ret = Executa_Leitura_Registrador_Geral(133, 1, valor.data(), 0, valor.size());
        break;
      case 7:
      case 8:
      case 9: {
        const int par = Reg == 7 ? 114 : Reg == 8 ? 134 : 135;
        ret = Soma_Registradores(134, {Reg, par}, soma);
        if (ret == 0) Escreve_Soma(soma, valor);
        break;
      }
      case 11: case 12: case 13:
      case 20: case 21: case 22: case 23: case 24: case 25: case 26: case 27:
      case 28: case 29: case 30: case 31: case 32: case 33: case 34:
      case 36: case 37: case 38: case 39:
      case 60: case 61: case 62: case 63: case 64: case 65: case 66: case 67: case 68: case 69:
      case 70: case 71: case 72: case 73: case 74: case 75: case 76: case 77: case 78:
        ret = Executa_Leitura_Registrador_Geral(134, Reg, valor.data(), 0, valor.size());
        break;
      case 40: case 41: case 42: case 43: case 44: case 45: case 46: case 47:
      case 48: case 49: case 50: case 51: case 52: case 53: case 54:
        ret = Executa_Leitura_Registrador_Geral(137, Reg, valor.data(), 0, valor.size());
        break;
      case 500:
        ret = Executa_Leitura_Registrador_Geral(134, 79, valor.data(), 0, valor.size());
        break;
      case 501:
        ret = CalculaTotalRecebido(valor.data());
        break;
      case 504:
        ret = valor_a_pagar(valor);
        break;
      case 505:
        ret = NumeroDoItemVendido(valor.data());
        break;
      default:
        ORB_LOG("E4InfCup%s Registrador invalido: %d \n", Reg);
        ret = kArgumentoInvalido;
        break;
    }
  }
  copy_out(Valor, view(valor), valor.size());
  ret = TrataRetorno(ret);
  ORB_LOG("E4InfCup%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4RegMemFisc(unsigned short nRedZ, char* Valor) {
  ORB_LOCK();
  if (Valor != nullptr) Valor[0] = '\0';
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4RegMemFisc%s - inicio - nRedZ=%d  \n", nRedZ);
  std::array<char, kTamRegMemFisc> valor{};
  if (ret == 0 && nRedZ >= kMaxReducoes) {
    ret = kArgumentoInvalido;
  } else if (ret == 0 && nRedZ == 0) {
    // The reduction in progress: the current reduction count.
    ret = E4ValAtu(4, valor.data());
    copy_out(Valor, view(valor), valor.size());
  } else if (ret == 0) {
    ret = procura_reducao(nRedZ, valor);
    // Twenty characters and a NUL when found, twenty-one NULs when not.
    if (Valor != nullptr) std::memcpy(Valor, valor.data(), valor.size());
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4RegMemFisc%s - fim com ret=%d - Valor=%s \n", ret, valor.data());
  return ret;
}

}  // extern "C"
