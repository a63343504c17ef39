// Item sale: the three exported forms, the checks and the sale command they all
// end in, the print-mode switch and the number of the last item sold.
#include "documents/items.h"

#include <array>
#include <string_view>

#include "documents/opening.h"
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

namespace orbelan {

std::int32_t ImpressaoUmaLinha = 1;

namespace {

constexpr std::uint16_t kArgumentoInvalido = 2049;
constexpr std::uint16_t kQuantidadeGrande = 2619;
constexpr std::uint16_t kValorGrande = 2626;
constexpr std::uint16_t kCodigoGrande = 2706;

constexpr std::size_t kMaxQuantidade = 8;
constexpr std::size_t kMaxValor = 9;
constexpr std::size_t kMaxCodigo = 14;
// The description is cut to this, and further so that the whole command keeps
// within the printer's 255-byte input.
constexpr std::size_t kMaxDescricao = 233;

// Tax registers an item may be sold under: 11..13, 20..34, 36..39.
bool registrador_de_item(std::uint8_t rp) {
  return !(rp < 11 || (rp >= 14 && rp <= 19) || rp == 35 || rp > 39);
}

bool caractere_de_unidade(char c) {
  return c == '/' || c == ':' || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

}  // namespace

std::uint16_t Vender_Item(std::uint8_t RP, const char* Codigo, const char* Descricao, const char* Quantidade,
                          const char* Valor, const char* Unidade, char IAT) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Vender_Item%s - inicio - RP=%d Codigo=%s Descricao=%s Quantidade=%s, Valor=%s, Unidade=%s, IAT=%c \n",
          RP, txt(Codigo), txt(Descricao), txt(Quantidade), txt(Valor), txt(Unidade), IAT);

  // Each field is read only one character past its limit.
  const std::string_view codigo = in_text(Codigo, kMaxCodigo + 1);
  const std::string_view quantidade = in_text(Quantidade, kMaxQuantidade + 1);
  const std::string_view valor = in_text(Valor, kMaxValor + 1);
  std::size_t L = 0;  // characters of the fixed fields, for the description's cut

  if (ret == 0 && !registrador_de_item(RP)) {
    ORB_LOG("Vender_Item%s - Registrador invalido: %d\n", RP);
    ret = kArgumentoInvalido;
  }
  if (ret == 0) {
    if (quantidade.size() > kMaxQuantidade) {
      ORB_LOG("Vender_Item%s - Quantidade > 8 \n");
      ret = kQuantidadeGrande;
    }
    L += quantidade.size();
  }
  if (ret == 0) {
    if (valor.size() > kMaxValor) {
      ORB_LOG("Vender_Item%s - Valor > 9 \n");
      ret = kValorGrande;
    }
    L += valor.size();
  }
  if (ret == 0) {
    if (codigo.size() > kMaxCodigo) {
      ORB_LOG("Vender_Item%s - Quantidade > 14 \n");
      ret = kCodigoGrande;
    }
    L += codigo.size();
  }

  if (ret == 0) {
    // Unit: up to two letters, '/' or ':'; anything else becomes "Un". An
    // explicit unit counts towards L, the replacement "Un" only when none was
    // given at all.
    std::array<char, 3> unidade{};
    const std::string_view dada = in_text(Unidade, 2);
    if (dada.empty()) {
      copy_text(unidade, "Un");
      L += 2;
    } else {
      std::size_t n = 0;
      for (const char c : dada) {
        if (!caractere_de_unidade(c)) {
          n = 0;
          break;
        }
        unidade[n++] = c;
      }
      unidade[n] = '\0';
      L += n;
      if (n == 0) copy_text(unidade, "Un");
    }

    std::string_view descricao = in_text(Descricao, kMaxDescricao);
    if (descricao.size() + L + 15 > 255) descricao = descricao.substr(0, 240 - L);

    Input in;
    in.seq()
        .byte(RP)
        .text(codigo)
        .text(descricao)
        .byte(ImpressaoUmaLinha == 1 ? 2 : 1)
        .text(quantidade)
        .text(view(unidade))
        .text(valor)
        .byte(static_cast<std::uint8_t>(IAT));
    Reply<10> r;
    ret = executa(193, 0, in, r);

    // A sale accepted with no coupon known to be open has opened one.
    if (ret == 0 && fCupomFiscalOpen == 0) {
      Incluir_Tipo_Cupom(TIPO_CUPOM_FISCAL);
      fCupomFiscalOpen = 1;
    }
  }

  ret = TrataRetorno(ret);
  ORB_LOG("Vender_Item%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t NumeroDoItemVendido(char* out) {
  if (out != nullptr) out[0] = '\0';
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("NumeroDoItemVendido%s - inicio \n");
  std::array<char, 10> numero{};
  if (ret == 0) {
    Input in;  // no input
    Reply<10> r;
    ret = executa(15, 1, in, r);
    if (ret == 0) {
      const std::uint32_t item = static_cast<std::uint32_t>(r[2] | (r[3] << 8));
      intoAsk(item, numero, 10);
      copy_out(out, view(numero), numero.size());
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("NumeroDoItemVendido%s - fim com ret=%d Valor=%s\n", ret, numero.data());
  return ret;
}

}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4IteCFEsp2(unsigned char RP, const char* Codigo, const char* Descricao,
                                       const char* Quantidade, const char* Valor, const char* Unidade,
                                       unsigned char IAT) {
  ORB_LOCK();
  const char iat = IAT != 0 ? 'T' : 'A';
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4IteCFEsp2%s - inicio - RP=%d Codigo=%s Descricao=%s Quantidade=%s, Valor=%s, Unidade=%s, IAT=%c \n",
          RP, txt(Codigo), txt(Descricao), txt(Quantidade), txt(Valor), txt(Unidade), iat);
  if (ret == 0) ret = Vender_Item(RP, Codigo, Descricao, Quantidade, Valor, Unidade, iat);
  ret = TrataRetorno(ret);
  ORB_LOG("E4IteCFEsp2%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4IteCFEsp(unsigned char RP, const char* Codigo, const char* Descricao,
                                      const char* Quantidade, const char* Valor, const char* Unidade) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4IteCFEsp%s - inicio - RP=%d Codigo=%s Descricao=%s Quantidade=%s, Valor=%s, Unidade=%s \n", RP,
          txt(Codigo), txt(Descricao), txt(Quantidade), txt(Valor), txt(Unidade));
  if (ret == 0) {
    char iat = 'A';
    Ler_Valor_IAT(&iat);
    ret = Vender_Item(RP, Codigo, Descricao, Quantidade, Valor, Unidade, iat);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4IteCFEsp%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4IteCF(unsigned char RP, const char* Codigo, const char* Descricao,
                                   const char* Quantidade, const char* Valor) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4IteCF%s - inicio - RP=%d Codigo=%s Descricao=%s Quantidade=%s, Valor=%s\n", RP, txt(Codigo),
          txt(Descricao), txt(Quantidade), txt(Valor));
  if (ret == 0) ret = E4IteCFEsp(RP, Codigo, Descricao, Quantidade, Valor, "");
  ret = TrataRetorno(ret);
  ORB_LOG("E4IteCF%s - fim com ret=%d \n", ret);
  return ret;
}

// Works with or without a session: it only chooses the layout of later sales.
ORBELAN_API unsigned short E4ImpItem(int mode) {
  ORB_LOCK();
  if (mode != 0 && mode != 1) return 2561;
  ImpressaoUmaLinha = mode;
  return 0;
}

}  // extern "C"
