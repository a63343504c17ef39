// The printer's owner data.
#include "state/owner.h"

#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"

namespace orbelan {

std::uint16_t Ler_Indice_Proprietario(std::uint8_t* out) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Ler_Indice_Proprietario%s - inicio \n");
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<10> r;
    ret = executa(27, 1, in, r);
    if (ret == 0 && out != nullptr) {
      out[0] = r[0];
      if (r[0] <= 10) {
        out[1] = static_cast<std::uint8_t>(10 - r[0]);
        ORB_LOG("Ler_Indice_Proprietario%s - QtdeCalculada=%d \n", out[1]);
      } else {
        out[1] = 0;
      }
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Ler_Indice_Proprietario%s - fim com ret=%d \n", ret);
  return ret;
}

std::int32_t Ler_DataHora_Proprietario_Atual(char* out) {
  ORB_LOG("Ler_DataHora_Proprietario_Atual%s - inicio \n");
  // No open-session test: this read goes to the driver in any case.
  Input in;
  in.seq().byte(0xFF);
  Reply<70> r;
  const std::uint16_t ret = executa(28, 1, in, r);
  if (ret == 0) copy_out(out, r.field(2, 12), 13);
  ORB_LOG("Ler_DataHora_Proprietario_Atual%s ret=%d Retorno=%s\n", ret,
          ret == 0 && out != nullptr ? out : "");
  return ret;
}

}  // namespace orbelan
