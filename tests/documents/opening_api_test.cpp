// Opening documents through E4IniCP: the fiscal coupon command with and
// without a consumer, the option dispatch and its refusals, and what each
// opening records in the state files.
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
// The opening command's consumer fields as sent.
Bytes consumer(const std::string& name, const std::string& number, const std::string& address) {
  return z(name) + z(number) + z(address) + Bytes{0};
}
void coo(const std::string& text) { stick(133, 0, bytes_with(10, 1, text)); }

class Opening : public Session {
 protected:
  void SetUp() override {
    Session::SetUp();
    coo("000123");
  }
};

}  // namespace

TEST_F(Opening, FiscalCouponAndItsRecords) {
  write_file("EcfZandor.pgt", "000100#$61$62");
  write_file("EcfZandor.ind", "$1");
  write_file("EcfAcresItens.cpf", "000041 0011.00\r\n");
  write_file("EcfZandorCoo.pgt", "\nCPF000100$61$62");
  push(141, 5);
  EXPECT_EQ(E4IniCP(2, ""), 5);
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000100#$61$62");  // refused: nothing recorded
  EXPECT_FALSE(file_exists("EcfZandor.cpm"));

  EXPECT_EQ(E4IniCP(2, "ignored"), 0);
  EXPECT_EQ(last_input(141).size(), 5u);
  EXPECT_EQ(payload(141), (Bytes{0, 0, 0}));
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000123#");
  EXPECT_EQ(read_file("EcfZandor.ind"), "");
  EXPECT_EQ(read_file("EcfAcresItens.cpf"), "");
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CPF");
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "\nCPF000100$61$62\r\n\nCPF000123");
  // Known open now: a sale does not record the type again.
  write_file("EcfZandor.cpm", "XXX");
  EXPECT_EQ(E4IteCF(20, "1", "X", "1", "1"), 0);
  EXPECT_EQ(read_file("EcfZandor.cpm"), "XXX");
}

TEST_F(Opening, ConsumerFieldsAndTheirUse) {
  const std::string name(40, 'N'), number(25, '1'), address(100, 'E');
  EXPECT_EQ(E4Cons(name.c_str(), number.c_str(), address.c_str()), 0);
  EXPECT_EQ(E4Cons("Jo\xe3o\tS", nullptr, "R\x1b"), 0);  // replaces the first entirely
  EXPECT_TRUE(logged("E4Cons5600 bufferAux= ."));
  push(141, 5);
  EXPECT_NE(E4IniCP(2, ""), 0);  // kept for the next attempt
  EXPECT_EQ(E4IniCP(2, ""), 0);
  EXPECT_EQ(payload(141), consumer("Jo o S", " ", "R "));
  EXPECT_EQ(E4IniCP(2, ""), 0);  // spent
  EXPECT_EQ(payload(141), (Bytes{0, 0, 0}));

  EXPECT_EQ(E4Cons(name.c_str(), number.c_str(), address.c_str()), 0);
  EXPECT_EQ(E4IniCP(2, ""), 0);
  EXPECT_EQ(payload(141), consumer(name.substr(0, 30), number.substr(0, 20), address.substr(0, 79)));
}

TEST_F(Opening, OptionDispatchAndRegisterChecks) {
  for (unsigned char opc : {0, 3, 16, 23, 255}) EXPECT_EQ(E4IniCP(opc, "60"), 2049) << int(opc);
  EXPECT_TRUE(logged("E4IniCP5600 - Tipo de Cupom invalido "));
  EXPECT_EQ(E4IniCP(20, "20"), 2582);
  EXPECT_EQ(E4IniCP(17, "5"), 2582);
  EXPECT_EQ(E4IniCP(18, "79"), 2582);
  EXPECT_TRUE(logged("E4IniCP5600 - Registrador invalido: 5 "));
  EXPECT_EQ(vp_count_cmd(220) + vp_count_cmd(218), 0);

  EXPECT_EQ(E4IniCup(20), 0);
  EXPECT_EQ(payload(220), (Bytes{'t', 0}));
  EXPECT_EQ(E4IniCP(20, "7"), 0);
  EXPECT_EQ(payload(220), (Bytes{'t' + 7, 0}));
  EXPECT_EQ(read_file("EcfZandor.cpm"), "RGR");

  write_file("EcfZandor.pgt", "000123#$60");  // the coupon just paid
  write_file("EcfZandor.ind", "");
  EXPECT_EQ(E4IniCP(22, "60"), 0);
  EXPECT_EQ(payload(218), (Bytes{0x00, 0x01, 0x23, 1}));
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CCD");
  EXPECT_EQ(E4IniCP(21, nullptr), 0);
  EXPECT_EQ(vp_count_cmd(225), 1);
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CCD");
}

