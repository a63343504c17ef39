// Payments of the fiscal and non-fiscal coupon, and the small printer
// operations around them: totalling, the change, the amount received, and the
// subtotal, payment total and total received read back.
#include "documents/payments.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <initializer_list>
#include <string_view>

#include "documents/nonfiscal.h"
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
#include "state/payment_records.h"

namespace orbelan {

namespace {

constexpr std::uint16_t kArgumentoInvalido = 2049;

constexpr std::size_t kMaxValor = 14;
constexpr std::size_t kMaxMensagem = 84;
// Width of the total received.
constexpr int kLarguraTotal = 18;

bool registrador_de_pagamento(int rp) { return rp >= 60 && rp <= 78; }

// A query whose reply is a decimal amount in the smallest currency unit,
// starting at `inicio`; read only when `marcador` is met at byte 0 (or always,
// when `marcador` is negative).
std::uint16_t le_montante(int cmd, std::size_t inicio, int marcador, float* out) {
  Input in;
  in.seq();
  Reply<20> r;
  std::uint16_t ret = executa(cmd, 1, in, r);
  if (ret == 0 && (marcador < 0 || r[0] == marcador)) {
    std::array<char, 21> texto{};
    copy_text(texto, r.text(inicio));
    // Read as 64 bits on every target (a long is 32 bits on i386).
    if (out != nullptr) *out = static_cast<float>(std::atoll(texto.data()));
  }
  return ret;
}

// One bare command of the payment stage, traced under the name of the
// function `nome`: the sequence field, then a zero byte when `com_zero`. With
// `estados` given, the coupon's state is read first and the command goes only
// in one of those states; in any other nothing is sent and 0 comes back.
std::uint16_t passo_do_pagamento(const char* nome, int cmd, bool com_zero, std::initializer_list<int> estados) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  if (flgLog != 0) dumpLog("%s%s - inicio \n", nome, trace_version());
  bool envia = ret == 0;
  if (envia && estados.size() != 0) {
    std::uint8_t estado = 0;
    ret = Estado_Cupom_Atual(&estado, nullptr);
    envia = ret == 0 && std::find(estados.begin(), estados.end(), estado) != estados.end();
  }
  if (envia) {
    Input in;
    in.seq();
    if (com_zero) in.byte(0);
    Reply<10> r;
    ret = executa(cmd, 0, in, r);
  }
  ret = TrataRetorno(ret);
  if (flgLog != 0) dumpLog("%s%s - fim com ret=%d \n", nome, trace_version(), ret);
  return ret;
}

}  // namespace

std::uint16_t Registra_Pagamento(const NomesPagamento& nomes, std::uint16_t ret, std::uint8_t RP,
                                 const char* Valor, const char* Mensagem) {
  if (!registrador_de_pagamento(RP) && ret == 0) {
    dumpLog("%s%s - Registrador invalido \n", nomes.recusa, trace_version());
    ret = kArgumentoInvalido;
  }
  if (ret == 0) ret = Pagamento_Fiscal_E_NaoFiscal(RP, Valor, Mensagem);
  ret = TrataRetorno(ret);
  dumpLog("%s%s - fim com ret=%d \n", nomes.fim, trace_version(), ret);
  // Recorded after the exit line, so that a voucher can later point at it.
  if (ret == 0) {
    Incluir_Indice_Pagamento(RP);
    Incluir_Indice_PagamentoCOO(RP, NOME_ARQ_PAGTOPORCOO);
  }
  return ret;
}

std::uint16_t Pagamento_Fiscal_E_NaoFiscal(std::uint8_t RP, const char* Valor, const char* Mensagem) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Pagamento_Fiscal_E_NaoFiscal%s - inicio - RP=%d Valor=%s\n", RP, txt(Valor));

  // Only the first character of the message goes with a payment that closes a
  // non-fiscal coupon.
  std::array<char, 2> inicial{};
  if (Mensagem != nullptr) {
    copy_text(inicial, in_text(Mensagem, 1));
    ORB_LOG("Pagamento_Fiscal_E_NaoFiscal%s - msg=%s \n", Mensagem);
  }
  const std::string_view valor = in_text(Valor, kMaxValor + 1);
  if (ret == 0 && (valor.empty() || valor.size() > kMaxValor)) {
    ORB_LOG("Pagamento_Fiscal_E_NaoFiscal%s - Tamanho do valor invalido (maximo=14) \n");
    ret = kArgumentoInvalido;
  }

  std::uint8_t estado = 0;
  if (ret == 0) ret = Estado_Cupom_Atual(&estado, nullptr);
  // Still selling (or a non-fiscal coupon not yet totalled): total first.
  if (ret == 0 && (estado == 2 || estado == 20 || estado == 22)) ret = Totaliza_Fiscal_e_NaoFiscal();

  if (ret == 0 && estado == 20) {
    // This payment closes the non-fiscal coupon instead.
    ret = Finaliza_Cupom_Nao_Fiscal(inicial.data(), 0, 1);
  } else if (ret == 0) {
    const std::string_view mensagem = in_text(Mensagem, kMaxMensagem);
    Input in;
    in.seq().byte(RP).text(valor);
    if (!mensagem.empty()) in.text(mensagem);
    Reply<10> r;
    ret = executa(mensagem.empty() ? 185 : 209, 0, in, r);
  }

  ret = TrataRetorno(ret);
  ORB_LOG("Pagamento_Fiscal_E_NaoFiscal%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t Totaliza_Fiscal_e_NaoFiscal() {
  return passo_do_pagamento("Totaliza_Fiscal_e_NaoFiscal", 153, true, {});
}

