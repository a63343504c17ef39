// The coupon and payment functions of the second application family. Each is
// its base function (opening, payment, closing, cancellation) with the few
// differences that family needs; the payment on register 0 finds the method
// described as "OUTROS" by itself.
#include "variants/coupon_jp.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "documents/cancellation.h"
#include "documents/closing.h"
#include "documents/opening.h"
#include "documents/payments.h"
#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/encodings.h"
#include "frame/file.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"
#include "registers/partials.h"
#include "registers/values.h"
#include "state/payment_records.h"

namespace orbelan {

std::uint8_t RPPag = 0;

namespace {

constexpr std::uint16_t kRegistradorInvalido = 2582;
constexpr std::uint16_t kFimDaCategoria = 2867;

constexpr const char* kIniCP = "E4IniCP_JP";
constexpr unsigned char kCategoriaPagamento = 5;
constexpr std::string_view kOutros = "OUTROS";
constexpr std::size_t kMaxValor = 14;
// Payment methods a walk can meet (60..78); a printer that keeps answering
// past them is taken to have reached the category's end.
constexpr int kMaxPassos = 19 + 1;

bool registrador_de_pagamento(int rp) { return rp >= 60 && rp <= 78; }

// Whether a register's description names the "OUTROS" method, in any letter case.
template <std::size_t N>
bool descreve_outros(const std::array<char, N>& descricao) {
  const std::string_view d = view(descricao);
  return std::equal(d.begin(), d.end(), kOutros.begin(), kOutros.end(), [](char a, char b) {
    return std::toupper(static_cast<unsigned char>(a)) == b;
  });
}

// The register of the payment method described as "OUTROS": the one found last
// time if it still is, else the first met walking the payment methods (and
// remembered). The walk's end (2867), or its failure, is the result.
std::uint16_t procura_outros(const char* nome, std::uint8_t& RP) {
  dumpLog("%s%s - RP=%d\n", nome, trace_version(), RP);
  std::array<char, kTamDescricaoRegistrador> descricao{};
  std::array<char, 2> sinal{};  // one character, kept a text for the trace
  if (E4VerRP(RPPag, descricao.data(), sinal.data()) == 0) {
    dumpLog("%s%s - RPPag=%d,Desc=%s, Sinal=%s\n", nome, trace_version(), RPPag, descricao.data(),
            sinal.data());
    if (descreve_outros(descricao)) RP = RPPag;
  }
  if (RP != 0) return 0;

  dumpLog("%s%s - RP=%d\n", nome, trace_version(), RP);
  // The walk starts from the category's first method, wherever an earlier walk
  // (this one's last success included) left off: a method before that point
  // would otherwise never be met.
  std::uint16_t ret = E4RPPrim(kCategoriaPagamento);
  if (ret != 0) return ret;
  for (int passo = 0; passo < kMaxPassos; ++passo) {
    descricao.fill('\0');
    sinal.fill('\0');
    std::uint8_t rp = 0;
    ret = E4RPLe_JP(kCategoriaPagamento, descricao.data(), sinal.data(), &rp);
    if (ret != 0) return ret;
    if (descreve_outros(descricao)) {
      RP = rp;
      RPPag = rp;
      return 0;
    }
  }
  return kFimDaCategoria;
}

// The payment of both exported forms; `nome` names the search's lines.
std::uint16_t paga(const char* nome, const NomesPagamento& nomes, std::uint8_t RP, const char* Valor,
                   const char* Mensagem) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  if (ret == 0 && RP == 0) ret = procura_outros(nome, RP);
  return Registra_Pagamento(nomes, ret, RP, Valor, Mensagem);
}

// Option 24: a voucher for a given coupon. The parameter holds the payment
// register (two characters) and the coupon's COO (the next six).
std::uint16_t comprovante_de_cupom(std::string_view param) {
  std::uint8_t reg = 0;
  std::uint16_t ret = Registrador_Comprovante(kIniCP, param, reg);
  if (ret == 0) {
    std::array<char, 7> coo{};
    copy_text(coo, param.substr(std::min<std::size_t>(2, param.size()), 6));
    // The opening looks the coupon's line up in the voucher index, which must
    // therefore exist, empty as it may be.
    File(NOME_ARQ_INDPGTOPORCOO, "a").close();
    ret = Abre_Comprovante(coo.data(), reg);
  }
  return ret;
}

// The options this family adds to the document opening.
bool opcao_propria(unsigned char Opc, std::string_view param, std::uint16_t& ret) {
  switch (Opc) {
    case 23:  // accepted; nothing to do
      ret = 0;
      return true;
    case 24:
      ret = comprovante_de_cupom(param);
      return true;
    case 25:
      ret = ImprimeCupomAdicional();
      return true;
    default:
      return false;
  }
}

}  // namespace

