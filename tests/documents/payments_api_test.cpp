// Payments: the register and value checks, totalling before the first payment,
// the message variant, the payment that closes a non-fiscal coupon, and the
// local record of accepted payments.
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Bytes = std::vector<std::uint8_t>;
Bytes operator+(Bytes a, const Bytes& b) { return a.insert(a.end(), b.begin(), b.end()), a; }
Bytes z(const std::string& s) { return Bytes(s.begin(), s.end()) + Bytes{0}; }
Bytes payload(int cmd) {
  const Bytes in = last_input(cmd);
  return in.size() < 2 ? Bytes{} : Bytes(in.begin() + 2, in.end());
}
// The commands sent, without the error queries that follow every failure.
std::vector<int> sent() {
  std::vector<int> out;
  for (int c : commands())
    if (c != 3) out.push_back(c);
  return out;
}
void state(std::uint8_t s) { stick(6, 0, {s, 0}); }

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
  EXPECT_TRUE(logged("E4RegPag5600 - Registrador invalido "));
  EXPECT_EQ(E4RegPag(61, "123456789012345"), 2049);
  EXPECT_EQ(E4RegPag(61, nullptr), 2049);
  EXPECT_TRUE(logged("Pagamento_Fiscal_E_NaoFiscal5600 - Tamanho do valor invalido (maximo=14) "));
  EXPECT_TRUE(sent().empty());

  EXPECT_EQ(E4RegPag(60, "12345678901234"), 0);
  EXPECT_EQ(payload(185), Bytes{60} + z("12345678901234"));
  EXPECT_EQ(E4RegPag(78, "2,00"), 0);
  EXPECT_EQ(sent(), (std::vector<int>{6, 185, 6, 185}));
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000123#$60$78");
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "\nCPF000123$60$78");
}

TEST_F(Payments, FirstPaymentTotalsAndMessageVariant) {
  state(2);
  EXPECT_EQ(E4RegPagEsp(63, "9,99", nullptr), 0);
  EXPECT_EQ(sent(), (std::vector<int>{6, 153, 185}));
  EXPECT_EQ(payload(153), Bytes{0});
  state(15);
  EXPECT_EQ(E4RegPagEsp(63, "9,99", ""), 0);
  const std::string longa = std::string(84, 'M') + std::string(16, 'N');
  EXPECT_EQ(E4RegPagEsp(64, "1", longa.c_str()), 0);
  EXPECT_EQ(payload(209), Bytes{64} + z("1") + z(std::string(84, 'M')));
  EXPECT_EQ(sent(), (std::vector<int>{6, 153, 185, 6, 185, 6, 209}));
  EXPECT_TRUE(logged("Pagamento_Fiscal_E_NaoFiscal5600 - msg=" + longa + " "));
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000123#$63$63$64");
}

TEST_F(Payments, PaymentInState20ClosesTheNonFiscalCoupon) {
  state(20);
  EXPECT_EQ(E4RegPagEsp(60, "10,00", "Obrigado"), 0);
  // Totalled, the message's first character printed, closed and cut.
  EXPECT_EQ(sent(), (std::vector<int>{6, 153, 130, 158, 224}));
  EXPECT_EQ(payload(130), z("O"));
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000123#$60");
}

TEST_F(Payments, FailuresSendNoPaymentAndRecordNothing) {
  push(185, 5);  // refused by the printer
  EXPECT_EQ(E4RegPag(61, "1,00"), 5);
  push(6, 7);  // the state query fails
  EXPECT_EQ(E4RegPag(61, "1,00"), 2049);
  state(2);
  push(153, 5);  // the totalling is refused
  EXPECT_EQ(E4RegPag(61, "1,00"), 5);
  EXPECT_EQ(sent(), (std::vector<int>{6, 185, 6, 6, 153}));
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000123#");
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "\nCPF000123");
}
