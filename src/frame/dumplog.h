// The trace log: a size-bounded ring of timestamped lines, switched on and
// sized by a small control file beside it.
#pragma once

#include <cstdint>

namespace orbelan {

// State of the log module.
extern std::int32_t flgLog;     // trace level in force; 0 = off
extern std::int32_t TamLog;     // size limit of the log in bytes
extern char NomeArq[50];        // path of the log file
extern std::int32_t fCircular;  // 1 once the log has wrapped
extern std::int32_t posicao;    // position just behind the last line written

int openCfg(const char* base);
int openLog(const char* base, const char* logname);
void closeLog();
void dumpLog(const char* format, ...) __attribute__((format(printf, 1, 2)));
void dumpBytes(const void* bytes, int count);

// State the library keeps for the log.
extern const char Versao[5];  // "5600"
extern const char* TraceVer;  // Versao once AbreArquivoLog has run
extern char ArqTrace[20];     // base name of the control file
extern char NOMEARQLOG[20];   // name of the log file
extern std::uint8_t ctrlLog;  // trace level read at the last open
extern std::int32_t hLog;

// (Re)reads the control file and reopens the log; run at every session open.
void AbreArquivoLog();

inline const char* trace_version() { return TraceVer != nullptr ? TraceVer : ""; }

}  // namespace orbelan

// Writes one trace line. The version text follows the function name glued to
// the first "%s" of every format, so callers pass only the remaining fields.
// With the trace off the fields are not even worked out.
#define ORB_LOG(format, ...)                                                                  \
  do {                                                                                        \
    if (::orbelan::flgLog != 0)                                                               \
      ::orbelan::dumpLog(format, ::orbelan::trace_version() __VA_OPT__(, ) __VA_ARGS__);      \
  } while (0)
// A detail line written only at trace level 1.
#define ORB_LOG1(format, ...)                                  \
  do {                                                         \
    if (::orbelan::ctrlLog == 1) ORB_LOG(format __VA_OPT__(, ) __VA_ARGS__); \
  } while (0)
