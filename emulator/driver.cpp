// The four driver entry points of the virtual printer.
#include <algorithm>
#include <cstring>

#include "fuzz.h"
#include "model/model.h"
#include "printer.h"

namespace vprinter {

// The printer model answers the commands it has a handler for (the handler
// tables of model/*.cpp), when it is switched on; every other command not
// scripted answers an empty success.
Handler find_handler(int cmd) {
  if (!model::enabled() || model::lookup(cmd) == nullptr) return nullptr;
  return &model::dispatch;
}

}  // namespace vprinter

extern "C" {

__attribute__((visibility("default"))) int FC_Inicializa(int* printer_id) {
  vprinter::record(VP_INICIALIZA, 0, 0, 0, 0, nullptr);
  if (printer_id != nullptr) *printer_id = vprinter::printer_id();
  return vprinter::init_result();
}

__attribute__((visibility("default"))) int FC_Finaliza(void) {
  vprinter::record(VP_FINALIZA, 0, 0, 0, 0, nullptr);
  return vprinter::fini_result();
}

__attribute__((visibility("default"))) int FC_VersaoSW(int arg) {
  vprinter::record(VP_VERSAOSW, arg, 0, 0, 0, nullptr);
  return 0;
}

__attribute__((visibility("default"))) int FC_Operacao(int cmd, int flag, int mode, int inlen,
                                                       unsigned char* inbuf, int* aux, int* outlen,
                                                       unsigned char* outbuf) {
  const vp_call& call = vprinter::record(VP_OPERACAO, cmd, flag, mode, inlen, inbuf);
  vprinter::Reply reply;
  if (!vprinter::take_fuzzed(outbuf, reply) && !vprinter::take_scripted(cmd, reply)) {
    if (auto handler = vprinter::find_handler(cmd); handler == nullptr || !handler(call, reply))
      reply = vprinter::Reply{};
  }
  vprinter::transcribe(reply);
  if (aux != nullptr) *aux = 0;
  if (outbuf != nullptr && !reply.data.empty())
    std::memcpy(outbuf, reply.data.data(), reply.data.size());
  if (outlen != nullptr) *outlen = reply.reported;
  return reply.result;
}

}  // extern "C"
