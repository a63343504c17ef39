// The four driver entry points of the virtual printer.
#include <algorithm>
#include <cstring>

#include "printer.h"

namespace vprinter {
namespace {

// The printer model: one handler per command. Empty until the fiscal state
// model is added; every command not scripted then answers an empty success.
constexpr HandlerEntry kHandlers[] = {
    {0, nullptr},
};

}  // namespace

Handler find_handler(int cmd) {
  for (const auto& h : kHandlers)
    if (h.cmd == cmd && h.handle != nullptr) return h.handle;
  return nullptr;
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
  if (!vprinter::take_scripted(cmd, reply)) {
    if (auto handler = vprinter::find_handler(cmd); handler == nullptr || !handler(call, reply))
      reply = vprinter::Reply{};
  }
  if (aux != nullptr) *aux = 0;
  if (outbuf != nullptr && !reply.data.empty())
    std::memcpy(outbuf, reply.data.data(), reply.data.size());
  if (outlen != nullptr) *outlen = reply.reported;
  return reply.result;
}

}  // extern "C"
