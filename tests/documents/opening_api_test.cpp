// Opening documents through E4IniCP and selling items: the fiscal coupon with and without a consumer, the option
// dispatch, the sale command and its checks, the state files; item cancellation, discounts and increases.
#include <cstring>
#include <string>
#include <tuple>
#include <utility>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

// A sale of code "1" on register 20.
Bytes sale(const std::string& desc, const std::string& unit, std::uint8_t mode = 2, const char* qty = "1",
           const char* value = "1") {
  return Bytes{20} + texts({"1", desc}) + Bytes{mode} + texts({qty, unit, value}) + Bytes{'A'};
}

class Opening : public Session {
 protected:
  void SetUp() override {
    Session::SetUp();
    stick(133, 0, bytes_with(10, 1, "000123"));  // the COO, or the coupon's CCF
  }
};
using Adjustments = Opening;

}  // namespace

TEST_F(Opening, FiscalCouponWithAndWithoutConsumer) {
  write_file("EcfZandor.pgt", "000100#$61$62");
  const std::string name(40, 'N'), number(25, '1'), address(100, 'E');
  EXPECT_EQ(E4Cons(name.c_str(), number.c_str(), address.c_str()), 0);
  EXPECT_EQ(E4Cons("Jo\xe3o\tS", nullptr, "R\x1b"), 0);  // replaces the first entirely
  push(141, 5);
  EXPECT_EQ(E4IniCP(2, ""), 5);  // refused: nothing recorded, the consumer kept for the next attempt
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000100#$61$62");
  EXPECT_FALSE(file_exists("EcfZandor.cpm"));
  EXPECT_EQ(E4IniCP(2, ""), 0);
  EXPECT_EQ(payload(141), texts({"Jo o S", " ", "R "}) + Bytes{0});
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000123#");
  EXPECT_EQ(E4IniCP(2, "ignored"), 0);  // spent: three empty texts
  EXPECT_EQ(last_input(141).size(), 5u);
  EXPECT_EQ(payload(141), (Bytes{0, 0, 0}));
  EXPECT_EQ(E4Cons(name.c_str(), number.c_str(), address.c_str()), 0);
  EXPECT_EQ(E4IniCP(2, ""), 0);
  EXPECT_EQ(payload(141), texts({name.substr(0, 30), number.substr(0, 20), address.substr(0, 79)}) + Bytes{0});
}

TEST_F(Opening, OptionRegisterAndSaleChecks) {
  for (unsigned char opc : {0, 3, 16, 23, 255}) EXPECT_EQ(E4IniCP(opc, "60"), 2049) << int(opc);
  for (const auto& [opc, reg] : {std::pair{20, "20"}, {17, "5"}, {18, "79"}}) EXPECT_EQ(E4IniCP(opc, reg), 2582) << reg;
  EXPECT_EQ(E4IniCup(20), 0);  // report type 0 (printer register 116)
  EXPECT_EQ(payload(220), (Bytes{'t', 0}));
  EXPECT_EQ(E4IteCFEsp2(20, "789123", "ARROZ", "1000", "2590", "kg", 1), 0);
  EXPECT_EQ(sent(), (Cmds{220, 193}));  // no state query before the sale
  EXPECT_EQ(payload(193),
            Bytes{20} + texts({"789123", "ARROZ"}) + Bytes{2} + texts({"1000", "kg", "2590"}) + Bytes{'T'});
  for (unsigned char rp : {10, 14, 19, 35, 40}) EXPECT_EQ(E4IteCF(rp, "1", "X", "1", "1"), 2049) << int(rp);
  EXPECT_EQ(E4IteCF(20, "1", "X", "123456789", "1"), 2619);
  EXPECT_EQ(E4IteCF(20, "1", "X", "1", "1234567890"), 2626);
  EXPECT_EQ(E4IteCF(20, "123456789012345", "X", "1", "1"), 2706);
  EXPECT_EQ(E4IteCF(20, "123456789012345", "X", "123456789", "1234567890"), 2619);  // the quantity checked first
  for (unsigned char rp : {11, 13, 20, 34, 36, 39}) EXPECT_EQ(E4IteCF(rp, "1", "X", "1", "1"), 0) << int(rp);
  EXPECT_EQ(E4IteCF(20, "12345678901234", "X", "12345678", "123456789"), 0);
  EXPECT_EQ(vp_count_cmd(193), 8);
}

TEST_F(Opening, PrintModeImplicitOpeningUnitAndDescription) {
  push(193, 5);
  EXPECT_EQ(E4IteCF(20, "1", "X", "1", "1"), 5);
  EXPECT_FALSE(file_exists("EcfZandor.cpm"));
  EXPECT_EQ(E4ImpItem(0), 0);
  EXPECT_EQ(E4ImpItem(2), 2561);
  EXPECT_EQ(E4IteCF(20, "1", "X", "1", "1"), 0);
  EXPECT_EQ(payload(193), sale("X", "Un", 1));
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CPF");  // the sale opened the coupon: recorded once, no payment files
  EXPECT_FALSE(file_exists("EcfZandor.pgt"));
  write_file("EcfZandor.cpm", "RGR");
  EXPECT_EQ(E4ImpItem(1), 0);
  EXPECT_EQ(E4IteCF(20, "1", "X", "1", "1"), 0);
  EXPECT_EQ(payload(193), sale("X", "Un", 2));
  EXPECT_EQ(read_file("EcfZandor.cpm"), "RGR");
  const std::pair<const char*, std::string> units[] = {
      {"kg", "kg"}, {"m2", "Un"}, {"KG3", "KG"}, {nullptr, "Un"}, {"/:", "/:"}, {"L", "L"}, {"\xe7", "Un"}};
  for (const auto& [given, unit] : units) {
    ASSERT_EQ(E4IteCFEsp(20, "1", "X", "1", "1", given), 0);
    EXPECT_EQ(payload(193), sale("X", unit)) << unit;
  }
  // The description is cut, never refused, to keep the input within 255 bytes.
  const std::string longa(300, 'D');
  EXPECT_EQ(E4IteCFEsp(20, "1", longa.c_str(), "1000", "100", ""), 0);
  EXPECT_EQ(payload(193), sale(std::string(230, 'D'), "Un", 2, "1000", "100"));
  EXPECT_EQ(E4IteCFEsp(20, "1", longa.c_str(), "1", "1", "U"), 0);
  EXPECT_EQ(payload(193), sale(std::string(233, 'D'), "U"));
  EXPECT_EQ(E4IteCFEsp(20, "12345678901234", longa.c_str(), "12345678", "123456789", "m2"), 0);
  EXPECT_EQ(last_input(193).size(), 252u);
}

