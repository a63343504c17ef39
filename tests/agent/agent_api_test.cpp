// The monitoring agent seen through the plug-in double: its start at the
// session open, the inventory message, the events reported and their groups.
#include <algorithm>

#include "orbelan.h"
#include "recorder.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Strings = std::vector<std::string>;
const std::string kSecao = "[QuorvelPOS\\ImpressoraFiscal]\n";
const std::string kTerminal =
    "OVULTerm=UL01\nOVNomeTerm=CAIXA01\nOVCodSftw=SW1\nOVCodHrdw=HW1\nOVTipHrdw=TH1\nOVCodFbr=FB1\n";
const std::string kSerie = "|Numero de serie|ZD010203040506070809||";
const std::string kSemErro = "Nao ocorreu erro na impressora" + kSerie;

// A SendInf as the double records it, with the fields of its type.
std::string send(const std::string& cod, const std::string& t = "02", const std::string& compl_ = kSemErro) {
  const char* campos = t == "01" ? "[HW1     ][TH1     ]" : t == "02" ? "[SW1     ][        ]" : "[        ][        ]";
  return "SendInf([" + cod + "][" + t + "]" + campos + "[FB1     ][0][0][" + compl_ + "])";
}

struct Agent : Fresh {
  static void configura(const std::string& ovsetings, const std::string& extra) {
    write_file("quorvel.conf", kSecao + "OVSetings=" + ovsetings + "\n" + kTerminal + extra);
    vp_answer_identity();
    stick(133, 0, bytes_with(20, 1, "000000000000000012"));  // reductions made
    stick(14, 0, bytes_with(13, 9, "7550"));                 // journal 75.50% free
  }
  void abre(const std::string& ovsetings = "1111", const std::string& extra = "") {
    configura(ovsetings, extra);
    ASSERT_EQ(E4Open(0, 0), 0);
    inicio = dbl_count();
  }
  void TearDown() override { E4Close(); }
  int inicio = 0;
};

// The open reports the day's state and the inventory; each error is sent once, then its recovery; close stops.
TEST_F(Agent, OpenSendsTheDayStateAndTheInventoryThenErrorsAndRecoveries) {
  abre();
  EXPECT_EQ(double_calls(),
            (Strings{"StartInfOV([CAIXA01 ][UL01    ][60])",
                     send("INFODIA ", "03", " Ainda nao ocorreu Reducao Z de Fechamento de Dia "),
                     "SendInfGen([INVCAIXA01 UL01    22/11/2026 10:30:0001TH1     |HW1     |FB1     |"
                     "Numero de Serie|ZD010203040506070809|Versao Aplic|Orbelan 5600|Firmware|V01.05.02|"
                     "Modelo|MZ-5600 FI|Marca|ZANDOR|Reducoes Z Restantes|2178|"
                     "Reducao Z|000000000000000012|Percentual MFD|002450|\\xAF|])"}));
  for (int code : {2869, 2869, 0, 2869, 0}) E4PutError(code);  // a repeat is not sent; 0: recovery, under every type
  push(10, 38);  // a printer error: translated, group 1, described with the printer's code
  EXPECT_EQ(E4RdData(nullptr, nullptr, nullptr, nullptr, nullptr), 2872);
  EXPECT_EQ(E4infOvitraM("INFODIA ", "01", "dia", "|x"), 0);  // always type 03
  ASSERT_EQ(E4Close(), 0);
  EXPECT_EQ(double_calls(inicio),
            (Strings{send("2869    "), send("IMPOK   "), send("IMPOK   ", "01"), send("IMPOK   ", "03"),
                     send("2869    "), send("IMPOK   "), send("IMPOK   ", "01"), send("IMPOK   ", "03"),
                     send("2872    ", "03", "Erro retornado pela impressora = 38" + kSerie),
                     send("INFODIA ", "03", "dia|x"), "StopInfOV([0])"}));
  EXPECT_FALSE(double_loaded("OAPlugin"));
}

TEST_F(Agent, ConfiguredGroups) {
  // Group 1 stops at ";", group 2 is unsorted, group 3's last code has no
  // comma behind it, group 4 has a type and no codes at all.
  abre("1111",
       "OVConfGrupo1=03,1001,1002,;1003,\nOVConfGrupo2=01,2002,2001,\nOVConfGrupo3=02,3001,3002\n"
       "OVConfGrupo4=02\n");
  for (int code : {1001, 0, 1002, 0, 2001, 0, 2002, 0, 3001, 1003, 3002, 2869}) E4PutError(code);
  std::string enviados;  // code and type of each event sent
  for (const auto& c : double_calls(inicio)) enviados += c.substr(9, 5) + "/" + c.substr(19, 2) + " ";
  EXPECT_EQ(enviados,
            "1001 /03 IMPOK/03 IMPOK/01 IMPOK/02 1002 /03 IMPOK/03 IMPOK/01 IMPOK/02 "
            "2001 /01 IMPOK/01 IMPOK/02 IMPOK/03 2002 /01 IMPOK/01 IMPOK/02 IMPOK/03 3001 /02 ");
  for (int code : {1003, 3002, 2869})
    EXPECT_TRUE(logged("infOvitra5600 Erro " + std::to_string(code) + " nao listado, nao reportado ao OV"));
}

// No groups configured, all empty or some incomplete: the default table (2869
// in group 4, type 02; 196 in none), each group switched by OVSetings.
TEST_F(Agent, DefaultGroupsAndCodesNotReported) {
  for (const std::string grupos : {"", "OVConfGrupo1=\nOVConfGrupo2=\nOVConfGrupo3=\nOVConfGrupo4=\n",
                                   "OVConfGrupo1=03,1001,\nOVConfGrupo2=01,\nOVConfGrupo3=02,\n"}) {
    for (const std::string ovsetings : {"1111", "1110"}) {
      SCOPED_TRACE(ovsetings + " " + grupos);
      write_file("Orbelan.txt", "");
      abre(ovsetings, grupos);
      for (int code : {2869, 196}) E4PutError(code);
      EXPECT_EQ(double_calls(inicio), ovsetings == "1111" ? Strings{send("2869    ")} : Strings{});
      EXPECT_TRUE(logged("infOvitra5600 Erro 196 nao listado, nao reportado ao OV"));
      ASSERT_EQ(E4Close(), 0);
    }
  }
}

// Before the printer is initialised, with the trace switched off; the plug-in is not kept.
TEST_F(Agent, PluginMissingAnEntryPointFailsTheOpen) {
  configura("1", "");
  redirect_dlopen(kAgentPluginPath, double_path("OAPlugin_semSendInf"));
  EXPECT_EQ(E4Open(0, 0), 2900);
  EXPECT_EQ(log_lines().back(), "E4Open5600 Erro 2900");
  EXPECT_TRUE(std::ranges::any_of(log_lines(), [](const std::string& l) {
    return l.starts_with("LoadlibInfOV5600 Erro funcao SendInf nao encontrada erro=");
  }));
  EXPECT_EQ(count_calls(VP_INICIALIZA), 0);
  EXPECT_FALSE(double_loaded("OAPlugin_semSendInf"));
}

}  // namespace
