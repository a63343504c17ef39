// The library against the floor its behaviour imposes.
//
//   orbelan_bench [benchmark options]   wall-clock figures, library and floor
//                                       measured side by side, and a summary
//   orbelan_bench --instructions        instruction counts under callgrind
//   orbelan_bench --check               runs every case once and checks it
//
// Each case runs an operation in a session on the benchmark driver, with the
// trace off or at level 1. Each iteration times the operation, then its floor
// (the same file steps as bare system calls, see floor.h); the driver's own
// share is timed apart by replaying the commands the operation sent.
#include <benchmark/benchmark.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "fast_driver.h"
#include "floor.h"
#include "operations.h"

namespace fs = std::filesystem;

namespace bench {
namespace {

// Times are the calling thread's CPU time (user and system): on a machine
// shared with other work, time spent waiting for a processor is not the
// library's. Reading this clock is itself a system call; its cost is measured
// once and taken out of every interval.
double agora_ns() {
  timespec t{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) * 1e9 + static_cast<double>(t.tv_nsec);
}

double custo_relogio() {
  static const double custo = [] {
    double total = 0;
    constexpr int kVezes = 2000;
    for (int i = 0; i < kVezes; ++i) {
      const double a = agora_ns();
      total += agora_ns() - a;
    }
    return total / kVezes;
  }();
  return custo;
}

double intervalo(double de, double ate) {
  const double d = ate - de - custo_relogio();
  return d > 0 ? d : 0;
}

constexpr Trace kDesligado{0, 5000000, 0};
constexpr Trace kNoLimite{1, 5000000, 5000000};

struct Caso {
  std::string nome;
  unsigned short (*op)();
  Trace trace;
  int itens = 10;
  long jornal = 1L << 20;
  bool principal = false;  // part of the main table
  int dia = 50;            // coupons already in the day's payment file
};

std::vector<Caso> casos() {
  std::vector<Caso> v;
  for (const Operacao& o : kOperacoes) {
    v.push_back({std::string(o.nome) + "/trace:off", o.run, kDesligado, 10, 1L << 20, true});
    v.push_back({std::string(o.nome) + "/trace:1", o.run, kNoLimite, 10, 1L << 20, true});
  }
  // Growth with the size of the work.
  for (int itens : {1, 100}) {
    const std::string n = "Sale/items:" + std::to_string(itens);
    v.push_back({n + "/trace:off", venda, kDesligado, itens});
    v.push_back({n + "/trace:1", venda, kNoLimite, itens});
  }
  v.push_back({"Sale10/day:500-coupons/trace:off", venda, kDesligado, 10, 1L << 20, false, 500});
  v.push_back({"Sale10/day:500-coupons/trace:1", venda, kNoLimite, 10, 1L << 20, false, 500});
  for (long kib : {256L, 4096L}) {
    const std::string n = "Journal/KiB:" + std::to_string(kib);
    v.push_back({n + "/trace:off", jornal, kDesligado, 10, kib * 1024});
    v.push_back({n + "/trace:1", jornal, kNoLimite, 10, kib * 1024});
  }
  // The log's size: appending to a fresh file and to a large one (limit out
  // of reach), overwriting in the ring at the limit (the main table's case)
  // and in a file already past it.
  v.push_back({"Status/log:fresh/trace:1", status, {1, 2000000000, 0}});
  v.push_back({"Status/log:5MB-appending/trace:1", status, {1, 2000000000, 5000000}});
  v.push_back({"Status/log:10MB-past-limit/trace:1", status, {1, 5000000, 10000000}});
  return v;
}

std::string g_dir_lib;
std::string g_dir_piso;

// A case made ready: the session open as it asks, its floor learnt (which is
// also the warm-up run), the floor's files copied from the library's, and the
// driver's calls kept for replay.
struct Preparado {
  Plano plano;
  std::unique_ptr<Piso> piso;
  int comandos = 0;
  bool ok = false;
  // State files and their sizes after the warm-up: files that grow with each
  // run (the day's payment records) are cut back between iterations, so that
  // every iteration does the same work.
  std::vector<std::pair<fs::path, std::uintmax_t>> tamanhos;
};

// The day's payment file with `n` coupons of one payment each.
void dia_com(int n) {
  std::string texto;
  for (int i = 0; i < n; ++i) {
    char registro[32];
    std::snprintf(registro, sizeof registro, "%s\nCPF%06d$60", i == 0 ? "" : "\r\n", i + 1);
    texto += registro;
  }
  std::ofstream(fs::path(g_dir_lib) / "EcfZandorCoo.pgt", std::ios::binary | std::ios::trunc) << texto;
}

void restaura(const Preparado& p) {
  std::error_code ec;
  for (const auto& [caminho, tamanho] : p.tamanhos)
    if (fs::file_size(caminho, ec) > tamanho) fs::resize_file(caminho, tamanho, ec);
}

Preparado prepara(const Caso& c) {
  Preparado p;
  itens_venda = c.itens;
  fd_set_journal_bytes(c.jornal);
  if (!abre_sessao(c.trace)) return p;
  dia_com(c.dia);
  fd_reset();
  fd_record(1);
  p.plano = aprende(c.op);
  fd_record(0);
  p.comandos = fd_commands();
  // The floor works on copies of the library's files.
  for (const auto& e : fs::directory_iterator(g_dir_piso)) fs::remove(e.path());
  const fs::path log_lib = fs::path(g_dir_lib) / "Orbelan.txt";
  const long tamanho_log = fs::exists(log_lib) ? static_cast<long>(fs::file_size(log_lib)) : 0;
  for (const auto& e : fs::directory_iterator(g_dir_lib))
    if (e.path() != log_lib) fs::copy_file(e.path(), fs::path(g_dir_piso) / e.path().filename());
  // The floor's log is filled as the library's was.
  preenche_log((fs::path(g_dir_piso) / "Orbelan.txt").string(), tamanho_log);
  p.piso = std::make_unique<Piso>(g_dir_piso, c.trace.limite, tamanho_log);
  fd_reset();
  p.ok = c.op() == 0;
  for (const std::string& dir : {g_dir_lib, g_dir_piso})
    for (const auto& e : fs::directory_iterator(dir)) {
      const auto nome = e.path().filename();
      if (nome != "Orbelan.txt" && nome != "jornal.txt") p.tamanhos.emplace_back(e.path(), e.file_size());
    }
  return p;
}

// Time of the driver alone for the case's commands: the best of a few replays.
double driver_ns() {
  double melhor = 0;
  for (int i = 0; i < 5; ++i) {
    const double t0 = agora_ns();
    fd_replay();
    const double d = intervalo(t0, agora_ns());
    if (i == 0 || d < melhor) melhor = d;
  }
  return melhor;
}

void mede(benchmark::State& st, const Caso& c) {
  Preparado p = prepara(c);
  if (!p.ok) {
    st.SkipWithError("the operation failed");
    return;
  }
  const double driver = driver_ns();
  double lib = 0, piso = 0;
  for (auto _ : st) {
    fd_reset();
    const double t0 = agora_ns();
    const unsigned short r = c.op();
    const double t1 = agora_ns();
    p.piso->executa(p.plano);
    const double t2 = agora_ns();
    const double d_lib = intervalo(t0, t1);
    st.SetIterationTime(d_lib / 1e9);
    lib += d_lib;
    piso += intervalo(t1, t2);
    restaura(p);
    if (r != 0) {
      st.SkipWithError("the operation failed");
      break;
    }
  }
  const double n = static_cast<double>(st.iterations());
  if (n == 0) return;
  const std::size_t linhas = p.plano.linhas_log();
  st.counters["cmds"] = p.comandos;
  st.counters["log_lines"] = static_cast<double>(linhas);
  st.counters["file_steps"] = static_cast<double>(p.plano.passos.size() - linhas);
  st.counters["floor_us"] = piso / n / 1000.0;
  st.counters["driver_us"] = driver / 1000.0;
  if (!p.plano.passos.empty()) st.counters["ratio"] = lib / piso;
  if (p.comandos > 0) st.counters["own_ns_per_cmd"] = (lib - piso - driver * n) / n / p.comandos;
}

// ---- the summary --------------------------------------------------------------

struct Linha {
  std::string nome;
  double lib_us = 0;
  std::map<std::string, double> c;
};

class Resumo : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& r : runs) {
      if (r.error_occurred || r.iterations == 0 || r.run_type == Run::RT_Aggregate) continue;
      Linha l;
      l.nome = r.benchmark_name();
      l.lib_us = r.real_accumulated_time * 1e6 / static_cast<double>(r.iterations);
      for (const auto& [k, v] : r.counters) l.c[k] = v.value;
      linhas_.push_back(l);
    }
  }
  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\n| case | cmds | log lines | file steps | library µs | floor µs | ratio | driver µs | own ns/cmd |\n");
    std::printf("|---|---:|---:|---:|---:|---:|---:|---:|---:|\n");
    for (const Linha& l : linhas_) {
      auto v = [&](const char* k) { return l.c.count(k) != 0 ? l.c.at(k) : 0.0; };
      char razao[32] = "—";
      if (l.c.count("ratio") != 0) std::snprintf(razao, sizeof razao, "%.2f", v("ratio"));
      std::string nome = l.nome;
      if (const auto at = nome.find("/manual_time"); at != std::string::npos) nome.erase(at);
      std::printf("| %s | %.0f | %.0f | %.0f | %.1f | %.1f | %s | %.1f | %.0f |\n", nome.c_str(), v("cmds"), v("log_lines"),
                  v("file_steps"), l.lib_us, v("floor_us"), razao, v("driver_us"), v("own_ns_per_cmd"));
    }
  }

 private:
  std::vector<Linha> linhas_;
};

