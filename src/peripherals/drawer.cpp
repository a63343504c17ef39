// Cash drawer and bar code: one driver command each.
#include "peripherals/drawer.h"

#include <cstdint>

#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"
#include "orbelan.h"

namespace orbelan {
namespace {

constexpr std::uint16_t kArgumentoInvalido = 2049;

}  // namespace
}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4OpenGv(void) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4OpenGv%s - inicio \n");
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<10> r;
    ret = executa(95, 0, in, r);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4OpenGv%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4StatGv(unsigned char* Status) {
  ORB_LOCK();
  if (Status != nullptr) *Status = 0;
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4StatGv%s - inicio \n");
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<10> r;
    ret = executa(96, 1, in, r);
    // The printer answers 0 while the drawer is open.
    if (ret == 0 && Status != nullptr) *Status = r[0] == 0 ? 1 : 0;
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4StatGv%s - fim com ret=%d Status=%d \n", ret, Status != nullptr ? *Status : 0);
  return ret;
}

ORBELAN_API unsigned short E4ImpCodB(int Tipo, int PosicaoHRI, int Altura, int Fonte, const char* CodBarra) {
  ORB_LOCK();
  // Looked at one character beyond the longest accepted code, so that a longer
  // one is recognised without reading the caller's text any further.
  const std::string_view codigo = in_text(CodBarra, kMaxCodBarra + 1);
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4ImpCodB%s - inicio - Tipo=%d, PosicaoHRI=%d, Altura=%d, Fonte=%d, CodBarra=%.*s\n", Tipo,
          PosicaoHRI, Altura, Fonte, static_cast<int>(codigo.size()), codigo.data());
  // The command's input holds 50 bytes: a longer code is refused rather than
  // cut, since a shortened code would print bars for a different value.
  if (ret == 0 && codigo.size() > kMaxCodBarra) ret = kArgumentoInvalido;
  if (ret == 0) {
    Input in;
    in.seq()
        .byte(static_cast<std::uint8_t>(Altura))
        .byte(3)
        .byte(static_cast<std::uint8_t>(Fonte))
        .byte(static_cast<std::uint8_t>(PosicaoHRI))
        .byte(static_cast<std::uint8_t>(Tipo))
        .text(codigo);
    Reply<5> r;
    ret = executa(255, 0, in, r);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4ImpCodB%s - fim com ret=%d \n", ret);
  return ret;
}

}  // extern "C"
