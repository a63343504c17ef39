// Faults from outside: a working directory that takes no writes, writes cut
// short, state files replaced by directories or garbage, incomplete driver
// libraries, a driver failing any one command. Each ends in a defined result,
// and the payment-register status file always keeps a state to resume from.
#include <linux/capability.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>

#include "orbelan.h"
#include "recorder.h"
#include "support/fixture.h"

using namespace orbtest;
namespace fs = std::filesystem;

namespace {

constexpr const char* kStatus = "ArqRegPgto.sts";

// The directory and its files refuse writes while this lives. Tests run as
// root, whom file modes do not stop unless CAP_DAC_OVERRIDE is dropped.
class SemEscrita {
 public:
  SemEscrita() {
    for (const auto& e : fs::directory_iterator(".")) fs::permissions(e.path(), fs::perms::owner_read);
    fs::permissions(".", fs::perms::owner_read | fs::perms::owner_exec);
    syscall(SYS_capget, &h_, caps_);
    __user_cap_data_struct sem[2] = {caps_[0], caps_[1]};
    sem[0].effective &= ~(1U << CAP_DAC_OVERRIDE);
    syscall(SYS_capset, &h_, sem);
  }
  ~SemEscrita() {
    syscall(SYS_capset, &h_, caps_);
    fs::permissions(".", fs::perms::owner_all);
  }

 private:
  __user_cap_header_struct h_{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct caps_[2]{};
};

// Files cannot grow past `bytes` (SIGXFSZ ignored, as by an application that
// survives a full disk).
class LimiteDeArquivo {
 public:
  explicit LimiteDeArquivo(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &antes_);
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limite{bytes, antes_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limite);
  }
  ~LimiteDeArquivo() { setrlimit(RLIMIT_FSIZE, &antes_); }

 private:
  rlimit antes_{};
};

// Opens a session on a printer whose store number is 0042.
int abre() {
  vp_answer_identity();
  stick(246, 0, bytes_with(5, 0, "0042"));
  return E4Open(0, 0);
}

// The sale road; stops at the first refusal. One result per call made.
std::vector<int> venda() {
  reply(133, "000100");
  reply(133, "000100");
  state(2);
  const std::function<int()> passos[] = {[] { return E4IniCP(2, ""); },
                                         [] { return E4IteCF(20, "1", "ITEM", "1000", "1200"); },
                                         [] { return E4RegPag(60, "12,00"); },
                                         [] { return state(16), E4FimCP(0, nullptr); }};
  std::vector<int> r;
  for (const auto& passo : passos)
    if (r.push_back(passo()); r.back() != 0) break;
  return r;
}

// With the driver sent to the double that passes calls on to the virtual
// printer, the n-th command from now fails with driver code 133 (2693).
void falha_no_comando(int n) {
  dbl_reset();
  for (int i = 1; i < n; ++i) dbl_push_result("FC_Operacao", 0);
  dbl_push_result("FC_Operacao", 133);
}

void recomeca() {
  for (const auto& e : fs::directory_iterator(".")) fs::remove_all(e.path());
  vp_reset();
  enable_trace(1);
}

}  // namespace

