// Session open and close, and the configuration keys read by the opening.
#include <cstdio>
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

const std::string kSection = "[QuorvelPOS\\ImpressoraFiscal]\n";

}  // namespace

TEST_F(Fresh, ConfigurationKeys) {
  vp_answer_identity();
  struct Case {
    std::string conf;  // empty: no quorvel.conf at all
    std::vector<std::string> lines;
  } cases[] = {
      {"",
       {"leChaveConfig5600 Nao conseguiu abrir o arquivo quorvel.conf",
        "E4Open5600 OV nao iniciado OVSetingsBuf= ret=-1", "E4Open5600 TIPO_PD[0] "}},
      {kSection + "OVSetings=0\n",
       {"leChaveConfig5600 Arquivo quorvel.conf nao contem a chave LowPaperCounter",
        "leChaveConfig5600 Chave OVSetings=0", "E4Open5600 OV nao iniciado OVSetingsBuf=0 ret=0"}},
      {"OVSetings=1\n[QuorvelPOS\\ImpressoraFiscalX]\nOVSetings=2\n[Outra]\nOVSetings=3\n",
       {"leChaveConfig5600 Arquivo quorvel.conf nao contem a configuracao para QuorvelPOS\\ImpressoraFiscal ",
        "E4Open5600 OV nao iniciado OVSetingsBuf= ret=2"}},
      // Keys match by prefix, are looked for in later sections too, and are
      // cut to their width; TIPO_PD other than 0 or 1 counts as 0.
      {kSection + "OVSetingsX=1\r\nTIPO_PD=7\r\n[Outra]\r\nLowPaperCounter=123\r\n",
       {"leChaveConfig5600 Chave LowPaperCounter=12", "leChaveConfig5600 Chave OVSetings=1",
        "leChaveConfig5600 Arquivo quorvel.conf nao contem a chave OVULTerm",
        "E4Open5600 OV nao iniciado OVSetingsBuf=1 ret=1", "leChaveConfig5600 Chave TIPO_PD=7",
        "E4Open5600 TIPO_PD[0] "}},
      {kSection + "OVSetings=1\nOVULTerm=1\nOVNomeTerm=CAIXA01\nOVCodSftw=2\nOVCodHrdw=3\nOVTipHrdw=4\n",
       {"leChaveConfig5600 Chave OVTipHrdw=4", "leChaveConfig5600 Arquivo quorvel.conf nao contem a chave OVCodFbr",
        "E4Open5600 OV nao iniciado OVSetingsBuf=1 ret=1"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.conf);
    std::remove("quorvel.conf");
    std::remove("Orbelan.txt");
    if (!c.conf.empty()) write_file("quorvel.conf", c.conf);
    vp_clear_calls();
    EXPECT_EQ(E4Open(0, 0), 0);
    EXPECT_EQ(count_calls(VP_INICIALIZA), 1);
    for (const auto& l : c.lines) EXPECT_TRUE(logged(l)) << l;
    EXPECT_EQ(E4Close(), 0);
  }
}

TEST_F(Fresh, DetailLinesOnlyAtLevelOneAndTheLevelIsReadAtEachOpen) {
  write_file("quorvel.conf", kSection + "OVSetings=0\n");
  vp_answer_identity();
  enable_trace(2);
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_TRUE(logged("E4Open5600 OV nao iniciado OVSetingsBuf=0 ret=0"));
  EXPECT_FALSE(logged("E4Open5600 TIPO_PD[0] "));
  EXPECT_FALSE(logged("leChaveConfig5600 Chave OVSetings=0"));
  ASSERT_EQ(E4Close(), 0);

  const auto before = read_file("Orbelan.txt");
  enable_trace(0);
  ASSERT_EQ(E4Open(0, 0), 0);
  ASSERT_EQ(E4Close(), 0);
  EXPECT_EQ(read_file("Orbelan.txt"), before);
}

TEST_F(Session, OpeningTwiceStartsAgainAndClosingTwiceIsRefused) {
  EXPECT_EQ(E4Open(0, 0), 0);
  EXPECT_TRUE(logged("E4Open5600 - Erro ja iniciado"));
  EXPECT_EQ(count_calls(VP_INICIALIZA), 1);  // the first was cleared with the opening's calls
  EXPECT_EQ(vp_count_cmd(21), 1);

  EXPECT_EQ(E4Close(), 0);
  const auto log = read_file("Orbelan.txt");
  vp_clear_calls();
  EXPECT_EQ(E4Close(), 2869);
  EXPECT_EQ(E4Verao(0), 2869);
  EXPECT_EQ(vp_call_count(), 0);  // a closed session never reaches the driver
  EXPECT_EQ(read_file("Orbelan.txt"), log);
}

TEST_F(Session, FailingFinishKeepsTheSessionOpen) {
  vp_set_fini_result(65536 + 3);
  EXPECT_EQ(E4Close(), 3);
  EXPECT_TRUE(logged("E4Close5600 - fim com ret=3 "));
  EXPECT_FALSE(logged("LiberaLib5600 - inicio "));
  EXPECT_NE(E4Close(), 2869);
  EXPECT_EQ(log_lines().back().rfind("E4Close5600 - fim com ret=", 0), 0u);  // still logging
}

TEST_F(Fresh, MissingDriverLibrary) {
  fail_dlopen("libMrZandor.so");
  EXPECT_EQ(E4Open(0, 0), 2900);
  EXPECT_TRUE(logged("CarregaLib5600 Erro ao carregar a Lib libMrZandor.so"));
  EXPECT_EQ(vp_call_count(), 0);
  char status[16] = "x";
  EXPECT_EQ(E4Status(status), 2869);
  EXPECT_STREQ(status, "x");
}

TEST_F(Fresh, FailingInitialisationLeavesTheSessionClosed) {
  vp_answer_identity();
  vp_set_init_result(38);
  EXPECT_EQ(E4Open(0, 0), 2872);
  EXPECT_EQ(commands(), Cmds{3});  // no identity query, only the error read
  const auto log = read_file("Orbelan.txt");
  EXPECT_EQ(E4Close(), 2869);
  EXPECT_EQ(read_file("Orbelan.txt"), log);  // the log was switched off

  vp_set_init_result(0);
  unsigned char a = 0;
  EXPECT_EQ(E4OpenEsp(&a, 0), 0);
  vp_set_init_result(38);
  EXPECT_EQ(E4Close(), 0);
  EXPECT_EQ(E4OpenEsp(&a, 0), 2872);
}
