// Fuzz target: the files the library finds on disk. The input is a document
// to leave open first (one byte, see fuzz::prepare) followed by records of
// one file each: the file's number in kFiles (one byte, taken modulo their
// count), its length (two bytes, low first) and its content. The files are
// written, then a session against the printer model runs the operations that
// read them.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "harness.h"
#include "orbelan.h"
#include "roads.h"

namespace {

using fuzz::Buffer;

void write_files(const std::uint8_t* data, std::size_t size) {
  std::size_t at = 0;
  while (at + 3 <= size) {
    const char* name = fuzz::kFiles[data[at] % fuzz::kFileCount];
    std::size_t len = data[at + 1] | static_cast<std::size_t>(data[at + 2]) << 8;
    at += 3;
    if (len > size - at) len = size - at;
    fuzz::write_file(name, {reinterpret_cast<const char*>(data + at), len});
    at += len;
  }
}

// The readers first, while the files are as found; then the operations that
// rewrite them and read them back.
void operations(std::uint8_t documento) {
  E4Open(0, 0);
  fuzz::prepare(documento);
  E4CanCup();
  Buffer valor(19);
  for (unsigned short reg : {500, 504, 510}) E4InfCup(reg, valor.get());
  for (unsigned char reg : {8, 9, 84, 90}) E4ValAtu_JP(reg, valor.get());
  E4ValAtuEsp_JP(9, valor.get());
  E4ImpChq(341, "Fulano de Tal", "Sao Paulo", "01012026", "100,00", "linha 1", "linha 2");
  E4ImpChq(500, "Fulano de Tal", "Rio", "01012026", "1,00", "", "");
  E4IniCP(20, "0");
  E4ImpVinc("relatorio.txt", "30");
  E4FimCP(0, nullptr);
  E4IniCP(2, "");
  E4IteCF(20, "7891", "ARROZ", "1000", "1000");
  Buffer acrescimo(13);
  std::snprintf(acrescimo.get(), acrescimo.size(), "%s", "1,00");
  E4AcrIt(0, 20, 1, acrescimo.get(), "acrescimo");
  E4CanIt(20, 1);
  E4RegPag(60, "2000");
  E4RegPag(61, "1000");
  E4FimCP(0, "Volte sempre");
  E4IniCP(17, "61");
  E4FimCP(0, nullptr);
  E4CanCupEsp();
  E4CanCP_JP(1, 2);
  unsigned char reg = 0;
  E4RPCria(5, "CARTAO", "1", &reg);
  E4IniCP(4, "");
  E4IniCP(5, "");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  fuzz::begin();
  write_files(data + 1, size - 1);
  operations(data[0]);
  fuzz::end();
  return 0;
}
