// Stand-in for the authentication library "libpd_autentica.so". Every entry
// point records its call; results are scripted by entry point name (default 0).
//
// Recorded arguments:
//   autentica   "<mode>,<length>,<text: length bytes>"
//   carregaECF  "[<rec1>][<rec2>][<rec3>][<rec4>],<fifth>" with each record's
//               text read at most its fixed size (9, 6, 10, 60 bytes) far
//
// Built with PD_SEM_CARREGAECF it lacks "carregaECF" (pd_autentica_semcarrega).
#include "recorder.h"

DBL_ENTRY(pd_autentica, openAutentica)
DBL_ENTRY(pd_autentica, closeAutentica)

DBL_API int autentica(int mode, int length, char* text) {
  const int shown = text == nullptr || length < 0 ? 0 : (length > 900 ? 900 : length);
  dbl_record("pd_autentica", "autentica", "%d,%d,%.*s", mode, length, shown, text != nullptr ? text : "");
  return static_cast<int>(dbl_result("autentica", 0));
}

#ifndef PD_SEM_CARREGAECF
DBL_API int carregaECF(char* r1, char* r2, char* r3, char* r4, int fifth) {
  auto t = [](const char* r) { return r != nullptr ? r : ""; };
  dbl_record("pd_autentica", "carregaECF", "[%.9s][%.6s][%.10s][%.60s],%d", t(r1), t(r2), t(r3), t(r4), fifth);
  return static_cast<int>(dbl_result("carregaECF", 0));
}
#endif
