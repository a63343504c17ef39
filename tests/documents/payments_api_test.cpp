// Payments and what follows them: the checks, the message variant, the card vouchers against the coupon's recorded
// payments, their reversal and second copy, the non-fiscal operations and free printing.
#include <cstdio>
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

// The payment files as coupon 000123 leaves them, paid with `pagamentos`.
void coupon_paid(const std::string& pagamentos = "") {
  write_file("EcfZandor.pgt", "000123#" + pagamentos);
  write_file("EcfZandor.ind", "");
  write_file("EcfZandorCoo.pgt", "\nCPF000123" + pagamentos);
  write_file("EcfZandorCOO.ind", "");
}

using Payments = Session;
using Voucher = Session;
using NonFiscal = Session;

}  // namespace

TEST_F(Payments, ChecksFailuresTotallingAndMessageVariant) {
  coupon_paid();
  state(14);
  EXPECT_EQ((std::vector<int>{E4RegPag(59, "1,00"), E4RegPag(61, "123456789012345"), E4RegPag(61, nullptr),
                              E4RegPagEsp(79, "1,00", "x")}),
            std::vector<int>(4, 2049));
  push(6, 7);  // the state query fails, then the printer refuses
  push(185, 5);
  EXPECT_EQ((std::vector<int>{E4RegPag(61, "1,00"), E4RegPag(61, "1,00")}), (std::vector<int>{2049, 5}));
  EXPECT_EQ(E4RegPag(60, "12345678901234"), 0);
  EXPECT_EQ(payload(185), Bytes{60} + texts({"12345678901234"}));
  EXPECT_EQ(E4RegPag(78, "2,00"), 0);
  // The first payment totals the coupon; the message variant.
  state(2);
  push(153, 5);  // the totalling refused: no payment
  EXPECT_EQ(E4RegPag(61, "1,00"), 5);
  EXPECT_EQ(E4RegPagEsp(63, "9,99", nullptr), 0);
  EXPECT_EQ(payload(153), Bytes{0});
  state(15);
  EXPECT_EQ(E4RegPagEsp(63, "9,99", ""), 0);
  const std::string longa = std::string(84, 'M') + std::string(16, 'N');
  EXPECT_EQ(E4RegPagEsp(64, "1", longa.c_str()), 0);
  EXPECT_EQ(payload(209), Bytes{64} + texts({"1", std::string(84, 'M')}));
  EXPECT_EQ(sent(), (Cmds{6, 6, 185, 6, 185, 6, 185, 6, 153, 6, 153, 185, 6, 185, 6, 209}));
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000123#$60$78$63$63$64");
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "\nCPF000123$60$78$63$63$64");
}

TEST_F(Voucher, EachPaymentCarriesOneVoucherEvenPrintedWithACondition) {
  coupon_paid("$61$05$61");
  EXPECT_EQ(E4IniCP(22, "61"), 0);
  EXPECT_EQ(E4IniCP(17, "61"), 0);
  EXPECT_EQ(E4IniCP(18, "61"), 2561);
  EXPECT_EQ(payloads(218), (std::vector<Bytes>{{0x00, 0x01, 0x23, 1}, {0x00, 0x01, 0x23, 3}}));
  EXPECT_EQ(read_file("EcfZandorCOO.ind"), "\nCOO000123$1$3");
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CCD");
  for (int code : {8192, 8193, 8194, 8195, 8196, 1}) {  // printed with a condition, or refused
    coupon_paid("$61");
    push(218, code);
    const int r = E4IniCP(17, "61");
    EXPECT_TRUE(code == 1 ? r == 2561 : r != 0) << code << " " << r;
    const std::string indices = read_file("EcfZandor.ind") + "|" + read_file("EcfZandorCOO.ind");
    EXPECT_EQ(indices, code == 1 ? "|" : "$1|\nCOO000123$1") << code;
  }
}

