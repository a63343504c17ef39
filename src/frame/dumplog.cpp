// The trace log.
//
// The log file is opened and closed around every line, so no handle is held
// between calls and every line is on disk when its call returns. Once the file
// grows past its limit, writing starts again at the top and overwrites the
// oldest lines in place (a ring); the file is never truncated.
#include "frame/dumplog.h"

#include <unistd.h>

#include <array>
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

// Opens the log for one line and positions it (ring included); `inicio` gets
// the offset the line starts at (-1 if unknown). Returns an empty File when
// the line is to be dropped.
//
// The stream is unbuffered and each line leaves in one write from a buffer of
// the writer's own. A buffered stream opened for update would first ask for
// the file's block size and, on every seek, read the block around the new
// position: two system calls per line that the log never uses.
File abre_para_linha(long& inicio) {
  inicio = -1;
  if (flgLog == 0) return {};
  File f(NomeArq, "r+");
  if (!f) {
    f = File(NomeArq, "w+");
    fCircular = 0;
    posicao = 0;
    if (!f) return {};
  }
  if (TamLog == 0) return {};
  std::setvbuf(f.get(), nullptr, _IONBF, 0);
  // Positioned on the descriptor before the stream is used, so the end of the
  // file is found without asking for its size first.
  const int fd = fileno(f.get());
  inicio = fCircular != 0 ? ::lseek(fd, posicao, SEEK_SET) : ::lseek(fd, 0, SEEK_END);
  if (posicao > TamLog) {
    fCircular = 1;
    inicio = ::lseek(fd, 0, SEEK_SET);
  }
  return f;
}

// The position behind a line of `escritos` bytes written from `inicio`.
void guarda_posicao(const File& f, long inicio, std::size_t escritos) {
  posicao = inicio >= 0 ? to_int32(inicio + static_cast<long>(escritos)) : to_int32(std::ftell(f.get()));
}

// The time stamp of a line. Formatted once per second: lines written within
// the same second share it.
std::size_t carimbo(char* out, std::size_t room) {
  static std::time_t ultimo = -1;
  static char texto[51];
  static std::size_t tamanho = 0;
  const std::time_t now = std::time(nullptr);
  if (now != ultimo || tamanho == 0) {
    std::tm local{};
    localtime_r(&now, &local);
    tamanho = std::strftime(texto, sizeof texto, "%d/%m/%y %H:%M:%S - ", &local);
    ultimo = now;
  }
  const std::size_t n = tamanho < room ? tamanho : room;
  std::memcpy(out, texto, n);
  return n;
}

// Longest line formatted in one piece; a longer one is written in two.
constexpr std::size_t kLinhaMax = 2048;

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
  long inicio = -1;
  File f = abre_para_linha(inicio);
  if (!f) return;
  std::array<char, kLinhaMax> linha;
  const std::size_t n = carimbo(linha.data(), linha.size());
  std::size_t escritos = 0;
  if (format == nullptr) {
    escritos = std::fwrite(linha.data(), 1, n, f.get());
  } else {
    va_list args;
    va_start(args, format);
    va_list resto;
    va_copy(resto, args);
    const int k = std::vsnprintf(linha.data() + n, linha.size() - n, format, args);
    if (k >= 0 && static_cast<std::size_t>(k) < linha.size() - n) {
      escritos = std::fwrite(linha.data(), 1, n + static_cast<std::size_t>(k), f.get());
    } else {
      // Too long for the line buffer: the stamp, then the text formatted
      // straight into the file.
      escritos = std::fwrite(linha.data(), 1, n, f.get());
      const int t = std::vfprintf(f.get(), format, resto);
      if (t > 0) escritos += static_cast<std::size_t>(t);
    }
    va_end(resto);
    va_end(args);
  }
  guarda_posicao(f, inicio, escritos);
}

void dumpBytes(const void* bytes, int count) {
  long inicio = -1;
  File f = abre_para_linha(inicio);
  if (!f) return;
  static constexpr char kHex[] = "0123456789abcdef";
  const auto* p = static_cast<const unsigned char*>(bytes);
  std::array<char, kLinhaMax> linha;
  std::size_t n = 0;
  std::size_t escritos = 0;
  for (int i = 0; p != nullptr && i < count; ++i) {
    if (n + 3 > linha.size()) {
      escritos += std::fwrite(linha.data(), 1, n, f.get());
      n = 0;
    }
    linha[n++] = ' ';
    linha[n++] = kHex[p[i] >> 4];
    linha[n++] = kHex[p[i] & 0x0F];
  }
  if (n + 1 > linha.size()) {
    escritos += std::fwrite(linha.data(), 1, n, f.get());
    n = 0;
  }
  linha[n++] = '\n';
  escritos += std::fwrite(linha.data(), 1, n, f.get());
  guarda_posicao(f, inicio, escritos);
}

void AbreArquivoLog() {
  ORB_LOG("AbreArquivoLog%s - inicio \n");
  TraceVer = Versao;
  ctrlLog = static_cast<std::uint8_t>(openCfg(ArqTrace));
  hLog = openLog(ArqTrace, NOMEARQLOG);
  ORB_LOG("AbreArquivoLog%s - fim - nivel Log=%d\n", ctrlLog);
}

}  // namespace orbelan
