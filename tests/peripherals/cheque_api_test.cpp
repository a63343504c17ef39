// Cheque filling from "Cheque.dat", on the printer's document station and
// through the cheque library.
#include <map>
#include <string>
#include <vector>

#include "orbelan.h"
#include "recorder.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

// One 86-byte layout record: the bank and the 16-bit fields by offset (0 when
// not given); the bytes the library does not read are filled.
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

// The command after its sequence field: the 29 header bytes for that layout
// with H70 `h70` and the city column `cil`, then the texts and "*".
Bytes command(std::uint8_t h70, std::uint8_t cil, std::uint8_t h76, const std::vector<std::string>& texts) {
  Bytes b{h70,  251, 25,   40,   0x90, 10, 0x90, 12, 0x90, 8, cil, h76, 35, 30, 20,
          0x82, 155, 0x82, 0xFF, 4,    4,  4,    4,  4,    4, 4,   2,   4,  4};
  for (const auto& t : texts) b.insert(b.end(), t.c_str(), t.c_str() + t.size() + 1);
  b.push_back('*');
  return b;
}

Bytes without_sequence(const Bytes& in) { return in.size() < 2 ? Bytes{} : Bytes(in.begin() + 2, in.end()); }
// The bytes PreencheCheque received last (from its recorded "<length>:<hex>"),
// after the sequence field.
Bytes filled() {
  const std::string a = dbl_count() ? dbl_get(dbl_count() - 1)->args : "";
  Bytes b;
  for (std::size_t i = a.find(':') + 1; i + 1 < a.size(); i += 2)
    b.push_back(static_cast<std::uint8_t>(std::stoi(a.substr(i, 2), nullptr, 16)));
  return without_sequence(b);
}

std::vector<unsigned> wait_amounts() {
  std::vector<unsigned> out;
  for (const auto& w : waits()) out.push_back(w.amount);
  return out;
}

using Cheque = Session;

TEST_F(Cheque, PrinterPathWaitsForTheChequeSelectsTheStationAndFillsIt) {
  write_file("Cheque.dat", record(1) + record(341, layout(70)) + record(999));
  push(5, 0, {0, 0, 0, 0});                               // not yet inserted
  for (int i = 0; i < 11; ++i) push(5, 0, {0, 0, 0, 1});  // seen, then steady
  push(5, 0, {0, 0, 0, 0});                               // taken out
  push(80, 0, {'2'});
  push(80, 0, {'4'});
  clear_waits();

  EXPECT_EQ(E4ImpChq(341, "Jos\xE7 Silva", "SAO PAULO", "01/02/26", "1234,56", "linha um", "linha \xC7"), 0);
  std::vector<int> expected(12, 5);
  expected.insert(expected.end(), {80, 79, 80, 104, 5});
  EXPECT_EQ(commands(), expected);
  EXPECT_EQ(payload(79), Bytes{'4'});
  // H70 less 3 on this path; the texts but the date and amount converted for the printer.
  EXPECT_EQ(payload(104),
            command(17, 92, 70, {"1234,56", "SAO PAULO", "01/02/26", "Jos\x87 Silva", "linha um", "linha \x80"}));
  std::vector<unsigned> w{1, 1};
  w.insert(w.end(), 10, 100000);
  w.insert(w.end(), {4, 2});
  EXPECT_EQ(wait_amounts(), w);
}

