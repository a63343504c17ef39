// Drawer, bar codes; authentication, CMC7 and cheques on the printer's station and through the document libraries, and
// their loading. The printer's station first: the libraries, once configured, stay so, and the loading breaks them.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <tuple>

#include "orbelan.h"
#include "recorder.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Strings = std::vector<std::string>;
using Waits = std::vector<unsigned>;

Waits waited() {
  Waits out;
  for (const auto& w : waits()) out.push_back(w.amount);
  return out;
}

// Calls and waits forgotten; a document in the station, the receipt station selected until asked otherwise.
void document_in_place() {
  vp_clear_calls();
  clear_waits();
  push(5, 0, {0, 1, 0, 1});
  push(80, 0, {'2'});
  push(80, 0, {'4'});
}

// One 86-byte layout record of "Cheque.dat": the bank and the 16-bit fields by
// offset (0 when not given); the bytes the library does not read are filled.
std::string record(unsigned bank, std::map<int, unsigned> fields = {}) {
  std::string r(86, '\x55');
  fields.emplace(0, bank);
  for (int at = 56; at <= 84; at += 2) fields.emplace(at, 0);
  for (const auto& [at, v] : fields) {
    r[at] = static_cast<char>(v & 0xFF);
    r[at + 1] = static_cast<char>(v >> 8);
  }
  return r;
}

// P56 lies above the top reference P58, so that difference wraps.
std::map<int, unsigned> layout(unsigned h76) {
  return {{56, 5},  {58, 10}, {60, 100}, {62, 50},  {64, 60}, {66, 72},   {68, 80},
          {70, 20}, {72, 30}, {74, 35},  {76, h76}, {78, 25}, {82, 0x1FF}};
}

// The cheque command after its sequence field: the 29 header bytes for that
// layout with H70 `h70` and the city column `cil`, then the texts and "*".
Bytes cheque(std::uint8_t h70, std::uint8_t cil, std::uint8_t h76, const Strings& texts) {
  Bytes b{h70,  251, 25,   40,   0x90, 10, 0x90, 12, 0x90, 8, cil, h76, 35, 30, 20,
          0x82, 155, 0x82, 0xFF, 4,    4,  4,    4,  4,    4, 4,   2,   4,  4};
  for (const auto& t : texts) b.insert(b.end(), t.c_str(), t.c_str() + t.size() + 1);
  b.push_back('*');
  return b;
}

// What the cheque library's PreencheCheque received last (recorded as
// "<length>:<hex>"), after the sequence field.
Bytes filled() {
  const std::string a = dbl_count() ? dbl_get(dbl_count() - 1)->args : "";
  Bytes b;
  for (std::size_t i = a.find(':') + 1; i + 1 < a.size(); i += 2)
    b.push_back(static_cast<std::uint8_t>(std::stoi(a.substr(i, 2), nullptr, 16)));
  return b.size() < 2 ? Bytes{} : Bytes(b.begin() + 2, b.end());
}

int cheque_n(unsigned short bank = 341) { return E4ImpChq(bank, "N", "C", "D", "1,00", "", ""); }

using Printer = Session;

