// Item sale: the sale command's layout, the field checks, the unit and
// description rules, the print mode and the implicit coupon opening.
#include <string>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

// A sale of code "1", quantity "1", value "1" on register 20.
Bytes sale(const std::string& desc, const std::string& unit, std::uint8_t mode = 2) {
  return Bytes{20} + texts({"1", desc}) + Bytes{mode} + texts({"1", unit, "1"}) + Bytes{'A'};
}

using Items = Session;

}  // namespace

TEST_F(Items, SaleCommandLayout) {
  EXPECT_EQ(E4IteCFEsp2(20, "789123", "ARROZ", "1000", "2590", "kg", 1), 0);
  EXPECT_EQ(commands(), Cmds{193});
  EXPECT_EQ(payload(193), Bytes{20} + texts({"789123", "ARROZ"}) + Bytes{2} + texts({"1000", "kg", "2590"}) + Bytes{'T'});
}

TEST_F(Items, RegisterAndLengthChecks) {
  for (unsigned char rp : {10, 14, 19, 35, 40}) EXPECT_EQ(E4IteCF(rp, "1", "X", "1", "1"), 2049) << int(rp);
  EXPECT_EQ(E4IteCF(20, "1", "X", "123456789", "1"), 2619);
  EXPECT_EQ(E4IteCF(20, "1", "X", "1", "1234567890"), 2626);
  EXPECT_EQ(E4IteCF(20, "123456789012345", "X", "1", "1"), 2706);
  // The quantity is checked before the value, the value before the code.
  EXPECT_EQ(E4IteCF(20, "123456789012345", "X", "123456789", "1234567890"), 2619);
  EXPECT_EQ(vp_count_cmd(193), 0);

  for (unsigned char rp : {11, 13, 20, 34, 36, 39}) EXPECT_EQ(E4IteCF(rp, "1", "X", "1", "1"), 0) << int(rp);
  EXPECT_EQ(E4IteCF(20, "12345678901234", "X", "12345678", "123456789"), 0);
  EXPECT_EQ(vp_count_cmd(193), 7);
}

TEST_F(Items, UnitAndDescriptionRules) {
  const std::pair<const char*, std::string> units[] = {
      {"kg", "kg"}, {"m2", "Un"}, {"KG3", "KG"}, {nullptr, "Un"}, {"/:", "/:"}, {"L", "L"}, {"\xe7", "Un"}};
  for (const auto& [given, unit] : units) {
    ASSERT_EQ(E4IteCFEsp(20, "1", "X", "1", "1", given), 0);
    EXPECT_EQ(payload(193), sale("X", unit)) << unit;
  }
  // The description is cut, never refused. L = 1 + 4 + 3 and the default
  // unit's 2: 233 + 10 + 15 exceeds 255, so 240 - 10.
  const std::string longa(300, 'D');
  EXPECT_EQ(E4IteCFEsp(20, "1", longa.c_str(), "1000", "100", ""), 0);
  EXPECT_EQ(payload(193),
            Bytes{20} + texts({"1", std::string(230, 'D')}) + Bytes{2} + texts({"1000", "Un", "100"}) + Bytes{'A'});
  // Short fixed fields: the plain limit of 233.
  EXPECT_EQ(E4IteCFEsp(20, "1", longa.c_str(), "1", "1", "U"), 0);
  EXPECT_EQ(payload(193), sale(std::string(233, 'D'), "U"));
  // The longest fields: the whole input stays within 255 bytes.
  EXPECT_EQ(E4IteCFEsp(20, "12345678901234", longa.c_str(), "12345678", "123456789", "m2"), 0);
  EXPECT_EQ(last_input(193).size(), 252u);
}

TEST_F(Items, PrintModeAndImplicitOpening) {
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
