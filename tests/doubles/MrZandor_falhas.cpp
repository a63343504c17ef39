// A printer driver stand-in that passes every call on to the virtual printer
// linked into the test process, and can make any single command fail: the
// recorder's queue for "FC_Operacao" holds, per command in order, the result
// that replaces the printer's (0 keeps it). A test fails the n-th command with
// n-1 zeros followed by the failure code.
//
// Built without some entry points (SEM_INICIALIZA, SEM_FINALIZA, SEM_OPERACAO)
// it stands for an incomplete driver library.
#include <dlfcn.h>

#include "recorder.h"

namespace {

// The virtual printer's entry point: loaded locally, this library is not in
// the global scope, so the lookup finds the one the test process links.
template <typename Fn>
Fn impressora(const char* nome) {
  return reinterpret_cast<Fn>(dlsym(RTLD_DEFAULT, nome));
}

}  // namespace

extern "C" {

#ifndef SEM_INICIALIZA
__attribute__((visibility("default"))) int FC_Inicializa(int* printer_id) {
  return impressora<int (*)(int*)>("FC_Inicializa")(printer_id);
}
#endif

#ifndef SEM_FINALIZA
__attribute__((visibility("default"))) int FC_Finaliza(void) { return impressora<int (*)()>("FC_Finaliza")(); }
#endif

#ifndef SEM_OPERACAO
__attribute__((visibility("default"))) int FC_Operacao(int cmd, int flag, int mode, int inlen, unsigned char* inbuf,
                                                       int* aux, int* outlen, unsigned char* outbuf) {
  using Fn = int (*)(int, int, int, int, unsigned char*, int*, int*, unsigned char*);
  const int ret = impressora<Fn>("FC_Operacao")(cmd, flag, mode, inlen, inbuf, aux, outlen, outbuf);
  const long falha = dbl_result("FC_Operacao", 0);
  return falha != 0 ? static_cast<int>(falha) : ret;
}
#endif

__attribute__((visibility("default"))) int FC_VersaoSW(int arg) { return impressora<int (*)(int)>("FC_VersaoSW")(arg); }

}  // extern "C"
