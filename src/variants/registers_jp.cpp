// Register variants for the second application family: the walk that starts
// its category over once it has ended, creation at the first free number, and
// the value queries over the family's own register numbering.
#include "variants/registers_jp.h"

#include <array>
#include <cstdint>

#include "frame/dumplog.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "registers/journal.h"
#include "registers/partials.h"
#include "registers/totals.h"
#include "registers/values.h"
#include "state/documents.h"
#include "state/increases.h"

namespace orbelan {

namespace {

// Category of the management report types: their numbers are given by the
// application, never looked for.
constexpr std::uint8_t kCategoriaRelatorio = 6;

constexpr std::uint16_t kArgumentoInvalido = 2049;

const char* ou_vazio(const char* s) { return s != nullptr ? s : ""; }

// The numbers the family serves. Tax rates, totalisers and payment methods
// are read with the programmed check, so an unprogrammed one reads as zeros.
// With that check registers 134 and 135 always read as zeros, which makes 8
// and 9 equal to registers 8 and 9 alone.
constexpr std::array kLinhasJP = {
    LinhaLeitura(0, 5), LinhaLeitura(11, 14), LinhaLeitura(16, 19),
    LinhaLeitura(20, 34, kMesmoNumero, 1), LinhaLeitura(36, 54, kMesmoNumero, 1),
    LinhaLeitura(60, 79, kMesmoNumero, 1),
    LinhaSoma(7, {{7, 0}, {17, 0}, {114, 0}}), LinhaSoma(8, {{8, 0}, {134, 1}}), LinhaSoma(9, {{9, 0}, {135, 1}}),
    LinhaLeitura(15, 15, 136), LinhaLeitura(80, 80, 137), LinhaLeitura(83, 83, 135), LinhaLeitura(87, 87, 7),
    LinhaLeitura(88, 88, 114), LinhaLeitura(89, 89, 134, 1), LinhaLeitura(92, 92, 133), LinhaLeitura(103, 103, 115),
    // The service registers: what could be read counts.
    LinhaSoma(86, {{36, 1}, {37, 1}, {38, 1}, {39, 1}}, FalhaSoma::AceitaParcial),
    LinhaCalculo(81, Calcular_Qtde_MFD_Disponivel), LinhaCalculo(82, Calcular_Percentual_MFD_Utilizada),
    LinhaCalculo(84, CalcularTotalAcrescItensDia),
    LinhaCalculo(85, [](char* Valor) { return Calcular_Venda_Bruta_Diaria(1, Valor); }),
    LinhaCalculo(90, Obter_Numero_da_Loja),
    LinhaCalculo(93, [](char* Valor) { return Calcular_Venda_Liquida_Diaria(1, Valor); }),
    LinhaCalculo(94, Calcular_Qtde_Reducoes_Restantes),
};

}  // namespace

std::uint16_t Ler_Valor_Atual_Reg_Fiscal_JP(std::uint32_t Reg, char* Valor) {
  // A number past the int range is no line's either; the trace shows it as
  // the signed number.
  return Ler_Valor_Mapeado({"Ler_Valor_Atual_Reg_Fiscal_JP", kLinhasJP, -1}, static_cast<int>(Reg), Valor);
}

}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4RPLe_JP(unsigned char Cat, char* Compl, char* Sinal, unsigned char* RP) {
  ORB_LOCK();
  return Le_Registrador_Parcial("E4RPLe_JP", true, Cat, Compl, Sinal, RP);
}

ORBELAN_API unsigned short E4RPProx_JP(unsigned char Cat, char* Compl, char* Sinal, unsigned char* RP) {
  ORB_LOCK();
  return Proximo_Registrador_Parcial("E4RPProx_JP", E4RPLe_JP, Cat, Compl, Sinal, RP);
}

ORBELAN_API unsigned short E4RPCria_JP(unsigned char Cat, const char* Nome, const char* Param,
                                       unsigned char* Reg) {
  ORB_LOCK();
  ORB_LOG("E4RPCria_JP%s - inicio - Cat=%d Nome=%s Param=%s Reg=%d\n", Cat, ou_vazio(Nome),
          ou_vazio(Param), Reg != nullptr ? *Reg : 0);
  // Register 0 asks for the category's first free number. Should the search
  // fail, the creation below still runs and reports its own result, as the
  // base function would for the number it was given.
  if (Reg != nullptr && *Reg == 0 && Cat != kCategoriaRelatorio) {
    std::uint8_t livre = 0;
    if (Proximo_Registrador_Livre(Cat, &livre) == 0) *Reg = livre;
  }
  // Already translated by the creation.
  const std::uint16_t ret = E4RPCria(Cat, Nome, Param, Reg);
  ORB_LOG("E4RPCria_JP%s - fim com ret=%d - Reg=%d\n", ret, Reg != nullptr ? *Reg : 0);
  return ret;
}

ORBELAN_API unsigned short E4ValAtu_JP(unsigned char Reg, char* Valor) {
  ORB_LOCK();
  return Le_Valor_Atual(
      "E4ValAtu_JP", Reg, Valor,
      [](int r, char* v) { return Ler_Valor_Atual_Reg_Fiscal_JP(static_cast<std::uint32_t>(r), v); }, -1);
}

ORBELAN_API unsigned short E4ValAtuEsp_JP(unsigned char Reg, char* Valor) {
  ORB_LOCK();
  if (Valor != nullptr) Valor[0] = '\0';
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4ValAtuEsp_JP%s - inicio  \n");
  if (ret == 0) {
    if (Reg == 8) {
      ret = E4ValAtu_JP(Reg, Valor);
      ORB_LOG("E4ValAtuEsp_JP%s - Totalizador parcial de descontos=%s ret=%d \n", ou_vazio(Valor), ret);
    } else if (Reg == 9) {
      ret = E4ValAtu_JP(Reg, Valor);
      ORB_LOG("E4ValAtuEsp_JP%s - Totalizador parcial de acrescimos=%s ret=%d \n", ou_vazio(Valor), ret);
    } else {
      ORB_LOG("E4ValAtuEsp_JP%s - Registrador invalido: RET=2049\n");
      ret = kArgumentoInvalido;
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4ValAtuEsp_JP%s - fim com ret=%d \n", ret);
  return ret;
}

}  // extern "C"
