#include "harness.h"

#include <dirent.h>
#include <dlfcn.h>
#include <unistd.h>

#include <ctime>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "frame/bridge.h"
#include "fuzz.h"
#include "orbelan.h"
#include "recorder.h"
#include "vprinter.h"

namespace fuzz {
namespace {

// The directory the library works in during an input, and the one the fuzzer
// was started in (its corpus and findings paths may be relative to it).
std::string& workdir() {
  static std::string dir;
  return dir;
}
std::string& startdir() {
  static std::string dir;
  return dir;
}

// Removes every file of the working directory.
void empty_workdir() {
  DIR* d = opendir(".");
  if (d == nullptr) return;
  while (const dirent* e = readdir(d)) {
    if (std::strcmp(e->d_name, ".") == 0 || std::strcmp(e->d_name, "..") == 0) continue;
    unlink(e->d_name);
  }
  closedir(d);
}

void remove_workdir() {
  if (workdir().empty() || chdir("/") != 0) return;
  if (DIR* d = opendir(workdir().c_str())) {
    while (const dirent* e = readdir(d)) {
      if (std::strcmp(e->d_name, ".") == 0 || std::strcmp(e->d_name, "..") == 0) continue;
      const std::string path = workdir() + "/" + e->d_name;
      unlink(path.c_str());
    }
    closedir(d);
  }
  rmdir(workdir().c_str());
}

}  // namespace

void setup() {
  char tmpl[] = "/tmp/orbelan-fuzz-XXXXXX";
  char here[4096];
  if (mkdtemp(tmpl) == nullptr || getcwd(here, sizeof here) == nullptr) {
    std::perror("orbelan fuzz: working directory");
    std::abort();
  }
  workdir() = tmpl;
  startdir() = here;
  std::atexit(remove_workdir);
}

void begin() {
  if (chdir(workdir().c_str()) != 0) std::abort();
  vp_fuzz_end();
  vp_reset();
  dbl_reset();
  empty_workdir();
  vp_use_model(1);
  vp_model_reset();
  // The sequence field runs on across sessions; starting every input from
  // the same number keeps an input's replay identical to its run.
  orbelan::ProximoSequencial = 0;
  write_file("Orbelan.cfg", "Trace=1\nTamanho=200000");
}

void end() {
  vp_fuzz_end();
  vp_reset();
  E4Close();
  if (chdir(startdir().c_str()) != 0) std::abort();
}

void write_file(const char* name, std::string_view content) {
  if (std::FILE* f = std::fopen(name, "wb")) {
    if (!content.empty()) std::fwrite(content.data(), 1, content.size(), f);
    std::fclose(f);
  }
}

const char* const kFiles[] = {
    "quorvel.conf",      "Orbelan.cfg",      "Cheque.dat",
    "EcfZandor.pgt",     "EcfZandor.ind",    "EcfZandorCoo.pgt",
    "EcfZandorCOO.ind",  "EcfZandor.cpm",    "NomeOper.cfg",
    "EcfAcresItens.cpf", "EcfTotalAcrescItens.cpf", "EcfCancelados.cpf",
    "ArqRegPgto.sts",    "relatorio.txt",
};
const std::size_t kFileCount = sizeof kFiles / sizeof kFiles[0];

std::string cheque_layout(unsigned bank) {
  std::array<char, 86> r{};
  const auto put = [&r](std::size_t at, unsigned v) {
    r[at] = static_cast<char>(v & 0xFF);
    r[at + 1] = static_cast<char>(v >> 8);
  };
  put(0, bank);
  // The vertical positions (top reference at 58) and the columns.
  const unsigned campos[][2] = {{56, 10}, {58, 5},  {60, 30}, {62, 15}, {64, 20}, {66, 25}, {68, 28},
                                {70, 10}, {72, 20}, {74, 30}, {76, 70}, {78, 40}, {82, 35}};
  for (const auto& c : campos) put(c[0], c[1]);
  return {r.data(), r.size()};
}

std::string quorvel_conf(bool peripherals) {
  std::string conf =
      "[QuorvelPOS\\ImpressoraFiscal]\n"
      "LowPaperCounter=3\nOVSetings=1\nOVULTerm=0001\nOVNomeTerm=CAIXA01\n"
      "OVCodSftw=SW01\nOVCodHrdw=HW01\nOVTipHrdw=ECF\nOVCodFbr=ZD\n"
      "OVConfGrupo1=1\nOVConfGrupo2=1\nOVConfGrupo3=1\nOVConfGrupo4=1\n";
  conf += peripherals ? "TIPO_PD=1\n" : "TIPO_PD=0\n";
  return conf;
}

Texts::Texts(const std::uint8_t* data, std::size_t size) {
  std::string piece;
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] != 0) {
      piece.push_back(static_cast<char>(data[i]));
      continue;
    }
    pieces_.push_back(piece);
    piece.clear();
  }
  if (!piece.empty()) pieces_.push_back(piece);
}

