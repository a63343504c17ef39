// Cancelling a coupon: the document still open on the printer, or else the last
// one issued by its recorded type. Vouchers cannot be cancelled; they are
// reversed one by one, newest first, together with the coupon they belong to.
#include "documents/cancellation.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "documents/closing.h"
#include "documents/opening.h"
#include "documents/payments.h"
#include "documents/reports.h"
#include "documents/vouchers.h"
#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/file.h"
#include "frame/identity.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/sums.h"
#include "frame/text.h"
#include "orbelan.h"
#include "registers/values.h"
#include "state/documents.h"
#include "state/increases.h"
#include "state/payment_records.h"

namespace orbelan {

namespace {

constexpr std::uint16_t kArgumentoInvalido = 2049;
constexpr std::uint16_t kNadaACancelar = 2561;
constexpr std::uint16_t kArquivoNaoAbre = 2902;
constexpr std::uint16_t kRelatorioNaoCancela = 9011;  // becomes 2751 once translated

constexpr std::uint8_t kModoCancelaAtual = 5;    // byte after the sequence of command 154
constexpr std::uint8_t kModoCancelaAnterior = 0;  // the same for commands 155 and 217

// Issues one of the three cancellation commands with the operator's name, then
// advances and cuts as asked. Returns the untranslated result and whether the
// printer accepted the cancellation itself.
std::uint16_t cancela(int comando, std::uint8_t modo, std::int32_t qtdeAvanco, char CortaPapel, bool& aceito) {
  std::array<char, 21> operador{};
  Ler_Operador(operador.data());  // a missing operator file just leaves the name empty
  Input in;
  in.seq().byte(modo).text(view(operador));
  Reply<10> r;
  std::uint16_t ret = executa(comando, 0, in, r);
  aceito = ret == 0;
  if (ret == 0 && qtdeAvanco >= 1) ret = E4AvancaPapel(0, qtdeAvanco);
  if (ret == 0 && CortaPapel != 0) ret = CortedePapel();
  return ret;
}

// Cancels the document issued last with `comando`, traced under the name of
// the function `nome`. With `registra` a coupon the printer cancelled is added
// to the day's list of cancelled coupons.
std::uint16_t cancela_anterior(const char* nome, int comando, bool registra, std::int32_t qtdeAvanco,
                               char CortaPapel) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  dumpLog("%s%s - inicio  \n", nome, trace_version());
  if (ret == 0) {
    bool aceito = false;
    ret = cancela(comando, kModoCancelaAnterior, qtdeAvanco, CortaPapel, aceito);
    // Recorded once the printer has cancelled it, even if the advance or the
    // cut then failed: the day's list must match the printer.
    if (aceito && registra) IncluiDadosCFCancelado_Arquivo();
  }
  ret = TrataRetorno(ret);
  dumpLog("%s%s - fim com ret=%d \n", nome, trace_version(), ret);
  return ret;
}

bool tipo_igual(const std::array<char, 4>& tipo, const char (&codigo)[4]) {
  return std::memcmp(tipo.data(), codigo, 4) == 0;
}

// Reverses the vouchers issued against the coupon before them, newest first,
// and cancels that coupon too when the vouchers directly follow it.
std::uint16_t estorna_vouchers(std::int32_t qtdeAvanco, char CortaPapel) {
  std::array<char, 10> coo{};
  std::uint16_t ret = Executa_Leitura_Registrador_Geral(133, 3, coo.data(), 0, coo.size());
  if (ret != 0) return ret;
  std::uint32_t qtde = 0;
  std::array<char, 4> tipo{};
  std::int32_t emitido = 0;
  ret = analisaEstorno(coo.data(), &qtde, tipo.data(), &emitido);
  if (ret != 0 || qtde == 0) return ret;
  long long numero = valor_texto(coo.data());
  for (std::uint32_t i = 0; i < qtde && ret == 0; ++i, numero = diferenca_limitada(numero, 1)) {
    std::array<char, 24> texto{};
    std::snprintf(texto.data(), texto.size(), "%06lld", numero);
    ret = CancelaCupomCCD(texto.data(), qtdeAvanco, CortaPapel);
    if (ret == 0) ret = Finalizar(nullptr, qtdeAvanco, CortaPapel);
  }
  if (ret == 0 && emitido == 1) {
    ret = std::memcmp(tipo.data(), TIPO_CUPOM_FISCAL, 3) == 0
              ? Cancela_Cupom_Fiscal_Anterior(qtdeAvanco, CortaPapel)
              : Cancela_Cupom_Nao_Fiscal_Anterior(qtdeAvanco, CortaPapel);
  }
  return ret;
}

// The last document issued, none being open.
std::uint16_t cancela_ultimo(std::int32_t TrataErro, std::int32_t qtdeAvanco, char CortaPapel) {
  std::array<char, 4> tipo{};
  std::uint16_t ret = Ler_Tipo_Ultimo_Cupom(tipo.data());
  if (ret != 0) return ret;
  if (tipo_igual(tipo, TIPO_CUPOM_FISCAL)) return Cancela_Cupom_Fiscal_Anterior(qtdeAvanco, CortaPapel);
  if (tipo_igual(tipo, TIPO_CUPOM_NAO_FISCAL)) return Cancela_Cupom_Nao_Fiscal_Anterior(qtdeAvanco, CortaPapel);
  if (tipo_igual(tipo, TIPO_CUPOM_CCD)) return estorna_vouchers(qtdeAvanco, CortaPapel);
  if (tipo_igual(tipo, TIPO_RELATORIO_GRL)) return TrataErro != 0 ? kRelatorioNaoCancela : 0;
  tipo[3] = '\0';
  ORB_LOG("CancelaCupomGeral%s - Tipo de cupom indefinido=%s \n", tipo.data());
  return kNadaACancelar;
}

// The document still open, in printer state `estado`.
std::uint16_t cancela_aberto(std::uint8_t estado, std::int32_t qtdeAvanco, char CortaPapel) {
  std::uint16_t ret = 0;
  switch (estado) {
    case 2:
    case 14:
    case 15:
    case 16:
      ret = Cancela_Cupom(qtdeAvanco, CortaPapel);
      if (ret == 0) {
        fCupomFiscalOpen = 0;
        IncluiDadosCFCancelado_Arquivo();
      }
      break;
    case 17:
    case 18:
      // The voucher is closed first; the reversal decides the result.
      Finaliza_CCD(qtdeAvanco, CortaPapel);
      ret = estorna_vouchers(qtdeAvanco, CortaPapel);
      break;
    case 19:
    case 20:
    case 21:
    case 22:
    case 23:
    case 24:
    case 25:
      ret = Cancela_Cupom(qtdeAvanco, CortaPapel);
      if (ret == 0) fCupomNFiscalOpen = 0;
      break;
    case 26:
      // A management report cannot be cancelled; it is closed.
      ret = Finaliza_Relatorio_Gerencial(qtdeAvanco, CortaPapel);
      break;
    case 27:
      ret = Finaliza_Estorno_CCD(qtdeAvanco, CortaPapel);
      break;
    default:
      ret = kNadaACancelar;
      break;
  }
  return ret;
}

}  // namespace

