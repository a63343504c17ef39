// Adjustments of the open coupon: item cancellation, discounts and increases on
// one item or on the subtotal, and the two small queries about them. Item
// cancellations and item increases are also kept locally under the coupon's CCF.
#include "documents/adjustments.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

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
#include "state/increases.h"
#include "state/payment_records.h"

namespace orbelan {

namespace {

constexpr std::uint16_t kNaoDisponivel = 2561;

// Item number meaning "the last item sold".
constexpr std::uint16_t kUltimoItem = 65535;

// Driver modes of the item adjustment command.
enum Modo : std::uint8_t {
  kAcrescimoValor = 0,
  kDescontoValor = 1,
  kAcrescimoPercentual = 2,
  kDescontoPercentual = 3,
  kCancelaAjuste = 4,
};

// Room the caller's value text of E4AcrIt is documented to hold.
constexpr std::size_t kTamValorAcrescimo = 13;

// The value field of an adjustment: two decimals, cut to `largura` characters.
Input& valor_formatado(Input& in, const char* valor, int largura) {
  std::array<char, 20> campo{};
  FormataValorDuasCasas(in_text(valor), campo, largura);
  return in.text(view(campo));
}

std::uint8_t modo_desconto(std::uint8_t opc) {
  switch (opc) {
    case 0: return kDescontoValor;
    case 1: return kCancelaAjuste;
    case 2: return kDescontoPercentual;
    default: return kAcrescimoValor;  // an unknown option sends an increase
  }
}

std::uint8_t modo_acrescimo(std::uint8_t opc) {
  switch (opc) {
    case 1: return kCancelaAjuste;
    case 2: return kAcrescimoPercentual;
    default: return kAcrescimoValor;
  }
}

// The coupon subtotal commands: discount and increase, by amount, cancel, by
// percentage. Any other option sends command 0 with the sequence alone.
std::uint16_t ajuste_no_subtotal(const int (&comandos)[3], std::uint8_t opc, const char* valor) {
  Input in;
  in.seq();
  int cmd = 0;
  switch (opc) {
    case 0:
      cmd = comandos[0];
      valor_formatado(in, valor, 15);
      break;
    case 1:
      cmd = comandos[1];
      in.byte(0);
      break;
    case 2:
      cmd = comandos[2];
      valor_formatado(in, valor, 5);
      break;
    default:
      break;
  }
  Reply<10> r;
  return executa(cmd, 0, in, r);
}

// Writes over `valor` the growth of the subtotal, in whole cents, as a text with
// a decimal point ("1250" -> "12.50"). A subtotal that did not grow leaves the
// caller's text as it was.
void escreve_montante(char* valor, float antes, float depois) {
  const std::int64_t diferenca = inteiro_limitado(depois - antes);
  std::array<char, 11> digitos{};
  if (diferenca > 0 && diferenca <= UINT32_MAX) LongtoAsk(static_cast<std::uint32_t>(diferenca), digitos, 10);
  std::array<char, kTamValorAcrescimo> montante{};
  AcrescentaPonto(view(digitos), montante);
  if (montante[0] != '\0') copy_out(valor, view(montante), montante.size());
}

}  // namespace

std::uint16_t Executa_Cancelamento_Item(std::uint16_t SeqItem) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Executa_Cancelamento_Item%s - inicio - SeqItem=%d \n", SeqItem);
  if (ret == 0) {
    Input in;
    in.seq().u16(SeqItem).byte(0);
    Reply<10> r;
    ret = executa(180, 0, in, r);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Executa_Cancelamento_Item%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t Executa_Acrescimo_Desconto_Em_Item(std::uint8_t Modo, std::uint16_t SeqItem, const char* Valor) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Executa_Acrescimo_Desconto_Em_Item%s - inicio - Opc=%d SeqItem=%d Valor=%s \n", Modo, SeqItem,
          txt(Valor));
  if (ret == 0) {
    // Only while items are being sold (fiscal coupon before totalling, or a
    // non-fiscal coupon to be totalled). A failed state read is reported as it
    // is; nothing is sent either way.
    std::uint8_t estado = 0;
    ret = Estado_Cupom_Atual(&estado, nullptr);
    if (ret == 0 && estado != 2 && estado != 20 && estado != 22) ret = kNaoDisponivel;
  }
  if (ret == 0) {
    Input in;
    in.seq().u16(SeqItem == 0 ? kUltimoItem : SeqItem).byte(Modo);
    switch (Modo) {
      case kAcrescimoValor:
      case kDescontoValor:
        valor_formatado(in, Valor, 11);
        break;
      case kAcrescimoPercentual:
      case kDescontoPercentual:
        valor_formatado(in, Valor, 5);
        break;
      case kCancelaAjuste:
        in.byte(0);
        break;
      default:
        break;
    }
    Reply<10> r;
    ret = executa(207, 0, in, r);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Executa_Acrescimo_Desconto_Em_Item%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t Ler_Indicador_Desconto(std::uint8_t* out) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Ler_Indicador_Desconto%s - inicio \n");
  std::uint8_t indicador = 0;
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<5> r;
    ret = executa(241, 1, in, r);
    if (ret == 0) {
      indicador = r[0];
      if (out != nullptr) *out = indicador;
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Ler_Indicador_Desconto%s - fim com ret=%d - sIndicador=%d\n", ret, indicador);
  return ret;
}

std::uint16_t TotalDesconto_Acrescimo_Subtotal(std::uint16_t Opc, char* out) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("TotalDesconto_Acrescimo_Subtotal%s - inicio  \n");
  std::array<char, 18> valor{};
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<18> r;
    ret = executa(Opc == 0 ? 182 : 183, 1, in, r);
    if (ret == 0) {
      // A first byte of 0 means no total: the reply reads as empty.
      if (r[0] != 0) copy_text(valor, r.text(1));
      copy_out(out, view(valor), valor.size());
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("TotalDesconto_Acrescimo_Subtotal%s - fim com ret=%d Opc=%d Valor=%s \n", ret, Opc, valor.data());
  return ret;
}

}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4CanIt(unsigned char RP, unsigned short SeqItem) {
  ORB_LOCK();
  (void)RP;  // accepted for the interface's sake; the printer knows the item's register
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4CanIt%s - inicio - SeqItem=%d \n", SeqItem);
  if (ret == 0) {
    ret = Executa_Cancelamento_Item(SeqItem);
    if (ret == 0) {
      // The local record is best effort: the printer has cancelled the item.
      std::array<char, 7> ccf{};
      if ((Ler_CCF_Ultimo_Cupom(ccf.data()) & 0xFF) == 0) Incluir_Cancelamento_Item_ou_AcresItem(ccf.data(), SeqItem);
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4CanIt%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4DesIt(unsigned char Opc, unsigned char RP, unsigned short SeqItem, const char* Valor,
                                   const char* Descricao) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4DesIt%s - inicio - Opc=%d RP=%d SeqItem=%d Valor=%s Descricao=%s\n", Opc, RP, SeqItem, txt(Valor),
          txt(Descricao));
  if (ret == 0) ret = Executa_Acrescimo_Desconto_Em_Item(modo_desconto(Opc), SeqItem, Valor);
  ret = TrataRetorno(ret);
  ORB_LOG("E4DesIt%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4AcrIt(unsigned char Opc, unsigned char RP, unsigned short SeqItem, char* Valor,
                                   const char* Descricao) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4AcrIt%s - inicio - Opc=%d RP=%d SeqItem=%d Valor=%s Descricao=%s\n", Opc, RP, SeqItem, txt(Valor),
          txt(Descricao));
  if (ret == 0) {
    float antes = 0;
    const std::uint16_t ret_antes = Ler_Valor_Subtotal(&antes);
    ret = Executa_Acrescimo_Desconto_Em_Item(modo_acrescimo(Opc), SeqItem, Valor);

    // The local records below are best effort: the printer has accepted.
    std::array<char, 7> ccf{};
    const bool aumento = Opc == 0 || Opc == 2;
    if (ret == 0 && (aumento || Opc == 1) && (Ler_CCF_Ultimo_Cupom(ccf.data()) & 0xFF) == 0) {
      if (Opc == 1) {
        Incluir_Cancelamento_Item_ou_AcresItem(ccf.data(), SeqItem);
      } else {
        if (Opc == 2 && ret_antes == 0) {
          // A percentage is recorded as the amount it added to the subtotal,
          // which the caller also gets back in Valor.
          float depois = 0;
          if (Ler_Valor_Subtotal(&depois) == 0) escreve_montante(Valor, antes, depois);
        }
        Incluir_Dados_AcresItens(ccf.data(), SeqItem, txt(Valor));
      }
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4AcrIt%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4DesCup(unsigned char Opc, const char* Valor) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4DesCup%s - inicio - Opc=%d - Valor=%s \n", Opc, txt(Valor));
  if (ret == 0) ret = ajuste_no_subtotal({147, 149, 148}, Opc, Valor);
  ret = TrataRetorno(ret);
  ORB_LOG("E4DesCup%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4AcrCup(unsigned char Opc, const char* Valor) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4AcrCup%s - inicio - Opc=%d - Valor=%s \n", Opc, txt(Valor));
  if (ret == 0) ret = ajuste_no_subtotal({150, 152, 151}, Opc, Valor);
  ret = TrataRetorno(ret);
  ORB_LOG("E4AcrCup%s - fim com ret=%d \n", ret);
  return ret;
}

}  // extern "C"
