// Several threads calling the library at once are served one whole call after
// the other: every exported function holds the process-wide call lock.
#include <atomic>
#include <filesystem>
#include <functional>
#include <regex>
#include <thread>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

// A function that forgot the lock would only show up here when run concurrently:
// every exported definition takes it first, and there is one per prototype.
TEST(CallLock, EveryExportedFunctionTakesItFirst) {
  const auto raiz = std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
  const std::regex definicao(R"((?:extern "C" )?ORBELAN_API unsigned short (E4\w+)\([^;{]*\)\s*\{\s*([^\n]*))");
  std::vector<std::string> sem_trava;
  long definidas = 0;
  for (const auto& e : std::filesystem::recursive_directory_iterator(raiz / "src")) {
    const std::string texto = e.path().extension() == ".cpp" ? read_file(e.path()) : "";
    for (std::sregex_iterator it(texto.begin(), texto.end(), definicao), fim; it != fim; ++it, ++definidas)
      if ((*it)[2] != "ORB_LOCK();") sem_trava.push_back((*it)[1]);
  }
  EXPECT_EQ(sem_trava, std::vector<std::string>{}) << "without ORB_LOCK() first";
  const std::string h = read_file(raiz / "include" / "orbelan.h");
  const std::regex prototipo(R"(ORBELAN_API unsigned short E4\w+\()");
  EXPECT_EQ(definidas, std::distance(std::sregex_iterator(h.begin(), h.end(), prototipo), std::sregex_iterator()));
}

// Sales (E4IteCF calls E4IteCFEsp: the thread holding the lock takes it again)
// beside status and date queries.
TEST_F(Session, ConcurrentCallersAreServedOneWholeCallAtATime) {
  write_file("NomeOper.cfg", "Rita");
  stick(133, 0, bytes_with(20, 1, "000100"));
  stick(139, 0, bytes_with(10, 1, "22112026"));
  stick(5, 0, {0, 0, 0, 0, 0, 1, 0, 0, 1});  // paper low: E4Status keeps a counter
  constexpr int kVendas = 25, kConsultas = 120;
  write_file("Orbelan.txt", "");  // the trace, from here on
  std::atomic<int> falhas{0};
  std::vector<std::thread> threads;
  const auto corre = [&](int vezes, const std::function<int()>& chamada) {
    threads.emplace_back([&falhas, vezes, chamada] {
      for (int i = 0; i < vezes; ++i) falhas += chamada() != 0;
    });
  };
  corre(kVendas, [] {
    return (state(2), E4IniCP(2, "")) || E4IteCF(20, "1", "ITEM", "1000", "1200") || E4RegPag(60, "12,00") ||
           (state(16), E4FimCP(0, nullptr));
  });
  for (int t = 0; t < 2; ++t) corre(kConsultas, [] { return E4Status(std::vector<char>(16).data()); });
  corre(kConsultas, [] { return E4RdData(nullptr, nullptr, nullptr, nullptr, nullptr); });
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
  for (const auto& l : log_lines()) {
    std::smatch m;
    if (!std::regex_search(l, m, marca)) continue;
    ASSERT_TRUE(m[2] == "inicio" || (!abertas.empty() && abertas.back() == m[1])) << l;
    m[2] == "inicio" ? abertas.push_back(m[1]) : abertas.pop_back();
  }
  EXPECT_TRUE(abertas.empty());
  int anterior = 0;  // the sequence field ran on without a repeat or a gap
  for (const auto& c : operations()) {
    if (c.inlen < 2) continue;
    ASSERT_EQ(c.in[0], anterior == 0 ? c.in[0] : anterior % 255 + 1);
    anterior = c.in[0];
  }
}
