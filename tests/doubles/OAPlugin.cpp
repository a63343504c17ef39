// Test double of the monitoring agent's plug-in. Every call is recorded under
// "OAPlugin" with its arguments in brackets, texts byte for byte except that a
// byte outside printable ASCII (and "\") is written as \xNN; every entry point
// returns its scripted result, by default 1 (success). Plain C formatting only,
// so the double has no unique symbols and really unloads when released.
#include <cstdio>
#include <cstring>

#include "recorder.h"

namespace {

struct Args {
  char buf[DBL_MAX_TEXT] = {};
  std::size_t len = 0;

  void put(const char* s) {
    const std::size_t n = std::strlen(s);
    if (len + n < sizeof buf) {
      std::memcpy(buf + len, s, n);
      len += n;
    }
  }
  Args& texto(const char* s) {
    put("[");
    for (const char* p = s != nullptr ? s : ""; *p != '\0'; ++p) {
      const auto c = static_cast<unsigned char>(*p);
      char um[5] = {static_cast<char>(c), '\0'};
      if (c < 0x20 || c >= 0x7F || c == '\\') std::snprintf(um, sizeof um, "\\x%02X", c);
      put(um);
    }
    put("]");
    return *this;
  }
  Args& numero(int n) {
    char s[16];
    std::snprintf(s, sizeof s, "[%d]", n);
    put(s);
    return *this;
  }
};

int resultado(const char* fn) { return static_cast<int>(dbl_result(fn, 1)); }

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int StartInfOV(const char* nomeTerm, const char* ulTerm, int tempo) {
  Args a;
  dbl_record("OAPlugin", "StartInfOV", "%s", a.texto(nomeTerm).texto(ulTerm).numero(tempo).buf);
  return resultado("StartInfOV");
}

#ifndef OAPLUGIN_SEM_SENDINF
__attribute__((visibility("default"))) int SendInf(const char* codInf, const char* tipoInf, const char* campo1,
                                                   const char* campo2, const char* codFbr, int zero1, int zero2,
                                                   const char* complemento) {
  Args a;
  a.texto(codInf).texto(tipoInf).texto(campo1).texto(campo2).texto(codFbr).numero(zero1).numero(zero2);
  dbl_record("OAPlugin", "SendInf", "%s", a.texto(complemento).buf);
  return resultado("SendInf");
}
#endif

__attribute__((visibility("default"))) int SendInfGen(const char* mensagem) {
  Args a;
  dbl_record("OAPlugin", "SendInfGen", "%s", a.texto(mensagem).buf);
  return resultado("SendInfGen");
}

__attribute__((visibility("default"))) int StopInfOV(int zero) {
  Args a;
  dbl_record("OAPlugin", "StopInfOV", "%s", a.numero(zero).buf);
  return resultado("StopInfOV");
}

}  // extern "C"
