// The second family's coupon functions: the payment that finds the "OUTROS"
// method itself, the opening's own options, the move between payment methods,
// and the flags the cancellations and closings hand to the shared trees.
#include <string>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

// A payment method's description as command 33 gives it (text from byte 3).
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

}  // namespace

TEST_F(CouponJP, OutrosIsFoundByWalkingThenRemembered) {
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
}

TEST_F(CouponJP, NoOutrosMethodOrABadRegister) {
  // Every payment method programmed, none of them "OUTROS": the walk ends with the category.
  Bytes all;
  for (std::uint8_t r = 60; r <= 78; ++r) all.push_back(r);
  stick(38, 0, all);
  stick(33, 0, method("DINHEIRO"));
  EXPECT_EQ(E4RegPag_JP(0, "1000"), 2867);
  EXPECT_EQ(vp_count_cmd(33), 19);
  EXPECT_EQ(vp_count_cmd(185), 0);
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000123#");
  EXPECT_EQ(E4RegPag_JP(79, "1"), 2049);
  EXPECT_EQ(E4RegPagEsp_JP(59, "1", ""), 2049);
  EXPECT_EQ(vp_count_cmd(185), 0);
}

TEST_F(CouponJP, OpeningOptionsOfTheFamily) {
  const struct {
    unsigned char opc;
    const char* param;
    unsigned short ret;
    Cmds cmds;
  } rows[] = {
      {23, "", 0, {}}, {3, "", 2049, {}}, {26, "", 2049, {}}, {24, "59123456", 2582, {}}, {25, "", 0, {201}},
  };
  for (const auto& r : rows) {
    vp_clear_calls();
    EXPECT_EQ(E4IniCP_JP(r.opc, r.param), r.ret) << int(r.opc);
    EXPECT_EQ(sent(), r.cmds) << int(r.opc);
  }
  EXPECT_EQ(payload(201), Bytes{0});
  // Option 24: a voucher on register 65 for coupon 123456, paid on 65, 61
  // and 65 again; the voucher index does not exist yet.
  write_file("EcfZandorCoo.pgt", "\nCPF123455$65\r\n\nCPF123456$65$61$65\r\n\nCPF123457$65");
  EXPECT_EQ(E4IniCP_JP(24, "65123456"), 0);
  EXPECT_EQ(payload(218), (Bytes{0x12, 0x34, 0x56, 1}));
  EXPECT_EQ(E4IniCP_JP(24, "65123456"), 0);
  EXPECT_EQ(payload(218), (Bytes{0x12, 0x34, 0x56, 3}));
  EXPECT_EQ(read_file("EcfZandorCOO.ind"), "\nCOO123456$1$3");
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CCD");
  vp_clear_calls();
  EXPECT_EQ(E4IniCP_JP(24, "65123456"), 2561);  // every payment on 65 has its voucher
  EXPECT_EQ(E4IniCP_JP(24, "65999999"), 2561);  // no such coupon today
  EXPECT_EQ(vp_count_cmd(218), 0);
}

TEST_F(CouponJP, AmountMovedBetweenPaymentMethods) {
  push(133, 0, bytes_with(20, 1, "000123"));
  EXPECT_EQ(E4EstornaPgto_JP(61, 60, "123456789012345"), 0);
  EXPECT_EQ(sent(), (Cmds{133, 242}));
  EXPECT_EQ(payload(242), (Bytes{0x00, 0x01, 0x23, 61, 60} + texts({"12345678901234"}) + Bytes{0}));
  vp_clear_calls();
  EXPECT_EQ(E4EstornaPgto_JP(59, 60, "1"), 2582);
  EXPECT_EQ(E4EstornaPgto_JP(60, 79, "1"), 2582);
  EXPECT_EQ(sent(), Cmds{});
}

TEST_F(CouponJP, CancellationsAndClosingsPassTheirArguments) {
  write_file("NomeOper.cfg", "Ana");
  const struct {
    std::uint8_t state;
    unsigned short (*call)();
    Cmds cmds;
  } rows[] = {
      // lines advanced only with the switch set; the open coupon cancelled
      {2, [] { return E4CanCP_JP(1, 3); }, {6, 6, 154, 223, 224, 139, 133}},
      {2, [] { return E4CanCP_JP(0, 3); }, {6, 6, 154, 224, 139, 133}},
      // the Esp forms leave an open document alone
      {2, [] { return E4CanCPEsp_JP(1, 3); }, {6}},
      {2, [] { return E4CanCupEsp_JP(); }, {6}},
      // the closing is called directly, with the caller's lines and a cut
      {16, [] { return E4FimCPEsp_JP(1, 3, "Volte"); }, {6, 130, 142, 223, 224, 133}},
      {16, [] { return E4FimCPEsp_JP(0, 3, nullptr); }, {6, 142, 224, 133}},
      // E4FimDoc_JP closes whatever is open, without a cut
      {26, [] { return E4FimDoc_JP(); }, {6, 221}},
  };
  for (const auto& r : rows) {
    vp_clear_calls();
    state(r.state);
    EXPECT_EQ(r.call(), 0);
    EXPECT_EQ(sent(), r.cmds);
    for (const auto& p : payloads(223)) EXPECT_EQ(p, Bytes{3});
  }
  int finalizar = 0;  // E4FimDoc_JP's alone: E4FimCPEsp_JP goes straight to the dispatch
  for (const auto& l : log_lines()) finalizar += l.rfind("Finalizar5600 - inicio", 0) == 0 ? 1 : 0;
  EXPECT_EQ(finalizar, 1);
  // After a management report nothing is cancelled, and that is no error here.
  state(0);
  write_file("EcfZandor.cpm", "RGR");
  EXPECT_EQ(E4CanCupEsp_JP(), 0);
  EXPECT_EQ(E4CanCupEsp(), 2751);
}