std::uint16_t ImprimeCupomAdicional() {
  // Both entry lines are written, as the trace readers expect them.
  ORB_LOG("ImprimeCupomAdicional%s - inicio\n");
  ORB_LOG("ImprimeCupomAdicional%s - inicio  \n");
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  if (ret == 0) {
    Input in;
    in.seq().byte(0);
    Reply<14> r;  // not read: only the result counts
    ret = executa(201, 1, in, r);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("ImprimeCupomAdicional%s - fim com ret=%d\n", ret);
  return ret;
}

}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4IniCP_JP(unsigned char Opc, const char* Param) {
  ORB_LOCK();
  // This family keeps no flags of open coupons.
  static constexpr VarianteAbertura kVariante{kIniCP, false, opcao_propria};
  return Inicia_Documento(kVariante, Opc, Param);
}

ORBELAN_API unsigned short E4RegPag_JP(unsigned char RP, const char* Valor) {
  ORB_LOCK();
  ORB_LOG("E4RegPag_JP%s - inicio - RP=%d Valor=%s\n", RP, txt(Valor));
  return paga("E4RegPag_JP", {"E4RegPag_JP", "E4RegPag_JP"}, RP, Valor, "");
}

ORBELAN_API unsigned short E4RegPagEsp_JP(unsigned char RP, const char* Valor, const char* Mensagem) {
  ORB_LOCK();
  ORB_LOG("E4RegPagEsp_JP%s - inicio - RP=%d Valor=%s\n", RP, txt(Valor));
  // The refusal and exit lines are the base function's.
  return paga("E4RegPagEsp_JP", {"E4RegPagEsp", "E4RegPagEsp"}, RP, Valor, Mensagem);
}

ORBELAN_API unsigned short E4EstornaPgto_JP(unsigned char RPO, unsigned char RPD, const char* Valor) {
  ORB_LOCK();
  // The labels name the arguments the other way round; the trace keeps them so.
  ORB_LOG("E4EstornaPgto_JP%s - inicio - RPD=%d RPO=%d Valor=%s\n", RPO, RPD, txt(Valor));
  const bool aberto = OPENOK != 0;
  std::uint16_t ret = aberto ? 0 : kNaoAberto;
  if (aberto && !registrador_de_pagamento(RPO)) {
    ORB_LOG("E4EstornaPgto_JP%s - Registrador (origem) invalido: %d \n", RPO);
    ret = kRegistradorInvalido;
  }
  if (aberto && !registrador_de_pagamento(RPD)) {
    ORB_LOG("E4EstornaPgto_JP%s - Registrador (destino) invalido: %d \n", RPD);
    ret = kRegistradorInvalido;
  }
  std::array<char, kTamValorRegistrador> coo{};
  if (ret == 0) ret = Ler_Valor_Atual_Reg_Fiscal(3, coo.data());
  if (ret == 0) {
    std::array<std::uint8_t, 3> bcd{};
    Compacta(view(coo), bcd, 6);
    Input in;
    in.seq().raw(bcd.data(), bcd.size()).byte(RPO).byte(RPD).raw(in_text(Valor, kMaxValor)).zeros(2);
    Reply<10> r;  // not read: only the result counts
    ret = executa(242, 0, in, r);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4EstornaPgto_JP%s - fim com ret=%d \n", ret);
  return ret;
}

// The cancellations of this family never make a management report an error
// and always cut; the lines advanced are the caller's when Avanca is set.
ORBELAN_API unsigned short E4CanCP_JP(unsigned char Avanca, int Linhas) {
  ORB_LOCK();
  return Cancelamento_Exportado("E4CanCP_JP", "  ", 0, Avanca != 0 ? Linhas : 0, 1, 1);
}

ORBELAN_API unsigned short E4CanCPEsp_JP(unsigned char Avanca, int Linhas) {
  ORB_LOCK();
  return Cancelamento_Exportado("E4CanCPEsp_JP", "  ", 0, Avanca != 0 ? Linhas : 0, 1, 0);
}

ORBELAN_API unsigned short E4CanCupEsp_JP(void) {
  ORB_LOCK();
  return Cancelamento_Exportado("E4CanCupEsp_JP", " ", 0, 0, 1, 0);
}

ORBELAN_API unsigned short E4FimCPEsp_JP(unsigned char Avanca, int Linhas, const char* Prox) {
  ORB_LOCK();
  return Fechamento_Exportado("E4FimCPEsp_JP", Prox, Avanca != 0 ? Linhas : 0, ControlarFinalizacaoCupom);
}

ORBELAN_API unsigned short E4FimDoc_JP(void) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4FimDoc_JP%s - inicio\n");
  if (ret == 0) ret = Finalizar(nullptr, 0, 0);  // whatever is open, no cut
  ret = TrataRetorno(ret);
  ORB_LOG("E4FimDoc_JP%s - fim com ret=%d \n", ret);
  return ret;
}

}  // extern "C"
