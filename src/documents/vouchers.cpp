// Credit/debit vouchers: each one points at a card payment of a coupon (its COO
// and the payment's ordinal), may be reversed by its own COO, and the last one
// can be printed a second time.
#include "documents/vouchers.h"

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
#include "state/payment_records.h"

namespace orbelan {

namespace {

constexpr std::uint16_t kIndisponivel = 2561;
constexpr std::size_t kAreaCOO = 7;  // the caller's COO area

// The printer printed the voucher though it reports a condition.
bool impresso_com_aviso(std::uint16_t ret) { return ret >= 8192 && ret <= 8196; }

// The COO packed two digits per byte, behind the sequence field.
void coo_compactado(Input& in, std::string_view coo) {
  std::array<std::uint8_t, 3> bcd{};
  Compacta(coo, bcd, 6);
  in.raw(bcd.data(), bcd.size());
}

}  // namespace

std::uint16_t Finaliza_Documento(const char* nome, int cmd, bool gasta_consumidor, std::int32_t qtdeAvanco,
                                 char CortaPapel) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  if (ret == 0) {
    std::array<char, 21> operador{};
    Ler_Operador(operador.data());
    Input in;
    in.seq().byte(5).text(view(operador));
    Reply<10> r;
    ret = executa(cmd, 0, in, r);
    if (ret == 0 && gasta_consumidor) FLAGCONS = 0;
    if (ret == 0 && qtdeAvanco >= 1) ret = E4AvancaPapel(0, qtdeAvanco);
    if (ret == 0 && CortaPapel != 0) ret = CortedePapel();
  }
  ret = TrataRetorno(ret);
  if (flgLog != 0) dumpLog("%s%s - fim com ret=%d \n", nome, trace_version(), ret);
  return ret;
}

std::uint16_t Abre_CCD(const char* COO, std::uint8_t Reg) {
  ORB_LOG("Abre_CCD%s - inicio - Reg=%d\n", Reg);
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  if (ret == 0) {
    std::array<char, 10> coo{};
    const std::string_view dado = in_text(COO, kAreaCOO);
    const bool coo_dado = !dado.empty();
    if (coo_dado) {
      copy_text(coo, dado);
    } else {
      ret = Ler_COO_Pagamento(coo.data());
    }
    ORB_LOG("Abre_CCD%s - Ultimo_COO=%s\n", coo.data());

    std::uint8_t indice = 0;
    const std::uint16_t busca = coo_dado ? Ler_Indice_PagamentoCOO(coo.data(), Reg, &indice)
                                         : Ler_Indice_Pagamento(Reg, &indice);
    // Without the coupon's COO the voucher could not point at its payment, so a
    // failed COO read counts as no usable payment too.
    if (ret != 0 || busca != 0 || indice == 0) ret = kIndisponivel;
    ORB_LOG("Abre_CCD%s - Indice=%d\n", indice);

    if (ret == 0) {
      Input in;
      in.seq();
      coo_compactado(in, view(coo));
      in.byte(indice);
      ORB_LOG("Abre_CCD%s - bufEntrada: ");
      dumpBytes(in.data(), in.size());
      ORB_LOG("Abre_CCD%s - fim bufEntrada\n");
      Reply<5> r;
      ret = executa(218, 0, in, r);
      if (ret == 0) FLAGCONS = 0;
      if (ret == 0 || impresso_com_aviso(ret)) {
        // The voucher is on paper: mark the payment as used and record the
        // voucher against the coupon's COO, which is what later lookups of the
        // day files search by.
        Incluir_Indice_Pagamento_EmissaoCCD(indice);
        Incluir_Indice_COO(NOME_ARQ_INDPGTOPORCOO, coo.data(), nullptr);
        Incluir_Indice_PagamentoCOO(indice, NOME_ARQ_INDPGTOPORCOO);
      }
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Abre_CCD%s - fim com ret=%d \n", ret);
  return ret;
}

// The opening lines differ: only the voucher's shows the cut flag as a number.
std::uint16_t Finaliza_CCD(std::int32_t qtdeAvanco, char CortaPapel) {
  ORB_LOG("Finaliza_CCD%s - inicio - qtdeAvanco=%d, CortaPapel=%d\n", qtdeAvanco, CortaPapel);
  return Finaliza_Documento("Finaliza_CCD", 228, true, qtdeAvanco, CortaPapel);
}

std::uint16_t Finaliza_Estorno_CCD(std::int32_t qtdeAvanco, char CortaPapel) {
  ORB_LOG("Finaliza_Estorno_CCD%s - inicio - qtdeAvanco=%d, CortaPapel=%c\n", qtdeAvanco, CortaPapel);
  return Finaliza_Documento("Finaliza_Estorno_CCD", 229, true, qtdeAvanco, CortaPapel);
}

std::uint16_t Finaliza_Estorno(std::int32_t qtdeAvanco, char CortaPapel) {
  ORB_LOG("Finaliza_Estorno%s - inicio - qtdeAvanco=%d, CortaPapel=%c \n", qtdeAvanco, CortaPapel);
  return Finaliza_Documento("Finaliza_Estorno", 229, false, qtdeAvanco, CortaPapel);
}

std::uint16_t CancelaCupomCCD(const char* COO, std::int32_t /*qtdeAvanco*/, char /*CortaPapel*/) {
  ORB_LOG("CancelaCupomCCD%s - inicio \n");
  Input in;
  in.seq();
  coo_compactado(in, in_text(COO));
  Reply<5> r;
  const std::uint16_t ret = executa(219, 0, in, r);
  ORB_LOG("CancelaCupomCCD%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t ImpSegundaViaCCD() {
  ORB_LOG("ImpSegundaViaCCD%s - inicio \n");
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<5> r;
    ret = executa(225, 0, in, r);
    if (ret == 0) ret = CortedePapel();
  }
  ret = TrataRetorno(ret);
  ORB_LOG("ImpSegundaViaCCD%s - fim com ret=%d \n", ret);
  return ret;
}

}  // namespace orbelan

using namespace orbelan;

extern "C" ORBELAN_API unsigned short E4CancelaCCDEsp(const char* nCoo) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4CancelaCCDEsp%s - inicio - nCoo:%s\n", txt(nCoo));
  if (ret == 0) ret = CancelaCupomCCD(nCoo, 0, 1);
  ret = TrataRetorno(ret);
  ORB_LOG("E4CancelaCCDEsp%s - fim com ret=%d \n", ret);
  return ret;
}

extern "C" ORBELAN_API unsigned short E4CancelaCCD(const char* nrCoo) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4CancelaCCD%s - inicio - nrCoo:%s\n", txt(nrCoo));
  if (ret == 0) ret = E4CancelaCCDEsp(nrCoo);
  ret = TrataRetorno(ret);
  ORB_LOG("E4CancelaCCD%s - fim com ret=%d \n", ret);
  return ret;
}
