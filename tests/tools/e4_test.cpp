// The e4 tool run as a user runs it, in the test's own directory: successive
// --virtual runs continue the same virtual printer, whose state lives there.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "orbelan.h"
#include "support/fixture.h"

namespace {

struct Result {
  int code;
  std::string out;  // standard output and error
  bool has(const std::string& line) const { return ("\n" + out).find("\n" + line + "\n") != std::string::npos; }
  int count(const std::regex& line) const {
    std::istringstream in(out);
    int n = 0;
    for (std::string l; std::getline(in, l);) n += std::regex_match(l, line) ? 1 : 0;
    return n;
  }
};

// Without the loader path of the test (the real driver is then not to be
// found) and with English descriptions unless the test says otherwise.
Result e4(const std::string& args, const std::string& env = "LANG=C") {
  const std::string cmd = "env -u LD_LIBRARY_PATH -u LC_ALL -u LC_MESSAGES " + env + " " E4_PROGRAM " " + args;
  Result r{-1, {}};
  FILE* p = popen((cmd + " 2>&1").c_str(), "r");
  if (p == nullptr) return r;
  char buf[4096];
  for (std::size_t n; (n = fread(buf, 1, sizeof buf, p)) > 0;) r.out.append(buf, n);
  const int status = pclose(p);
  r.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return r;
}

Result virt(const std::string& args) { return e4("--virtual " + args); }

TEST(E4Tool, HelpFunctionsAndUsageErrors) {
  const Result help = e4("--help");
  EXPECT_EQ(help.code, 0);
  for (const char* c :
       {"status", "identity", "registers", "x", "z", "journal", "memory", "cancel", "trace", "functions"})
    EXPECT_NE(help.out.find(std::string("\ne4 ") + c), std::string::npos) << c;
  EXPECT_EQ(e4("help E4RPLe").out, "e4 E4RPLe <Cat:0-255>  -> Compl Sinal RP\n    Next register of the walk\n");

  // Nothing reaches the library: it would have created its control file.
  const std::pair<const char*, const char*> wrong[] = {
      {"", "usage: e4"}, {"nosuch", "e4: no command or function named nosuch"},
      {"--bogus status", "e4: unknown option --bogus"},
      {"E4IniCP 2", "e4: E4IniCP takes 2 argument(s): E4IniCP <Opc:0-255> <Param:text>"},
      {"E4IniCP 256 x", "e4: E4IniCP: Opc must be a number from 0 to 255"},
      {"E4ImpItem 1x", "e4: E4ImpItem: mode must be an integer"},
      {"E4ConImp ab 1 1", "e4: E4ConImp: Dispositivo must be one character"},
      {"journal f.txt week 1 2", "e4: journal: the range is by date, coo or z"},
      {"trace 12", "e4: trace: the level is a digit, 0 to 9"}};
  for (const auto& [args, says] : wrong) {
    const Result r = virt(args);
    EXPECT_EQ(r.code, 2) << args;
    EXPECT_NE(r.out.find(says), std::string::npos) << args << "\n" << r.out;
  }
  EXPECT_FALSE(orbtest::file_exists("Orbelan.cfg"));

  // Every exported function can be called by name.
  std::set<std::string> declared, listed;
  const std::string header = orbtest::read_file(ORBELAN_SOURCE_DIR "/include/orbelan.h");
  const std::regex proto(R"(ORBELAN_API unsigned short (E4\w+)\()");
  for (auto it = std::sregex_iterator(header.begin(), header.end(), proto); it != std::sregex_iterator(); ++it)
    declared.insert((*it)[1]);
  std::istringstream in(e4("functions").out);
  for (std::string line; std::getline(in, line);) listed.insert(line.substr(0, line.find(' ')));
  EXPECT_EQ(listed, declared);
}

TEST(E4Tool, ResultsWithoutAPrinter) {
  // No session: the library's own refusal, described in the chosen language.
  Result r = e4("--no-open E4Status");
  EXPECT_EQ(r.code, 1);
  EXPECT_TRUE(r.has("E4Status ret=2869 (Session not open (E4Open first))")) << r.out;
  const std::string pt = "E4Status ret=2869 (Sessao nao aberta (falta E4Open))";
  EXPECT_TRUE(e4("--no-open --lang=pt E4Status").has(pt));
  EXPECT_TRUE(e4("--no-open E4Status", "LANG=pt_BR.UTF-8").has(pt));
  // The real driver, loaded by its bare name, is not installed here.
  r = e4("status");
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.out, "E4Open ret=2900 (Driver library, entry point or plug-in not available)\n");
  // Numbers in decimal or hexadecimal; a function that needs no session.
  EXPECT_EQ(e4("--no-open E4ImpItem 0x1").out, "E4ImpItem ret=0 (Success)\n");
  r = e4("--no-open E4ImpItem -1");
  EXPECT_EQ(r.code, 1);
  EXPECT_TRUE(r.has("E4ImpItem ret=2561 (Nothing to act on, wrong state, or not available for this printer)"));
}

