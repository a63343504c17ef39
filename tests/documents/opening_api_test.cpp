// Opening documents through E4IniCP: the fiscal coupon command with and
// without a consumer, the option dispatch and its refusals, and what each
// opening records in the state files.
#include <string>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

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
  push(141, 5);
  EXPECT_NE(E4IniCP(2, ""), 0);  // kept for the next attempt
  EXPECT_EQ(E4IniCP(2, ""), 0);
  EXPECT_EQ(payload(141), texts({"Jo o S", " ", "R "}) + Bytes{0});
  EXPECT_EQ(E4IniCP(2, ""), 0);  // spent
  EXPECT_EQ(payload(141), (Bytes{0, 0, 0}));

  EXPECT_EQ(E4Cons(name.c_str(), number.c_str(), address.c_str()), 0);
  EXPECT_EQ(E4IniCP(2, ""), 0);
  EXPECT_EQ(payload(141), texts({name.substr(0, 30), number.substr(0, 20), address.substr(0, 79)}) + Bytes{0});
}

TEST_F(Opening, OptionDispatchAndRegisterChecks) {
  for (unsigned char opc : {0, 3, 16, 23, 255}) EXPECT_EQ(E4IniCP(opc, "60"), 2049) << int(opc);
  EXPECT_EQ(E4IniCP(20, "20"), 2582);
  EXPECT_EQ(E4IniCP(17, "5"), 2582);
  EXPECT_EQ(E4IniCP(18, "79"), 2582);
  EXPECT_EQ(vp_count_cmd(220) + vp_count_cmd(218), 0);

  EXPECT_EQ(E4IniCup(20), 0);  // report type 0 (printer register 116)
  EXPECT_EQ(payload(220), (Bytes{'t', 0}));

  write_file("EcfZandor.pgt", "000123#$60");  // the coupon just paid
  write_file("EcfZandor.ind", "");
  EXPECT_EQ(E4IniCP(22, "60"), 0);
  EXPECT_EQ(payload(218), (Bytes{0x00, 0x01, 0x23, 1}));
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CCD");
  EXPECT_EQ(E4IniCP(21, nullptr), 0);
  EXPECT_EQ(vp_count_cmd(225), 1);
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CCD");
}

TEST_F(Fresh, PendingStoreNumberIsRestoredAroundTheNextDocument) {
  vp_answer_identity();
  coo("000123");
  for (const auto& [opc, first] : {std::pair{2, 245}, {4, 160}}) {
    write_file("ArqRegPgto.sts", "20042");
    ASSERT_EQ(E4Open(0, 0), 0);
    vp_clear_calls();
    EXPECT_EQ(E4IniCP(static_cast<unsigned char>(opc), "1"), 0);
    ASSERT_FALSE(commands().empty());
    EXPECT_EQ(commands().front(), first);
    EXPECT_EQ(payload(245), texts({"0042"}));
    EXPECT_EQ(read_file("ArqRegPgto.sts"), "00042");
    E4Close();
  }
  EXPECT_EQ(payload(220), (Bytes{'t', 0}));  // the X reading's "1" asks for a report after
}