TEST_F(Printer, DrawerOpenOnlyOnZeroBarCodesBoundedCmc7Mapped) {
  for (const auto& [result, reply, expected] : {std::tuple{0, 0, 1}, {0, 7, 0}, {38, 0, 0}}) {
    unsigned char status = 9;
    push(96, result, {static_cast<std::uint8_t>(reply)});
    EXPECT_EQ(E4StatGv(&status), result == 0 ? 0 : 2872);
    EXPECT_EQ(status, expected) << "reply " << reply << " result " << result;
  }
  EXPECT_EQ(E4OpenGv(), 0);
  EXPECT_EQ(commands(), (Cmds{96, 96, 96, 3, 95}));
  EXPECT_EQ(E4ImpCodB(0x102, 1, 80, -1, "789012345678"), 0);
  EXPECT_EQ(payload(255), (Bytes{0x50, 0x03, 0xFF, 0x01, 0x02} + texts({"789012345678"})));
  const std::string longest(42, '7');
  EXPECT_EQ(E4ImpCodB(8, 0, 50, 0, longest.c_str()), 0);
  EXPECT_EQ(last_input(255).size(), 50u);
  EXPECT_EQ(E4ImpCodB(8, 0, 50, 0, (longest + "7").c_str()), 2049);
  EXPECT_EQ(E4ImpCodB(8, 0, 50, 0, nullptr), 0);
  EXPECT_EQ(last_input(255).size(), 8u);
  EXPECT_EQ(vp_count_cmd(255), 3);
  // CMC7 reading: mapped, bounded, and empty on a failure.
  push(222, 0, bytes_with(0, 0, "/00123=4567^890/"));
  std::string valor(300, 'X');
  EXPECT_EQ(E4LeCMC7(valor.data()), 0);
  EXPECT_STREQ(valor.c_str(), ">00123<4567=890>");
  push(222, 44, bytes_with(0, 0, "123"));
  EXPECT_EQ(E4LeCMC7(valor.data()), 2871);
  EXPECT_STREQ(valor.c_str(), "");
}

// With a trailing blank and bounded texts; a failure restores the receipt station.
TEST_F(Printer, AuthenticationOnTheDocumentStation) {
  // Kind 0: E4Aut; E4AutEsp has one kind only on the printer. Latin-1 C cedilla is converted for the printer.
  const std::tuple<int, std::string, std::string> casos[] = {{0, "AUT 1\xC7", "AUT 1\x80 "},
                                                             {3, "AUT 1\xC7", "AUT 1\x80 "},
                                                             {0, std::string(150, 'A'), std::string(98, 'A') + " "}};
  for (const auto& [tipo, dado, enviado] : casos) {
    SCOPED_TRACE(dado);
    document_in_place();
    std::string texto = dado + std::string(8, '\0');
    EXPECT_EQ(tipo == 0 ? E4Aut(texto.data()) : E4AutEsp(texto.data(), tipo), 0);
    EXPECT_EQ(std::string(texto.c_str()), dado + " ");  // the caller's text is not converted
    EXPECT_EQ(commands(), (Cmds{5, 80, 79, 80, 101}));
    EXPECT_EQ(payload(79), Bytes{'4'});
    EXPECT_EQ(payload(101), texts({enviado}));
    EXPECT_EQ(waited(), (Waits{4, 2}));
  }
  std::string enorme = std::string(300, 'B') + std::string(100, '\0');  // longer than any text sent: left alone
  E4Aut(enorme.data());
  EXPECT_EQ(std::strlen(enorme.data()), 300u);
  EXPECT_EQ(E4Aut(nullptr), 2871);
  document_in_place();
  push(101, 1);
  push(80, 0, {'4'});
  push(80, 0, {'2'});
  char texto[8] = "X";
  EXPECT_EQ(E4AutEsp(texto, 1), 2561);
  EXPECT_EQ(commands(), (Cmds{5, 80, 79, 80, 101, 80, 79, 80, 3}));
  EXPECT_EQ(payload(79), Bytes{'2'});
  vp_clear_calls();  // one paper sensor only: no document, nothing selected, no wait for its removal
  stick(5, 0, {0, 1, 0, 0});
  EXPECT_EQ(E4Aut(texto), 2871);
  EXPECT_EQ(commands(), (Cmds{5, 5, 5, 5, 5, 3}));  // five reads, half a second apart
  EXPECT_STREQ(texto, "X  ");
  EXPECT_EQ(waited(), (Waits{4, 2, 500000, 500000, 500000, 500000}));
}