// ---- instruction counts -------------------------------------------------------

// Inside callgrind: every case once, each side collected apart and dumped under
// its own label.
int conta_instrucoes_dentro(const std::string& meta) {
  std::ofstream out(meta);
  for (const Caso& c : casos()) {
    Preparado p = prepara(c);
    if (!p.ok) {
      std::fprintf(stderr, "%s failed\n", c.nome.c_str());
      return 1;
    }
    // Every side once more first, so that no first-call cost (lazy binding of
    // the floor's and the driver's own calls) is counted.
    p.piso->executa(p.plano);
    restaura(p);
    fd_replay();
    fd_reset();
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    c.op();
    CALLGRIND_TOGGLE_COLLECT;
    const std::string rotulo_lib = "lib " + c.nome;  // must outlive the request
    CALLGRIND_DUMP_STATS_AT(rotulo_lib.c_str());
    CALLGRIND_TOGGLE_COLLECT;
    p.piso->executa(p.plano);
    CALLGRIND_TOGGLE_COLLECT;
    const std::string rotulo_floor = "floor " + c.nome;  // must outlive the request
    CALLGRIND_DUMP_STATS_AT(rotulo_floor.c_str());
    CALLGRIND_TOGGLE_COLLECT;
    fd_replay();
    CALLGRIND_TOGGLE_COLLECT;
    const std::string rotulo_driver = "driver " + c.nome;  // must outlive the request
    CALLGRIND_DUMP_STATS_AT(rotulo_driver.c_str());
    const std::size_t linhas = p.plano.linhas_log();
    out << c.nome << ' ' << p.comandos << ' ' << linhas << ' ' << p.plano.passos.size() - linhas << '\n';
  }
  return 0;
}

