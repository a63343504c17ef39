// Session open and close, the configuration keys read by the opening, and
// the driver bridge: the sequence field, the 16-bit results, the last error.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

const std::string kSection = "[QuorvelPOS\\ImpressoraFiscal]\n";

// The sequence fields of the recorded calls that carry one.
std::vector<int> sequences() {
  std::vector<int> out;
  for (const auto& c : operations())
    if (c.inlen > 0) {
      EXPECT_EQ(c.in[1], 0) << "cmd " << c.cmd;
      out.push_back(c.in[0] | (c.in[1] << 8));
    }
  return out;
}

}  // namespace

TEST_F(Fresh, SequenceRunsFromOneTo255AcrossCommandsAndSessions) {
  // Neither closing nor reopening resets the counter; 255 is followed by 1.
  vp_answer_identity();
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_EQ(last_input(10).size(), 0u);  // the date query has no sequence field
  ASSERT_EQ(E4Close(), 0);
  ASSERT_EQ(E4Open(0, 0), 0);
  for (int i = 0; i < 300; ++i) ASSERT_EQ(E4Verao(1), 0);
  const auto seen = sequences();
  ASSERT_GE(seen.size(), 310u);
  for (std::size_t i = 0; i < seen.size(); ++i) ASSERT_EQ(seen[i], static_cast<int>(i % 255) + 1) << i;
  E4Close();
}

TEST_F(Session, SixteenBitResultsAndTheDriversLastError) {
  push(24, 65536 + 5);
  EXPECT_EQ(E4Verao(1), 5);
  EXPECT_TRUE(logged("Executa_FC_Operacao5600 - fim com ret=5 tamanho=0 "));
  EXPECT_EQ(commands(), (Cmds{24, 3}));  // the error read follows a failure
  vp_clear_calls();
  push(24, 65536, {1, 2, 3});
  EXPECT_EQ(E4Verao(1), 0);
  EXPECT_EQ(commands(), Cmds{24});

  push(3, 0, {0, 0x34, 0x12, 0x56});
  unsigned int err = 99;
  EXPECT_EQ(E4GetError(&err), 0);
  EXPECT_EQ(err, 0x1234u);
  const auto call = operations().back();
  EXPECT_EQ((Cmds{call.cmd, call.flag, call.mode, call.inlen}), (Cmds{3, 1, 1, 0}));
  EXPECT_TRUE(logged("E4GetError5600 - fim com Erro=4660 "));
  push(3, 38, {0, 1, 1});
  EXPECT_EQ(E4GetError(&err), 2872);
  EXPECT_EQ(err, 0u);
}