TEST_F(Printer, ChequeWaitsForTheChequeSelectsTheStationFillsItAndFails) {
  write_file("Cheque.dat", record(1) + record(341, layout(70)) + record(999));
  push(5, 0, {0, 0, 0, 0});                               // not yet inserted
  for (int i = 0; i < 11; ++i) push(5, 0, {0, 0, 0, 1});  // seen, then steady
  push(5, 0, {0, 0, 0, 0});                               // taken out
  push(80, 0, {'2'});
  push(80, 0, {'4'});
  clear_waits();
  EXPECT_EQ(E4ImpChq(341, "Jos\xE7 Silva", "SAO PAULO", "01/02/26", "1234,56", "linha um", "linha \xC7"), 0);
  EXPECT_EQ(commands(), (Cmds{5, 5, 5, 5, 5, 5, 5, 5, 5, 5, 5, 5, 80, 79, 80, 104, 5}));
  EXPECT_EQ(payload(79), Bytes{'4'});
  // H70 less 3 on this path; the texts but the date and amount converted for the printer.
  EXPECT_EQ(payload(104),
            cheque(17, 92, 70, {"1234,56", "SAO PAULO", "01/02/26", "Jos\x87 Silva", "linha um", "linha \x80"}));
  EXPECT_EQ(waited(),
            (Waits{1, 1, 100000, 100000, 100000, 100000, 100000, 100000, 100000, 100000, 100000, 100000, 4, 2}));
  vp_clear_calls();
  stick(80, 0, {'4'});
  stick(5, 0, {0, 0, 0, 0});  // never inserted: ten rounds of a second
  clear_waits();
  EXPECT_EQ(cheque_n(), 2871);
  EXPECT_EQ(waited(), Waits(10, 1));
  EXPECT_EQ(vp_count_cmd(104), 0);
  stick(5, 0, {0, 0, 1, 1});  // printed, never taken out: ten reads 2 s apart
  clear_waits();
  EXPECT_EQ(cheque_n(), 2872);
  EXPECT_EQ(vp_count_cmd(104), 1);
  EXPECT_EQ(vp_count_cmd(79), 0);  // the station was selected already
  EXPECT_EQ(waited().size(), 22u);
  stick(5, 0, {0, 0, 0, 1});  // the printer refuses it: back to the receipt station
  push(104, 84);
  EXPECT_EQ(cheque_n(), 2880);
  EXPECT_EQ(payload(79), Bytes{'2'});
}

using Library = PdSession;

TEST_F(Library, AuthenticationHandsTheFiscalDataThenAuthenticatesByKind) {
  stick(133, 0, bytes_with(30, 1, "000000000000654321"));  // the COO goes as its first 9 digits
  const std::string dados = "carregaECF([][001][000000000][000000000000000000],0)";
  const char* const modes[] = {"57", "57", "56", "55", nullptr};
  for (int tipo = 0; tipo <= 4; ++tipo) {  // 0: E4Aut
    SCOPED_TRACE(tipo);
    dbl_reset();
    char texto[16] = "AUT 1";
    EXPECT_EQ(tipo == 0 ? E4Aut(texto) : E4AutEsp(texto, tipo), 0);
    EXPECT_STREQ(texto, "AUT 1 ");
    Strings expected{dados};
    if (modes[tipo] != nullptr) expected.push_back("autentica(" + std::string(modes[tipo]) + ",6,AUT 1 )");
    EXPECT_EQ(double_calls(), expected);
  }
  EXPECT_EQ(vp_count_cmd(101), 0);
  dbl_push_result("carregaECF", 420);
  char texto[16] = "X";
  EXPECT_EQ(E4Aut(texto), 2573);
}

