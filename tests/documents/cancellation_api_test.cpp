// Cancelling the open document by its state, or the last one by its recorded
// type, including the reversal of the vouchers issued after a coupon (the
// whole reversal of a sale's vouchers is in the sale scenarios).
#include <cstdio>
#include <string>
#include <tuple>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

void next_state(std::uint8_t s) { push(6, 0, {s, 0}); }
// The general register reads (command 133) answer the COO, or the CCF when a
// cancelled fiscal coupon is recorded (beside the business date, 139).
void business_date() { stick(139, 0, bytes_with(10, 1, "15032024")); }

// The day's payment lines ending with `last_coupon`, and the voucher index of
// coupon 100 with its voucher ordinals.
void day_files(const std::string& last_coupon, const std::string& ordinals) {
  write_file("EcfZandorCoo.pgt", "\nCPF000099$60\r\n\n" + last_coupon);
  write_file("EcfZandorCOO.ind", "\nCOO000100" + ordinals);
}

using Cancel = Session;

}  // namespace

TEST_F(Cancel, OpenFiscalCouponIsCancelledAndRecorded) {
  write_file("NomeOper.cfg", "Ana");
  state(2);  // no preparation before totalling
  business_date();
  reply(133, "000042");
  EXPECT_EQ(E4CanCup(), 0);
  EXPECT_EQ(sent(), (Cmds{6, 6, 154, 224, 139, 133}));
  EXPECT_EQ(payloads(154).at(0), (Bytes{5, 'A', 'n', 'a', 0}));
  EXPECT_EQ(read_file("EcfCancelados.cpf"), "15032024000042\r\n");

  std::remove("EcfCancelados.cpf");
  vp_clear_calls();
  push(154, 1);
  EXPECT_EQ(E4CanCup(), 2561);
  EXPECT_EQ(sent(), (Cmds{6, 6, 154}));
  EXPECT_FALSE(file_exists("EcfCancelados.cpf"));
}

TEST_F(Cancel, CouponInPaymentIsPreparedFirst) {
  struct Row {
    std::uint8_t state;
    std::string paid, payments;
    std::vector<int> cmds;
  };
  const std::vector<Row> rows = {
      {14, "500", "000100#$61$62", {6, 6, 138, 190, 154, 224, 139, 133}},
      {16, "0", "000100#", {6, 6, 138, 190, 154, 224, 139, 133}},
      // fully paid non-fiscal coupon: amount received and change first
      {24, "1200", "000100#$61", {6, 6, 138, 190, 6, 188, 6, 189, 154, 224}},
      // paid in part by one payment: a token payment of 0,01 on register 60
      {14, "500", "000100#$61", {6, 6, 138, 190, 6, 185, 154, 224, 139, 133}},
  };
  business_date();
  for (const auto& row : rows) {
    vp_clear_calls();
    state(row.state);
    push(138, 0, bytes_with(20, 0, "1000"));
    push(190, 0, bytes_with(20, 0, "\x01" + row.paid));
    write_file("EcfZandor.pgt", row.payments);
    EXPECT_EQ(E4CanCup(), 0) << row.payments;
    EXPECT_EQ(sent(), row.cmds) << row.payments;
  }
  EXPECT_EQ(payloads(185), (std::vector<Bytes>{{60, '0', ',', '0', '1', 0}}));
}

TEST_F(Cancel, OpenReportOrReversalIsClosed) {
  for (const auto& [s, ret, cmds] : {std::tuple{26, 0, Cmds{6, 221, 224}}, {27, 0, Cmds{6, 229, 224}}, {9, 2561, Cmds{6}}}) {
    vp_clear_calls();
    state(static_cast<std::uint8_t>(s));
    EXPECT_EQ(E4CanCup(), ret) << s;
    EXPECT_EQ(sent(), cmds) << s;
  }
}

TEST_F(Cancel, LastDocumentByItsType) {
  state(0);
  business_date();
  reply(133, "000042");
  write_file("EcfZandor.cpm", "CPF");
  EXPECT_EQ(E4CanCup(), 0);
  EXPECT_EQ(read_file("EcfCancelados.cpf"), "15032024000042\r\n");
  write_file("EcfZandor.cpm", "CNF");
  EXPECT_EQ(E4CanCup(), 0);
  write_file("EcfZandor.cpm", "RGR");
  EXPECT_EQ(E4CanCup(), 0);
  EXPECT_EQ(E4CanCupEsp(), 2751);
  write_file("EcfZandor.cpm", "XYZ");
  EXPECT_EQ(E4CanCup(), 2561);
  std::remove("EcfZandor.cpm");
  EXPECT_EQ(E4CanCup(), 2902);
  EXPECT_EQ(sent(), (Cmds{6, 155, 224, 139, 133, 6, 217, 224, 6, 6, 6, 6}));
  EXPECT_EQ(payloads(155).at(0), (Bytes{0, 0}));
  EXPECT_EQ(payloads(217).at(0), (Bytes{0, 0}));
}

TEST_F(Cancel, OpenVoucherIsClosedThenReversedWithItsNonFiscalCoupon) {
  day_files("CNF000100$60", "$1");
  next_state(17);
  reply(133, "000101");
  next_state(27);
  EXPECT_EQ(E4CanCup(), 0);
  EXPECT_EQ(sent(), (Cmds{6, 228, 224, 133, 219, 6, 229, 224, 217, 224}));
}

TEST_F(Cancel, ReversalWithoutItsCouponOrRefused) {
  write_file("EcfZandor.cpm", "CCD");
  // The vouchers do not follow the last coupon: only they are reversed.
  day_files("CPF000095$61$61", "$1$2");
  next_state(0);
  reply(133, "000102");
  next_state(27);
  next_state(27);
  EXPECT_EQ(E4CanCup(), 0);
  EXPECT_EQ(sent(), (Cmds{6, 133, 219, 6, 229, 224, 219, 6, 229, 224}));

  vp_clear_calls();
  day_files("CPF000100$61$62", "$1$2");
  next_state(0);
  reply(133, "000102");
  push(219, 220);
  EXPECT_EQ(E4CanCup(), 2749);
  EXPECT_EQ(sent(), (Cmds{6, 133, 219}));
}

TEST_F(Cancel, VoucherIndexProblems) {
  write_file("EcfZandor.cpm", "CCD");
  state(0);
  stick(133, 0, bytes_with(20, 1, "000110"));
  day_files("CPF000100$61", "$1$2$3$4$5$6$7$8$9$10");  // ten vouchers: unreadable count
  EXPECT_EQ(E4CanCup(), 2049);
  std::remove("EcfZandorCOO.ind");
  EXPECT_EQ(E4CanCup(), 2902);
  write_file("EcfZandorCOO.ind", "\nCOO000100$1$2");
  std::remove("EcfZandorCoo.pgt");
  EXPECT_EQ(E4CanCup(), 2902);
  EXPECT_TRUE(logged("analisaEstorno5600 ret=2902 iQtdeCCD=2 sTipoDoc= iStDocEmitido=0"));
  EXPECT_EQ(sent(), (Cmds{6, 133, 6, 133, 6, 133}));
}
