// Several threads calling the library at once are served one whole call after
// the other: every exported function holds the process-wide call lock.
#include <atomic>
#include <filesystem>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;
namespace fs = std::filesystem;

namespace {
const fs::path kRaiz = fs::path(__FILE__).parent_path().parent_path().parent_path();
}

TEST(CallLock, EveryExportedFunctionTakesItFirst) {
  const std::regex definicao(R"((?:extern "C" )?ORBELAN_API unsigned short (E4\w+)\([^;{]*\)\s*\{\s*([^\n]*))");
  std::vector<std::string> sem_trava;
  int definidas = 0;
  for (const auto& e : fs::recursive_directory_iterator(kRaiz / "src")) {
    if (e.path().extension() != ".cpp") continue;
    const std::string texto = read_file(e.path());
    for (std::sregex_iterator it(texto.begin(), texto.end(), definicao), fim; it != fim; ++it) {
      ++definidas;
      if ((*it)[2] != "ORB_LOCK();") sem_trava.push_back((*it)[1]);
    }
  }
  EXPECT_TRUE(sem_trava.empty()) << "without ORB_LOCK() first: " << ::testing::PrintToString(sem_trava);

  const std::string cabecalho = read_file(kRaiz / "include" / "orbelan.h");
  const std::regex prototipo(R"(ORBELAN_API unsigned short E4\w+\()");
  EXPECT_EQ(definidas, std::distance(std::sregex_iterator(cabecalho.begin(), cabecalho.end(), prototipo),
                                     std::sregex_iterator()));
}

TEST_F(Session, ConcurrentCallersAreServedOneWholeCallAtATime) {
  write_file("NomeOper.cfg", "Rita");
  stick(133, 0, bytes_with(20, 1, "000100"));
  stick(139, 0, bytes_with(10, 1, "22112026"));
  stick(5, 0, {0, 0, 0, 0, 0, 1, 0, 0, 1});  // paper low: E4Status keeps a counter
  constexpr int kVendas = 25;
  constexpr int kConsultas = 120;

  const std::size_t ja_escritas = log_lines().size();
  std::atomic<int> falhas{0};
  auto conta = [&](int ret) {
    if (ret != 0) ++falhas;
  };
  std::vector<std::thread> threads;
  threads.emplace_back([&] {
    for (int i = 0; i < kVendas; ++i) {
      state(2);
      conta(E4IniCP(2, ""));
      conta(E4IteCF(20, "1", "ITEM", "1000", "1200"));
      conta(E4RegPag(60, "12,00"));
      state(16);
      conta(E4FimCP(0, nullptr));
    }
  });
  for (int t = 0; t < 2; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < kConsultas; ++i) {
        char status[16] = {};
        conta(E4Status(status));
      }
    });
  threads.emplace_back([&] {
    for (int i = 0; i < kConsultas; ++i) {
      char data[9], hora[5], movimento[9];
      unsigned char verao = 0, reducao = 0;
      conta(E4RdData(data, hora, &verao, movimento, &reducao));
    }
  });
  for (auto& t : threads) t.join();

  EXPECT_EQ(falhas, 0);
  EXPECT_EQ(vp_count_cmd(193), kVendas);
  EXPECT_EQ(vp_count_cmd(5), 2 * kConsultas);
  EXPECT_EQ(vp_count_cmd(10), kConsultas);
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000100#$60");

  // The entry and exit lines of the exported calls nest: no call began while
  // another thread's was under way.
  std::vector<std::string> abertas;
  const std::regex marca(R"(^(E4\w+)5600 - (inicio|fim com ret=))");
  const auto linhas = log_lines();
  for (std::size_t i = ja_escritas; i < linhas.size(); ++i) {
    const std::string& l = linhas[i];
    std::smatch m;
    if (!std::regex_search(l, m, marca)) continue;
    if (m[2] == "inicio") {
      abertas.push_back(m[1]);
    } else {
      ASSERT_FALSE(abertas.empty()) << l;
      ASSERT_EQ(abertas.back(), m[1]) << l;
      abertas.pop_back();
    }
  }
  EXPECT_TRUE(abertas.empty());

  // The sequence field ran on without a repeat or a gap.
  int anterior = 0;
  for (const auto& c : operations()) {
    if (c.inlen < 2) continue;
    if (anterior != 0) {
      ASSERT_EQ(c.in[0], anterior % 255 + 1);
    }
    anterior = c.in[0];
  }
}