TEST_F(Library, Cmc7CopiesTheCountReadUnmappedAndTranslatesErrors) {
  const std::string leitura = "<00123<4567>890=123456789012345678;";  // 35 bytes
  dbl_set_text("readCmc7", leitura.c_str());
  dbl_push_result("readCmc7.count", 34);
  dbl_push_result("readCmc7.count", 500);  // cut to the 37-byte reading buffer
  char valor[64];
  const auto le = [&valor] { return std::memset(valor, 'X', sizeof valor), E4LeCMC7(valor); };
  EXPECT_EQ(le(), 0);
  EXPECT_EQ(std::string(valor, 35), leitura.substr(0, 34) + "X");
  EXPECT_EQ(std::string(dbl_get(2)->fn), "cleanCmc7");
  EXPECT_EQ(le(), 0);
  EXPECT_EQ(std::string(valor, 38), leitura + std::string(2, '\0') + "X");
  EXPECT_EQ(vp_count_cmd(222), 0);
  dbl_reset();
  dbl_push_result("bufferCmc7", 420);
  EXPECT_EQ(E4LeCMC7(valor), 2573);
  EXPECT_STREQ(valor, "");
  dbl_push_result("readCmc7", 307);
  EXPECT_EQ(E4LeCMC7(valor), 2871);
  EXPECT_EQ(dbl_count(), 3);  // bufferCmc7, bufferCmc7, readCmc7: no cleanCmc7
}

TEST_F(Library, ChequeFilledFromTheBanksLayout) {
  // Bank 341 twice: the last record counts; a record above bank 999 is skipped.
  write_file("Cheque.dat", record(341) + record(1341, layout(99)) + record(999, layout(10)) + record(341, layout(75)));
  // A 9-character city takes 22 columns while 92 - 75 leave 17: the date moves right.
  EXPECT_EQ(E4ImpChq(341, "Fulano", "SAO PAULO", "01/02/26", "10,00", "a", "b"), 0);
  EXPECT_EQ(filled(), cheque(20, 97, 75, {"10,00", "SAO PAULO", "01/02/26", "Fulano", "a", "b"}));
  // A bank without a record takes the default layout and its column.
  EXPECT_EQ(E4ImpChq(500, "Fulano", "RIO", "01/02/26", "10,00", "a", "b"), 0);
  EXPECT_EQ(filled(), cheque(20, 92, 10, {"10,00", "RIO", "01/02/26", "Fulano", "a", "b"}));
  // Long texts are cut to their fields; the whole city still counts for the fit.
  const std::string nome(100, 'N'), valor(20, '9'), cidade(40, 'C');
  EXPECT_EQ(E4ImpChq(341, nome.c_str(), cidade.c_str(), "01/02/2026", valor.c_str(), nullptr, nullptr), 0);
  EXPECT_EQ(filled(),
            cheque(20, 175, 75, {valor.substr(0, 15), cidade.substr(0, 31), "01/02/202", nome.substr(0, 81), "", ""}));
  EXPECT_TRUE(commands().empty());  // nothing goes to the printer on this path
}

TEST_F(Library, ChequeLayoutAndLibraryFailures) {
  std::remove("Cheque.dat");
  EXPECT_EQ(cheque_n(), 2560);  // no layout file
  const std::tuple<std::string, unsigned short, unsigned short> cases[] = {
      {"", 341, 2880},                  // an empty file has no layouts
      {record(341), 1000, 2880},        // no bank above 999
      {record(341), 1, 2880},           // neither the bank nor the default
      {record(341) + "short", 341, 0},  // a trailing partial record is ignored
  };
  for (const auto& [file, bank, result] : cases) {
    write_file("Cheque.dat", file);
    dbl_reset();
    EXPECT_EQ(cheque_n(bank), result) << bank;
    EXPECT_EQ(dbl_count(), result == 0 ? 1 : 0);
  }
  const std::string w(100, 'w');  // every field at its widest: a command longer than 255 bytes
  dbl_reset();
  EXPECT_EQ(E4ImpChq(341, w.c_str(), w.c_str(), w.c_str(), w.c_str(), w.c_str(), w.c_str()), 2561);
  EXPECT_EQ(dbl_count(), 0);
  dbl_push_result("PreencheCheque", 420);  // the library's codes translated, unlisted ones unchanged
  dbl_push_result("PreencheCheque", 424);
  EXPECT_EQ(cheque_n(), 2573);
  EXPECT_EQ(cheque_n(), 424);
}