// Outside: runs this program under callgrind and tabulates its dumps.
int conta_instrucoes(const char* self) {
  const std::string dir = g_dir_lib + "/../callgrind";
  fs::create_directories(dir);
  const std::string meta = dir + "/meta.txt";
  const pid_t pid = fork();
  if (pid == 0) {
    const std::string saida = "--callgrind-out-file=" + dir + "/cg.out";
    execlp("valgrind", "valgrind", "--tool=callgrind", "--collect-atstart=no", "--quiet", saida.c_str(), self,
           "--instructions-inside", meta.c_str(), static_cast<char*>(nullptr));
    std::perror("valgrind");
    _exit(127);
  }
  int st = 0;
  waitpid(pid, &st, 0);
  if (!WIFEXITED(st) || WEXITSTATUS(st) != 0) {
    std::fprintf(stderr, "the callgrind run failed (is valgrind installed?)\n");
    return 1;
  }
  std::map<std::string, long long> ir;  // "lib <case>" -> instructions
  for (const auto& e : fs::directory_iterator(dir)) {
    if (e.path().filename().string().rfind("cg.out", 0) != 0) continue;
    std::ifstream in(e.path());
    std::string linha, rotulo;
    long long total = -1;
    while (std::getline(in, linha)) {
      if (linha.rfind("desc: Trigger: Client Request: ", 0) == 0) rotulo = linha.substr(31);
      if (linha.rfind("summary: ", 0) == 0) total = std::atoll(linha.c_str() + 9);
      if (linha.rfind("totals: ", 0) == 0 && total < 0) total = std::atoll(linha.c_str() + 8);
    }
    if (!rotulo.empty() && total >= 0) ir[rotulo] = total;
  }
  std::printf("| case | cmds | log lines | file steps | library Ir | floor Ir | driver Ir | own Ir/cmd | library Ir/log line |\n");
  std::printf("|---|---:|---:|---:|---:|---:|---:|---:|---:|\n");
  std::ifstream m(meta);
  std::string nome;
  long long cmds = 0, linhas = 0, passos = 0;
  while (m >> nome >> cmds >> linhas >> passos) {
    const long long lib = ir["lib " + nome], piso = ir["floor " + nome], drv = ir["driver " + nome];
    std::string por_linha = "—";
    if (linhas > 0) {
      // What a trace line costs: this case's instructions less those of the
      // same operation with the trace off, per line.
      std::string off = nome;
      if (const auto at = off.rfind("/trace:1"); at != std::string::npos) off.replace(at, 8, "/trace:off");
      if (ir.count("lib " + off) != 0) por_linha = std::to_string((lib - ir["lib " + off]) / linhas);
    }
    std::printf("| %s | %lld | %lld | %lld | %lld | %lld | %lld | %lld | %s |\n", nome.c_str(), cmds, linhas, passos, lib,
                piso, drv, cmds > 0 ? (lib - piso - drv) / cmds : 0, por_linha.c_str());
  }
  return 0;
}

