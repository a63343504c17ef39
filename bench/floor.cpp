// Learning an operation's file steps, and replaying them as bare system calls.
#include "floor.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace bench {

namespace {

// ---- watching the library's files ------------------------------------------
//
// While an operation is learnt, each stream the library opens is followed from
// fopen to fclose; the bytes it read and wrote are taken from the process's
// I/O counters (/proc/self/io), less what streams opened inside its lifetime
// did (a trace line written while a state file is open, for instance).

struct Contadores {
  long long rchar = 0, wchar = 0, syscr = 0;
};

int g_proc_io = -1;

Contadores contadores() {
  Contadores c;
  if (g_proc_io < 0) return c;
  std::array<char, 512> buf{};
  const ssize_t n = ::pread(g_proc_io, buf.data(), buf.size() - 1, 0);
  if (n <= 0) return c;
  std::sscanf(buf.data(), "rchar: %lld wchar: %lld syscr: %lld", &c.rchar, &c.wchar, &c.syscr);
  // This read is counted too: take it out.
  c.rchar -= n;
  c.syscr -= 1;
  return c;
}

struct Aberto {
  FILE* f = nullptr;
  Passo passo;
  Contadores inicio;
  Contadores filhos;  // what streams opened and closed meanwhile did
};

bool g_aprendendo = false;
std::vector<Aberto>* g_abertos = nullptr;
Plano* g_plano = nullptr;

int flags_do_modo(const char* m) {
  const bool mais = std::strchr(m, '+') != nullptr;
  switch (m[0]) {
    case 'r': return mais ? O_RDWR : O_RDONLY;
    case 'w': return (mais ? O_RDWR : O_WRONLY) | O_CREAT | O_TRUNC;
    case 'a': return (mais ? O_RDWR : O_WRONLY) | O_CREAT | O_APPEND;
    default: return O_RDONLY;
  }
}

using FnFopen = FILE* (*)(const char*, const char*);
using FnFclose = int (*)(FILE*);

FnFopen fopen_real() {
  static const auto fn = reinterpret_cast<FnFopen>(dlsym(RTLD_NEXT, "fopen"));
  return fn;
}
FnFclose fclose_real() {
  static const auto fn = reinterpret_cast<FnFclose>(dlsym(RTLD_NEXT, "fclose"));
  return fn;
}

void anota_abertura(FILE* f, const char* nome, const char* modo) {
  Aberto a;
  a.f = f;
  a.passo.nome = nome;
  a.passo.flags = flags_do_modo(modo);
  a.passo.log = a.passo.nome == "Orbelan.txt";
  a.inicio = contadores();
  g_abertos->push_back(a);
}

void anota_fechamento(FILE* f, const Contadores& fim) {
  for (std::size_t i = g_abertos->size(); i-- > 0;) {
    Aberto& a = (*g_abertos)[i];
    if (a.f != f) continue;
    Contadores proprio;
    proprio.wchar = fim.wchar - a.inicio.wchar - a.filhos.wchar;
    proprio.rchar = fim.rchar - a.inicio.rchar - a.filhos.rchar;
    proprio.syscr = fim.syscr - a.inicio.syscr - a.filhos.syscr;
    a.passo.escreve = static_cast<std::uint32_t>(proprio.wchar > 0 ? proprio.wchar : 0);
    a.passo.le = proprio.syscr > 0;
    a.passo.posiciona = !a.passo.log && a.passo.escreve > 0 && (a.passo.flags & O_APPEND) == 0 &&
                        (a.passo.flags & O_TRUNC) == 0;
    // The whole of this stream's work counts against every stream still open
    // around it.
    const Contadores total{fim.rchar - a.inicio.rchar, fim.wchar - a.inicio.wchar, fim.syscr - a.inicio.syscr};
    for (std::size_t k = 0; k < i; ++k) {
      (*g_abertos)[k].filhos.rchar += total.rchar;
      (*g_abertos)[k].filhos.wchar += total.wchar;
      (*g_abertos)[k].filhos.syscr += total.syscr;
    }
    g_plano->passos.push_back(a.passo);
    g_abertos->erase(g_abertos->begin() + static_cast<std::ptrdiff_t>(i));
    return;
  }
}

// Text written by the floor: old trace lines.
const std::array<char, 65536>& texto() {
  static const std::array<char, 65536> t = [] {
    std::array<char, 65536> a{};
    const char linha[] = "01/01/26 08:00:00 - Executa_FC_Operacao5600 - fim com ret=0 tamanho=0 \n";
    for (std::size_t i = 0; i < a.size(); ++i) a[i] = linha[i % (sizeof linha - 1)];
    return a;
  }();
  return t;
}

}  // namespace

std::size_t Plano::linhas_log() const {
  std::size_t n = 0;
  for (const Passo& p : passos) n += p.log;
  return n;
}

std::size_t Plano::bytes_log() const {
  std::size_t n = 0;
  for (const Passo& p : passos) n += p.log ? p.escreve : 0;
  return n;
}

Plano aprende(unsigned short (*op)()) {
  Plano plano;
  std::vector<Aberto> abertos;
  g_proc_io = ::open("/proc/self/io", O_RDONLY);
  g_abertos = &abertos;
  g_plano = &plano;
  g_aprendendo = g_proc_io >= 0;
  op();
  g_aprendendo = false;
  g_abertos = nullptr;
  g_plano = nullptr;
  if (g_proc_io >= 0) ::close(g_proc_io);
  g_proc_io = -1;
  return plano;
}

Piso::Piso(const std::string& dir, long limite, long inicio)
    : dirfd_(::open(dir.c_str(), O_RDONLY | O_DIRECTORY)), limite_(limite), posicao_(inicio) {}

Piso::~Piso() {
  if (dirfd_ >= 0) ::close(dirfd_);
}

void Piso::executa(const Plano& p) {
  std::array<char, 4096> lido;
  const char* dados = texto().data();
  for (const Passo& s : p.passos) {
    const int fd = ::openat(dirfd_, s.nome.c_str(), s.flags, 0644);
    if (fd < 0) continue;
    if (s.le && ::read(fd, lido.data(), lido.size()) < 0) std::perror(s.nome.c_str());
    if (s.escreve != 0) {
      if (s.log) {
        // The ring: at the end of the file until it passes the limit, then
        // from the top again.
        if (circular_)
          ::lseek(fd, posicao_, SEEK_SET);
        else
          posicao_ = ::lseek(fd, 0, SEEK_END);
        if (posicao_ > limite_) {
          circular_ = true;
          posicao_ = 0;
          ::lseek(fd, 0, SEEK_SET);
        }
      } else if (s.posiciona) {
        ::lseek(fd, 0, SEEK_SET);
      }
      const std::size_t n = s.escreve < texto().size() ? s.escreve : texto().size();
      if (::write(fd, dados, n) < 0) std::perror(s.nome.c_str());
      if (s.log) posicao_ += static_cast<long>(n);
    }
    ::close(fd);
  }
}

}  // namespace bench

// The library's stdio openings pass through here; they are only looked at
// while an operation is being learnt.
extern "C" FILE* fopen(const char* nome, const char* modo) {
  FILE* f = bench::fopen_real()(nome, modo);
  if (bench::g_aprendendo && f != nullptr && nome != nullptr && modo != nullptr)
    bench::anota_abertura(f, nome, modo);
  return f;
}

extern "C" int fclose(FILE* f) {
  if (!bench::g_aprendendo) return bench::fclose_real()(f);
  const int r = bench::fclose_real()(f);
  bench::anota_fechamento(f, bench::contadores());
  return r;
}