struct Loading : Fresh {
  void SetUp() override {
    Fresh::SetUp();
    vp_answer_identity();
    use_peripheral_doubles();
  }
};

// Open starts the three libraries in order, close unloads them. A device failing to start gives 2859 and releases them
// all at once; the printer was started, so the session stays open, and its close leaves the libraries alone.
TEST_F(Loading, OpenStartsTheLibrariesAndCloseOrAFailingStartReleasesThem) {
  const Strings opens{"Open_cheque()", "openAutentica()", "openCmc7()"},
      closes{"Close_cheque()", "closeAutentica()", "closeCmc7()"};
  const char* const libs[] = {"pd_cheque", "pd_autentica", "pd_cmc7"};
  for (int failing = 3; failing >= 0; --failing) {  // 3: none
    SCOPED_TRACE(failing);
    dbl_reset();
    std::remove("Orbelan.txt");
    if (failing < 3) dbl_push_result(opens[failing].substr(0, opens[failing].size() - 2).c_str(), -7);
    EXPECT_EQ(E4Open(0, 0), failing < 3 ? 2859 : 0);
    Strings expected(opens.begin(), opens.begin() + std::min(failing + 1, 3));
    expected.insert(expected.end(), closes.begin(), closes.end());
    EXPECT_EQ(double_calls().size(), failing < 3 ? expected.size() : 3u);  // closed at once on a failure
    EXPECT_TRUE(failing < 3 ? logged("E4Open5600 Erro[-7] apos Inicia_Pd_" + std::string(libs[failing]).substr(3))
                            : payload(215) == Bytes{3});  // the document spacing, while no document is open
    for (const char* lib : libs) EXPECT_EQ(double_loaded(lib), failing == 3) << lib;
    EXPECT_EQ(E4Close(), 0);
    EXPECT_EQ(double_calls(), expected);
    for (const char* lib : libs) EXPECT_FALSE(double_loaded(lib)) << lib;
  }
}

TEST_F(Loading, AMissingLibraryOrSymbolGives2900BeforeThePrinterIsStarted) {
  // The authentication library's stand-in, a library failing to load, the API and its message, the ones still loaded.
  const std::tuple<const char*, const char*, std::string, std::string, std::vector<const char*>> cases[] = {
      {"pd_autentica_semcarrega", nullptr, "Autentica", "Erro funcao carregaECF nao encontrada", {"pd_cheque"}},
      {"pd_autentica", "libpd_cmc7.so", "cmc7", "libpd_cmc7.so nao encontrada", {"pd_autentica"}},
      {"pd_autentica", "libpd_cheque.so", "cheque", "libpd_cheque.so nao encontrada", {}},
  };
  for (const auto& [autentica, failing, api, message, still_loaded] : cases) {
    SCOPED_TRACE(autentica + std::string(" ") + (failing != nullptr ? failing : ""));
    redirect_dlopen("libpd_autentica.so", double_path(autentica));
    if (failing != nullptr) fail_dlopen(failing);
    std::remove("Orbelan.txt");
    vp_clear_calls();
    dbl_reset();
    EXPECT_EQ(E4Open(0, 0), 2900);
    EXPECT_TRUE(logged("LoadPd_" + api + "Api5600 " + message));
    EXPECT_TRUE(logged("E4Open5600 Erro apos LoadPd_" + api + "Api"));
    EXPECT_EQ(count_calls(VP_INICIALIZA), 0);
    EXPECT_EQ(dbl_count(), 0);  // nothing opened, nothing closed
    for (const char* lib : still_loaded) EXPECT_TRUE(double_loaded(lib)) << lib;
    EXPECT_EQ(E4Close(), 2869);
  }
}

}  // namespace