TEST_F(Fresh, UnwritableWorkingDirectory) {
  {
    const SemEscrita sem_escrita;
    // No status file can be made; the printer is open all the same, and the
    // local records being best effort, the sale goes through.
    EXPECT_EQ(abre(), 2902);
    EXPECT_EQ(venda(), (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(E4Close(), 0);
  }
  EXPECT_EQ(std::distance(fs::directory_iterator("."), fs::directory_iterator()), 1);  // Orbelan.cfg
  EXPECT_EQ(abre(), 0);
  EXPECT_EQ(read_file(kStatus), "00042");
}

TEST_F(Fresh, StatusFileKeepsItsStateWhenAWriteIsCutShort) {
  unsigned char reg = 61;
  const struct {
    const char* antes;
    std::function<int()> operacao;  // run on an open session; the opening itself when empty
    int resultado;
    const char* depois;  // after the next opening, with room again
  } casos[] = {
      {"10042", nullptr, 2904, "20042"},  // "9999" sent, then sent again
      {"30042", nullptr, 2904, "40042"},  // number restored, then restored again
      {"40042", nullptr, 2904, "00042"},  // closed and cut, then again
      {"00042", [&] { return E4RPCria(5, "CARTAO", "1", &reg); }, 0, "00042"},  // created without the procedure
      {"20042", [] { return E4IniCP(2, ""); }, 0, "20042"},  // restore left for later
  };
  for (const auto& c : casos) {
    SCOPED_TRACE(c.antes);
    write_file(kStatus, c.antes);
    if (c.operacao) {
      EXPECT_EQ(abre(), 0);
    }
    vp_clear_calls();
    {
      const LimiteDeArquivo limite(3);
      EXPECT_EQ(c.operacao ? c.operacao() : abre(), c.resultado);
    }
    EXPECT_EQ(read_file(kStatus), c.antes);
    EXPECT_EQ(vp_count_cmd(245), c.operacao ? 0 : c.antes[0] == '4' ? 0 : 1);
    E4Close();
    EXPECT_EQ(abre(), 0);
    EXPECT_EQ(read_file(kStatus), c.depois);
    E4Close();
  }
}

TEST_F(Fresh, StateFilesReplacedByDirectoriesOrGarbage) {
  const std::function<int()> chamadas[] = {
      abre,
      [] { return reply(133, "000100"), reply(133, "000100"), state(2), E4IniCP(2, ""); },
      [] { return E4RegPag(60, "12,00"); },
      [] { return state(16), E4FimCP(0, nullptr); },
      [] { return state(0), E4IniCP(17, "60"); },  // card voucher
      [] { return state(17), E4FimCP(0, nullptr); },
      [] { return state(0), E4CanCup(); },  // the last document, its vouchers reversed first
      [] {
        unsigned char reg = 61;
        return E4RPCria(5, "CARTAO", "1", &reg);
      },
      [] {
        char dados[1200];
        return E4DadosReducao(dados);
      },
  };
  // A directory shows in these calls (index -> result); garbage never does.
  const std::map<std::string, std::map<int, int>> arquivos = {
      {kStatus, {{0, 2903}}},  // unreadable: nothing resumed
      {"EcfZandor.pgt", {{4, 2561}}},
      {"EcfZandor.ind", {{4, 2561}}},
      {"EcfZandorCoo.pgt", {{6, 2902}}},  // used to loop through 2^63 positions
      {"EcfZandorCOO.ind", {{6, 2049}}},
      {"EcfZandor.cpm", {{6, 2902}}},
      {"NomeOper.cfg", {}},
      {"EcfAcresItens.cpf", {}},
      {"EcfTotalAcrescItens.cpf", {}},
      {"EcfCancelados.cpf", {}},
      {"quorvel.conf", {}},
      {"Orbelan.txt", {}},
  };
  std::string lixo = "#$60$61\r\nCPF000100$$$\n";
  for (unsigned x = 7; lixo.size() < 700;) lixo.push_back(static_cast<char>((x = x * 1103515245 + 12345) >> 16));
  for (bool diretorio : {true, false}) {
    for (const auto& [arquivo, afetadas] : arquivos) {
      SCOPED_TRACE(arquivo + (diretorio ? " as a directory" : " as garbage"));
      recomeca();
      if (diretorio)
        fs::create_directory(arquivo);
      else
        write_file(arquivo, lixo);
      for (int i = 0; i < static_cast<int>(std::size(chamadas)); ++i)
        EXPECT_EQ(chamadas[i](), diretorio && afetadas.contains(i) ? afetadas.at(i) : 0) << "call " << i;
      EXPECT_EQ(E4Close(), 0);
    }
  }
}

TEST_F(Fresh, DriverLibraryMissingEntryPoints) {
  char status[16];
  // Without FC_Operacao the printer starts but answers nothing.
  redirect_dlopen("libMrZandor.so", double_path("MrZandor_soInicializa"));
  EXPECT_EQ(abre(), 2900);
  EXPECT_EQ(E4Status(status), 2900);
  EXPECT_EQ(count_calls(VP_INICIALIZA), 1);
  // A close that fails (no FC_Finaliza here, the driver's refusal below)
  // unloads the driver and leaves the session marked open: the next opening
  // loads it again, or the session could never start again in this process.
  EXPECT_EQ(E4Close(), 2900);
  EXPECT_EQ(E4Status(status), 2900);
  redirect_dlopen("libMrZandor.so", double_path("MrZandor_falhas"));
  EXPECT_EQ(abre(), 0);
  vp_set_fini_result(7);
  EXPECT_EQ(E4Close(), 7);
  EXPECT_EQ(E4Status(status), 2900);
  vp_set_fini_result(0);
  EXPECT_EQ(abre(), 0);
  EXPECT_EQ(E4Close(), 0);
  // Without FC_Inicializa no session opens.
  redirect_dlopen("libMrZandor.so", double_path("MrZandor_semInicializa"));
  EXPECT_EQ(abre(), 2900);
  EXPECT_EQ(E4Status(status), 2869);
}

TEST_F(Fresh, EachCommandOfASaleFailingInTurn) {
  redirect_dlopen("libMrZandor.so", double_path("MrZandor_falhas"));
  ASSERT_EQ(abre(), 0);
  vp_clear_calls();
  ASSERT_EQ(venda(), (std::vector<int>{0, 0, 0, 0}));
  const std::vector<int> comandos = commands();
  E4Close();
  for (std::size_t n = 1; n <= comandos.size(); ++n) {
    SCOPED_TRACE("command " + std::to_string(n) + ": " + std::to_string(comandos[n - 1]));
    recomeca();
    ASSERT_EQ(abre(), 0);
    falha_no_comando(static_cast<int>(n));
    const std::vector<int> r = venda();
    // The call that sent it reports the failure and the road stops there,
    // but for the COO reads of the local records, whose results are not
    // checked.
    if (comandos[n - 1] == 133) {
      EXPECT_EQ(r, (std::vector<int>{0, 0, 0, 0}));
    } else {
      EXPECT_EQ(r.back(), 2693);
      EXPECT_TRUE(std::all_of(r.begin(), r.end() - 1, [](int x) { return x == 0; }));
    }
    // A payment is on record exactly when the printer took it.
    EXPECT_EQ(read_file("EcfZandor.pgt").find("$60") != std::string::npos, r.size() > 2 && r[2] == 0);
    EXPECT_EQ(E4Close(), 0);
  }
}

TEST_F(Fresh, EachCommandOfTheStoreNumberProcedureFailingInTurn) {
  // A payment method's creation runs the whole procedure: "9999" set, X
  // reading, the number restored, closing command and cut. Whatever command
  // fails, the file holds a state from which the next openings and coupon
  // finish it with the printer's own number back.
  redirect_dlopen("libMrZandor.so", double_path("MrZandor_falhas"));
  unsigned char reg = 61;
  ASSERT_EQ(abre(), 0);
  vp_clear_calls();
  ASSERT_EQ(E4RPCria(5, "CARTAO", "1", &reg), 0);
  const int total = static_cast<int>(commands().size());
  E4Close();
  for (int n = 1; n <= total; ++n) {
    SCOPED_TRACE("command " + std::to_string(n));
    recomeca();
    write_file(kStatus, "00042");
    ASSERT_EQ(abre(), 0);
    falha_no_comando(n);
    E4RPCria(5, "CARTAO", "1", &reg);
    const std::string meio = read_file(kStatus);
    EXPECT_TRUE(meio.size() == 5 && meio[0] >= '0' && meio[0] <= '4' && meio.ends_with("0042")) << meio;
    E4Close();
    for (int volta = 0; volta < 2 && read_file(kStatus) != "00042"; ++volta) {
      ASSERT_EQ(abre(), 0);
      E4IniCP(2, "");
      E4Close();
    }
    EXPECT_EQ(read_file(kStatus), "00042");
    const Bytes ultimo = last_input(245);
    EXPECT_TRUE(ultimo.empty() || Bytes(ultimo.begin() + 2, ultimo.end()) == texts({"0042"}));
  }
}