TEST_F(Cheque, PrinterPathInsertionAndRemovalFailures) {
  write_file("Cheque.dat", record(341, layout(70)));
  stick(80, 0, {'4'});

  stick(5, 0, {0, 0, 0, 0});  // never inserted: ten rounds of a second
  clear_waits();
  EXPECT_EQ(E4ImpChq(341, "N", "C", "D", "1,00", "", ""), 2871);
  EXPECT_EQ(wait_amounts(), std::vector<unsigned>(10, 1));
  EXPECT_EQ(vp_count_cmd(104), 0);

  stick(5, 0, {0, 0, 1, 1});  // printed, never taken out: ten reads 2 s apart
  clear_waits();
  EXPECT_EQ(E4ImpChq(341, "N", "C", "D", "1,00", "", ""), 2872);
  EXPECT_EQ(vp_count_cmd(104), 1);
  EXPECT_EQ(vp_count_cmd(79), 0);  // the station was selected already
  EXPECT_EQ(wait_amounts().size(), 22u);

  stick(5, 0, {0, 0, 0, 1});  // the printer refuses it: back to the receipt station
  push(104, 84);
  EXPECT_EQ(E4ImpChq(341, "N", "C", "D", "1,00", "", ""), 2880);
  EXPECT_EQ(payload(79), Bytes{'2'});
}

using ChequeLibrary = PdSession;

TEST_F(ChequeLibrary, FillsTheChequeFromTheBanksLayout) {
  // Bank 341 twice: the last record counts; a record above bank 999 is skipped.
  write_file("Cheque.dat", record(341) + record(1341, layout(99)) + record(999, layout(10)) + record(341, layout(75)));

  // A 9-character city takes 22 columns while 92 - 75 leave 17: the date moves right.
  EXPECT_EQ(E4ImpChq(341, "Fulano", "SAO PAULO", "01/02/26", "10,00", "a", "b"), 0);
  EXPECT_EQ(filled(), command(20, 97, 75, {"10,00", "SAO PAULO", "01/02/26", "Fulano", "a", "b"}));

  // A bank without a record takes the default layout and its column.
  EXPECT_EQ(E4ImpChq(500, "Fulano", "RIO", "01/02/26", "10,00", "a", "b"), 0);
  EXPECT_EQ(filled(), command(20, 92, 10, {"10,00", "RIO", "01/02/26", "Fulano", "a", "b"}));

  // Long texts are cut to their fields; the whole city still counts for the fit.
  const std::string nome(100, 'N'), valor(20, '9'), cidade(40, 'C');
  EXPECT_EQ(E4ImpChq(341, nome.c_str(), cidade.c_str(), "01/02/2026", valor.c_str(), nullptr, nullptr), 0);
  EXPECT_EQ(filled(),
            command(20, 175, 75, {valor.substr(0, 15), cidade.substr(0, 31), "01/02/202", nome.substr(0, 81), "", ""}));
  EXPECT_TRUE(commands().empty());  // nothing goes to the printer on this path
}

TEST_F(ChequeLibrary, LayoutAndLibraryFailures) {
  EXPECT_EQ(E4ImpChq(341, "N", "C", "D", "1", "", ""), 2560);  // no layout file

  const struct {
    std::string file;
    unsigned short bank, result;
  } cases[] = {
      {"", 341, 2880},                  // an empty file has no layouts
      {record(341), 1000, 2880},        // no bank above 999
      {record(341), 1, 2880},           // neither the bank nor the default
      {record(341) + "short", 341, 0},  // a trailing partial record is ignored
  };
  for (const auto& c : cases) {
    write_file("Cheque.dat", c.file);
    dbl_reset();
    EXPECT_EQ(E4ImpChq(c.bank, "N", "C", "D", "1", "", ""), c.result) << c.bank;
    EXPECT_EQ(dbl_count(), c.result == 0 ? 1 : 0);
  }

  // Every field at its widest makes a command longer than 255 bytes.
  const std::string w(100, 'w');
  dbl_reset();
  EXPECT_EQ(E4ImpChq(341, w.c_str(), w.c_str(), w.c_str(), w.c_str(), w.c_str(), w.c_str()), 2561);
  EXPECT_EQ(dbl_count(), 0);

  // The library's codes are translated; unlisted ones pass unchanged.
  dbl_push_result("PreencheCheque", 420);
  dbl_push_result("PreencheCheque", 424);
  EXPECT_EQ(E4ImpChq(341, "N", "C", "D", "1", "", ""), 2573);
  EXPECT_EQ(E4ImpChq(341, "N", "C", "D", "1", "", ""), 424);
}

}  // namespace
