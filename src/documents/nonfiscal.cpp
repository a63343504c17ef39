// Non-fiscal coupons: money movements that are not sales (supplies,
// withdrawals, other receipts), each under one of the non-fiscal registers.
#include "documents/nonfiscal.h"

#include <array>

#include "documents/closing.h"
#include "documents/opening.h"
#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/encodings.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"
#include "orbelan.h"
#include "state/documents.h"

namespace orbelan {

namespace {

constexpr std::uint8_t kPrimeiroRegNaoFiscal = 40;
constexpr std::uint8_t kUltimoRegNaoFiscal = 54;
constexpr std::size_t kMaxInformacao = 84;

}  // namespace

std::uint16_t Abre_Cupom_Nao_Fiscal(const char* Informacao) {
  ORB_LOG("Abre_Cupom_Nao_Fiscal%s - inicio Informacao[%p]=%s\n", static_cast<const void*>(Informacao),
          Informacao != nullptr ? Informacao : "PONTEIRO INVALIDO");
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  if (ret == 0) {
    Input in;
    in.seq().byte(0);
    if (FLAGCONS == 1) {
      in.text(view(Consumidor.Nome)).text(view(Consumidor.Numero)).text(view(Consumidor.Endereco));
    } else {
      in.zeros(3);
    }
    in.text(in_text(Informacao, kMaxInformacao));
    Reply<5> r;
    ret = executa(157, 0, in, r);
    if (ret == 0) FLAGCONS = 0;
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Abre_Cupom_Nao_Fiscal%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t Finaliza_Cupom_Nao_Fiscal(const char* msg, std::int32_t qtdeAvanco, char CortaPapel) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Finaliza_Cupom_Nao_Fiscal%s - inicio - msg=%s - qtdeAvanco=%d, CortaPapel=%c\n", txt(msg),
          qtdeAvanco, CortaPapel);
  if (ret == 0) {
    // The message is a courtesy line: if the printer refuses it the coupon is
    // closed all the same rather than left open behind a lost line.
    if (!in_text(msg).empty()) ImprimeMensagem(msg);
    std::array<char, 21> operador{};
    Ler_Operador(operador.data());
    Input in;
    in.seq().byte(5).text(view(operador));
    Reply<10> r;
    ret = executa(158, 0, in, r);
    if (ret == 0) {
      FLAGCONS = 0;
      fCupomNFiscalOpen = 0;
    }
    if (ret == 0 && qtdeAvanco >= 1) ret = E4AvancaPapel(0, qtdeAvanco);
    if (ret == 0 && CortaPapel != 0) ret = CortedePapel();
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Finaliza_Cupom_Nao_Fiscal%s - fim com ret=%d \n", ret);
  return ret;
}

}  // namespace orbelan

using namespace orbelan;

extern "C" ORBELAN_API unsigned short E4OpeCNF(unsigned char Reg, const char* Sinal, const char* Descricao,
                                               const char* Valor) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4OpeCNF%s - inicio - Reg=%d Sinal=%s Descricao=%s Valor=%s\n", Reg, txt(Sinal), txt(Descricao),
          txt(Valor));
  if (ret == 0 && (Reg < kPrimeiroRegNaoFiscal || Reg > kUltimoRegNaoFiscal)) {
    ORB_LOG("E4OpeCNF%s - Registrador invalido \n");
    ret = 2049;
  }
  if (ret == 0) {
    // Recorded before anything is sent, so that a cancellation knows what the
    // open document is even when the printer refuses the operation.
    Incluir_Tipo_Cupom(TIPO_CUPOM_NAO_FISCAL);
    std::array<char, 12> valor{};
    FormataValorDuasCasas(in_text(Valor), valor, 11);
    Input in;
    in.seq().byte(Reg).byte(0).text(view(valor));
    Reply<10> r;
    ret = executa(159, 0, in, r);
    if (ret == 0 && fCupomNFiscalOpen == 0) {
      Incluir_Tipo_Cupom(TIPO_CUPOM_NAO_FISCAL);
      fCupomNFiscalOpen = 1;
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4OpeCNF%s - fim com ret=%d \n", ret);
  return ret;
}
