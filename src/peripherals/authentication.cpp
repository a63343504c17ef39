// Authentication: a short text printed on a document the operator inserts,
// by the authentication library or by the printer's document station.
#include "peripherals/authentication.h"

#include <unistd.h>

#include <array>
#include <cstring>
#include <string_view>

#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/encodings.h"
#include "frame/identity.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"
#include "orbelan.h"
#include "peripherals/loader.h"
#include "peripherals/station.h"

namespace orbelan {
namespace {

constexpr std::uint16_t kNaoDisponivel = 2561;
constexpr std::uint16_t kSemBiblioteca = 2900;
constexpr int kTipoComEstacao = 6;  // the only printer type with a document station

// The command carries at most 253 text bytes; the caller's text is read at
// most 252 characters far so that it and the appended blank always fit.
constexpr std::size_t kMaxTexto = 252;
// The printer's copy is converted in a 100-byte buffer: 98 characters of the
// text, the blank and the NUL.
constexpr std::size_t kConvertido = 100;

// The fiscal data records handed to "carregaECF".
constexpr std::size_t kRegVazio = 9;
constexpr std::size_t kRegSequencial = 6;
constexpr std::size_t kRegCoo = 10;
constexpr std::size_t kRegRecebido = 60;

// The caller's text followed by one blank. The blank is also appended in the
// caller's buffer (whose size the interface does not tell) only when its text
// ended within the length read: a longer text is sent cut and left as it is,
// since the library cannot know where its buffer ends.
struct TextoAut {
  std::array<char, kMaxTexto + 2> b{};
  std::size_t len = 0;

  explicit TextoAut(char* caller) {
    const std::string_view t = in_text(caller, kMaxTexto + 1);
    const std::size_t n = std::min(t.size(), kMaxTexto);
    if (n != 0) std::memcpy(b.data(), t.data(), n);
    b[n] = ' ';
    len = n + 1;
    if (caller != nullptr && t.size() <= kMaxTexto) {
      caller[n] = ' ';
      caller[n + 1] = '\0';
    }
  }
};

bool biblioteca_carregada() {
  // The entry points outlive the library, so they are only trusted while it
  // is loaded.
  return pd_autenticaHandle != nullptr && CarregaECF_Pd_autentica != nullptr && Opera_Pd_autentica != nullptr;
}

// The printer's document station: wait for the document, select the station,
// print, and give the operator time to take the document. Returns the result
// before its final translation.
std::uint16_t autentica_na_impressora(const TextoAut& texto, std::uint16_t ret) {
  std::array<char, kConvertido> convertido{};
  const std::size_t n = std::min(texto.len - 1, kConvertido - 2);
  std::memcpy(convertido.data(), texto.b.data(), n);
  convertido[n] = ' ';
  ConversaoCP850(convertido, convertido);

  if (ret == 0 && TipoImp != kTipoComEstacao) ret = kNaoDisponivel;
  if (ret == 0) ret = Papel_Posicionado();
  if (ret != 0) return ret;

  ret = Seleciona_Dispositivo(kEstacaoDocumento);
  if (ret == 0) {
    sleep(4);
    Input in;
    in.seq().text(view(convertido));
    Reply<10> r;
    ret = executa(101, 0, in, r);
  }
  if (ret != 0) {
    ORB_LOG("E4Aut%s Restaurar dispositivo \n");
    Seleciona_Dispositivo(kEstacaoCupom);
  }
  sleep(2);
  return ret;
}

}  // namespace

int CarregaDadosECF() {
  if (!biblioteca_carregada()) return kSemBiblioteca;

  // What E4InfECF may write into each of its outputs.
  std::array<char, 25> serie{};
  std::array<char, 20> cgc{}, ie{}, im{};
  std::array<char, 2 * 256 + 2> cliche{};
  std::array<char, 10> firmware{}, sequencial{};
  std::uint8_t modelo = 0;
  std::array<char, 19> coo{};
  std::array<char, kRegRecebido> recebido{};
  // Their results are not looked at: a record that could not be read goes
  // empty to the library.
  E4InfECF(serie.data(), cgc.data(), ie.data(), im.data(), cliche.data(), firmware.data(), sequencial.data(),
           &modelo);
  E4ValAtu(3, coo.data());
  E4InfCup(501, recebido.data());

  // The first record is always empty.
  std::array<char, kRegVazio> vazio{};
  std::array<char, kRegSequencial> seq{};
  std::memcpy(seq.data(), sequencial.data(), strnlen(sequencial.data(), seq.size()));
  std::array<char, kRegCoo> numero{};
  std::memcpy(numero.data(), coo.data(), numero.size() - 1);
  recebido.back() = '\0';
  return CarregaECF_Pd_autentica(vazio.data(), seq.data(), numero.data(), recebido.data(), 0);
}

}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4Aut(char* Texto) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4Aut%s - inicio  \n");
  TextoAut texto{Texto};

  if (FLAGPD != 0) {
    int r = CarregaDadosECF();
    if (r == 0) r = Opera_Pd_autentica(kAutHorizontalComTracao, static_cast<int>(texto.len), texto.b.data());
    if (r != 0) ORB_LOG("E4Aut%s Erro retornado pelo procdoc [%d]\n", r);
    return TrataRetornoProcDoc(r);
  }

  ret = TrataRetorno(autentica_na_impressora(texto, ret));
  ORB_LOG("E4Aut%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4AutEsp(char* Texto, int Tipo) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4AutEsp%s - inicio  \n");
  TextoAut texto{Texto};

  if (FLAGPD != 0) {
    int r = CarregaDadosECF();
    if (r == 0) {
      int modo = 0;
      switch (Tipo) {
        case 1:
          ORB_LOG("E4AutEsp%s - Autenticacao Horizontal com Tracao\n");
          modo = kAutHorizontalComTracao;
          break;
        case 2:
          ORB_LOG("E4AutEsp%s - Autenticacao Horizontal sem Tracao\n");
          modo = kAutHorizontalSemTracao;
          break;
        case 3:
          ORB_LOG("E4AutEsp%s - Autenticacao Vertical\n");
          modo = kAutVertical;
          break;
        default:
          break;  // an unknown kind authenticates nothing
      }
      if (modo != 0) r = Opera_Pd_autentica(modo, static_cast<int>(texto.len), texto.b.data());
    }
    if (r != 0) ORB_LOG("E4AutEsp%s - Erro retornado pelo procdoc [%d]\n", r);
    return TrataRetornoProcDoc(r);
  }

  // The printer offers one kind of authentication only.
  ret = TrataRetorno(autentica_na_impressora(texto, ret));
  ORB_LOG("E4AutEsp%s - fim com ret=%d \n", ret);
  return ret;
}

}  // extern "C"
