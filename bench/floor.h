// The floor of an operation: the system calls its behaviour requires, and
// nothing else.
//
// Every file the library touches is opened, used and closed within one call,
// and every trace line is opened, positioned, written and closed on its own.
// The floor of an operation is therefore a list of file steps, one per file
// opening the library made: learnt once by watching the library open and close
// its files (fopen/fclose are taken over by this program for that), then
// replayed with bare open/lseek/read/write/close against copies of the files in
// a directory of its own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

struct Passo {
  std::string nome;          // file name, relative to the working directory
  int flags = 0;             // open(2) flags matching the stdio mode
  bool log = false;          // the trace log: positioned at its ring position
  bool posiciona = false;    // another file written in place: one seek first
  bool le = false;           // read once
  std::uint32_t escreve = 0; // bytes written
};

struct Plano {
  std::vector<Passo> passos;
  std::size_t linhas_log() const;
  std::size_t bytes_log() const;
};

// Watches the file openings of `op` (run once) and returns them as a plan.
Plano aprende(unsigned short (*op)());

// Replays plans in `dir` (a directory holding copies of the library's files).
class Piso {
 public:
  // `limite` and `inicio`: the log's ring limit and the size of its file.
  Piso(const std::string& dir, long limite, long inicio);
  ~Piso();
  Piso(const Piso&) = delete;
  Piso& operator=(const Piso&) = delete;

  void executa(const Plano& p);

 private:
  int dirfd_ = -1;
  long limite_;
  long posicao_;
  bool circular_ = false;
};

}  // namespace bench
