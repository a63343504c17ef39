// The second family's functions where they differ from the base: payments, openings, closings, registers, values.
#include <algorithm>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

Bytes method(const std::string& name) { return bytes_with(0, 3, name); }

class CouponJP : public Session {
 protected:
  void SetUp() override {
    Session::SetUp();
    state(14);
    write_file("EcfZandor.pgt", "000123#");
    stick(38, 0, {20, 40, 60, 61, 62});  // the printer's programmed registers
  }
};
using RegistersJP = Session;

// One E4RPLe_JP step, rendered "ret:description:RP".
std::string next_jp(unsigned char cat) {
  char compl_[100], sinal = 0;
  unsigned char rp = 0xEE;
  const unsigned short ret = E4RPLe_JP(cat, compl_, &sinal, &rp);
  return std::to_string(ret) + ":" + compl_ + ":" + std::to_string(rp);
}
std::string jp(unsigned short (*f)(unsigned char, char*), int reg) {
  char v[19] = "old";
  const unsigned short ret = f(static_cast<unsigned char>(reg), v);
  return std::to_string(ret) + ":" + v;
}

}  // namespace

TEST_F(CouponJP, OutrosIsFoundByWalkingThenRememberedAndABadRegisterRefused) {
  for (const char* name : {"DINHEIRO", "CARTAO", "Outros"}) push(33, 0, method(name));
  EXPECT_EQ(E4RegPag_JP(0, "1000"), 0);
  EXPECT_EQ(payload(185), (Bytes{62, '1', '0', '0', '0', 0}));
  // The remembered register is asked first, in any letter case, without a walk.
  vp_clear_calls();
  push(33, 0, method("oUtRoS"));
  EXPECT_EQ(E4RegPagEsp_JP(0, "250", "x"), 0);
  EXPECT_EQ(sent(), (Cmds{33, 6, 209}));
  EXPECT_EQ(payload(33), Bytes{62});
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000123#$62$62");
  // Renamed since: the walk runs again from the first method.
  vp_clear_calls();
  for (const char* name : {"Cheque", "OUTROS"}) push(33, 0, method(name));
  EXPECT_EQ(E4RegPag_JP(0, "5"), 0);
  EXPECT_EQ(payload(185).at(0), 60);
  vp_clear_calls();
  // Every payment method programmed, none of them "OUTROS": the walk ends with the category.
  Bytes all(19);
  std::iota(all.begin(), all.end(), 60);
  stick(38, 0, all);
  stick(33, 0, method("DINHEIRO"));
  EXPECT_EQ(E4RegPag_JP(0, "1000"), 2867);
  EXPECT_EQ(vp_count_cmd(33), 1 + 19);  // the remembered one, then every one
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000123#$62$62$60");
  EXPECT_EQ(E4RegPag_JP(79, "1"), 2049);
  EXPECT_EQ(E4RegPagEsp_JP(59, "1", ""), 2049);
  EXPECT_EQ(vp_count_cmd(185) + vp_count_cmd(209), 0);
}

TEST_F(CouponJP, OpeningOptionsAndAmountMovedBetweenMethods) {
  using Row = std::tuple<unsigned char, const char*, unsigned short, Cmds>;
  for (const auto& [opc, param, ret, cmds] : {Row{23, "", 0, {}}, Row{3, "", 2049, {}}, Row{26, "", 2049, {}},
                                              Row{24, "59123456", 2582, {}}, Row{25, "", 0, {201}}}) {
    vp_clear_calls();
    EXPECT_EQ(E4IniCP_JP(opc, param), ret) << int(opc);
    EXPECT_EQ(sent(), cmds) << int(opc);
  }
  EXPECT_EQ(payload(201), Bytes{0});
  push(133, 0, bytes_with(20, 1, "000123"));
  EXPECT_EQ(E4EstornaPgto_JP(61, 60, "123456789012345"), 0);
  EXPECT_EQ(sent(), (Cmds{201, 133, 242}));
  EXPECT_EQ(payload(242), (Bytes{0x00, 0x01, 0x23, 61, 60} + texts({"12345678901234"}) + Bytes{0}));
  EXPECT_EQ(E4EstornaPgto_JP(59, 60, "1"), 2582);
  EXPECT_EQ(E4EstornaPgto_JP(60, 79, "1"), 2582);
  EXPECT_EQ(sent(), (Cmds{201, 133, 242}));  // the refused moves send nothing
}

