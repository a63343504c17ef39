// Stand-in for the CMC7 reader library "libpd_cmc7.so". Every entry point
// records its call; results are scripted by entry point name (default 0).
//
// readCmc7 writes the text scripted with dbl_set_text("readCmc7", ...) (at
// most 37 bytes, the reading buffer the caller passes, no terminator added)
// and reports its length as the count, unless a count is scripted as the
// result of "readCmc7.count".
#include <algorithm>
#include <cstring>

#include "recorder.h"

namespace {
constexpr std::size_t kLeitura = 37;
}

DBL_ENTRY(pd_cmc7, openCmc7)
DBL_ENTRY(pd_cmc7, closeCmc7)
DBL_ENTRY(pd_cmc7, bufferCmc7)

DBL_API int readCmc7(char* out, int* count) {
  dbl_record("pd_cmc7", "readCmc7", "%s", "");
  const char* text = dbl_text("readCmc7");
  const std::size_t n = std::min(std::strlen(text), kLeitura);
  if (out != nullptr && n != 0) std::memcpy(out, text, n);
  if (count != nullptr) *count = static_cast<int>(dbl_result("readCmc7.count", static_cast<long>(n)));
  return static_cast<int>(dbl_result("readCmc7", 0));
}

DBL_ENTRY(pd_cmc7, cleanCmc7)
