// Credit/debit vouchers: opening against the coupon's recorded payments,
// reversal and the second copy (a whole voucher road is in the sale scenarios).
#include <string>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

// The payment files as coupon 000123 leaves them, paid with `pagamentos`.
void coupon_paid(const std::string& pagamentos) {
  write_file("EcfZandor.pgt", "000123#" + pagamentos);
  write_file("EcfZandor.ind", "");
  write_file("EcfZandorCOO.ind", "");
}

using Voucher = Session;

}  // namespace

TEST_F(Voucher, EachPaymentCarriesOneVoucher) {
  coupon_paid("$61$05$61");
  EXPECT_EQ(E4IniCP(17, "61"), 0);
  EXPECT_EQ(payload(218), (Bytes{0x00, 0x01, 0x23, 1}));
  EXPECT_EQ(E4IniCP(22, "61"), 0);
  EXPECT_EQ(payload(218), (Bytes{0x00, 0x01, 0x23, 3}));
  EXPECT_EQ(read_file("EcfZandor.ind"), "$1$3");
  EXPECT_EQ(read_file("EcfZandorCOO.ind"), "\nCOO000123$1$3");
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CCD");

  vp_clear_calls();
  EXPECT_EQ(E4IniCP(18, "61"), 2561);
  EXPECT_EQ(vp_count_cmd(218), 0);
}

TEST_F(Voucher, PrintedWithAConditionIsRecordedAllTheSame) {
  for (int code = 8192; code <= 8196; ++code) {
    coupon_paid("$61");
    push(218, code);
    EXPECT_NE(E4IniCP(17, "61"), 0) << code;
    EXPECT_EQ(read_file("EcfZandor.ind"), "$1") << code;
  }
  coupon_paid("$61");
  push(218, 1);
  EXPECT_EQ(E4IniCP(17, "61"), 2561);
  EXPECT_EQ(read_file("EcfZandor.ind"), "");
  EXPECT_EQ(read_file("EcfZandorCOO.ind"), "");
}

TEST_F(Voucher, ReversalByPackedCooClosedBy229) {
  EXPECT_EQ(E4CancelaCCD("000123"), 0);
  EXPECT_EQ(payload(219), (Bytes{0x00, 0x01, 0x23}));
  push(219, 1);
  EXPECT_EQ(E4CancelaCCDEsp("654321"), 2561);
  EXPECT_EQ(payload(219), (Bytes{0x65, 0x43, 0x21}));

  // E4FimDoc closes a reversal only.
  vp_clear_calls();
  state(27);
  EXPECT_EQ(E4FimDoc(), 0);
  EXPECT_EQ(commands(), (Cmds{6, 229, 224}));
  EXPECT_EQ(payload(229), (Bytes{5, 0}));
  state(17);
  EXPECT_EQ(E4FimDoc(), 2561);
  EXPECT_EQ(vp_count_cmd(229), 1);
}

TEST_F(Voucher, SecondCopyCutsOnlyWhenPrinted) {
  EXPECT_EQ(E4IniCP(21, ""), 0);
  EXPECT_EQ(commands(), (Cmds{225, 224}));
  EXPECT_EQ(last_input(225).size(), 2u);
  push(225, 1);
  EXPECT_EQ(E4IniCP(21, ""), 2561);
  EXPECT_EQ(vp_count_cmd(224), 1);
}