TEST_F(Adjustments, ItemCancellationInAnyStateRecordedUnderTheCcf) {
  push(180, 5);
  EXPECT_EQ(E4CanIt(20, 1), 5);  // not recorded
  state(16);
  EXPECT_EQ(E4CanIt(20, 300), 0);
  EXPECT_EQ(payload(180), (Bytes{0x2C, 0x01, 0}));
  stick(133, 5);  // a failed CCF read leaves the result alone
  EXPECT_EQ(E4CanIt(20, 2), 0);
  EXPECT_EQ(read_file("EcfAcresItens.cpf"), "000123C300\r\n");
}

TEST_F(Adjustments, ItemDiscountModesAndState) {
  state(2);
  const std::tuple<unsigned char, unsigned short, std::string, Bytes> rows[] = {
      {0, 0, "1,5", Bytes{255, 255, 1} + texts({"1,50"})}, {1, 7, "1,5", Bytes{7, 0, 4, 0}},
      {2, 258, "12,345", Bytes{2, 1, 3} + texts({"12,34"})},
      {3, 1, std::string(50, '9'), Bytes{1, 0, 0} + texts({"99999999,00"})}};  // unknown: an increase by amount
  for (const auto& [opc, seq, valor, body] : rows) {
    EXPECT_EQ(E4DesIt(opc, 20, seq, valor.c_str(), nullptr), 0);
    EXPECT_EQ(payload(207), body) << int(opc);
  }
  EXPECT_FALSE(file_exists("EcfAcresItens.cpf"));
  for (std::uint8_t s : {0, 14, 16, 20, 21, 22}) {
    state(s);
    const unsigned short expected = (s == 20 || s == 22) ? 0 : 2561;
    EXPECT_EQ(E4DesIt(0, 20, 1, "1", nullptr), expected) << int(s);
    EXPECT_EQ(E4AcrIt(1, 20, 1, nullptr, nullptr), expected) << int(s);
  }
  EXPECT_EQ(vp_count_cmd(207), 8);
}

TEST_F(Adjustments, ItemIncreasesAreRecordedAndGiveBackTheAmountAdded) {
  state(2);
  char valor[16] = "1,25";
  EXPECT_EQ(E4AcrIt(0, 20, 2, valor, nullptr), 0);
  EXPECT_EQ(E4AcrIt(1, 20, 2, valor, nullptr), 0);  // its cancellation
  EXPECT_STREQ(valor, "1,25");
  // By percentage, the subtotals before and after give the amount added; the largest fits the caller's 13 bytes.
  const std::tuple<const char*, const char*, const char*, const char*> rows[] = {
      {"15,00", "1000", "1150", "1.50"}, {"5", "0", "2000000000", "20000000.00"}};
  for (const auto& [dado, antes, depois, devolvido] : rows) {
    push(138, 0, bytes_with(20, 0, antes));
    push(138, 0, bytes_with(20, 0, depois));
    std::memset(valor, 'x', sizeof valor);
    std::strcpy(valor, dado);
    EXPECT_EQ(E4AcrIt(2, 20, 1, valor, nullptr), 0);
    EXPECT_STREQ(valor, devolvido);
    EXPECT_EQ(valor[13], 'x');
  }
  EXPECT_EQ(payloads(207)[2], (Bytes{1, 0, 2} + texts({"15,00"})));
  EXPECT_EQ(read_file("EcfAcresItens.cpf"),
            "000123 0021.25\r\n000123C002\r\n000123 0011.50\r\n000123 00120000000.00\r\n");
  push(138, 5);  // without the subtotal the text stays as given
  EXPECT_EQ(E4AcrIt(2, 20, 1, valor, nullptr), 0);
  EXPECT_STREQ(valor, "20000000.00");
}

TEST_F(Adjustments, CouponDiscountAndIncreaseCommands) {
  // Option: discount command, increase command, input after the sequence.
  const std::tuple<int, int, int, Bytes> rows[] = {
      {0, 147, 150, texts({"999999999999,00"})}, {1, 149, 152, Bytes{0}}, {2, 148, 151, texts({"99,00"})}};
  const std::string huge(20, '9');
  for (const auto& [opc, des, acr, body] : rows) {
    EXPECT_EQ(E4DesCup(opc, huge.c_str()), 0);
    EXPECT_EQ(E4AcrCup(opc, huge.c_str()), 0);
    EXPECT_EQ(payload(des), body);
    EXPECT_EQ(payload(acr), body);
  }
  EXPECT_EQ(E4DesCup(5, "1"), 0);  // unknown: command 0 with the sequence alone
  EXPECT_EQ(last_input(0).size(), 2u);
  EXPECT_EQ(commands(), (Cmds{147, 150, 149, 152, 148, 151, 0}));  // no state query
}
