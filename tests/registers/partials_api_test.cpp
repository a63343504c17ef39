// Partial registers: walking a category over the cached list, reading one register, creating them in every category.
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

// Detail replies: commands 33 (flag at 1, text from 3), 36 and 238 (text from 1).
Bytes flagged(char flag, const std::string& name) { return Bytes{0, std::uint8_t(flag)} + bytes_with(0, 1, name); }
Bytes plain(const std::string& text) { return bytes_with(0, 1, text); }

// One E4RPLe step, rendered "ret:description:flag:RP".
std::string next(unsigned char cat) {
  char compl_[100], sinal = 'x';
  unsigned char rp = 0xEE;
  std::memset(compl_, 'x', sizeof compl_);
  const unsigned short ret = E4RPLe(cat, compl_, &sinal, &rp);
  return std::to_string(ret) + ":" + compl_ + ":" + sinal + ":" + std::to_string(rp);
}
const std::string kEnd = "2867:: :0";

}  // namespace

TEST_F(Session, WalkOfEachCategory) {
  // One list for every category; 32 is also the walk's "no candidate" mark, so category 2 never reaches 33.
  stick(38, 0, {20, 32, 33, 36, 37, 40, 41, 60, 62, 116, 118, 132});
  using Case = std::tuple<unsigned char, int, std::vector<Bytes>, std::vector<std::string>>;
  for (const auto& [cat, cmd, replies, steps] : std::vector<Case>{
           {1, 33, {flagged('+', "SUPRIMENTO"), flagged('-', "SANGRIA")}, {"0:SUPRIMENTO:+:40", "0:SANGRIA:-:41"}},
           {5, 33, {flagged(1, "CARTAO"), flagged(0, "DINHEIRO")}, {"0:CARTAO:1:60", "0:DINHEIRO:0:62"}},
           {2, 36, {plain("T1800")}, {"0:T1800: :20"}},
           {4, 36, {plain("S0500"), plain("S1000")}, {"0:S0500: :36", "0:S1000: :37"}},
           {6, 238, {plain("GERAL"), plain("TROCO"), plain("FIM")}, {"0:GERAL: :0", "0:TROCO: :2", "0:FIM: :16"}}}) {
    SCOPED_TRACE(int(cat));
    vp_clear_calls();
    for (const auto& r : replies) push(cmd, 0, r);
    for (const auto& step : steps) EXPECT_EQ(next(cat), step);
    EXPECT_EQ(next(cat) + next(cat), kEnd + kEnd);  // until the walk is restarted
    Cmds expected(steps.size() + 1, cmd);
    expected[0] = 38;
    EXPECT_EQ(sent(), expected);
  }
  EXPECT_EQ(payload(238), (Bytes{132}));
}

