// Faults from outside: a directory that takes no writes, writes cut short, state files replaced by directories or
// garbage, incomplete driver libraries, a driver failing any command, endless or huge replies; no descriptor left open.
#include <linux/capability.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <functional>
#include <tuple>

#include "orbelan.h"
#include "recorder.h"
#include "support/fixture.h"

using namespace orbtest;
namespace fs = std::filesystem;

namespace {

constexpr const char* kStatus = "ArqRegPgto.sts";
using Results = std::vector<int>;

// The directory and its files refuse writes while this lives, to root too (CAP_DAC_OVERRIDE is dropped).
struct SemEscrita {
  SemEscrita() {
    for (const auto& e : fs::directory_iterator(".")) fs::permissions(e.path(), fs::perms::owner_read);
    fs::permissions(".", fs::perms::owner_read | fs::perms::owner_exec);
    syscall(SYS_capget, &h, caps);
    __user_cap_data_struct sem[2] = {caps[0], caps[1]};
    sem[0].effective &= ~(1U << CAP_DAC_OVERRIDE);
    syscall(SYS_capset, &h, sem);
  }
  ~SemEscrita() {
    syscall(SYS_capset, &h, caps);
    fs::permissions(".", fs::perms::owner_all);
  }
  __user_cap_header_struct h{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct caps[2]{};
};

// Files cannot grow past `bytes` (SIGXFSZ ignored, as by an application that survives a full disk).
struct LimiteDeArquivo {
  explicit LimiteDeArquivo(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &antes);
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limite{bytes, antes.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limite);
  }
  ~LimiteDeArquivo() { setrlimit(RLIMIT_FSIZE, &antes); }
  rlimit antes{};
};

// Opens a session on a printer whose store number is 0042.
int abre() { return vp_answer_identity(), stick(246, 0, bytes_with(5, 0, "0042")), E4Open(0, 0); }

// A coupon opened, with the COO reads of the local records answered.
int abre_cupom() { return reply(133, "000100"), reply(133, "000100"), state(2), E4IniCP(2, ""); }

// The sale road; stops at the first refusal. One result per call made.
Results venda() {
  Results r{abre_cupom()};
  if (r.back() == 0) r.push_back(E4IteCF(20, "1", "ITEM", "1000", "1200"));
  if (r.back() == 0) r.push_back(E4RegPag(60, "12,00"));
  if (r.back() == 0) r.push_back((state(16), E4FimCP(0, nullptr)));
  return r;
}

int cria_cartao() { return E4RPCria(5, "CARTAO", "1", std::array<unsigned char, 1>{61}.data()); }

void recomeca() {
  for (const auto& e : fs::directory_iterator(".")) fs::remove_all(e.path());
  vp_reset();
  enable_trace(1);
}

int descritores() {
  return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

}  // namespace

// (Session tests first: further on, the driver's loading is redirected or made to fail for the rest of the process.)

// Fiscal-memory reads all answered with an empty success never show the end mark: the search stops at 4096.
TEST_F(Session, RegMemFiscStopsOnAPrinterThatNeverEnds) {
  stick(174, 0);
  char valor[21] = {'x'};
  EXPECT_EQ(E4RegMemFisc(12, valor), 2582);
  EXPECT_EQ(vp_count_cmd(174), 4096);
  EXPECT_EQ(std::vector<char>(valor, valor + 21), std::vector<char>(21, '\0'));
}

// Nines read as the largest value: sums, differences and conversions to whole numbers stay at the end of the range.
TEST_F(Session, HugeValuesInRepliesSaturate) {
  const std::string nines(25, '9'), largest = "223372036854775807";  // LLONG_MAX cut to 18 digits
  char valor[19];
  const auto lido = [&](int r) { return r == 0 ? std::string(valor) : "error " + std::to_string(r); };
  stick(133, 0, bytes_with(30, 1, nines));
  EXPECT_EQ(lido(E4ValAtu(7, valor)), largest);      // registers 7, 17 and 114 summed
  EXPECT_EQ(lido(E4ValAtu_JP(85, valor)), largest);  // gross daily sales, some forty registers
  EXPECT_EQ(E4ValAtu_JP(93, valor), 0);              // net: gross less deductions
  stick(133, 0, bytes_with(30, 1, "-" + nines));
  EXPECT_EQ(E4ValAtu(106, valor), 0);  // reductions left, from a count far below zero
  state(2);
  stick(138, 0, bytes_with(20, 0, "9999999999999999999"));
  EXPECT_EQ(lido(E4InfCup(504, valor)), largest);  // the amount due: a subtotal beyond a whole number's range
  state(0);
  stick(38, 0, {60, 61, 62});
  stick(134, 0, bytes_with(30, 1, nines));
  EXPECT_EQ(E4InfCup(501, valor), 0);  // the payment registers summed
  // An increase in percent between subtotals at the two ends of the range adds nothing writable: the text stays.
  state(2);
  stick(133, 0, bytes_with(10, 1, "000042"));
  push(138, 0, bytes_with(20, 0, "-9999999999999999999"));
  push(138, 0, bytes_with(20, 0, "9999999999999999999"));
  char acrescimo[13] = "15,00";
  EXPECT_EQ(E4AcrIt(2, 20, 1, acrescimo, nullptr), 0);
  EXPECT_STREQ(acrescimo, "15,00");
}

TEST_F(Fresh, UnwritableWorkingDirectory) {
  recomeca();
  {
    const SemEscrita sem_escrita;
    // No status file can be made; the printer is open all the same, and local records being best effort, a sale too.
    EXPECT_EQ(abre(), 2902);
    EXPECT_EQ(venda(), (Results{0, 0, 0, 0}));
    EXPECT_EQ(E4Close(), 0);
  }
  EXPECT_EQ(std::distance(fs::directory_iterator("."), fs::directory_iterator()), 1);  // Orbelan.cfg
  EXPECT_EQ(abre(), 0);
  EXPECT_EQ(read_file(kStatus), "00042");
}

TEST_F(Fresh, StatusFileKeepsItsStateWhenAWriteIsCutShort) {
  const struct {
    const char *antes, *depois;     // the status file; after the next opening, with room again
    std::function<int()> operacao;  // run on an open session; the opening itself when empty
    int resultado;
  } casos[] = {
      {"10042", "20042", nullptr, 2904},                     // "9999" sent, then sent again
      {"30042", "40042", nullptr, 2904},                     // number restored, then restored again
      {"40042", "00042", nullptr, 2904},                     // closed and cut, then again
      {"00042", "00042", cria_cartao, 0},                    // created without the procedure
      {"20042", "20042", [] { return E4IniCP(2, ""); }, 0},  // restore left for later
  };
  for (const auto& c : casos) {
    SCOPED_TRACE(c.antes);
    write_file(kStatus, c.antes);
    EXPECT_EQ(c.operacao ? abre() : 0, 0);
    vp_clear_calls();
    {
      const LimiteDeArquivo limite(3);
      EXPECT_EQ(c.operacao ? c.operacao() : abre(), c.resultado);
    }
    EXPECT_EQ(read_file(kStatus), c.antes);
    EXPECT_EQ(vp_count_cmd(245), c.operacao || c.antes[0] == '4' ? 0 : 1);
    E4Close();
    EXPECT_EQ(abre(), 0);
    EXPECT_EQ(read_file(kStatus), c.depois);
    E4Close();
  }
}

TEST_F(Fresh, StateFilesReplacedByDirectoriesOrGarbage) {
  const std::function<int()> chamadas[] = {
      abre,
      abre_cupom,
      [] { return E4IteCF(20, "1", "ITEM", "1000", "1200"); },
      [] { return E4RegPag(60, "12,00"); },
      [] { return state(16), E4FimCP(0, nullptr); },
      [] { return state(0), E4IniCP(17, "60"); },  // card voucher
      [] { return state(17), E4FimCP(0, nullptr); },
      [] { return state(0), E4CanCup(); },  // the last document, its vouchers reversed first
      cria_cartao,
      [] { return E4DadosReducao(std::vector<char>(1200).data()); },
      E4Close,
  };
  // The call a directory shows in, and its result (garbage never shows).
  std::vector<std::tuple<std::string, int, int>> arquivos = {
      {kStatus, 0, 2903},  // unreadable: nothing resumed
      {"EcfZandor.pgt", 5, 2561},
      {"EcfZandor.ind", 5, 2561},
      {"EcfZandorCoo.pgt", 7, 2902},  // used to loop through 2^63 positions
      {"EcfZandorCOO.ind", 7, 2049},
      {"EcfZandor.cpm", 7, 2902}};
  for (const char* inerte : {"NomeOper.cfg", "EcfAcresItens.cpf", "EcfTotalAcrescItens.cpf", "EcfCancelados.cpf",
                             "quorvel.conf", "Orbelan.txt"})
    arquivos.emplace_back(inerte, -1, 0);
  std::string lixo = "#$60$61\r\nCPF000100$$$\n";
  for (unsigned x = 7; lixo.size() < 700;) lixo.push_back(static_cast<char>((x = x * 1103515245 + 12345) >> 16));
  for (bool diretorio : {true, false}) {
    for (const auto& [arquivo, afetada, resultado] : arquivos) {
      SCOPED_TRACE(arquivo + (diretorio ? " as a directory" : " as garbage"));
      recomeca();
      diretorio ? void(fs::create_directory(arquivo)) : write_file(arquivo, lixo);
      const int antes = descritores();
      for (int i = 0; i < static_cast<int>(std::size(chamadas)); ++i) {
        EXPECT_EQ(chamadas[i](), diretorio && i == afetada ? resultado : 0) << "call " << i;
        EXPECT_EQ(descritores(), antes) << "call " << i;
      }
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
  // A close that fails (no FC_Finaliza here) unloads the driver and leaves the session marked open: the next opening
  // loads it again, or the session could never start again in this process.
  EXPECT_EQ(E4Close(), 2900);
  EXPECT_EQ(E4Status(status), 2900);
  redirect_dlopen("libMrZandor.so", double_path("MrZandor_falhas"));
  EXPECT_EQ(abre(), 0);
  EXPECT_EQ(E4Close(), 0);
  // Without FC_Inicializa no session opens.
  redirect_dlopen("libMrZandor.so", double_path("MrZandor_semInicializa"));
  EXPECT_EQ(abre(), 2900);
  EXPECT_EQ(E4Status(status), 2869);
}

TEST_F(Fresh, EachCommandOfASaleFailingInTurn) {
  redirect_dlopen("libMrZandor.so", double_path("MrZandor_falhas"));  // passes every call on to the printer
  ASSERT_EQ(abre(), 0);
  vp_clear_calls();
  venda();
  const Cmds comandos = commands();
  E4Close();
  for (std::size_t n = 1; n <= comandos.size(); ++n) {
    SCOPED_TRACE("command " + std::to_string(n) + ": " + std::to_string(comandos[n - 1]));
    recomeca();
    ASSERT_EQ(abre(), 0);
    dbl_reset();  // the n-th command from now fails with driver code 133 (2693)
    for (std::size_t i = 1; i < n; ++i) dbl_push_result("FC_Operacao", 0);
    dbl_push_result("FC_Operacao", 133);
    const Results r = venda();
    // The call that sent it reports the failure and the road stops there, but
    // for the COO reads of the local records, whose results are not checked.
    Results esperado(comandos[n - 1] == 133 ? 4 : r.size() - 1, 0);
    if (comandos[n - 1] != 133) esperado.push_back(2693);
    EXPECT_EQ(r, esperado);
    // A payment is on record exactly when the printer took it.
    EXPECT_EQ(read_file("EcfZandor.pgt").find("$60") != std::string::npos, r.size() > 2 && r[2] == 0);
    EXPECT_EQ(E4Close(), 0);
  }
}

TEST_F(Fresh, NoDescriptorOutlivesACall) {
  const Bytes fim_de_leitura{0, 0, 0xCF, 0xDE, 0xB3, 0xD1};
  write_file("vinculado.txt", "linha 1\nlinha 2\n");
  write_file("Cheque.dat", std::string(86, '\0') + std::string("\xE7\x03", 2) + std::string(84, '\0'));
  stick(133, 0, bytes_with(20, 1, "000100"));
  stick(139, 0, bytes_with(10, 1, "22112026"));
  const std::function<int()> chamadas[] = {
      abre,
      [] { return E4IniCP(20, ""); },
      [] { return state(26), E4ImpVinc("vinculado.txt", "2"); },
      [] { return E4FimCP(0, nullptr); },
      [&] { return push(199, 0, fim_de_leitura), E4LeMFD(1, "1", "2", "mfd.txt"); },
      [] { return E4LeMFD(0, "10032024", "15032024", "mfd.txt"); },
      [&] { return push(194, 0, fim_de_leitura), E4LMFSerial(2, 1, "5", "12", "mf.txt"); },
      [] { return E4ImpChq(1, "Nome", "Cidade", "01/02/26", "10,00", "", ""); },
      [] { return E4IniCP(5, ""); },
      E4Close,
      [] { return fail_dlopen("libMrZandor.so"), E4Open(0, 0); },  // a failed opening
  };
  const int antes = descritores();
  for (int i = 0; i < static_cast<int>(std::size(chamadas)); ++i) {
    chamadas[i]();
    EXPECT_EQ(descritores(), antes) << "call " << i;
  }
}