TEST_F(CouponJP, CancellationsAndClosingsPassTheirArguments) {
  // CanCP_JP advances lines only with the switch set and cancels the open coupon; the Esp forms leave
  // it alone; FimCPEsp_JP closes directly with the caller's lines and a cut, FimDoc_JP without a cut.
  write_file("NomeOper.cfg", "Ana");
  using Row = std::tuple<std::uint8_t, unsigned short (*)(), Cmds>;
  const Row rows[] = {
      {2, [] { return E4CanCP_JP(1, 3); }, {6, 6, 154, 223, 224, 139, 133}},
      {2, [] { return E4CanCP_JP(0, 3); }, {6, 6, 154, 224, 139, 133}},
      {2, [] { return E4CanCPEsp_JP(1, 3); }, {6}},
      {2, [] { return E4CanCupEsp_JP(); }, {6}},
      {16, [] { return E4FimCPEsp_JP(1, 3, "Volte"); }, {6, 130, 142, 223, 224, 133}},
      {16, [] { return E4FimCPEsp_JP(0, 3, nullptr); }, {6, 142, 224, 133}},
      {26, [] { return E4FimDoc_JP(); }, {6, 221}}};
  for (const auto& [st, call, cmds] : rows) {
    vp_clear_calls();
    state(st);
    EXPECT_EQ(call(), 0);
    EXPECT_EQ(sent(), cmds);
    for (const auto& p : payloads(223)) EXPECT_EQ(p, Bytes{3});
  }
  // After a management report nothing is cancelled, and that is no error here.
  state(0);
  write_file("EcfZandor.cpm", "RGR");
  EXPECT_EQ(E4CanCupEsp_JP(), 0);
  EXPECT_EQ(E4CanCupEsp(), 2751);
}

TEST_F(RegistersJP, WalkStartsTheCategoryOverAfterItsEndAndCreationTakesTheFirstFreeNumber) {
  stick(38, 0, {40, 60, 61});
  stick(33, 0, method("PIX"));
  for (const char* want : {"0:PIX:60", "0:PIX:61", "2867::0", "0:PIX:60"}) EXPECT_EQ(next_jp(5), want);
  EXPECT_EQ(sent(), (Cmds{38, 33, 33, 38, 33}));  // the end reads the list again at once
  EXPECT_EQ(next_jp(5), "0:PIX:61");  // the second entry point starts over the same way
  EXPECT_EQ(E4RPProx_JP(5, nullptr, nullptr, nullptr), 2867);
  EXPECT_EQ(next_jp(5), "0:PIX:60");
  // Creation: a number given is used as it is; report types are never looked for. The list is refreshed after.
  stick(38, 0, {20, 60, 61, 63, 116});
  using Case = std::tuple<unsigned char, unsigned char, const char*, Cmds, unsigned char>;
  for (const auto& [cat, given, param, cmds, number] :
       {Case{5, 0, "1", {38, 59, 38}, 62}, Case{1, 45, "+", {32, 38}, 45}, Case{6, 0, "", {213, 38}, 116}}) {
    vp_clear_calls();
    unsigned char reg = given;
    EXPECT_EQ(E4RPCria_JP(cat, "NOVO", param, &reg), 0);
    EXPECT_EQ(reg, number);
    const Cmds got = sent();
    EXPECT_EQ(Cmds(got.begin(), got.begin() + std::min(got.size(), cmds.size())), cmds);
    EXPECT_EQ(payloads(cmds.end()[-2]).at(0).at(0), number);
  }
}

TEST_F(RegistersJP, ValuesAndSumsOfTheVariantNumbering) {
  // Plain reads, some of them mapped elsewhere.
  for (int reg : {0, 15, 80, 83, 87, 88, 92, 103}) EXPECT_EQ(jp(E4ValAtu_JP, reg).substr(0, 2), "0:") << reg;
  EXPECT_EQ(payloads(133), (std::vector<Bytes>{{0}, {136}, {137}, {135}, {7}, {114}, {133}, {115}}));
  // Numbers the base serves but the variant does not, and the reverse.
  for (int reg : {6, 10, 35, 59, 91, 95, 100, 104, 116, 200}) EXPECT_EQ(jp(E4ValAtu_JP, reg), "2049:") << reg;
  EXPECT_EQ(jp(E4ValAtu, 95), "0:");
  EXPECT_EQ(payload(133), Bytes{80});
  push(246, 0, {'0', '0', '4', '2'});
  EXPECT_EQ(jp(E4ValAtu_JP, 90), "0:0042");
  // A tax rate the printer does not list reads as zeros, without a read.
  push(37, 0, {0, 21, 0});
  EXPECT_EQ(jp(E4ValAtu_JP, 20), "0:0000000000000000");
  EXPECT_EQ(payloads(133).size(), 9u);
  // 8 adds register 134 read with the check, which always reads as zeros.
  reply(133, "250");
  EXPECT_EQ(jp(E4ValAtuEsp_JP, 8), "0:000000000000000250");
  EXPECT_EQ(payload(37), Bytes{4});
  // Unlike the base, a missing register is not tolerated.
  reply(133, "250");
  push(37, 22);
  EXPECT_EQ(jp(E4ValAtu_JP, 8), "2582:");
  // 86 keeps what the service registers gave before a failure, and fails only when none could be read.
  vp_clear_calls();
  stick(37, 0, {0, 36, 37, 38, 39, 0});
  for (const char* v : {"100", "20", ""}) reply(133, v, *v ? 0 : 10);
  EXPECT_EQ(jp(E4ValAtu_JP, 86), "0:000000000000000120");
  EXPECT_EQ(payloads(133), (std::vector<Bytes>{{36}, {37}, {38}}));
  reply(133, "", 10);
  EXPECT_EQ(jp(E4ValAtu_JP, 86), "2570:");
  EXPECT_EQ(jp(E4ValAtuEsp_JP, 7), "2049:");  // E4ValAtuEsp_JP serves 8 and 9 only
}