TEST_F(Opening, NonFiscalCouponRecords) {
  write_file("EcfAcresItens.cpf", "000041 0011.00\r\n");
  coo("000124");
  EXPECT_EQ(E4IniCP(19, std::string(100, 'i').c_str()), 0);
  EXPECT_EQ(payload(157), (Bytes{0, 0, 0, 0} + z(std::string(84, 'i'))));
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000124#");
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CNF");
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "\nCNF000124");
  EXPECT_EQ(read_file("EcfAcresItens.cpf"), "000041 0011.00\r\n");  // fiscal coupons only
}

TEST_F(Opening, ReductionClearsTheDayFilesWhateverItGives) {
  write_file("EcfZandorCoo.pgt", "\nCPF000100$61");
  write_file("EcfZandorCOO.ind", "\nCOO000100$1");
  write_file("EcfZandor.pgt", "000100#$61");
  push(162, 5);
  EXPECT_EQ(E4IniCP(5, ""), 5);
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "");
  EXPECT_EQ(read_file("EcfZandorCOO.ind"), "");
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000100#$61");  // a voucher may still follow
}

TEST_F(Fresh, CouponOperationsNeedASession) {
  char valor[13] = "1";
  EXPECT_EQ(E4IniCP(2, ""), 2869);
  EXPECT_EQ(E4IniCup(2), 2869);
  EXPECT_EQ(E4Cons("Maria", "1", "Rua"), 2869);
  EXPECT_EQ(E4IteCFEsp2(20, "1", "X", "1", "1", "kg", 1), 2869);
  EXPECT_EQ(E4CanIt(20, 1), 2869);
  EXPECT_EQ(E4AcrIt(2, 20, 1, valor, nullptr), 2869);
  EXPECT_EQ(E4DesCup(0, "1"), 2869);
  EXPECT_EQ(E4RegPag(61, "1,00"), 2869);
  EXPECT_EQ(E4ImpItem(0), 0);  // only a layout choice: allowed before the session
  EXPECT_TRUE(commands().empty());
  EXPECT_FALSE(file_exists("EcfZandor.pgt"));

  vp_answer_identity();
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_EQ(E4IniCP(2, ""), 0);
  EXPECT_EQ(last_input(141).size(), 5u);  // the refused identification was not kept
  E4Close();
}

// A store number left at "9999" by a register creation is put back before the
// next document; an X reading prints first and restores after.
class PendingRestore : public Fresh {
 protected:
  void SetUp() override {
    Fresh::SetUp();
    write_file("ArqRegPgto.sts", "20042");
    vp_answer_identity();
    ASSERT_EQ(E4Open(0, 0), 0);
    vp_clear_calls();
    coo("000123");
  }
  void TearDown() override { E4Close(); }
};

TEST_F(PendingRestore, BeforeAFiscalCoupon) {
  EXPECT_EQ(E4IniCP(2, ""), 0);
  ASSERT_FALSE(commands().empty());
  EXPECT_EQ(commands().front(), 245);
  EXPECT_EQ(payload(245), z("0042"));
  EXPECT_EQ(read_file("ArqRegPgto.sts"), "00042");
  EXPECT_EQ(vp_count_cmd(141), 1);
}

TEST_F(PendingRestore, AfterAnXReading) {
  EXPECT_EQ(E4IniCP(4, "1"), 0);
  ASSERT_FALSE(commands().empty());
  EXPECT_EQ(commands().front(), 160);
  EXPECT_EQ(payload(245), z("0042"));
  EXPECT_EQ(read_file("ArqRegPgto.sts"), "00042");
  EXPECT_EQ(payload(220), (Bytes{'t', 0}));  // the caller's "1" asks for a report after
}
