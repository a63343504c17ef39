// The e4 tool as a user runs it; successive --virtual runs continue one virtual printer kept in the test's directory.
#include <sys/wait.h>

#include <cstdio>
#include <iterator>
#include <regex>
#include <string>

#include "orbelan.h"
#include "support/fixture.h"

namespace {

struct Result {
  int code = -1;
  std::string out;  // standard output and error
  bool has(const std::string& line) const { return ("\n" + out).find("\n" + line + "\n") != std::string::npos; }
  int count(const std::string& re) const {  // of the lines matching `re` whole
    const std::regex line("^(?:" + re + ")$", std::regex::ECMAScript | std::regex::multiline);
    return static_cast<int>(std::distance(std::sregex_iterator(out.begin(), out.end(), line), {}));
  }
};

// Without the test's loader path (so the real driver is not found), in English unless `env` says otherwise.
Result e4(const std::string& args, const std::string& env = "LANG=C") {
  Result r;
  const std::string cmd = "env -u LD_LIBRARY_PATH -u LC_ALL -u LC_MESSAGES " + env + " " E4_PROGRAM " " + args;
  if (FILE* p = popen((cmd + " 2>&1").c_str(), "r")) {
    char buf[4096];
    for (std::size_t n; (n = fread(buf, 1, sizeof buf, p)) > 0;) r.out.append(buf, n);
    if (const int status = pclose(p); WIFEXITED(status)) r.code = WEXITSTATUS(status);
  }
  return r;
}

TEST(E4Tool, HelpFunctionsAndUsageErrors) {
  const Result help = e4("--help");
  EXPECT_TRUE(help.code == 0 && help.has("e4 functions")) << help.out;
  EXPECT_EQ(e4("help E4RPLe").out, "e4 E4RPLe <Cat:0-255>  -> Compl Sinal RP\n    Next register of the walk\n");
  // Nothing reaches the library: it would create its control file.
  for (const auto& [args, says] : {std::pair{"", "usage: e4"}, {"nosuch", "e4: no command or function named nosuch"},
                                   {"E4IniCP 2", "e4: E4IniCP takes 2 argument(s): E4IniCP <Opc:0-255> <Param:text>"},
                                   {"trace 12", "e4: trace: the level is a digit, 0 to 9"}}) {
    const Result r = e4(std::string("--virtual ") + args);
    EXPECT_TRUE(r.code == 2 && r.out.find(says) != std::string::npos) << args << "\n" << r.out;
    EXPECT_FALSE(orbtest::file_exists("Orbelan.cfg")) << args;
  }
  // Every exported function can be called by name, and nothing else is listed.
  const Result fns = e4("functions");
  const std::string header = orbtest::read_file(ORBELAN_SOURCE_DIR "/include/orbelan.h");
  const std::regex proto(R"(ORBELAN_API unsigned short (E4\w+)\()");
  int n = 0;
  for (auto it = std::sregex_iterator(header.begin(), header.end(), proto); it != std::sregex_iterator(); ++it, ++n)
    EXPECT_EQ(fns.count((*it)[1].str() + "( .*)?"), 1) << (*it)[1];
  EXPECT_EQ(fns.count(".+"), n);
}

TEST(E4Tool, ResultsWithoutAPrinter) {
  // No session: the library's own refusal, described in the chosen language.
  Result r = e4("--no-open E4Status");
  EXPECT_TRUE(r.code == 1 && r.has("E4Status ret=2869 (Session not open (E4Open first))")) << r.out;
  const std::string pt = "E4Status ret=2869 (Sessao nao aberta (falta E4Open))";
  EXPECT_TRUE(e4("--no-open --lang=pt E4Status").has(pt) && e4("--no-open E4Status", "LANG=pt_BR.UTF-8").has(pt));
  r = e4("status");  // the real driver, loaded by its bare name, is not installed here
  EXPECT_EQ(r.out, "E4Open ret=2900 (Driver library, entry point or plug-in not available)\n");
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(e4("--no-open E4ImpItem 0x1").out, "E4ImpItem ret=0 (Success)\n");  // hexadecimal; needs no session
  EXPECT_STREQ(E4DescricaoRetorno(60000, 0), "Codigo de retorno desconhecido");  // the header's descriptions
  EXPECT_STREQ(E4DescricaoRetorno(2583, 1), "Printer error (printer codes 23, 26)");
  EXPECT_STREQ(E4DescricaoRetorno(196, 1), "Printer code passed on untranslated");
}

TEST(E4Tool, StatusIdentityAndRegistersOfTheVirtualPrinter) {
  Result r = e4("--virtual status");
  EXPECT_TRUE(r.has("E4Status ret=0 (Success)") && r.has("Opc=0 (no document open)") &&
              r.count("Status=[01]{14}") == 1 && r.count("Data=[0-9]{8}|Hora=[0-9]{4}|Movimento=[0-9]{8}") == 3)
      << r.out;
  r = e4("--virtual identity");
  EXPECT_TRUE(r.count(R"(E4Inf(Esp)?ECF( [678])? ret=0 \(Success\))") == 4 &&
              r.count("(Serie|CGC|Firm|Marca|DescricaoModelo|FirmwareCompleto)=.+") == 6)
      << r.out;
  EXPECT_EQ(e4("--virtual E4InfEspECF 4").count(R"(Retorno=[^ ]+ [^ ]+ [^ ]+)"), 1);  // several texts: each NUL a blank
  r = e4("--virtual registers 5 2");
  EXPECT_TRUE(r.code == 0 && r.has("Cat=5 (payment methods)") && r.has("Cat=2 (tax rates on goods)")) << r.out;
  for (const int n :
       {r.count("  RP=(6[0-9]|7[0-8]) Sinal=[01] Compl=.+"), r.count("  RP=(2[0-9]|3[0-4]) Sinal=  Compl=.+")})
    EXPECT_TRUE(n > 0 && r.has("  (" + std::to_string(n) + (n == 1 ? " register)" : " registers)"))) << r.out;
}

TEST(E4Tool, SuccessiveRunsContinueTheSamePrinter) {
  ASSERT_EQ(e4("--virtual E4IniCP 2 \"\"").out, "E4IniCP ret=0 (Success)\n");
  EXPECT_TRUE(e4("--virtual status").has("Opc=2 (fiscal coupon, before totalling)"));
  EXPECT_EQ(e4("--virtual E4IniCP 2 \"\"").code, 1);  // refused by the printer while this coupon is open
  EXPECT_EQ(e4("--virtual cancel").out, "E4CanCup ret=0 (Success)\n");
  EXPECT_EQ(e4("--virtual x").out, "E4IniCP 4 ret=0 (Success)\n");
  EXPECT_EQ(e4("--virtual z").out, "E4IniCP 5 ret=0 (Success)\n");
  for (const auto& [args, file] :  // the day just reduced is in both downloads: the files are not empty
       {std::pair{"journal mfd.txt coo 1 999999", "mfd.txt"}, {"memory lmf.txt z 1 9999 simplified", "lmf.txt"}}) {
    const Result r = e4(std::string("--virtual ") + args);
    const std::string size = std::to_string(orbtest::read_file(file).size());
    EXPECT_TRUE(r.code == 0 && size != "0" && r.has(std::string("Arquivo=") + file + " (" + size + " bytes)")) << r.out;
  }
}

TEST(E4Tool, TraceSwitch) {
  for (const auto& [args, file] : {std::pair{"trace 1", "Trace=1\nTamanho=5000000"},
                                   {"trace 0 1000", "Trace=0\nTamanho=1000"}, {"trace 3", "Trace=3\nTamanho=1000"}}) {
    ASSERT_EQ(e4(args).code, 0) << args;  // the size is kept when not given
    EXPECT_EQ(orbtest::read_file("Orbelan.cfg"), file) << args;
  }
  EXPECT_EQ(e4("trace").out, "Orbelan.cfg: Trace=3\\nTamanho=1000\n");
  EXPECT_FALSE(orbtest::file_exists("Orbelan.txt"));
  EXPECT_TRUE(e4("--virtual E4RdData").code == 0 && orbtest::logged("E4RdData5600 - inicio "));
}

}  // namespace