TEST_F(Voucher, ReversalByPackedCooAndSecondCopy) {
  EXPECT_EQ(E4CancelaCCD("000123"), 0);
  push(219, 1);
  EXPECT_EQ(E4CancelaCCDEsp("654321"), 2561);
  EXPECT_EQ(payloads(219), (std::vector<Bytes>{{0x00, 0x01, 0x23}, {0x65, 0x43, 0x21}}));
  state(27);  // E4FimDoc closes a reversal only
  EXPECT_EQ(E4FimDoc(), 0);
  EXPECT_EQ(payload(229), (Bytes{5, 0}));
  state(17);
  EXPECT_EQ(E4FimDoc(), 2561);
  write_file("EcfZandor.cpm", "CCD");  // the second copy cuts only when printed, and records no type
  EXPECT_EQ(E4IniCP(21, nullptr), 0);
  EXPECT_EQ(last_input(225).size(), 2u);
  push(225, 1);
  EXPECT_EQ(E4IniCP(21, ""), 2561);
  EXPECT_EQ(sent(), (Cmds{219, 219, 6, 229, 224, 6, 225, 224, 225}));
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CCD");
}

TEST_F(NonFiscal, OperationOnlyOnRegisters40To54AndOpeningOnceWithTheConsumer) {
  for (unsigned char rp : {39, 55}) EXPECT_EQ(E4OpeCNF(rp, "+", "Sangria", "10,00"), 2049) << int(rp);
  EXPECT_FALSE(file_exists("EcfZandor.cpm"));
  EXPECT_EQ(E4OpeCNF(40, "+", "Suprimento", "12,5"), 0);
  EXPECT_EQ(E4OpeCNF(54, nullptr, nullptr, "3"), 0);
  EXPECT_EQ(payloads(159), (std::vector<Bytes>{Bytes{40, 0} + texts({"12,50"}), Bytes{54, 0} + texts({"3,00"})}));
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CNF");
  std::remove("EcfZandor.cpm");
  push(159, 1);
  EXPECT_EQ(E4OpeCNF(41, "", "", "1,00"), 2561);
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CNF");  // a refused operation still records the type
  EXPECT_EQ(E4IniCP(19, std::string(100, 'x').c_str()), 0);
  EXPECT_EQ(payload(157), (Bytes{0, 0, 0, 0} + texts({std::string(84, 'x')})));
  ASSERT_EQ(E4Cons("Ana", "123", "Rua A"), 0);
  EXPECT_EQ(E4IniCP(19, "Info"), 0);
  EXPECT_EQ(payload(157), Bytes{0} + texts({"Ana", "123", "Rua A", "Info"}));
}

TEST_F(NonFiscal, ClosingCutsOnlyWhenAcceptedAndFreePrintingPaysOutFirst) {
  state(21);
  ASSERT_EQ(E4ProgOp("Operadora de caixa numero 1"), 0);
  EXPECT_EQ(E4FimCP(0, "Volte sempre"), 0);
  std::remove("NomeOper.cfg");
  push(158, 1);
  EXPECT_EQ(E4FimCP(0, nullptr), 2561);
  EXPECT_EQ(payloads(158), (std::vector<Bytes>{Bytes{5} + texts({"Operadora de caixa n"}), {5, 0}}));
  EXPECT_EQ((std::vector<int>{E4Print(""), E4Print(nullptr)}), std::vector<int>(2, 2049));
  state(26);
  EXPECT_EQ(E4Print("linha livre"), 0);
  EXPECT_EQ(payload(130), texts({"linha livre"}));
  state(24);
  EXPECT_EQ(E4Print("texto"), 0);
  push(188, 1);
  EXPECT_EQ(E4Print("texto"), 2561);
  EXPECT_EQ(sent(), (Cmds{6, 130, 158, 224, 6, 158, 6, 130, 6, 6, 188, 6, 189, 130, 6, 6, 188}));
}