TEST(E4Tool, StatusIdentityAndRegistersOfTheVirtualPrinter) {
  Result r = virt("status");
  ASSERT_EQ(r.code, 0) << r.out;
  EXPECT_TRUE(r.has("E4Status ret=0 (Success)"));
  EXPECT_EQ(r.count(std::regex("Status=[01]{14}")), 1) << r.out;
  EXPECT_TRUE(r.has("Opc=0 (no document open)")) << r.out;
  EXPECT_EQ(r.count(std::regex("Data=[0-9]{8}|Hora=[0-9]{4}|Movimento=[0-9]{8}")), 3) << r.out;
  r = virt("identity");
  ASSERT_EQ(r.code, 0) << r.out;
  EXPECT_EQ(r.count(std::regex(R"(E4Inf(Esp)?ECF( [678])? ret=0 \(Success\))")), 4) << r.out;
  EXPECT_EQ(r.count(std::regex("(Serie|CGC|Firm|Marca|DescricaoModelo|FirmwareCompleto)=.+")), 6) << r.out;
  // Outputs holding several texts show each NUL as a blank.
  EXPECT_EQ(virt("E4InfEspECF 4").count(std::regex(R"(Retorno=[^ ]+ [^ ]+ [^ ]+)")), 1);

  r = virt("registers 5 2");
  ASSERT_EQ(r.code, 0) << r.out;
  EXPECT_TRUE(r.has("Cat=5 (payment methods)") && r.has("Cat=2 (tax rates on goods)")) << r.out;
  const int payments = r.count(std::regex("  RP=(6[0-9]|7[0-8]) Sinal=[01] Compl=.+"));
  const int rates = r.count(std::regex("  RP=(2[0-9]|3[0-4]) Sinal=  Compl=.+"));
  EXPECT_GE(payments, 1) << r.out;
  for (const int n : {payments, rates})
    EXPECT_TRUE(r.has("  (" + std::to_string(n) + (n == 1 ? " register)" : " registers)"))) << r.out;
  r = virt("registers 3");
  EXPECT_EQ(r.code, 1);
  EXPECT_TRUE(r.has("E4RPPrim ret=2843 (Invalid category when starting a register walk)"));
}

TEST(E4Tool, SuccessiveRunsContinueTheSamePrinter) {
  ASSERT_EQ(virt("E4IniCP 2 \"\"").out, "E4IniCP ret=0 (Success)\n");
  EXPECT_TRUE(virt("status").has("Opc=2 (fiscal coupon, before totalling)"));
  EXPECT_EQ(virt("E4IniCP 2 \"\"").code, 1);  // refused by the printer while this coupon is open
  EXPECT_EQ(virt("cancel").out, "E4CanCup ret=0 (Success)\n");
  EXPECT_TRUE(virt("status").has("Opc=0 (no document open)"));
  EXPECT_EQ(virt("x").out, "E4IniCP 4 ret=0 (Success)\n");
  EXPECT_EQ(virt("z").out, "E4IniCP 5 ret=0 (Success)\n");
  EXPECT_EQ(virt("z").code, 1);
  // The day just reduced is in both downloads: the files are not empty.
  for (const auto& [args, file] : {std::pair{"journal mfd.txt coo 1 999999", "mfd.txt"},
                                   std::pair{"memory lmf.txt z 1 9999 simplified", "lmf.txt"}}) {
    const Result r = virt(args);
    ASSERT_EQ(r.code, 0) << args << "\n" << r.out;
    const std::size_t size = orbtest::read_file(file).size();
    EXPECT_GT(size, 0u) << args;
    EXPECT_TRUE(r.has(std::string("Arquivo=") + file + " (" + std::to_string(size) + " bytes)")) << r.out;
  }
}

TEST(E4Tool, TraceSwitch) {
  const std::pair<const char*, const char*> steps[] = {{"trace 1", "Trace=1\nTamanho=5000000"},
                                                       {"trace 0 1000", "Trace=0\nTamanho=1000"},
                                                       {"trace 3", "Trace=3\nTamanho=1000"}};  // the size is kept
  for (const auto& [args, file] : steps) {
    ASSERT_EQ(e4(args).code, 0) << args;
    EXPECT_EQ(orbtest::read_file("Orbelan.cfg"), file) << args;
  }
  EXPECT_EQ(e4("trace").out, "Orbelan.cfg: Trace=3\\nTamanho=1000\n");
  EXPECT_FALSE(orbtest::file_exists("Orbelan.txt"));
  ASSERT_EQ(virt("E4RdData").code, 0);
  EXPECT_TRUE(orbtest::logged("E4RdData5600 - inicio "));
}

TEST(E4Tool, ResultDescriptions) {
  // Every code the header names has a text of its own, in both languages.
  const std::string header = orbtest::read_file(ORBELAN_SOURCE_DIR "/include/orbelan.h");
  const std::regex code(R"(#define E4_\w+ (\d+))");
  int n = 0;
  for (auto it = std::sregex_iterator(header.begin(), header.end(), code); it != std::sregex_iterator(); ++it, ++n) {
    const auto c = static_cast<unsigned short>(std::stoi((*it)[1]));
    EXPECT_STRNE(E4DescricaoRetorno(c, 1), "Unknown result code") << c;
    EXPECT_STRNE(E4DescricaoRetorno(c, 0), E4DescricaoRetorno(c, 1)) << c;
  }
  EXPECT_GT(n, 25);
  EXPECT_STREQ(E4DescricaoRetorno(60000, 1), "Unknown result code");
  EXPECT_STREQ(E4DescricaoRetorno(60000, 0), "Codigo de retorno desconhecido");
  // Translated printer codes name the printer codes they stand for.
  EXPECT_STREQ(E4DescricaoRetorno(2563, 1), "Printer error (printer code 3)");
  EXPECT_STREQ(E4DescricaoRetorno(2583, 0), "Erro da impressora (codigos 23, 26)");
  EXPECT_STREQ(E4DescricaoRetorno(196, 1), "Printer code passed on untranslated");
}

}  // namespace
