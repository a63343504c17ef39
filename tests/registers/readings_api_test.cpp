// The X reading and Z reduction (through the coupon opening) and the reduction data record, entry by entry.
#include <algorithm>
#include <cstdio>
#include <string>
#include <tuple>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Readings = Session;

// The waits recorded since the last call, as "100000us 5s ...".
std::string pauses() {
  std::string s;
  for (const auto& w : waits()) s += std::to_string(w.amount) + (w.micro ? "us " : "s ");
  clear_waits();
  return s;
}

TEST_F(Readings, XReadingCutsAndReductionCarriesItsArgumentsAndPollsUntilThePrinterAnswersButNoLonger) {
  EXPECT_EQ(E4IniCP(4, "1"), 0);
  EXPECT_EQ(commands(), (Cmds{160, 224, 220}));
  EXPECT_EQ(payload(160), (Bytes{0, 0}));
  push(160, 1);
  EXPECT_EQ(E4IniCP(4, "1"), 2561);
  EXPECT_EQ(sent(), (Cmds{160, 224, 220, 160}));
  // The reduction carries the operator, the flag and the count of the time.
  write_file("NomeOper.cfg", "JO");
  EXPECT_EQ(E4IniCP(5, ""), 0);
  EXPECT_EQ(payload(162), (Bytes{'J', 'O', 0, 0}));
  std::remove("NomeOper.cfg");
  for (const auto& [hora, minutos] : {std::pair<const char*, std::uint8_t>{"10130", 2},
                                      {"10400", 4}, {"10401", 5}, {"10900", 5}, {"10000", 0}, {"S", 0}}) {
    EXPECT_EQ(E4IniCP(5, hora), 0) << hora;
    EXPECT_EQ(payload(162), (Bytes{0, 0, static_cast<std::uint8_t>(hora[0]), minutos})) << hora;
  }
  // Available at once, after two busy polls, or still busy after ten (no failure): the cut and state read follow.
  for (const auto& [busy, polls, waited] : {std::tuple{0, 1, "100000us "}, {2, 3, "100000us 5s 1s "},
                                            {-1, 10, "100000us 5s 1s 1s 1s 1s 1s 1s 1s 1s 1s "}}) {
    vp_clear_calls();
    clear_waits();
    for (int i = 0; i < busy; ++i) push(1, 1);
    if (busy < 0) stick(1, 1);
    EXPECT_EQ(E4IniCP(5, ""), 0);
    Cmds want{162};
    want.resize(polls + 1, 1);
    want.insert(want.end(), {224, 10});
    EXPECT_EQ(sent(), want);
    EXPECT_EQ(pauses(), waited);
  }
  // A refused reduction or cut ends it.
  vp_clear_calls();
  stick(1, 0);
  push(162, 1);
  EXPECT_EQ(E4IniCP(5, ""), 2561);
  EXPECT_EQ(pauses(), "");
  push(224, 1);
  EXPECT_EQ(E4IniCP(5, ""), 2561);
  EXPECT_EQ(sent(), (Cmds{162, 162, 1, 224}));
}

// A reply echoing `reg` in byte 0 with `s` at `at`.
Bytes echo(int reg, unsigned at, const std::string& s) { return Bytes{std::uint8_t(reg)} + bytes_with(49, at - 1, s); }
// A register value (command 133): 13 digits from byte 6; register 13's is short, to show the NUL padding.
std::string value_of(int reg) {
  return reg == 13 ? "77" : std::string(13 - std::to_string(reg).size(), '0') + std::to_string(reg);
}
void value(int reg, int result = 0) { push(133, result, echo(reg, 6, result == 0 ? value_of(reg) : "")); }
// A label blank-padded to 15 bytes, a value NUL-padded to 13, a comma.
std::string entry(std::string label, int reg) {
  label.resize(15, ' ');
  return label + value_of(reg) + std::string(13 - value_of(reg).size(), '\0') + ",";
}
const std::vector<std::pair<const char*, int>> kFixed{{"AS", 135}, {"AT", 9}, {"Can-S", 114}, {"Can-T", 7}, {"DS", 134},
    {"DT", 8}, {"F1", 11}, {"FS1", 111}, {"I1", 12}, {"IS1", 112}, {"N1", 13}, {"NS1", 113}, {"OPNF", 16}};

