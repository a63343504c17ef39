// Closing the document open on the printer: the dispatch on its state, the
// fiscal coupon's own closing, the closing message, and the paper handling
// (line advance and cut) every document closing ends with.
#include "documents/closing.h"

#include <array>
#include <string_view>

#include "documents/nonfiscal.h"
#include "documents/opening.h"
#include "documents/payments.h"
#include "documents/reports.h"
#include "documents/vouchers.h"
#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/encodings.h"
#include "frame/identity.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"
#include "orbelan.h"
#include "state/documents.h"
#include "state/increases.h"

namespace orbelan {

std::int32_t FLAGCORTE = 1;

namespace {

constexpr std::uint16_t kCupomNaoTotalizado = 2862;  // fiscal coupon still selling items
constexpr std::uint16_t kEstadoNaoFinaliza = 2634;   // non-fiscal coupon that cannot be closed here
constexpr std::uint16_t kCorteAutomatico = 2960;     // manual cut while end-of-document cut is on

constexpr std::size_t kMaxMensagem = 299;    // closing message kept by the closing
constexpr std::size_t kMaxImpressao = 252;   // characters sent per printed line
constexpr std::uint8_t kModoFechamento = 5;  // closing mode byte of the closing commands

// The closing message as the closing keeps it: at most 299 characters.
using Mensagem = std::array<char, kMaxMensagem + 1>;

// A caller's text for the trace: NULL reads as empty.
const char* ou_vazio(const char* s) { return s != nullptr ? s : ""; }

Mensagem copia_mensagem(const char* msg) {
  Mensagem m{};
  copy_text(m, in_text(msg, kMaxMensagem));
  return m;
}

// Command 223: advance `linhas` lines (one byte, so the count is taken modulo 256).
std::uint16_t avanca_linhas(std::int32_t linhas) {
  Input in;
  in.seq().byte(static_cast<std::uint8_t>(linhas & 0xFF));
  Reply<10> r;
  return executa(223, 0, in, r);
}

// Command 224: cut the paper.
std::uint16_t corta() {
  Input in;
  in.seq();
  Reply<5> r;
  return executa(224, 0, in, r);
}

}  // namespace

std::uint16_t ImprimeMensagem(const char* msg) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("ImprimeMensagem%s - inicio  \n");
  if (ret == 0) {
    std::array<char, 400> texto{};
    std::array<char, 400> mascarado{};
    copy_text(texto, in_text(msg, kMaxImpressao));
    MascaraCaracter(texto, mascarado);
    Input in;
    in.seq().text(view(mascarado));
    Reply<10> r;
    ret = executa(130, 0, in, r);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("ImprimeMensagem%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t Finaliza_Cupom_Fiscal(const char* msg, std::int32_t qtdeAvanco, char CortaPapel) {
  const std::string_view mensagem = in_text(msg);
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Finaliza_Cupom_Fiscal%s - inicio - msg=%s - qtdeAvanco=%d, CortaPapel=%c\n",
          ou_vazio(msg), qtdeAvanco, CortaPapel);
  if (ret == 0 && !mensagem.empty()) ret = ImprimeMensagem(msg);
  std::array<char, 21> operador{};
  if (ret == 0) ret = Ler_Operador(operador.data());
  if (ret == 0) {
    Input in;
    in.seq().byte(kModoFechamento).text(view(operador));
    if (FLAGCONS == 1) {
      in.text(view(Consumidor.Nome)).text(view(Consumidor.Numero)).text(view(Consumidor.Endereco));
    } else {
      in.zeros(3);
    }
    Reply<10> r;
    ret = executa(142, 0, in, r);
    if (ret == 0) {
      FLAGCONS = 0;
      fCupomFiscalOpen = 0;
    }
  }
  if (ret == 0 && qtdeAvanco >= 1) ret = E4AvancaPapel(0, qtdeAvanco);
  if (ret == 0 && CortaPapel != 0) ret = CortedePapel();
  if (ret == 0) Incluir_TotalAcrescItensCF();
  ret = TrataRetorno(ret);
  ORB_LOG("Finaliza_Cupom_Fiscal%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t ControlarFinalizacaoCupom(const char* msg, std::int32_t qtdeAvanco, char CortaPapel) {
  const Mensagem prox = copia_mensagem(msg);
  const char* const m = prox.data();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("ControlarFinalizacaoCupom%s - inicio - Prox=[%s] - qtdeAvanco=[%d]\n", m, qtdeAvanco);
  std::uint8_t estado = 0;
  if (ret == 0) ret = Estado_Cupom_Atual(&estado, nullptr);
  if (ret == 0 && estado != 0) {
    switch (estado) {
      case 2:
        ret = kCupomNaoTotalizado;
        break;
      case 14:
      case 15:
        ret = Imprime_Valor_Recebido();
        if (ret == 0) ret = Troco_Fiscal_E_NaoFiscal();
        if (ret == 0) ret = Finaliza_Cupom_Fiscal(m, qtdeAvanco, CortaPapel);
        break;
      case 16:
        ret = Finaliza_Cupom_Fiscal(m, qtdeAvanco, CortaPapel);
        break;
      case 17:
      case 18:
        ret = Finaliza_CCD(qtdeAvanco, CortaPapel);
        break;
      case 19:
        ret = kEstadoNaoFinaliza;
        break;
      case 20:
        ret = Totaliza_Fiscal_e_NaoFiscal();
        if (ret == 0) ret = Finaliza_Cupom_Nao_Fiscal(m, qtdeAvanco, CortaPapel);
        break;
      case 21:
      case 25:
        ret = Finaliza_Cupom_Nao_Fiscal(m, qtdeAvanco, CortaPapel);
        break;
      case 22:
        // Totalled only: the coupon stays open for its payments.
        ret = Totaliza_Fiscal_e_NaoFiscal();
        break;
      case 23:
      case 24:
        // In 24 the coupon is totalled once more; the amount received is
        // printed whatever that gave.
        if (estado == 24) ret = Totaliza_Fiscal_e_NaoFiscal();
        ret = Imprime_Valor_Recebido();
        if (ret == 0) ret = Troco_Fiscal_E_NaoFiscal();
        if (ret == 0) ret = Finaliza_Cupom_Nao_Fiscal(m, qtdeAvanco, CortaPapel);
        break;
      case 26:
        ret = Finaliza_Relatorio_Gerencial(qtdeAvanco, CortaPapel);
        break;
      case 27:
        ret = Finaliza_Estorno_CCD(qtdeAvanco, CortaPapel);
        break;
      default:
        break;
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("ControlarFinalizacaoCupom%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t Finalizar(const char* msgCupom, std::int32_t qtdAvanco, char CortaPapel) {
  ORB_LOG("Finalizar%s - inicio - msgCupom=[%s], qtdAvanco=[%d], CortaPapel=[%c]\n",
          ou_vazio(msgCupom), qtdAvanco, CortaPapel);
  const std::uint16_t ret = TrataRetorno(ControlarFinalizacaoCupom(msgCupom, qtdAvanco, CortaPapel));
  ORB_LOG("Finalizar%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t AvancaPapel() {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("AvancaPapel%s - inicio \n");
  if (ret == 0) ret = avanca_linhas(2);
  ret = TrataRetorno(ret);
  ORB_LOG("AvancaPapel%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t CortedePapel() {
  if (FLAGCORTE == 0) return 0;
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("CortedePapel%s - inicio \n");
  if (ret == 0) ret = corta();
  ret = TrataRetorno(ret);
  ORB_LOG("CortedePapel%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t Fechamento_Exportado(const char* nome, const char* Prox, std::int32_t qtdeAvanco,
                                   std::uint16_t (*fecha)(const char*, std::int32_t, char)) {
  const Mensagem prox = copia_mensagem(Prox);
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  dumpLog("%s%s - inicio - Prox=[%s] \n", nome, trace_version(), prox.data());
  if (ret == 0) ret = fecha(prox.data(), qtdeAvanco, 1);
  ret = TrataRetorno(ret);
  dumpLog("%s%s - fim com ret=%d \n", nome, trace_version(), ret);
  return ret;
}

}  // namespace orbelan

using namespace orbelan;

extern "C" ORBELAN_API unsigned short E4FimCP(int first, const char* Prox) {
  ORB_LOCK();
  (void)first;  // kept in the interface, never used
  return Fechamento_Exportado("E4FimCP", Prox, 0, Finalizar);
}

extern "C" ORBELAN_API unsigned short E4FimCup(void) {
  ORB_LOCK();
  ORB_LOG("E4FimCup%s - inicio \n");
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : E4FimCP(0, nullptr);
  ret = TrataRetorno(ret);
  ORB_LOG("E4FimCup%s - fim com ret=%d \n", ret);
  return ret;
}

extern "C" ORBELAN_API unsigned short E4CorteImp(int Corte) {
  ORB_LOCK();
  ORB_LOG("E4CorteImp%s - inicio - Corte=%d\n", Corte);
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  if (ret == 0) FLAGCORTE = Corte == 1 ? 1 : 0;
  ret = TrataRetorno(ret);
  ORB_LOG("E4CorteImp%s - fim com ret=%d \n", ret);
  return ret;
}

extern "C" ORBELAN_API unsigned short E4AvancaPapel(unsigned char Estado, int qtdeAvanco) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4AvancaPapel%s - inicio - Estado=%d qtdeAvanco=%d\n", Estado, qtdeAvanco);
  if (ret == 0 && Estado == 0) ret = avanca_linhas(qtdeAvanco);
  ret = TrataRetorno(ret);
  ORB_LOG("E4AvancaPapel%s - fim com ret=%d \n", ret);
  return ret;
}

extern "C" ORBELAN_API unsigned short E4CortaPapel(void) {
  ORB_LOCK();
  if (OPENOK == 0) return kNaoAberto;
  if (FLAGCORTE == 1) return kCorteAutomatico;
  ORB_LOG("E4CortaPapel%s - inicio \n");
  std::uint16_t ret = E4AvancaPapel(0, 1);
  if (ret == 0) ret = corta();
  ret = TrataRetorno(ret);
  ORB_LOG("E4CortaPapel%s - fim com ret=%d \n", ret);
  return ret;
}