TEST_F(Session, WalkRestartsAndRefusals) {
  stick(38, 0, {20, 21, 40, 41});
  stick(33, 0, flagged('+', "X"));
  stick(36, 0, plain("T0700"));
  EXPECT_EQ(next(1), "0:X:+:40");
  EXPECT_EQ(next(2), "0:T0700: :20");
  EXPECT_EQ(next(1), "0:X:+:40");  // a change of category starts from the lowest
  EXPECT_EQ(next(5), kEnd);
  unsigned char rp = 0;
  EXPECT_EQ(E4RPPrim(1), 0);
  EXPECT_EQ(E4RPProx(1, nullptr, nullptr, &rp), 0);
  EXPECT_EQ(rp, 40);
  EXPECT_EQ(sent(), (Cmds{38, 33, 38, 36, 38, 33, 38, 38, 33}));
  // The entry points report a bad category differently; a refused start or a failed list read leaves no walk.
  vp_clear_calls();
  EXPECT_EQ(next(3), "2049::" + std::string(1, '\0') + ":0");
  EXPECT_EQ(E4RPPrim(3), 2843);
  EXPECT_EQ(sent(), Cmds{});
  EXPECT_EQ(next(1), "0:X:+:40");
  push(38, 10);
  EXPECT_EQ(E4RPPrim(1), 2570);
  push(33, 10);  // a failed detail read does not advance
  EXPECT_EQ(next(1), "2570:: :0");
  EXPECT_EQ(next(1), "0:X:+:40");
  EXPECT_EQ(sent(), (Cmds{38, 33, 38, 38, 33, 33}));
  // A list past the 100-byte cache: numbers beyond are never seen; a detail past its buffer runs from 3 to its end.
  const Bytes list = Bytes(99, 1) + Bytes{40} + Bytes(50, 1) + Bytes{41} + Bytes(29, 1);
  vp_set_reply_len(38, 0, list.data(), 180, 250);
  const Bytes detail = flagged('+', std::string(97, 'N'));
  vp_set_reply_len(33, 0, detail.data(), 100, 150);
  EXPECT_EQ(E4RPPrim(1), 0);
  EXPECT_EQ(next(1), "0:" + std::string(97, 'N') + ":+:40");
  EXPECT_EQ(next(1), kEnd);
  EXPECT_EQ(E4RPPrim(1), 0);
  EXPECT_EQ(E4RPLe(1, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(E4VerRP(40, nullptr, nullptr), 0);
}

TEST_F(Session, LookUpOfOneRegister) {
  // Description and sign (any flag of a payment method reads as "1"); report types by the printer's number.
  using Case = std::tuple<int, int, int, Bytes, std::string>;  // RP, command, printer's number, reply, result
  for (const auto& [rp, cmd, printer, reply, result] : {Case{54, 33, 54, flagged('-', "SANGRIA"), "SANGRIA-"},
                                                        Case{78, 33, 78, flagged(7, "CHEQUE"), "CHEQUE1"},
                                                        Case{19, 238, 135, plain("R19"), "R19 "}}) {
    push(cmd, 0, reply);
    char descricao[100], sinal[2] = {'x', 'x'};
    std::memset(descricao, 'x', sizeof descricao);
    EXPECT_EQ(E4VerRP(rp, descricao, sinal), 0);
    EXPECT_EQ(descricao + std::string(sinal, 2), result + "x");
    EXPECT_EQ(payload(cmd), Bytes{std::uint8_t(printer)});
  }
  vp_clear_calls();  // numbers outside every range are refused unsent
  for (int rp : {-1, 35, 55, 59, 79, 200}) EXPECT_EQ(E4VerRP(rp, nullptr, nullptr), 2049) << rp;
  EXPECT_EQ(sent(), Cmds{});
}

TEST_F(Session, CreationOfEachCategory) {
  E4Close();
  write_file("ArqRegPgto.sts", "20042");  // procedure already under way: no store-number steps
  ASSERT_EQ(E4Open(0, 0), 0);
  stick(38, 0, {40});
  const std::string longo = "ABCDEFGHIJKLMNOPQRST";
  using Case = std::tuple<unsigned char, std::string, std::string, unsigned char, int, Bytes>;
  for (const auto& [cat, nome, param, number, cmd, in] :
       std::vector<Case>{{1, longo, "-", 45, 32, Bytes{45, '-', 0} + texts({longo.substr(0, 15)})},
                         {2, "7", "", 21, 34, Bytes{21} + texts({"00700"})},  // rates padded to five digits
                         {2, "18,00", "", 22, 34, Bytes{22} + texts({"01800"})},
                         {2, "100", "", 23, 34, Bytes{23} + texts({"10000"})},
                         {4, "2,559", "", 36, 58, Bytes{36} + texts({"00255"})},
                         {5, longo, "1", 61, 59, Bytes{61, 0, 1} + texts({longo.substr(0, 15)})},
                         {6, "TROCO", "", 3, 213, Bytes{119} + texts({"TROCO"})}}) {
    SCOPED_TRACE(nome);
    vp_clear_calls();
    unsigned char reg = number;
    EXPECT_EQ(E4RPCria(cat, nome.c_str(), param.c_str(), &reg), 0);
    EXPECT_EQ(sent(), (Cmds{cmd, 38}));  // the list is refreshed
    EXPECT_EQ(payload(cmd), in);
    EXPECT_EQ(reg, cat == 6 ? 119 : number);  // report types come back as the printer's number
  }
  EXPECT_EQ(read_file("ArqRegPgto.sts"), "20042");
  vp_clear_calls();
  unsigned char reg = 40;
  for (const char* p : {"*", "", static_cast<const char*>(nullptr)}) EXPECT_EQ(E4RPCria(1, "N", p, &reg), 2049);
  EXPECT_EQ(E4RPCria(5, "N", "+", &reg), 2049);
  EXPECT_EQ(E4RPCria(1, "N", "+", nullptr), 2049);
  EXPECT_EQ(E4RPCria(3, "N", "+", &reg), 2842);
  push(213, 10);
  reg = 3;
  EXPECT_EQ(E4RPCria(6, "X", "", &reg), 2570);
  EXPECT_EQ(reg, 3);
  EXPECT_EQ(sent(), Cmds{213});  // no list refresh after a refusal
}