std::uint16_t CancelaCupomGeral(std::int32_t TrataErro, std::int32_t qtdeAvanco, std::uint8_t CortaPapel,
                                std::uint8_t CancelaAtual) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("CancelaCupomGeral%s - inicio - TrataErro=%d qtdeAvanco=%d CortaPapel=%d CancelaAtual=%d\n", TrataErro,
          qtdeAvanco, CortaPapel, CancelaAtual);
  std::uint8_t estado = 0;
  if (ret == 0) ret = Estado_Cupom_Atual(&estado, nullptr);
  if (ret == 0) {
    const char corte = static_cast<char>(CortaPapel);
    if (estado == 0) {
      ret = cancela_ultimo(TrataErro, qtdeAvanco, corte);
    } else if (CancelaAtual != 0) {
      ret = cancela_aberto(estado, qtdeAvanco, corte);
    }
  }
  ORB_LOG("CancelaCupomGeral%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t Cancela_Cupom(std::int32_t qtdeAvanco, char CortaPapel) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Cancela_Cupom%s - inicio  \n");
  std::uint8_t estado = 0;
  // Without a known state nothing is sent: the preparation below depends on it.
  if (ret == 0) ret = Estado_Cupom_Atual(&estado, nullptr);
  if (ret == 0) {
    // A coupon in its payment phase must first be brought to where the
    // printer accepts its cancellation; the printer judges the outcome.
    if (estado != 2 && estado != 19 && estado != 20 && estado != 22) Pre_Cancelamento();
    bool aceito = false;
    ret = cancela(154, kModoCancelaAtual, qtdeAvanco, CortaPapel, aceito);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Cancela_Cupom%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t Cancela_Cupom_Fiscal_Anterior(std::int32_t qtdeAvanco, char CortaPapel) {
  return cancela_anterior("Cancela_Cupom_Fiscal_Anterior", 155, true, qtdeAvanco, CortaPapel);
}

std::uint16_t Cancela_Cupom_Nao_Fiscal_Anterior(std::int32_t qtdeAvanco, char CortaPapel) {
  return cancela_anterior("Cancela_Cupom_Nao_Fiscal_Anterior", 217, false, qtdeAvanco, CortaPapel);
}

std::uint16_t analisaEstorno(const char* nCooCCDCanc, std::uint32_t* iQtdeCCD, char* sTipoDoc,
                             std::int32_t* iStDocEmitido) {
  const char* const coo_atual = nCooCCDCanc != nullptr ? nCooCCDCanc : "";
  ORB_LOG("analisaEstorno%s nCooCCDCanc=%s\n", coo_atual);
  std::uint16_t ret = 0;
  std::uint32_t qtde = 0;
  std::array<char, 4> tipo{};
  std::int32_t emitido = 0;

  {
    // The index ends in "$" and the ordinal of the last voucher recorded for
    // the coupon, which is also the number of vouchers issued against it.
    File ind(NOME_ARQ_INDPGTOPORCOO, "rb");
    if (!ind) {
      ret = kArquivoNaoAbre;
    } else {
      std::array<char, 2> fim{};
      if (std::fseek(ind.get(), -2, SEEK_END) != 0 || std::fread(fim.data(), 1, 2, ind.get()) != 2 ||
          fim[0] != '$' || fim[1] < '0' || fim[1] > '9') {
        ret = kArgumentoInvalido;
      } else {
        qtde = static_cast<std::uint32_t>(fim[1] - '0');
        if (iQtdeCCD != nullptr) *iQtdeCCD = qtde;
      }
    }
  }

  if (ret == 0) {
    File pgt(NOME_ARQ_PAGTOPORCOO, "rb");
    if (!pgt) {
      ret = kArquivoNaoAbre;
    } else {
      // Back from the last byte to the start of the last coupon's record: its
      // tag ("CPF"/"CNF") or the line feed that opens it.
      long pos = 0;
      if (std::fseek(pgt.get(), 0, SEEK_END) == 0) pos = std::ftell(pgt.get()) - 1;
      while (pos >= 1) {
        int c = EOF;
        if (std::fseek(pgt.get(), pos, SEEK_SET) == 0) c = std::fgetc(pgt.get());
        // A byte within the file's size that cannot be read means this is no
        // file of records (a directory in its place reports a size of 2^63):
        // it is as unusable as one that cannot be opened, and is not walked
        // back byte by byte.
        if (c == EOF) {
          ret = kArquivoNaoAbre;
          break;
        }
        if (c == 'C') break;
        if (c == '\n') {
          ++pos;
          break;
        }
        --pos;
      }
      if (ret == 0) {
        if (pos < 0) pos = 0;
        std::array<char, 10> registro{};
        if (std::fseek(pgt.get(), pos, SEEK_SET) == 0) std::fread(registro.data(), 1, 9, pgt.get());
        std::memcpy(tipo.data(), registro.data(), 3);
        std::array<char, 7> coo_cupom{};
        std::memcpy(coo_cupom.data(), registro.data() + 3, 6);
        if (diferenca_limitada(valor_texto(coo_atual), valor_texto(coo_cupom.data())) == static_cast<long long>(qtde)) {
          emitido = 1;
        }
        if (sTipoDoc != nullptr) std::memcpy(sTipoDoc, tipo.data(), tipo.size());
        if (iStDocEmitido != nullptr) *iStDocEmitido = emitido;
      }
    }
  }

  ORB_LOG("analisaEstorno%s ret=%d iQtdeCCD=%d sTipoDoc=%s iStDocEmitido=%d\n", ret, static_cast<int>(qtde),
          tipo.data(), emitido);
  return ret;
}

std::uint16_t Pre_Cancelamento() {
  ORB_LOG("Pre_Cancelamento%s - inicio  \n");
  float subtotal = 0;
  float pago = 0;
  std::uint16_t ret = Ler_Valor_Subtotal(&subtotal);
  if (ret == 0) ret = Ler_Total_Pagamentos(&pago);
  if (ret == 0 && pago != 0) {
    if (pago < subtotal) {
      // Paid in part by a single payment: a token payment moves the printer
      // on to where the coupon can be cancelled.
      unsigned qtde = 0;
      ret = Ler_Qtde_Pagamentos(&qtde);
      if (ret == 0 && qtde == 1) ret = Pagamento_Fiscal_E_NaoFiscal(60, "0,01", "");
    } else {
      ret = Imprime_Valor_Recebido();
      if (ret == 0) ret = Troco_Fiscal_E_NaoFiscal();
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Pre_Cancelamento%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t Cancelamento_Exportado(const char* nome, const char* brancos, std::int32_t TrataErro,
                                    std::int32_t qtdeAvanco, std::uint8_t CortaPapel, std::uint8_t CancelaAtual) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  dumpLog("%s%s - inicio%s\n", nome, trace_version(), brancos);
  if (ret == 0) ret = CancelaCupomGeral(TrataErro, qtdeAvanco, CortaPapel, CancelaAtual);
  ret = TrataRetorno(ret);
  dumpLog("%s%s - fim com ret=%d \n", nome, trace_version(), ret);
  return ret;
}

}  // namespace orbelan

using namespace orbelan;

extern "C" ORBELAN_API unsigned short E4CanCup(void) {
  ORB_LOCK();
  return Cancelamento_Exportado("E4CanCup", " ", 0, 0, 1, 1);
}

extern "C" ORBELAN_API unsigned short E4CanCupEsp(void) {
  ORB_LOCK();
  return Cancelamento_Exportado("E4CanCupEsp", " ", 1, 0, 1, 1);
}
