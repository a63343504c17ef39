// Payments: the register and value checks, totalling before the first payment,
// the message variant, the payment that closes a non-fiscal coupon, and the
// local record of accepted payments.
#include <string>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

class Payments : public Session {
 protected:
  void SetUp() override {
    Session::SetUp();
    state(14);
    write_file("EcfZandor.pgt", "000123#");  // as the coupon's opening left them
    write_file("EcfZandorCoo.pgt", "\nCPF000123");
  }
};

}  // namespace

TEST_F(Payments, RegisterAndValueChecks) {
  EXPECT_EQ(E4RegPag(59, "1,00"), 2049);
  EXPECT_EQ(E4RegPagEsp(79, "1,00", "x"), 2049);
  EXPECT_EQ(E4RegPag(61, "123456789012345"), 2049);
  EXPECT_EQ(E4RegPag(61, nullptr), 2049);
  EXPECT_TRUE(sent().empty());

  EXPECT_EQ(E4RegPag(60, "12345678901234"), 0);
  EXPECT_EQ(payload(185), Bytes{60} + texts({"12345678901234"}));
  EXPECT_EQ(E4RegPag(78, "2,00"), 0);
  EXPECT_EQ(sent(), (Cmds{6, 185, 6, 185}));
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000123#$60$78");
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "\nCPF000123$60$78");
}

TEST_F(Payments, FirstPaymentTotalsAndMessageVariant) {
  state(2);
  EXPECT_EQ(E4RegPagEsp(63, "9,99", nullptr), 0);
  EXPECT_EQ(sent(), (Cmds{6, 153, 185}));
  EXPECT_EQ(payload(153), Bytes{0});
  state(15);
  EXPECT_EQ(E4RegPagEsp(63, "9,99", ""), 0);
  const std::string longa = std::string(84, 'M') + std::string(16, 'N');
  EXPECT_EQ(E4RegPagEsp(64, "1", longa.c_str()), 0);
  EXPECT_EQ(payload(209), Bytes{64} + texts({"1", std::string(84, 'M')}));
  EXPECT_EQ(sent(), (Cmds{6, 153, 185, 6, 185, 6, 209}));
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000123#$63$63$64");
}

TEST_F(Payments, FailuresSendNoPaymentAndRecordNothing) {
  push(185, 5);  // refused by the printer
  EXPECT_EQ(E4RegPag(61, "1,00"), 5);
  push(6, 7);  // the state query fails
  EXPECT_EQ(E4RegPag(61, "1,00"), 2049);
  state(2);
  push(153, 5);  // the totalling is refused
  EXPECT_EQ(E4RegPag(61, "1,00"), 5);
  EXPECT_EQ(sent(), (Cmds{6, 185, 6, 6, 153}));
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000123#");
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "\nCPF000123");
}
