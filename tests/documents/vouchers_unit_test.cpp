// A voucher for an earlier coupon of the day, named by its COO.
#include <vector>

#include "documents/vouchers.h"
#include "support/fixture.h"

using namespace orbtest;

using VoucherByCoo = Session;

TEST_F(VoucherByCoo, UsesTheDayFilesOfThatCoupon) {
  write_file("EcfZandorCoo.pgt", "\nCPF000120$61$05$61\r\n\nCPF000121$61");
  write_file("EcfZandorCOO.ind", "");
  EXPECT_EQ(orbelan::Abre_CCD("000120", 61), 0);
  const std::vector<std::uint8_t> in = last_input(218);
  EXPECT_EQ(std::vector<std::uint8_t>(in.begin() + 2, in.end()), (std::vector<std::uint8_t>{0x00, 0x01, 0x20, 1}));
  EXPECT_EQ(orbelan::Abre_CCD("000120", 61), 0);
  EXPECT_EQ(last_input(218)[5], 3);
  EXPECT_EQ(read_file("EcfZandorCOO.ind"), "\nCOO000120$1$3");
  EXPECT_EQ(orbelan::Abre_CCD("000120", 61), 2561);
  EXPECT_EQ(orbelan::Abre_CCD("000999", 61), 2561);
}
