// Item cancellation, item and coupon discounts and increases: the command
// inputs, the option mapping, the state check and the local records.
#include <cstring>
#include <string>
#include <tuple>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

class Adjustments : public Session {
 protected:
  void SetUp() override {
    Session::SetUp();
    state(2);
    stick(133, 0, bytes_with(10, 1, "000042"));  // the coupon's CCF
  }
};

}  // namespace

TEST_F(Adjustments, ItemCancellationInAnyStateRecordedUnderTheCcf) {
  push(180, 5);
  EXPECT_EQ(E4CanIt(20, 1), 5);
  EXPECT_FALSE(file_exists("EcfAcresItens.cpf"));
  state(16);
  EXPECT_EQ(E4CanIt(20, 300), 0);
  EXPECT_EQ(payload(180), (Bytes{0x2C, 0x01, 0}));
  stick(133, 5);  // a failed CCF read leaves the result alone
  EXPECT_EQ(E4CanIt(20, 2), 0);
  EXPECT_EQ(read_file("EcfAcresItens.cpf"), "000042C300\r\n");
}

TEST_F(Adjustments, ItemDiscountModesAndState) {
  const std::tuple<unsigned char, unsigned short, std::string, Bytes> rows[] = {
      {0, 0, "1,5", Bytes{255, 255, 1} + texts({"1,50"})},
      {1, 7, "1,5", Bytes{7, 0, 4, 0}},
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
  char valor[16] = "1,25";
  EXPECT_EQ(E4AcrIt(0, 20, 2, valor, nullptr), 0);
  EXPECT_EQ(E4AcrIt(1, 20, 2, valor, nullptr), 0);  // its cancellation
  EXPECT_EQ(payload(207), (Bytes{2, 0, 4, 0}));
  EXPECT_STREQ(valor, "1,25");
  // By percentage, the subtotals before and after give the amount added; the
  // largest still fits the 13 bytes the caller must give.
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
            "000042 0021.25\r\n000042C002\r\n000042 0011.50\r\n000042 00120000000.00\r\n");
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
