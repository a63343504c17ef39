// Stand-in for the cheque filler library "libpd_cheque.so". Every entry point
// records its call; results are scripted by entry point name (default 0).
//
// PreencheCheque records "<length>:<bytes in hex>", e.g. "3:0102ff".
#include <cstdio>

#include "recorder.h"

DBL_ENTRY(pd_cheque, Open_cheque)
DBL_ENTRY(pd_cheque, Close_cheque)

DBL_API int PreencheCheque(int length, unsigned char* bytes) {
  char hex[DBL_MAX_TEXT] = {};
  int used = std::snprintf(hex, sizeof hex, "%d:", length);
  for (int i = 0; bytes != nullptr && i < length && used + 3 < static_cast<int>(sizeof hex); ++i)
    used += std::snprintf(hex + used, sizeof hex - static_cast<unsigned>(used), "%02x", bytes[i]);
  dbl_record("pd_cheque", "PreencheCheque", "%s", hex);
  return static_cast<int>(dbl_result("PreencheCheque", 0));
}
