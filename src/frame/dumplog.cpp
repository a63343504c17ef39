// The trace log.
//
// The log file is opened and closed around every line, so no handle is held
// between calls and every line is on disk when its call returns. Once the file
// grows past its limit, writing starts again at the top and overwrites the
// oldest lines in place (a ring); the file is never truncated.
#include "frame/dumplog.h"

#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "frame/file.h"

namespace orbelan {

std::int32_t flgLog = 0;
std::int32_t TamLog = 5000000;
char NomeArq[50] = {};
std::int32_t fCircular = 0;
std::int32_t posicao = 0;

const char Versao[5] = "5600";
const char* TraceVer = nullptr;
char ArqTrace[20] = "Orbelan";
char NOMEARQLOG[20] = "Orbelan.txt";
std::uint8_t ctrlLog = 0;
std::int32_t hLog = 0;

namespace {

constexpr std::int32_t kTamanhoPadrao = 5000000;
constexpr std::size_t kJanelaCfg = 50;  // only this much of the control file is read

std::int32_t ultimoHandle = 0;

std::int32_t to_int32(long v) {
  if (v > INT32_MAX) return INT32_MAX;
  if (v < INT32_MIN) return INT32_MIN;
  return static_cast<std::int32_t>(v);
}

// Opens the log for one line and positions it (ring included). Returns an
// empty File when the line is to be dropped.
File abre_para_linha() {
  if (flgLog == 0) return {};
  File f(NomeArq, "r+");
  if (!f) {
    f = File(NomeArq, "w+");
    fCircular = 0;
    posicao = 0;
    if (!f) return {};
  }
  if (TamLog == 0) return {};
  if (fCircular != 0)
    std::fseek(f.get(), posicao, SEEK_SET);
  else
    std::fseek(f.get(), 0, SEEK_END);
  if (posicao > TamLog) {
    fCircular = 1;
    std::fseek(f.get(), 0, SEEK_SET);
  }
  return f;
}

void guarda_posicao(const File& f) { posicao = to_int32(std::ftell(f.get())); }

}  // namespace

int openCfg(const char* base) {
  TamLog = kTamanhoPadrao;
  char path[50];
  std::snprintf(path, sizeof path, "%s.cfg", base != nullptr ? base : "");

  File cfg(path, "r");
  if (!cfg) {
    flgLog = 0;
    File novo(path, "w+");
    if (novo) {
      std::fputs("Trace=0\n", novo.get());
      std::fputs("Tamanho=5000000", novo.get());
    }
    return 0;
  }

  // One byte more than the window, so the text is always terminated.
  char buf[kJanelaCfg + 1] = {};
  const std::size_t lidos = std::fread(buf, 1, kJanelaCfg, cfg.get());
  buf[lidos] = '\0';

  // Only the sixth character is checked: any five characters then "=" pass.
  if (buf[5] != '=') {
    flgLog = 0;
    return 0;
  }

  const std::size_t len = std::strlen(buf);
  int nivel = 0;
  std::size_t i = 6;
  for (; i < len; ++i) {
    if (buf[i] >= '0' && buf[i] <= '9') {
      nivel = buf[i] & 0x0F;
      break;
    }
  }
  if (i < len) {
    if (const char* t = std::strstr(buf + i, "Tamanho="); t != nullptr) {
      const std::int32_t tam = to_int32(std::strtol(t + 8, nullptr, 10));
      if (tam != 0) TamLog = tam;
    }
  }
  flgLog = nivel;
  return nivel;
}

int openLog(const char* /*base*/, const char* logname) {
  if (flgLog == 0) return ultimoHandle;
  std::snprintf(NomeArq, sizeof NomeArq, "%s", logname != nullptr ? logname : "");
  File f(NomeArq, "r+");
  if (!f) {
    f = File(NomeArq, "w+");
    if (!f) return 0;
    std::fprintf(f.get(), "Arquivo de LOG %s:\n\n", NomeArq);
  }
  std::fseek(f.get(), 0, SEEK_END);
  posicao = to_int32(std::ftell(f.get()));
  ultimoHandle = fileno(f.get());
  return ultimoHandle;
}

void closeLog() {
  if (TamLog != 0 && flgLog != 0) flgLog = 0;
}

void dumpLog(const char* format, ...) {
  File f = abre_para_linha();
  if (!f) return;
  char stamp[51];
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  const std::size_t n = std::strftime(stamp, sizeof stamp, "%d/%m/%y %H:%M:%S - ", &local);
  std::fwrite(stamp, 1, n, f.get());
  if (format != nullptr) {
    va_list args;
    va_start(args, format);
    std::vfprintf(f.get(), format, args);
    va_end(args);
  }
  guarda_posicao(f);
}

void dumpBytes(const void* bytes, int count) {
  File f = abre_para_linha();
  if (!f) return;
  const auto* p = static_cast<const unsigned char*>(bytes);
  for (int i = 0; p != nullptr && i < count; ++i) std::fprintf(f.get(), " %02x", p[i]);
  std::fputc('\n', f.get());
  guarda_posicao(f);
}

void AbreArquivoLog() {
  ORB_LOG("AbreArquivoLog%s - inicio \n");
  TraceVer = Versao;
  ctrlLog = static_cast<std::uint8_t>(openCfg(ArqTrace));
  hLog = openLog(ArqTrace, NOMEARQLOG);
  ORB_LOG("AbreArquivoLog%s - fim - nivel Log=%d\n", ctrlLog);
}

}  // namespace orbelan
