// The document-processor libraries in the session open and close.
#include <cstdio>
#include <string>
#include <vector>

#include "orbelan.h"
#include "recorder.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

const char* const kLibs[] = {"pd_cheque", "pd_autentica", "pd_cmc7"};

std::vector<std::string> library_calls() {
  std::vector<std::string> out;
  for (int i = 0; i < dbl_count(); ++i) out.emplace_back(dbl_get(i)->fn);
  return out;
}

class Peripherals : public Fresh {
 protected:
  void SetUp() override {
    Fresh::SetUp();
    vp_answer_identity();
    use_peripheral_doubles();
  }
};

TEST_F(Peripherals, OpenStartsAndCloseUnloadsTheThreeLibrariesInOrder) {
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_EQ(library_calls(), (std::vector<std::string>{"Open_cheque", "openAutentica", "openCmc7"}));
  for (const char* lib : kLibs) EXPECT_TRUE(double_loaded(lib)) << lib;
  // The document spacing goes to the printer while no document is open.
  const auto spacing = last_input(215);
  ASSERT_EQ(spacing.size(), 3u);
  EXPECT_EQ(spacing[2], 3);

  ASSERT_EQ(E4Close(), 0);
  EXPECT_EQ(library_calls(), (std::vector<std::string>{"Open_cheque", "openAutentica", "openCmc7", "Close_cheque",
                                                       "closeAutentica", "closeCmc7"}));
  for (const char* lib : kLibs) EXPECT_FALSE(double_loaded(lib)) << lib;
}

TEST_F(Peripherals, AMissingLibraryOrSymbolGives2900BeforeThePrinterIsStarted) {
  struct Case {
    const char* autentica;  // the double standing in for the authentication library
    const char* failing;    // a library whose load fails, or nullptr
    std::vector<std::string> lines;
    std::vector<const char*> still_loaded;
  } cases[] = {
      // The cheque library resolved before stays loaded.
      {"pd_autentica_semcarrega",
       nullptr,
       {"LoadPd_AutenticaApi5600 Erro funcao carregaECF nao encontrada", "E4Open5600 Erro apos LoadPd_AutenticaApi"},
       {"pd_cheque", "pd_autentica_semcarrega"}},
      {"pd_autentica",
       "libpd_cmc7.so",
       {"LoadPd_cmc7Api5600 libpd_cmc7.so nao encontrada", "E4Open5600 Erro apos LoadPd_cmc7Api"},
       {"pd_autentica"}},
      {"pd_autentica",
       "libpd_cheque.so",
       {"LoadPd_chequeApi5600 libpd_cheque.so nao encontrada", "E4Open5600 Erro apos LoadPd_chequeApi"},
       {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.autentica + std::string(" ") + (c.failing != nullptr ? c.failing : ""));
    redirect_dlopen("libpd_autentica.so", double_path(c.autentica));
    if (c.failing != nullptr) fail_dlopen(c.failing);
    std::remove("Orbelan.txt");
    vp_clear_calls();
    dbl_reset();
    EXPECT_EQ(E4Open(0, 0), 2900);
    for (const auto& l : c.lines) EXPECT_TRUE(logged(l)) << l;
    EXPECT_EQ(count_calls(VP_INICIALIZA), 0);
    EXPECT_TRUE(library_calls().empty());  // nothing opened, nothing closed
    for (const char* lib : c.still_loaded) EXPECT_TRUE(double_loaded(lib)) << lib;
    EXPECT_EQ(E4Close(), 2869);
  }
}

TEST_F(Peripherals, AFailingDeviceStartGives2859AndReleasesTheLibraries) {
  const char* const opens[] = {"Open_cheque", "openAutentica", "openCmc7"};
  const char* const names[] = {"Inicia_Pd_cheque", "Inicia_Pd_autentica", "Inicia_Pd_cmc7"};
  for (int failing = 0; failing < 3; ++failing) {
    SCOPED_TRACE(opens[failing]);
    dbl_reset();
    dbl_push_result(opens[failing], -7);
    std::remove("Orbelan.txt");
    EXPECT_EQ(E4Open(0, 0), 2859);
    EXPECT_TRUE(logged("E4Open5600 Erro[-7] apos " + std::string(names[failing])));
    std::vector<std::string> expected(opens, opens + failing + 1);
    for (const char* c : {"Close_cheque", "closeAutentica", "closeCmc7"}) expected.emplace_back(c);
    EXPECT_EQ(library_calls(), expected);
    for (const char* lib : kLibs) EXPECT_FALSE(double_loaded(lib)) << lib;
    // The printer was started, so the session stays marked open; closing it
    // does not close the libraries a second time.
    EXPECT_EQ(E4Close(), 0);
    EXPECT_EQ(library_calls(), expected);
  }
}

}  // namespace