const char* Texts::keep(const std::string& s) {
  owned_.emplace_back(new char[s.size() + 1]);
  std::memcpy(owned_.back().get(), s.c_str(), s.size() + 1);
  return owned_.back().get();
}

const char* Texts::next() {
  if (at_ >= pieces_.size()) return keep("");
  const std::string& s = pieces_[at_++];
  if (s == "\xFF") return nullptr;
  return keep(s);
}

const char* Texts::next_name() {
  std::string s = at_ < pieces_.size() ? pieces_[at_++] : std::string();
  for (char& c : s)
    if (c == '/') c = '_';
  return keep(s);
}

char* Texts::next_writable(std::size_t extra, std::size_t min_size) {
  const std::string s = at_ < pieces_.size() ? pieces_[at_++] : std::string();
  owned_.emplace_back(new char[std::max(s.size() + 1 + extra, min_size)]());
  std::memcpy(owned_.back().get(), s.c_str(), s.size() + 1);
  return owned_.back().get();
}

}  // namespace fuzz

// ---- calls the fuzz binaries take over ----------------------------------------
// The fixed waits of the library return at once, and the run-time loaded
// plug-in and peripheral libraries are the test doubles. The library runs on
// the main thread; the fuzzer's own threads (its memory watch sleeps a second
// between looks) still wait.
namespace {
bool on_main_thread() { return gettid() == getpid(); }
}  // namespace

extern "C" {

unsigned int sleep(unsigned int seconds) {
  if (!on_main_thread()) {
    timespec t{static_cast<time_t>(seconds), 0};
    nanosleep(&t, nullptr);
  }
  return 0;
}

int usleep(useconds_t usec) {
  if (!on_main_thread()) {
    timespec t{static_cast<time_t>(usec / 1000000), static_cast<long>(usec % 1000000) * 1000};
    nanosleep(&t, nullptr);
  }
  return 0;
}

void* dlopen(const char* file, int mode) {
  using DlopenFn = void* (*)(const char*, int);
  static const auto real = reinterpret_cast<DlopenFn>(dlsym(RTLD_NEXT, "dlopen"));
  static const struct {
    const char* asked;
    const char* given;
  } kRedirects[] = {
      {"/usr/share/OVAgented/libOAPlugin.so", FUZZ_DOUBLES_DIR "/libOAPlugin.so"},
      {"libpd_cheque.so", FUZZ_DOUBLES_DIR "/libpd_cheque.so"},
      {"libpd_autentica.so", FUZZ_DOUBLES_DIR "/libpd_autentica.so"},
      {"libpd_cmc7.so", FUZZ_DOUBLES_DIR "/libpd_cmc7.so"},
  };
  if (file != nullptr)
    for (const auto& r : kRedirects)
      if (std::strcmp(file, r.asked) == 0) return real(r.given, mode);
  return real(file, mode);
}

}  // extern "C"
