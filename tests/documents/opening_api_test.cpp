// Opening documents through E4IniCP and selling items: the fiscal coupon command
// with and without a consumer, the option dispatch, the sale command's layout
// and checks, and what the openings record in the state files.
#include <string>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

// A sale of code "1", quantity "1", value "1" on register 20.
Bytes sale(const std::string& desc, const std::string& unit, std::uint8_t mode = 2) {
  return Bytes{20} + texts({"1", desc}) + Bytes{mode} + texts({"1", unit, "1"}) + Bytes{'A'};
}

class Opening : public Session {
 protected:
  void SetUp() override {
    Session::SetUp();
    stick(133, 0, bytes_with(10, 1, "000123"));  // the COO
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
}

TEST_F(Opening, SaleCommandLayoutAndChecks) {
  EXPECT_EQ(E4IteCFEsp2(20, "789123", "ARROZ", "1000", "2590", "kg", 1), 0);
  EXPECT_EQ(commands(), Cmds{193});
  EXPECT_EQ(payload(193),
            Bytes{20} + texts({"789123", "ARROZ"}) + Bytes{2} + texts({"1000", "kg", "2590"}) + Bytes{'T'});

  for (unsigned char rp : {10, 14, 19, 35, 40}) EXPECT_EQ(E4IteCF(rp, "1", "X", "1", "1"), 2049) << int(rp);
  EXPECT_EQ(E4IteCF(20, "1", "X", "123456789", "1"), 2619);
  EXPECT_EQ(E4IteCF(20, "1", "X", "1", "1234567890"), 2626);
  EXPECT_EQ(E4IteCF(20, "123456789012345", "X", "1", "1"), 2706);
  // The quantity is checked before the value, the value before the code.
  EXPECT_EQ(E4IteCF(20, "123456789012345", "X", "123456789", "1234567890"), 2619);
  EXPECT_EQ(vp_count_cmd(193), 1);
  for (unsigned char rp : {11, 13, 20, 34, 36, 39}) EXPECT_EQ(E4IteCF(rp, "1", "X", "1", "1"), 0) << int(rp);
  EXPECT_EQ(E4IteCF(20, "12345678901234", "X", "12345678", "123456789"), 0);
  EXPECT_EQ(vp_count_cmd(193), 8);
}

TEST_F(Opening, UnitAndDescriptionRules) {
  const std::pair<const char*, std::string> units[] = {
      {"kg", "kg"}, {"m2", "Un"}, {"KG3", "KG"}, {nullptr, "Un"}, {"/:", "/:"}, {"L", "L"}, {"\xe7", "Un"}};
  for (const auto& [given, unit] : units) {
    ASSERT_EQ(E4IteCFEsp(20, "1", "X", "1", "1", given), 0);
    EXPECT_EQ(payload(193), sale("X", unit)) << unit;
  }
  // The description is cut, never refused, to keep the input within 255 bytes.
  const std::string longa(300, 'D');
  EXPECT_EQ(E4IteCFEsp(20, "1", longa.c_str(), "1000", "100", ""), 0);
  EXPECT_EQ(payload(193),
            Bytes{20} + texts({"1", std::string(230, 'D')}) + Bytes{2} + texts({"1000", "Un", "100"}) + Bytes{'A'});
  EXPECT_EQ(E4IteCFEsp(20, "1", longa.c_str(), "1", "1", "U"), 0);
  EXPECT_EQ(payload(193), sale(std::string(233, 'D'), "U"));
  EXPECT_EQ(E4IteCFEsp(20, "12345678901234", longa.c_str(), "12345678", "123456789", "m2"), 0);
  EXPECT_EQ(last_input(193).size(), 252u);
}

TEST_F(Opening, PrintModeAndImplicitOpening) {
  push(193, 5);
  EXPECT_EQ(E4IteCF(20, "1", "X", "1", "1"), 5);
  EXPECT_FALSE(file_exists("EcfZandor.cpm"));
  EXPECT_EQ(E4ImpItem(0), 0);
  EXPECT_EQ(E4ImpItem(2), 2561);
  EXPECT_EQ(E4IteCF(20, "1", "X", "1", "1"), 0);
  EXPECT_EQ(payload(193), sale("X", "Un", 1));
  // The sale opened the coupon: recorded once, no payment files started.
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CPF");
  EXPECT_FALSE(file_exists("EcfZandor.pgt"));
  write_file("EcfZandor.cpm", "RGR");
  EXPECT_EQ(E4ImpItem(1), 0);
  EXPECT_EQ(E4IteCF(20, "1", "X", "1", "1"), 0);
  EXPECT_EQ(payload(193), sale("X", "Un", 2));
  EXPECT_EQ(read_file("EcfZandor.cpm"), "RGR");
}