// ---- check --------------------------------------------------------------------

int confere() {
  int passou = 0, falhou = 0;
  auto espera = [&](bool cond, const std::string& o_que) {
    if (cond) {
      ++passou;
    } else {
      ++falhou;
      std::printf("FAILED: %s\n", o_que.c_str());
    }
  };
  const std::map<std::string, int> comandos{{"Status", 1},         {"Sale10", 24},      {"Registers19", 23},
                                            {"ReductionData", 104}, {"Journal1MiB", 4147}, {"FiscalMemory2190", 2190}};
  for (const Caso& c : casos()) {
    if (!c.principal) continue;
    Preparado p = prepara(c);
    espera(p.ok, c.nome + " succeeds");
    const std::string op = c.nome.substr(0, c.nome.find('/'));
    espera(p.comandos == comandos.at(op), c.nome + " sends " + std::to_string(comandos.at(op)) + " commands, sent " +
                                              std::to_string(p.comandos));
    espera((p.plano.linhas_log() > 0) == (c.trace.nivel != 0), c.nome + " writes trace lines only with the trace on");
    // The floor writes to its log what the library wrote to its own.
    const fs::path log = fs::path(g_dir_piso) / "Orbelan.txt";
    const auto antes = fs::exists(log) ? fs::file_size(log) : 0;
    p.piso->executa(p.plano);
    const auto depois = fs::exists(log) ? fs::file_size(log) : 0;
    if (c.trace.nivel != 0)
      espera(depois >= antes && depois - antes <= p.plano.bytes_log() && p.plano.bytes_log() > 0,
             c.nome + " floor writes its log lines");
  }
  // The journal's floor writes as much as the library did.
  {
    const Caso c{"Journal", jornal, kDesligado};
    Preparado p = prepara(c);
    p.piso->executa(p.plano);
    const auto lib = fs::file_size(fs::path(g_dir_lib) / "jornal.txt");
    const auto piso = fs::file_size(fs::path(g_dir_piso) / "jornal.txt");
    espera(lib == (1u << 20) && piso == lib, "the journal floor writes 1 MiB as the library does");
  }
  fecha_sessao();
  std::printf("%d passed, %d failed\n", passou, falhou);
  return falhou == 0 ? 0 : 1;
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  using namespace bench;
  // A scratch directory per run: the library works in lib/, the floor in floor/.
  char modelo[] = "/tmp/orbelan-bench-XXXXXX";
  const char* base = mkdtemp(modelo);
  if (base == nullptr) {
    std::perror("mkdtemp");
    return 1;
  }
  g_dir_lib = std::string(base) + "/lib";
  g_dir_piso = std::string(base) + "/floor";
  fs::create_directories(g_dir_lib);
  fs::create_directories(g_dir_piso);
  if (chdir(g_dir_lib.c_str()) != 0) {
    std::perror("chdir");
    return 1;
  }

  int ret = 0;
  if (argc > 1 && std::strcmp(argv[1], "--check") == 0) {
    ret = confere();
  } else if (argc > 2 && std::strcmp(argv[1], "--instructions-inside") == 0) {
    ret = conta_instrucoes_dentro(argv[2]);
  } else if (argc > 1 && std::strcmp(argv[1], "--instructions") == 0) {
    std::error_code ec;
    ret = conta_instrucoes(fs::read_symlink("/proc/self/exe", ec).c_str());
  } else {
    for (const Caso& c : casos())
      benchmark::RegisterBenchmark(c.nome.c_str(), [c](benchmark::State& st) { mede(st, c); })
          ->UseManualTime()
          ->Unit(benchmark::kMicrosecond);
    benchmark::Initialize(&argc, argv);
    Resumo resumo;
    benchmark::RunSpecifiedBenchmarks(&resumo);
    benchmark::Shutdown();
  }
  fecha_sessao();
  std::error_code ec;
  fs::remove_all(base, ec);
  return ret;
}
