// Management reports, free printing into whatever open document accepts text,
// and a few small operations beside them.
#include "documents/reports.h"

#include <fcntl.h>

#include <array>
#include <cstdlib>

#include "documents/closing.h"
#include "documents/opening.h"
#include "documents/payments.h"
#include "documents/vouchers.h"
#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/identity.h"
#include "frame/lines.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"
#include "orbelan.h"
#include "state/documents.h"

namespace orbelan {

std::int32_t CPL = 56;

namespace {

constexpr std::uint16_t kArgumentoInvalido = 2049;
constexpr std::uint16_t kIndisponivel = 2561;
constexpr std::uint16_t kArquivoNaoAbre = 2902;
constexpr std::uint16_t kLinhaRecusada = 2904;

constexpr std::uint8_t kEstadoEstornoAberto = 27;

// A coupon in its payment phase: the amount received (and the change) must be
// printed before free text goes into its closing area.
bool em_pagamento(std::uint8_t estado) { return estado == 14 || estado == 15 || estado == 23 || estado == 24; }

}  // namespace

std::uint16_t Abre_Gerencial(int tipo) {
  ORB_LOG("Abre_Gerencial%s - inicio - tipo=%d \n", tipo);
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  if (ret == 0) {
    Input in;
    in.seq().byte(static_cast<std::uint8_t>('t' + (tipo & 0xFF))).byte(0);
    Reply<5> r;
    ret = executa(220, 0, in, r);
    if (ret == 0) FLAGCONS = 0;
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Abre_Gerencial%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t Finaliza_Relatorio_Gerencial(std::int32_t qtdeAvanco, char CortaPapel) {
  ORB_LOG("Finaliza_Relatorio_Gerencial%s - inicio - qtdeAvanco=%d, CortaPapel=%c\n", qtdeAvanco, CortaPapel);
  return Finaliza_Documento("Finaliza_Relatorio_Gerencial", 221, true, qtdeAvanco, CortaPapel);
}

}  // namespace orbelan

using namespace orbelan;

extern "C" ORBELAN_API unsigned short E4Print(const char* strLinha) {
  ORB_LOCK();
  ORB_LOG("E4Print%s - inicio  \n");
  // A closed session and an empty line are reported alike.
  std::uint16_t ret = OPENOK == 0 || in_text(strLinha).empty() ? kArgumentoInvalido : 0;
  if (ret == 0) {
    ORB_LOG("E4Print%s - strLinha=%s\n", strLinha);
    std::uint8_t estado = 0;
    ret = Estado_Cupom_Atual(&estado, nullptr);
    if (ret == 0 && em_pagamento(estado)) {
      ret = Imprime_Valor_Recebido();
      if (ret == 0) ret = Troco_Fiscal_E_NaoFiscal();
    }
    if (ret == 0) ret = ImprimeMensagem(strLinha);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4Print%s - fim com ret=%d \n", ret);
  return ret;
}

extern "C" ORBELAN_API unsigned short E4ImpVinc(const char* path, const char* QtdeLinhas) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4ImpVinc%s - inicio QtdeLinhas=%s\n", txt(QtdeLinhas));
  const long linhas = std::atol(txt(QtdeLinhas));
  if (ret == 0 && linhas >= 1) {
    // The line buffer lives on the stack, so the out-of-memory result (255) of
    // a failed allocation cannot arise here.
    std::array<char, 300> linha{};
    const Fd arquivo{::open(txt(path), O_RDONLY | O_CLOEXEC)};
    if (!arquivo) {
      ORB_LOG("E4ImpVinc%s Erro na abertura do Arquivo \n");
      return kArquivoNaoAbre;
    }
    for (long i = 0; i < linhas; ++i) {
      linha.fill('\0');
      const int n = ler_linha(arquivo.get(), linha, static_cast<int>(linha.size()) - 1);
      if (n < 0) break;
      if (n > CPL && CPL >= 0) linha[static_cast<std::size_t>(CPL)] = '\0';
      // Lines already printed stay on paper; the caller learns where it stopped
      // from the dedicated result.
      if (ImprimeMensagem(linha.data()) != 0) return kLinhaRecusada;
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4ImpVinc%s - fim com ret=%d \n", ret);
  return ret;
}

extern "C" ORBELAN_API unsigned short E4FimDoc(void) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4FimDoc%s - inicio  \n");
  if (ret == 0) {
    std::uint8_t estado = 0;
    ret = Estado_Cupom_Atual(&estado, nullptr);
    if (ret == 0) ret = estado == kEstadoEstornoAberto ? Finaliza_Estorno(0, 1) : kIndisponivel;
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4FimDoc%s - fim com ret=%d \n", ret);
  return ret;
}

extern "C" ORBELAN_API unsigned short E4ProgOp(const char* nome) {
  ORB_LOCK();
  ORB_LOG("E4ProgOp%s - inicio  \n");
  std::uint16_t ret = Incluir_Operador(txt(nome));
  ret = TrataRetorno(ret);
  ORB_LOG("E4ProgOp%s - fim com ret=%d \n", ret);
  return ret;
}

extern "C" ORBELAN_API unsigned short E4ConImp(char Dispositivo, int Margem, int EspVertical) {
  ORB_LOCK();
  // Accepted for compatibility: nothing is sent or stored.
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4ConImp%s - inicio - Dispositivo=%c Margem=%d EspVertical=%d\n", Dispositivo, Margem, EspVertical);
  ret = TrataRetorno(ret);
  ORB_LOG("E4ConImp%s - fim com ret=%d \n", ret);
  return ret;
}

extern "C" ORBELAN_API unsigned short E4ExpDoc(void) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4ExpDoc%s - inicio \n");
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<10> r;
    ret = executa(71, 0, in, r);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4ExpDoc%s - fim com ret=%d \n", ret);
  return ret;
}
