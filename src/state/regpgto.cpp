// The store-number procedure around the creation of a payment register. The
// printer must show store "9999" while the register is created and get its own
// number back afterwards, followed by a closing command and a paper cut. Each
// state is written to "ArqRegPgto.sts" before the command that leaves it, so
// that a run stopped at any point resumes at the right step.
#include "state/regpgto.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string_view>

#include "documents/closing.h"
#include "documents/reports.h"
#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/encodings.h"
#include "frame/file.h"
#include "frame/result.h"
#include "frame/text.h"

namespace orbelan {

std::array<char, 6> statusArqRegPgto{};

namespace {

constexpr const char* kArqRegPgto = "ArqRegPgto.sts";
constexpr const char* kArqRegPgtoNovo = "ArqRegPgto.sts.tmp";  // the next content, until it replaces the file
constexpr std::size_t kTamStatus = 5;
constexpr std::uint16_t kErroArquivo = 2902;
constexpr std::uint16_t kLeituraCurta = 2903;
constexpr std::uint16_t kEscritaCurta = 2904;

// The store number every new payment register is created under.
constexpr std::string_view kLojaTemporaria = "9999";

// Attempts at setting the store number before the step is left for later.
constexpr int kTentativas = 3;

using Conteudo = std::array<char, kTamStatus>;

// The state digit followed by the saved store number.
Conteudo conteudo(char estado) {
  Conteudo c{};
  c[0] = estado;
  std::memcpy(c.data() + 1, statusArqRegPgto.data() + 1, 4);
  return c;
}

std::uint16_t grava(const Conteudo& c) {
  Conteudo copia = c;
  return readWriteArqRegPgto(2, "w+", copia.data());
}

// Command 246: the printer's store number (first 4 reply bytes).
std::uint16_t le_numero_loja(Conteudo& c) {
  Input in;
  in.seq();
  Reply<5> r;
  const std::uint16_t ret = executa(246, 1, in, r);
  if (ret == 0) std::memcpy(c.data() + 1, r.b.data(), 4);
  return ret;
}

// Command 245: sets the store number to `numero` (4 characters). With
// `tentativas` above 1 the same command, sequence field included, is sent
// again until the printer accepts it.
std::uint16_t define_numero_loja(std::string_view numero, int tentativas) {
  Input in;
  in.seq().raw(numero.substr(0, 4)).byte(0);
  std::uint16_t ret = 0;
  for (int i = 0; i < tentativas; ++i) {
    // The reply has a buffer of its own: the saved number is never in reach.
    Reply<10> r;
    ret = executa(245, 0, in, r);
    if (ret == 0) break;
  }
  return ret;
}

// Command 160 with two NUL parameter bytes: closes the procedure.
std::uint16_t fecha_procedimento() {
  Input in;
  in.seq().zeros(2);
  Reply<10> r;
  return executa(160, 0, in, r);
}

// Writes the 5 bytes to `f` and makes sure they reached the file.
bool escreve(const File& f, const char* buffer) {
  return std::fwrite(buffer, 1, kTamStatus, f.get()) == kTamStatus && std::fflush(f.get()) == 0 &&
         ::fsync(fileno(f.get())) == 0;
}

// Replaces the status file's content. The recovery rests on the file always
// holding the last state reached, so the new content is written to a scratch
// file that then takes the status file's place in one step: a write failing
// part-way (disk full, file size limit) leaves the previous state as it was.
// Where no scratch file can be created (a directory that accepts no new files)
// the file is written in place.
std::uint16_t substitui(const char* mode, const char* buffer) {
  if (File tmp(kArqRegPgtoNovo, mode); tmp) {
    const bool escrito = escreve(tmp, buffer);
    tmp.close();
    if (escrito && std::rename(kArqRegPgtoNovo, kArqRegPgto) == 0) return 0;
    std::remove(kArqRegPgtoNovo);
    return escrito ? kErroArquivo : kEscritaCurta;  // a directory in its place cannot be replaced
  }
  File f(kArqRegPgto, mode);
  if (!f) return kErroArquivo;
  return escreve(f, buffer) ? 0 : kEscritaCurta;
}

// The saved store number held in memory.
std::string_view numero_salvo() { return {statusArqRegPgto.data() + 1, 4}; }

// After the closing command: the cut, and back to the normal state. The cut
// does not decide the step: command 160 was accepted, and repeating it would
// print again.
std::uint16_t conclui() {
  CortedePapel();
  return grava(conteudo('0'));
}

}  // namespace

std::uint16_t readWriteArqRegPgto(int op, const char* mode, char* buffer) {
  if (buffer == nullptr || mode == nullptr || (op != 1 && op != 2)) return 2049;
  std::uint16_t ret = 0;
  if (op == 1) {
    File f(kArqRegPgto, mode);
    if (!f) return kErroArquivo;
    if (std::fread(buffer, 1, kTamStatus, f.get()) < kTamStatus) ret = kLeituraCurta;
  } else {
    ret = substitui(mode, buffer);
  }
  if (ret == 0) std::memcpy(statusArqRegPgto.data(), buffer, kTamStatus);
  return ret;
}

std::uint16_t trataArqRegPgtoOpen() {
  ORB_LOG("trataArqRegPgtoOpen%s - inicio \n");
  Conteudo lido{};
  std::uint16_t ret = readWriteArqRegPgto(1, "r", lido.data());
  if (ret == kErroArquivo) {
    // First run: remember the printer's own store number.
    Conteudo novo{};
    novo[0] = '0';
    ret = le_numero_loja(novo);
    if (ret == 0) ret = readWriteArqRegPgto(2, "w+", novo.data());
  } else if (ret == 0) {
    switch (lido[0]) {
      case '0': {
        Conteudo novo{};
        novo[0] = '0';
        ret = le_numero_loja(novo);
        if (ret == 0) ret = readWriteArqRegPgto(2, "w+", novo.data());
        break;
      }
      case '1':
        ret = define_numero_loja(kLojaTemporaria, 1);
        if (ret == 0) ret = grava(conteudo('2'));
        break;
      case '3':
        ret = define_numero_loja(numero_salvo(), 1);
        if (ret == 0) ret = grava(conteudo('4'));
        break;
      case '4':
        ret = fecha_procedimento();
        if (ret == 0) ret = conclui();
        break;
      default:  // '2' waits for the next document; anything else is left alone
        break;
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("trataArqRegPgtoOpen%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t trataArqRegPgtoStatus(int state, const char* flag) {
  ORB_LOG("trataArqRegPgtoStatus%s - inicio - estado=%d \n", state);
  std::array<char, 12> digito{};
  intoAsk(static_cast<std::uint32_t>(state), digito, 10);
  std::uint16_t ret = 0;
  if (state == 1) {
    ret = grava(conteudo(digito[0]));
    if (ret == 0) ret = define_numero_loja(kLojaTemporaria, kTentativas);
    if (ret == 0) ret = grava(conteudo('2'));
  } else if (state == 3) {
    ret = grava(conteudo(digito[0]));
    if (ret == 0) ret = define_numero_loja(numero_salvo(), kTentativas);
    if (ret == 0) ret = grava(conteudo('4'));
    if (ret == 0) ret = fecha_procedimento();
    if (ret == 0) ret = conclui();
    if (ret == 0 && in_text(flag).starts_with('1')) ret = Abre_Gerencial(0);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("trataArqRegPgtoStatus%s - fim com ret=%d \n", ret);
  return ret;
}

}  // namespace orbelan
