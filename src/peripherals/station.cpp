// The printer's document station: device selection, paper sensing and
// document spacing.
#include "peripherals/station.h"

#include <unistd.h>

#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/identity.h"
#include "frame/result.h"
#include "frame/session.h"

namespace orbelan {

namespace {

constexpr std::uint16_t kNaoDisponivel = 2561;
constexpr std::uint16_t kSemPapel = 2871;
constexpr std::int32_t kTipoComEstacao = 6;  // the only printer type with a document station

constexpr int kTentativasSelecao = 3;
constexpr int kLeiturasPapel = 5;
constexpr useconds_t kIntervalo = 500000;  // 500 ms between retries

// 0 when a session is open, else 2869.
std::uint16_t aberta() { return OPENOK == 0 ? kNaoAberto : 0; }

}  // namespace

std::uint16_t Ler_Dispositivo_Selecionado(std::uint8_t* out) {
  std::uint8_t dispositivo = 0;
  std::uint16_t ret = aberta();
  ORB_LOG("Ler_Dispositivo_Selecionado%s - inicio  \n");
  if (ret == 0 && TipoImp != kTipoComEstacao) ret = kNaoDisponivel;
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<10> r;
    ret = executa(80, 1, in, r);
    if (ret == 0) dispositivo = r[0];
  }
  if (out != nullptr) *out = dispositivo;
  ret = TrataRetorno(ret);
  ORB_LOG("Ler_Dispositivo_Selecionado%s - fim com ret=%d - dispositivo=%c \n", ret, dispositivo);
  return ret;
}

std::uint16_t Seleciona_Dispositivo(std::uint8_t device) {
  std::uint16_t ret = aberta();
  ORB_LOG("Seleciona_Dispositivo%s - inicio  \n");
  if (ret == 0 && TipoImp != kTipoComEstacao) ret = kNaoDisponivel;
  // The reads of the selected device give translated results already; only a
  // code of the selection command itself still needs translating.
  bool traduzido = false;
  if (ret == 0) {
    std::uint8_t atual = 0;
    ret = Ler_Dispositivo_Selecionado(&atual);
    traduzido = true;
    if (ret == 0 && atual != device) {
      Input in;  // the same input, sequence number included, on every try
      in.seq().byte(device);
      for (int tentativa = 1; tentativa <= kTentativasSelecao; ++tentativa) {
        Reply<10> r;
        ret = executa(79, 0, in, r);
        traduzido = ret == 0;
        if (ret == 0) ret = Ler_Dispositivo_Selecionado(&atual);
        if (ret != 0 || atual == device) break;
        // No wait after the last try: nothing follows it. A device still
        // differing then is left to the caller's paper check (result 0).
        if (tentativa < kTentativasSelecao) usleep(kIntervalo);
      }
    }
  }
  if (!traduzido) ret = TrataRetorno(ret);
  ORB_LOG("Seleciona_Dispositivo%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t Papel_Posicionado() {
  std::uint16_t ret = aberta();
  ORB_LOG("Papel_Posicionado%s - inicio  \n");
  if (ret == 0 && TipoImp != kTipoComEstacao) ret = kNaoDisponivel;
  bool posicionado = false;
  if (ret == 0) {
    for (int falhas = 0;;) {
      Input in;  // a status read carries no sequence field
      Reply<20> r;
      ret = executa(5, 1, in, r);
      if (ret != 0) break;
      // Bytes 1 and 3: the two paper sensors of the document station.
      posicionado = r[1] != 0 && r[3] != 0;
      if (posicionado || ++falhas >= kLeiturasPapel) break;
      usleep(kIntervalo);
    }
  }
  ret = TrataRetorno(ret);
  if (ret == 0 && !posicionado) ret = kSemPapel;
  ORB_LOG("Papel_Posicionado%s - fim com ret=%d \n", ret);
  return ret;
}

void LerEspacoDocumento(std::uint8_t* out) {
  if (out != nullptr) *out = (TipoImp == 4 || TipoImp == 6) ? 3 : 2;
}

std::uint16_t EspacoDocumento(const std::uint8_t* spacing) {
  std::uint16_t ret = aberta();
  ORB_LOG("EspacoDocumento%s - inicio \n");
  if (ret == 0) {
    std::uint8_t estado = 0;
    ret = Estado_Cupom_Atual(&estado, nullptr);
    // Only sent while no document is open; otherwise nothing to do.
    if (ret == 0 && estado == 0) {
      Input in;
      in.seq().byte(spacing != nullptr ? *spacing : 0);
      Reply<10> r;
      ret = executa(215, 0, in, r);
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("EspacoDocumento%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t Le_Espaco_Entre_Linhas_Documentos(unsigned* lines, unsigned* document) {
  if (lines != nullptr) *lines = 0;
  if (document != nullptr) *document = 0;
  ORB_LOG("Le_Espaco_Entre_Linhas_Documentos%s - inicio \n");
  std::uint16_t ret = aberta();
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<10> r;
    ret = executa(237, 1, in, r);
    if (ret == 0) {
      // The printer's unit to lines per inch, truncated (25 gives 3, 24 gives 2).
      const auto linhas = static_cast<unsigned>(static_cast<float>(r[0]) / 8.333333f);
      const unsigned doc = r[1];
      if (lines != nullptr) *lines = linhas;
      if (document != nullptr) *document = doc;
      ORB_LOG("Le_Espaco_Entre_Linhas_Documentos%s - fim - ret=%d, Espaco Linhas=%d, Espaco Doc=%d \n", ret,
              static_cast<int>(linhas), static_cast<int>(doc));
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Le_Espaco_Entre_Linhas_Documentos%s - fim - ret=%d\n", ret);
  return ret;
}

}  // namespace orbelan
