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

TEST_F(Adjustments, ItemCancellation) {
  push(180, 5);
  EXPECT_EQ(E4CanIt(20, 1), 5);
  EXPECT_FALSE(file_exists("EcfAcresItens.cpf"));
  // Sent in any state, always five bytes; recorded under the CCF.
  state(16);
  EXPECT_EQ(E4CanIt(20, 300), 0);
  EXPECT_EQ(payload(180), (Bytes{0x2C, 0x01, 0}));
  EXPECT_EQ(read_file("EcfAcresItens.cpf"), "000042C300\r\n");
  // A failed CCF read leaves the result alone.
  stick(133, 5);
  EXPECT_EQ(E4CanIt(20, 2), 0);
  EXPECT_EQ(read_file("EcfAcresItens.cpf"), "000042C300\r\n");
}

TEST_F(Adjustments, ItemDiscountModesAndState) {
  EXPECT_EQ(E4DesIt(0, 20, 0, "1,5", nullptr), 0);
  EXPECT_EQ(payload(207), (Bytes{255, 255, 1} + texts({"1,50"})));
  EXPECT_EQ(E4DesIt(1, 20, 7, "1,5", nullptr), 0);
  EXPECT_EQ(payload(207), (Bytes{7, 0, 4, 0}));
  EXPECT_EQ(E4DesIt(2, 20, 258, "12,345", nullptr), 0);
  EXPECT_EQ(payload(207), (Bytes{2, 1, 3} + texts({"12,34"})));
  // An unknown option is an increase by amount; the amount is cut to 11.
  EXPECT_EQ(E4DesIt(3, 20, 1, std::string(50, '9').c_str(), nullptr), 0);
  EXPECT_EQ(payload(207), (Bytes{1, 0, 0} + texts({"99999999,00"})));
  EXPECT_FALSE(file_exists("EcfAcresItens.cpf"));

  for (std::uint8_t s : {0, 14, 16, 20, 21, 22}) {
    state(s);
    const unsigned short expected = (s == 20 || s == 22) ? 0 : 2561;
    EXPECT_EQ(E4DesIt(0, 20, 1, "1", nullptr), expected) << int(s);
    EXPECT_EQ(E4AcrIt(1, 20, 1, nullptr, nullptr), expected) << int(s);
  }
  EXPECT_EQ(vp_count_cmd(207), 8);
}

TEST_F(Adjustments, ItemIncreaseAndItsCancellationAreRecorded) {
  char valor[13] = "1,25";
  EXPECT_EQ(E4AcrIt(0, 20, 2, valor, nullptr), 0);
  EXPECT_EQ(E4AcrIt(1, 20, 2, valor, nullptr), 0);
  EXPECT_EQ(payload(207), (Bytes{2, 0, 4, 0}));
  EXPECT_STREQ(valor, "1,25");
  EXPECT_EQ(read_file("EcfAcresItens.cpf"), "000042 0021.25\r\n000042C002\r\n");
}

TEST_F(Adjustments, PercentageIncreaseGivesBackTheAmountAdded) {
  push(138, 0, bytes_with(20, 0, "1000"));
  push(138, 0, bytes_with(20, 0, "1150"));
  char valor[13] = "15,00";
  EXPECT_EQ(E4AcrIt(2, 20, 1, valor, nullptr), 0);
  EXPECT_EQ(payload(207), (Bytes{1, 0, 2} + texts({"15,00"})));
  EXPECT_STREQ(valor, "1.50");
  EXPECT_EQ(read_file("EcfAcresItens.cpf"), "000042 0011.50\r\n");

  // The largest growth still fits the 13 bytes the caller must give.
  push(138, 0, bytes_with(20, 0, "0"));
  push(138, 0, bytes_with(20, 0, "2000000000"));
  char limite[16];
  std::memset(limite, 'x', sizeof limite);
  std::strcpy(limite, "5");
  EXPECT_EQ(E4AcrIt(2, 20, 1, limite, nullptr), 0);
  EXPECT_STREQ(limite, "20000000.00");
  EXPECT_EQ(limite[13], 'x');

  // Without the subtotal the text stays as given.
  push(138, 5);
  EXPECT_EQ(E4AcrIt(2, 20, 1, valor, nullptr), 0);
  EXPECT_STREQ(valor, "1.50");
}

TEST_F(Adjustments, CouponDiscountAndIncreaseCommands) {
  // Option: discount command, increase command, input after the sequence.
  const std::vector<std::tuple<int, int, int, Bytes>> rows = {
      {0, 147, 150, texts({"999999999999,00"})}, {1, 149, 152, Bytes{0}}, {2, 148, 151, texts({"99,00"})}};
  const std::string huge(20, '9');
  for (const auto& [opc, des, acr, body] : rows) {
    EXPECT_EQ(E4DesCup(opc, huge.c_str()), 0);
    EXPECT_EQ(E4AcrCup(opc, huge.c_str()), 0);
    EXPECT_EQ(payload(des), body);
    EXPECT_EQ(payload(acr), body);
  }
  // Unknown options: command 0 with the sequence bytes alone; no state query.
  EXPECT_EQ(E4DesCup(5, "1"), 0);
  EXPECT_EQ(last_input(0).size(), 2u);
  EXPECT_EQ(commands(), (Cmds{147, 150, 149, 152, 148, 151, 0}));
}
