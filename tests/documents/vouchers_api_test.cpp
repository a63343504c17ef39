// Credit/debit vouchers: opening against the coupon's recorded payments,
// closing, reversal and the second copy.
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes payload(int cmd) {
  Bytes in = last_input(cmd);
  return in.size() < 2 ? Bytes{} : Bytes(in.begin() + 2, in.end());
}

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
  EXPECT_TRUE(logged("Abre_CCD5600 - Indice=0"));
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

TEST_F(Voucher, ClosingSendsTheOperatorThenCuts) {
  ASSERT_EQ(E4ProgOp("Rita"), 0);
  stick(6, 0, {17, 0});
  EXPECT_EQ(E4FimCP(0, "ignorada"), 0);
  EXPECT_EQ(commands(), (std::vector<int>{6, 228, 224}));
  EXPECT_EQ(payload(228), (Bytes{5, 'R', 'i', 't', 'a', 0}));
}

TEST_F(Voucher, ReversalByPackedCooClosedBy229) {
  EXPECT_EQ(E4CancelaCCD("000123"), 0);
  EXPECT_EQ(payload(219), (Bytes{0x00, 0x01, 0x23}));
  push(219, 1);
  EXPECT_EQ(E4CancelaCCDEsp("654321"), 2561);
  EXPECT_EQ(payload(219), (Bytes{0x65, 0x43, 0x21}));
  EXPECT_TRUE(logged("CancelaCupomCCD5600 - fim com ret=1 "));  // the driver's own code

  vp_clear_calls();
  stick(6, 0, {27, 0});
  EXPECT_EQ(E4FimCP(0, nullptr), 0);
  EXPECT_EQ(E4FimDoc(), 0);
  EXPECT_EQ(commands(), (std::vector<int>{6, 229, 224, 6, 229, 224}));
  EXPECT_EQ(payload(229), (Bytes{5, 0}));

  stick(6, 0, {17, 0});
  EXPECT_EQ(E4FimDoc(), 2561);
  EXPECT_EQ(vp_count_cmd(229), 2);
}

TEST_F(Voucher, SecondCopyCutsOnlyWhenPrinted) {
  EXPECT_EQ(E4IniCP(21, ""), 0);
  EXPECT_EQ(commands(), (std::vector<int>{225, 224}));
  EXPECT_EQ(last_input(225).size(), 2u);
  push(225, 1);
  EXPECT_EQ(E4IniCP(21, ""), 2561);
  EXPECT_EQ(vp_count_cmd(224), 1);
}
