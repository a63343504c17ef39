// No descriptor outlives a call: every file the library opens (state files,
// trace, configuration, transfers and their scratch files) is closed before the
// call returns. The cheque layout file is released at the end of each cheque
// as well, so it is no exception.
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

int descritores() {
  int n = 0;
  for ([[maybe_unused]] const auto& e : std::filesystem::directory_iterator("/proc/self/fd")) ++n;
  return n;
}

const Bytes kFimDeLeitura{0, 0, 0xCF, 0xDE, 0xB3, 0xD1};

}  // namespace

TEST_F(Fresh, NoDescriptorOutlivesACall) {
  write_file("NomeOper.cfg", "Rita");
  write_file("quorvel.conf", "[QuorvelPOS\\ImpressoraFiscal]\nLowPaperCounter=3\n");
  write_file("vinculado.txt", "linha 1\nlinha 2\n");
  write_file("Cheque.dat", std::string(86, '\0') + std::string("\xE7\x03", 2) + std::string(84, '\0'));
  vp_answer_identity();
  stick(133, 0, bytes_with(20, 1, "000100"));
  stick(139, 0, bytes_with(10, 1, "22112026"));
  stick(246, 0, bytes_with(5, 0, "0042"));
  unsigned char reg = 61;
  char saida[1200] = {};
  const std::pair<const char*, std::function<int()>> chamadas[] = {
      {"E4Open", [] { return E4Open(0, 0); }},
      {"E4Status", [&] { return E4Status(saida); }},
      {"E4IniCP", [] { return state(2), E4IniCP(2, ""); }},
      {"E4IteCF", [] { return E4IteCF(20, "1", "ITEM", "1000", "1200"); }},
      {"E4RegPag", [] { return E4RegPag(60, "12,00"); }},
      {"E4FimCP", [] { return state(16), E4FimCP(0, nullptr); }},
      {"E4IniCP voucher", [] { return state(0), E4IniCP(17, "60"); }},
      {"E4FimCP voucher", [] { return state(17), E4FimCP(0, nullptr); }},
      {"E4CanCup", [] { return state(0), E4CanCup(); }},
      {"E4IniCP report", [] { return E4IniCP(20, ""); }},
      {"E4ImpVinc", [] { return state(26), E4ImpVinc("vinculado.txt", "2"); }},
      {"E4FimCP report", [] { return E4FimCP(0, nullptr); }},
      {"E4RPCria", [&] { return state(0), E4RPCria(5, "CARTAO", "1", &reg); }},
      {"E4DadosReducao", [&] { return E4DadosReducao(saida); }},
      {"E4LeMFD", [] { return push(199, 0, kFimDeLeitura), E4LeMFD(1, "1", "2", "mfd.txt"); }},
      {"E4LeMFD by date", [] { return E4LeMFD(0, "10032024", "15032024", "mfd.txt"); }},
      {"E4LMFSerial", [] { return push(194, 0, kFimDeLeitura), E4LMFSerial(2, 1, "5", "12", "mf.txt"); }},
      {"E4ImpChq", [] { return E4ImpChq(1, "Nome", "Cidade", "01/02/26", "10,00", "", ""); }},
      {"E4IniCP reduction", [] { return E4IniCP(5, ""); }},
      {"E4Close", [] { return E4Close(); }},
  };
  const int antes = descritores();
  for (const auto& [nome, chamada] : chamadas) {
    chamada();
    EXPECT_EQ(descritores(), antes) << nome;
  }
  // Failed openings release what they opened too.
  fail_dlopen("libMrZandor.so");
  EXPECT_EQ(E4Open(0, 0), 2900);
  EXPECT_EQ(descritores(), antes);
}