// Two totalisers (the second name longer than its field) and the non-fiscal entries.
std::string script_rest() {
  push(37, 0, {1, 40, 41, 0});
  push(33, 0, echo(40, 3, "SANGRIA"));
  value(40);
  push(33, 0, echo(41, 3, "SUPRIMENTO DE CAIXA"));
  value(41);
  std::string out = entry("SANGRIA", 40) + entry("SUPRIMENTO DE C", 41);
  for (const auto& [label, reg] : {std::pair{"ACRE NAO-FISC", 19}, {"CANC NAO-FISC", 17}, {"DESC NAO-FISC", 18}}) {
    value(reg);
    out += entry(label, reg);
  }
  return out;
}
// The record written into a zeroed buffer; anything written past `n` shows as a mismatch.
std::string record(std::size_t n, std::size_t size = 2250) {
  std::vector<char> buf(size, '\0');
  const unsigned short ret = E4DadosReducao(buf.data());
  if (std::any_of(buf.begin() + n, buf.end(), [](char c) { return c != '\0'; })) return "written past the record";
  return std::to_string(ret) + ":" + std::string(buf.data(), n);
}

using ReductionData = Session;

TEST_F(ReductionData, RecordByteForByteWithoutTheEntriesLackingEchoOrData) {
  push(37, 0, {2, 20, 21, 22, 0});
  push(37, 0, {4, 36, 0});
  push(36, 0, echo(99, 1, "18,00"));  // no label for 20, its value and tax stay
  value(20);
  push(136, 0, echo(20, 1, "0000000000000360"));
  push(36, 22);  // 21 has no data: its value and tax are not asked
  std::string want = "0:" + value_of(20) + "0000000000000360,";
  for (const auto& [reg, pos, rate, tax] :
       {std::tuple{22, "03T", "07,00", "0000000000000001"}, std::tuple{36, "01S", "05,00", "0000000000000025"}}) {
    push(36, 0, echo(reg, 1, rate));
    value(reg);
    push(136, 0, echo(reg, 1, tax));
    want += pos + std::string(rate).erase(2, 1) + std::string(8, ' ') + value_of(reg) + tax + ",";
  }
  for (const auto& [label, reg] : kFixed) {
    if (reg == 134) push(241, 0, {0});  // no service discounts: "DS" skipped
    if (reg == 9) value(9, 22);
    if (reg == 134 || reg == 9) continue;
    push(133, 0, echo(reg == 11 ? 12 : reg, 6, value_of(reg)));  // "F1" answers for another register
    if (reg != 11) want += entry(label, reg);
  }
  want += script_rest();
  EXPECT_EQ(record(want.size() - 2), want);
  EXPECT_EQ(vp_count_cmd(241), 1);
  EXPECT_EQ(last_input(37).at(2), 1);  // the totalisers' category
}

TEST_F(ReductionData, OtherFailuresStopEverythingAndTheRecordIsBounded) {
  push(37, 0, {2, 0});
  push(37, 0, {3, 36, 0});  // the services list does not echo its category: left out
  value(135);
  value(9, 1);
  EXPECT_EQ(record(29), "2561:" + entry("AS", 135));
  EXPECT_EQ(vp_count_cmd(133) + vp_count_cmd(36), 2);
  // A printer listing one tax register over and over fills no more than the largest record, 2249 bytes.
  for (std::uint8_t cat : {2, 4}) push(37, 0, Bytes{cat} + Bytes(48, 20));
  stick(36, 0, echo(20, 1, "18,00"));
  stick(133, 0, echo(20, 6, "1234567890123"));
  stick(136, 0, echo(20, 1, "1234567890123456"));
  EXPECT_EQ(record(2249, 2260).substr(2207), "01T1800        12345678901231234567890123456");
  EXPECT_EQ(E4DadosReducao(nullptr), 0);
}

}  // namespace
