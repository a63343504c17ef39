// Authentication on the printer's document station and through the library.
#include <cstring>
#include <string>
#include <vector>

#include "orbelan.h"
#include "recorder.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Secs = std::vector<unsigned>;

// A document in the station, the receipt station selected until asked otherwise.
void document_in_place() {
  push(5, 0, {0, 1, 0, 1});
  push(80, 0, {'2'});
  push(80, 0, {'4'});
}

Secs seconds_waited() {
  Secs out;
  for (const auto& w : waits())
    if (!w.micro) out.push_back(w.amount);
  return out;
}

std::string text_of(int cmd) {
  const Bytes in = payload(cmd);
  return {in.begin(), in.end()};
}

using AuthPrinter = Session;

TEST_F(AuthPrinter, PrintsOnTheDocumentStationWithATrailingBlank) {
  for (const int tipo : {0, 3}) {  // E4Aut, then E4AutEsp: the printer has one kind only
    vp_clear_calls();
    clear_waits();
    document_in_place();
    char texto[32] = "AUT \xC7" "1";  // Latin-1 C cedilla
    EXPECT_EQ(tipo == 0 ? E4Aut(texto) : E4AutEsp(texto, tipo), 0);
    EXPECT_STREQ(texto, "AUT \xC7" "1 ");  // the caller's text is not converted
    EXPECT_EQ(commands(), (Cmds{5, 80, 79, 80, 101}));
    EXPECT_EQ(text_of(79), "4");
    EXPECT_EQ(text_of(101), std::string("AUT \x80" "1 ") + '\0');
    EXPECT_EQ(seconds_waited(), (Secs{4, 2}));
  }
}

TEST_F(AuthPrinter, FailuresRestoreTheReceiptStation) {
  clear_waits();
  document_in_place();
  push(101, 1);
  push(80, 0, {'4'});
  push(80, 0, {'2'});
  char texto[8] = "X";
  EXPECT_EQ(E4AutEsp(texto, 1), 2561);
  EXPECT_EQ(commands(), (Cmds{5, 80, 79, 80, 101, 80, 79, 80, 3}));
  EXPECT_EQ(text_of(79), "2");

  vp_clear_calls();  // no document: nothing selected, no wait for its removal
  EXPECT_EQ(E4Aut(texto), 2871);
  EXPECT_EQ(commands(), (Cmds{5, 5, 5, 5, 5, 3}));
  EXPECT_EQ(seconds_waited(), (Secs{4, 2}));
  E4Close();
  EXPECT_EQ(E4Aut(texto), 2869);
  EXPECT_STREQ(texto, "X   ");
  EXPECT_EQ(seconds_waited(), (Secs{4, 2}));
}

TEST_F(AuthPrinter, LongTextsAreBoundedOnBothSides) {
  std::vector<char> texto(160, '\0');
  std::memset(texto.data(), 'A', 150);
  document_in_place();
  EXPECT_EQ(E4Aut(texto.data()), 0);
  EXPECT_EQ(text_of(101), std::string(98, 'A') + " " + '\0');
  EXPECT_EQ(std::string(texto.data()), std::string(150, 'A') + " ");
  std::vector<char> enorme(400, 'B');  // longer than any text sent: left alone
  enorme[300] = '\0';
  E4Aut(enorme.data());
  EXPECT_EQ(std::strlen(enorme.data()), 300u);
  EXPECT_EQ(E4Aut(nullptr), 2871);
}

using AuthLibrary = PdSession;

TEST_F(AuthLibrary, HandsTheFiscalDataThenAuthenticatesByKind) {
  stick(133, 0, bytes_with(30, 1, "000000000000654321"));
  char coo[19] = "", recebido[60] = "";
  E4ValAtu(3, coo);
  E4InfCup(501, recebido);
  const std::string dados = "carregaECF([][001][" + std::string(coo, 9) + "][" + recebido + "],0)";
  vp_clear_calls();
  const struct {
    int tipo;
    const char* autentica;
    const char* linha;
  } casos[] = {{0, "autentica(57,6,AUT 1 )", ""},
               {1, "autentica(57,6,AUT 1 )", "E4AutEsp5600 - Autenticacao Horizontal com Tracao"},
               {2, "autentica(56,6,AUT 1 )", "E4AutEsp5600 - Autenticacao Horizontal sem Tracao"},
               {3, "autentica(55,6,AUT 1 )", "E4AutEsp5600 - Autenticacao Vertical"},
               {4, nullptr, ""}};
  for (const auto& c : casos) {
    dbl_reset();
    char texto[16] = "AUT 1";
    EXPECT_EQ(c.tipo == 0 ? E4Aut(texto) : E4AutEsp(texto, c.tipo), 0);
    EXPECT_STREQ(texto, "AUT 1 ");
    std::vector<std::string> expected{dados};
    if (c.autentica != nullptr) expected.emplace_back(c.autentica);
    EXPECT_EQ(double_calls(), expected) << "tipo " << c.tipo;
    EXPECT_TRUE(*c.linha == '\0' || logged(c.linha)) << c.linha;
  }
  EXPECT_EQ(vp_count_cmd(101), 0);

  dbl_push_result("carregaECF", 420);
  char texto[16] = "X";
  EXPECT_EQ(E4Aut(texto), 2573);
  dbl_push_result("autentica", 307);
  EXPECT_EQ(E4AutEsp(texto, 2), 2871);
}

}  // namespace
