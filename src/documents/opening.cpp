// Opening documents: the single door E4IniCP through which every document (and
// the X and Z readings) starts, the fiscal coupon opening itself, and the
// consumer identification that the next coupon carries.
#include "documents/opening.h"

#include <array>
#include <cstdlib>
#include <string>
#include <string_view>

#include "documents/nonfiscal.h"
#include "documents/reports.h"
#include "documents/vouchers.h"
#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/encodings.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"
#include "orbelan.h"
#include "registers/readings.h"
#include "state/documents.h"
#include "state/increases.h"
#include "state/payment_records.h"
#include "state/regpgto.h"

namespace orbelan {

DadosConsumidor Consumidor{};
std::int32_t FLAGCONS = 0;
std::uint8_t fCupomFiscalOpen = 0;
std::uint8_t fCupomNFiscalOpen = 0;

namespace {

constexpr std::uint16_t kArgumentoInvalido = 2049;
constexpr std::uint16_t kRegistradorInvalido = 2582;

// The register number an option carries in the first two characters of its
// parameter, read as a decimal number up to the first non-digit.
int numero_do_registrador(std::string_view param) {
  std::array<char, 3> dois{};
  copy_text(dois, param.substr(0, 2));
  return std::atoi(dois.data());
}

// 2582, with the refusal line of `nome`, for a register outside min..max.
std::uint16_t confere_registrador(const char* nome, int reg, int min, int max) {
  if (reg >= min && reg <= max) return 0;
  dumpLog("%s%s - Registrador invalido: %d \n", nome, trace_version(), reg);
  return kRegistradorInvalido;
}

// After a coupon opened: the current coupon's payment files (and, for a fiscal
// coupon, its item increases) restart with its COO, and the day file gets the
// coupon's line. Failures here leave the printer's coupon open all the same.
void registra_abertura(const char* tipo, bool fiscal) {
  Limpar_Pagamentos();
  Limpar_IndicesPagamentos();
  if (fiscal) Limpar_AcrescItens();
  std::array<char, 10> coo{};
  Ler_COO_Ultimo_Cupom(coo.data());
  Incluir_COO_Pagamento(coo.data());
  Incluir_Tipo_Cupom(tipo);
  Incluir_Indice_COO(NOME_ARQ_PAGTOPORCOO, nullptr, tipo);
}

// Cleans a consumer field (control and non-ASCII bytes blanked) into `campo`.
template <std::size_t N>
void mascara_campo(std::array<char, N>& campo, std::array<char, 100>& trabalho, std::string_view src) {
  trabalho.fill('\0');
  copy_text(trabalho, src);
  MascaraCaracterEsp(trabalho, campo);
}

}  // namespace

std::uint16_t Abre_Cupom_Fiscal() {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Abre_Cupom_Fiscal%s - inicio \n");
  if (ret == 0) {
    Input in;
    in.seq();
    if (FLAGCONS == 1) {
      // Name, number and address, each with its NUL, and a closing NUL.
      in.text(view(Consumidor.Nome)).text(view(Consumidor.Numero)).text(view(Consumidor.Endereco)).byte(0);
      ORB_LOG("Abre_Cupom_Fiscal%s Consumidor.Numero=%s.\n", std::string(view(Consumidor.Numero)).c_str());
    } else {
      // No consumer: three empty texts, five bytes in all with the sequence.
      in.zeros(3);
    }
    ORB_LOG("Abre_Cupom_Fiscal%s bufEntrada= ");
    dumpBytes(in.data(), in.size());

    Reply<5> r;
    ret = executa(141, 0, in, r);
    // The identification is spent only when the coupon opened; otherwise it
    // waits for the next attempt.
    if (ret == 0) FLAGCONS = 0;
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Abre_Cupom_Fiscal%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t Registrador_Comprovante(const char* nome, std::string_view param, std::uint8_t& reg) {
  const int numero = numero_do_registrador(param);
  reg = static_cast<std::uint8_t>(numero);
  return confere_registrador(nome, numero, 60, 78);
}

std::uint16_t Abre_Comprovante(const char* coo, std::uint8_t reg) {
  std::uint16_t ret = Abre_CCD(coo, reg);
  if (ret == 0) Incluir_Tipo_Cupom(TIPO_CUPOM_CCD);
  return ret;
}

std::uint16_t Inicia_Documento(const VarianteAbertura& v, unsigned char Opc, const char* Param) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  dumpLog("%s%s - inicio - Opc=%d \n", v.nome, trace_version(), Opc);
  // The readings look a few bytes into their parameter whatever its length: a
  // zeroed copy keeps them within bounds.
  std::array<char, 16> param{};
  copy_text(param, in_text(Param));
  const std::string_view texto = view(param);

  // A store number left at "9999" by a register creation is restored before
  // any other document; the X reading does it itself after printing.
  if (ret == 0 && Opc != 4 && Estado_ArqRegPgto() == '2') trataArqRegPgtoStatus(3, "0");

  if (ret == 0) {
    switch (Opc) {
      case 2:
        ret = Abre_Cupom_Fiscal();
        if (ret == 0) {
          registra_abertura(TIPO_CUPOM_FISCAL, true);
          if (v.marca_aberto) fCupomFiscalOpen = 1;
        }
        break;
      case 4:
        if (Estado_ArqRegPgto() == '2') {
          ret = LeituraX("0");
          if (ret == 0) ret = trataArqRegPgtoStatus(3, param.data());
        } else {
          ret = LeituraX(param.data());
        }
        break;
      case 5:
        ret = ReducaoZ(param.data());
        // The day's payment records end with the day, whatever the reduction gave.
        Limpar_PagamentosCOO();
        Limpar_IndicesPagamentosCOO();
        break;
      case 17:
      case 18:
      case 22: {
        std::uint8_t reg = 0;
        ret = Registrador_Comprovante(v.nome, texto, reg);
        if (ret == 0) {
          const std::array<char, 7> coo{};  // empty: the coupon just paid
          ret = Abre_Comprovante(coo.data(), reg);
        }
        break;
      }
      case 19:
        ret = Abre_Cupom_Nao_Fiscal(Param);  // cut there; an absent text is told apart
        if (ret == 0) {
          registra_abertura(TIPO_CUPOM_NAO_FISCAL, false);
          if (v.marca_aberto) fCupomNFiscalOpen = 1;
        }
        break;
      case 20: {
        const int reg = texto.empty() ? 0 : numero_do_registrador(texto);
        ret = confere_registrador(v.nome, reg, 0, 19);
        if (ret == 0) {
          ret = Abre_Gerencial(reg);
          if (ret == 0) Incluir_Tipo_Cupom(TIPO_RELATORIO_GRL);
        }
        break;
      }
      case 21:
        ret = ImpSegundaViaCCD();
        break;
      default:
        if (v.opcao_propria == nullptr || !v.opcao_propria(Opc, texto, ret)) {
          dumpLog("%s%s - Tipo de Cupom invalido \n", v.nome, trace_version());
          ret = kArgumentoInvalido;
        }
        break;
    }
  }
  ret = TrataRetorno(ret);
  dumpLog("%s%s - fim com ret=%d \n", v.nome, trace_version(), ret);
  return ret;
}

}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4IniCP(unsigned char Opc, const char* Param) {
  ORB_LOCK();
  static constexpr VarianteAbertura kBase{"E4IniCP", true, nullptr};
  return Inicia_Documento(kBase, Opc, Param);
}

ORBELAN_API unsigned short E4IniCup(unsigned char Opc) {
  ORB_LOCK();
  ORB_LOG("E4IniCup%s - inicio - Opc=%d \n", Opc);
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : E4IniCP(Opc, "");
  ret = TrataRetorno(ret);
  ORB_LOG("E4IniCup%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4Cons(const char* Nome, const char* Numero, const char* Endereco) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4Cons%s - inicio - Nome=%s Numero=%s Endereco=%s\n", txt(Nome), txt(Numero), txt(Endereco));
  if (ret == 0) {
    Consumidor = DadosConsumidor{};
    std::array<char, 100> trabalho{};

    mascara_campo(Consumidor.Nome, trabalho, in_text(Nome, 30));

    trabalho.fill('\0');
    std::size_t n = copy_text(trabalho, in_text(Numero, 20));
    ORB_LOG("E4Cons%s Tamanho=%d\n", static_cast<int>(n));
    // An empty number goes out as one blank.
    if (n == 0) copy_text(trabalho, " ");
    ORB_LOG("E4Cons%s bufferAux=%s.\n", trabalho.data());
    MascaraCaracterEsp(trabalho, Consumidor.Numero);
    ORB_LOG("E4Cons%s Consumidor.Numero=%s.\n", std::string(view(Consumidor.Numero)).c_str());

    mascara_campo(Consumidor.Endereco, trabalho, in_text(Endereco, 79));

    FLAGCONS = 1;
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4Cons%s - fim com ret=%d \n", ret);
  return ret;
}

}  // extern "C"