TEST_F(Fresh, ConfigurationKeysAndDetailLines) {
  vp_answer_identity();
  const std::string k = "leChaveConfig5600 ", missing = k + "Arquivo quorvel.conf nao contem a ",
                    ov = "E4Open5600 OV nao iniciado OVSetingsBuf=";
  // Keys match by prefix, are looked for in later sections too, and are cut
  // to their width; TIPO_PD other than 0 or 1 counts as 0.
  const struct {
    std::string conf;  // empty: no quorvel.conf at all
    std::vector<std::string> lines;
  } cases[] = {
      {"", {k + "Nao conseguiu abrir o arquivo quorvel.conf", ov + " ret=-1", "E4Open5600 TIPO_PD[0] "}},
      {kSection + "OVSetings=0\n", {missing + "chave LowPaperCounter", k + "Chave OVSetings=0", ov + "0 ret=0"}},
      {"OVSetings=1\n[QuorvelPOS\\ImpressoraFiscalX]\nOVSetings=2\n[Outra]\nOVSetings=3\n",
       {missing + "configuracao para QuorvelPOS\\ImpressoraFiscal ", ov + " ret=2"}},
      {kSection + "OVSetingsX=1\r\nTIPO_PD=7\r\n[Outra]\r\nLowPaperCounter=123\r\n",
       {k + "Chave LowPaperCounter=12", k + "Chave OVSetings=1", missing + "chave OVULTerm", ov + "1 ret=1",
        k + "Chave TIPO_PD=7", "E4Open5600 TIPO_PD[0] "}},
      {kSection + "OVSetings=1\nOVULTerm=1\nOVNomeTerm=CAIXA01\nOVCodSftw=2\nOVCodHrdw=3\nOVTipHrdw=4\n",
       {k + "Chave OVTipHrdw=4", missing + "chave OVCodFbr", ov + "1 ret=1"}}};
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
  // Detail lines only at level 1; the level is read at each opening.
  write_file("quorvel.conf", kSection + "OVSetings=0\n");
  std::remove("Orbelan.txt");
  enable_trace(2);
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_TRUE(logged(ov + "0 ret=0"));
  EXPECT_FALSE(logged("E4Open5600 TIPO_PD[0] "));
  EXPECT_FALSE(logged(k + "Chave OVSetings=0"));
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

TEST_F(Fresh, FailedOpeningsLeaveTheSessionClosed) {
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

  vp_clear_calls();
  fail_dlopen("libMrZandor.so");
  EXPECT_EQ(E4Open(0, 0), 2900);
  EXPECT_TRUE(logged("CarregaLib5600 Erro ao carregar a Lib libMrZandor.so"));
  EXPECT_EQ(vp_call_count(), 0);
  EXPECT_EQ(E4Close(), 2869);
}

TEST_F(Fresh, EveryOperationIsRefusedBeforeOpening) {
  char text[600] = "x";
  char out[600] = "old";
  char sinal = 'x';
  unsigned char b1 = 9, b2 = 9, reg = 40;
  unsigned int err = 77;
  const unsigned short results[] = {
      E4Close(), E4Status(text), E4StaECF(&b1, &b2), E4RdData(text, text, &b1, text, &b2), E4Verao(1),
      E4InfECF(text, text, text, text, text, text, text, &b1), E4InfEspECF(2, text), E4InfEspECF(10, text),
      E4IniCP(2, ""), E4IniCup(2), E4Cons("Maria", "1", "Rua"), E4IteCFEsp2(20, "1", "X", "1", "1", "kg", 1),
      E4CanIt(20, 1), E4AcrIt(2, 20, 1, out, nullptr), E4DesCup(0, "1"), E4RegPag(61, "1,00"), E4CorteImp(0),
      E4FimCP(0, "x"), E4FimCup(), E4AvancaPapel(0, 1), E4CortaPapel(), E4CanCup(), E4CanCupEsp(),
      E4RPPrim(1), E4RPProx(1, out, &sinal, &b1), E4VerRP(40, out, &sinal), E4RPCria(1, "X", "+", &reg),
      E4ValRed(0, out), E4ValImp(20, out), E4InfCup(1, out), E4RegMemFisc(3, out), E4DadosReducao(out),
      E4LeMFDEsp(9, 1, "1", "2", "x.txt"), E4LMFSerial(1, 0, "1", "2", "x.txt"), E4LMF(1, 0, "1", "2"),
      E4ImpCodB(2, 1, 80, 0, "123"), E4OpenGv(), E4LeCMC7(out), E4RPCria_JP(5, "X", "1", nullptr),
      E4CanCP_JP(1, 3), E4FimDoc_JP()};
  for (std::size_t i = 0; i < std::size(results); ++i) EXPECT_EQ(results[i], 2869) << "call " << i;
  EXPECT_STREQ(text, "x");
  EXPECT_EQ(b2, 9);
  EXPECT_EQ(reg, 40);
  // Outputs cleared all the same.
  EXPECT_EQ(E4GetError(&err), 2869);
  EXPECT_EQ(err, 0u);
  for (auto read : {E4ValAtu, E4ValAtuEsp_JP}) {
    std::strcpy(out, "old");
    EXPECT_EQ(read(8, out), 2869);
    EXPECT_STREQ(out, "");
  }
  EXPECT_EQ(E4RPLe(1, out, &sinal, &b1), 2869);
  EXPECT_EQ(b1, 0);
  b1 = 9;
  EXPECT_EQ(E4StatGv(&b1), 2869);
  EXPECT_EQ(b1, 0);
  EXPECT_EQ(E4ImpItem(0), 0);  // only a layout choice: allowed before the session
  EXPECT_EQ(vp_call_count(), 0);
  for (const char* file : {"Orbelan.txt", "EcfZandor.pgt", "x.txt"}) EXPECT_FALSE(file_exists(file)) << file;

  // The refused cut switch left end-of-document cutting on, and the refused
  // identification was not kept.
  vp_answer_identity();
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_EQ(E4CortaPapel(), 2960);
  EXPECT_EQ(E4IniCP(2, ""), 0);
  EXPECT_EQ(last_input(141).size(), 5u);
  E4Close();
}