std::uint16_t Troco_Fiscal_E_NaoFiscal() {
  return passo_do_pagamento("Troco_Fiscal_E_NaoFiscal", 189, true, {15, 24});
}

std::uint16_t Imprime_Valor_Recebido() {
  return passo_do_pagamento("Imprime_Valor_Recebido", 188, false, {14, 23, 24});
}

std::uint16_t CalculaTotalRecebido(char* out) {
  if (out != nullptr) out[0] = '\0';
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("CalculaTotalRecebido%s - inicio \n");
  std::array<char, kLarguraTotal + 1> total{};
  if (ret == 0) {
    // The printer lists its registers; the payment registers among them are
    // summed.
    Input in;
    in.seq();
    Reply<200> r;
    ret = executa(38, 1, in, r);
    long long soma = 0;
    for (std::int32_t i = 0; ret == 0 && i < r.len; ++i) {
      const std::uint8_t reg = r[static_cast<std::size_t>(i)];
      if (!registrador_de_pagamento(reg)) continue;
      std::array<char, 50> valor{};
      ret = Executa_Leitura_Registrador_Geral(134, reg, valor.data(), 0, valor.size());
      if (ret == 0) soma = soma_limitada(soma, valor_texto(valor.data()));
    }
    if (ret == 0) {
      std::array<char, 12> digitos{};
      intoAsk(static_cast<std::uint32_t>(soma), digitos, 10);
      LeftPad(view(digitos), total, kLarguraTotal);
      copy_out(out, view(total), total.size());
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("CalculaTotalRecebido%s - fim com ret=%d Valor=%s\n", ret, total.data());
  return ret;
}

std::uint16_t Ler_Valor_Subtotal(float* out) {
  if (out != nullptr) *out = 0;
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Ler_Valor_Subtotal%s - inicio  \n");
  if (ret == 0) ret = le_montante(138, 0, -1, out);
  ret = TrataRetorno(ret);
  ORB_LOG("Ler_Valor_Subtotal%s - fim com ret=%d - Subtotal=%f \n", ret, out != nullptr ? *out : 0.0);
  return ret;
}

std::uint16_t Ler_Total_Pagamentos(float* out) {
  if (out != nullptr) *out = 0;
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Ler_Total_Pagamentos%s - inicio  \n");
  // The total stands behind a marker byte 1; without it there is none yet.
  if (ret == 0) ret = le_montante(190, 1, 1, out);
  ret = TrataRetorno(ret);
  ORB_LOG("Ler_Total_Pagamentos%s - fim com ret=%d - Pagtos=%f \n", ret, out != nullptr ? *out : 0.0);
  return ret;
}

}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4RegPag(unsigned char RP, const char* Valor) {
  ORB_LOCK();
  ORB_LOG("E4RegPag%s - inicio - RP=%d Valor=%s\n", RP, txt(Valor));
  return Registra_Pagamento({"E4RegPag", "E4RegPag"}, OPENOK == 0 ? kNaoAberto : 0, RP, Valor, "");
}

ORBELAN_API unsigned short E4RegPagEsp(unsigned char RP, const char* Valor, const char* Mensagem) {
  ORB_LOCK();
  ORB_LOG("E4RegPagEsp%s - inicio - RP=%d Valor=%s\n", RP, txt(Valor));
  // The refusal line names the function without "Esp".
  return Registra_Pagamento({"E4RegPag", "E4RegPagEsp"}, OPENOK == 0 ? kNaoAberto : 0, RP, Valor, Mensagem);
}

}  // extern "C"
