// Reading the CMC7 line of a cheque: from the CMC7 reader library when the
// document processor is in use, else from the printer's document station.
#include "peripherals/cmc7.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/identity.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "orbelan.h"
#include "peripherals/loader.h"

namespace orbelan {

void Prepara_Buffer_CMC7(char* text, std::size_t size) {
  if (text == nullptr) return;
  for (std::size_t i = 0; i < size && text[i] != '\0'; ++i) {
    switch (text[i]) {
      case '/': text[i] = '>'; break;
      case '=': text[i] = '<'; break;
      case '^': text[i] = '='; break;
      default: break;
    }
  }
}

namespace {

constexpr std::uint16_t kNaoDisponivel = 2561;
constexpr std::uint16_t kSemBiblioteca = 2900;
constexpr int kTipoComEstacao = 6;  // the only printer type with a document station

constexpr std::size_t kLeituraPd = 37;          // the reader library's reading buffer
constexpr std::size_t kLeituraImpressora = 255;  // the printer's reply area

// The reading from the CMC7 library; Valor receives the bytes read, without a
// terminator. Every result is a library value translated.
std::uint16_t le_pela_biblioteca(char* Valor) {
  // The entry points outlive the library, so they are only trusted while it
  // is loaded.
  if (pd_cmc7Handle == nullptr || Buffer_Pd_cmc7 == nullptr || Read_Pd_cmc7 == nullptr ||
      Clean_Pd_cmc7 == nullptr)
    return kSemBiblioteca;

  int r = Buffer_Pd_cmc7();
  std::array<char, kLeituraPd> leitura{};
  int lidos = 0;
  if (r == 0) r = Read_Pd_cmc7(leitura.data(), &lidos);
  if (r != 0) {
    ORB_LOG("E4LeCMC7%s Erro retornado pelo procdoc [%d]\n", r);
    return TrataRetornoProcDoc(r);
  }
  // A count outside the reading buffer is cut to it.
  const std::size_t n = lidos < 0 ? 0 : std::min(static_cast<std::size_t>(lidos), kLeituraPd);
  ORB_LOG("E4LeCMC7%s Valor[%.*s]\n", static_cast<int>(strnlen(leitura.data(), kLeituraPd)), leitura.data());
  dumpBytes(leitura.data(), static_cast<int>(n));
  Clean_Pd_cmc7();
  // The library already delivers the application's separators.
  if (Valor != nullptr && n != 0) std::memcpy(Valor, leitura.data(), n);
  return TrataRetornoProcDoc(0);
}

}  // namespace
}  // namespace orbelan

using namespace orbelan;

extern "C" {

// Valor receives at most 256 bytes from the printer (255 and a NUL) and at most
// 37 from the reader library, which adds no terminator.
ORBELAN_API unsigned short E4LeCMC7(char* Valor) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  if (Valor != nullptr) Valor[0] = '\0';
  ORB_LOG("E4LeCMC7%s - inicio  \n");

  if (FLAGPD != 0) return le_pela_biblioteca(Valor);

  if (ret == 0 && TipoImp != kTipoComEstacao) ret = kNaoDisponivel;
  if (ret == 0) {
    Input in;
    in.seq().byte(0x1E).byte(0x00);
    Reply<kLeituraImpressora> r;
    ret = executa(222, 1, in, r);
    if (ret == 0) {
      std::array<char, kLeituraImpressora + 1> linha{};
      const auto n = static_cast<std::size_t>(r.len < 0 ? 0 : r.len);
      std::memcpy(linha.data(), r.b.data(), n);
      Prepara_Buffer_CMC7(linha.data(), linha.size());
      if (Valor != nullptr) std::memcpy(Valor, linha.data(), n + 1);
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4LeCMC7%s - fim com ret=%d \n", ret);
  return ret;
}

}  // extern "C"
