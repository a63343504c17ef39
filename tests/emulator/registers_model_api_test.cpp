// Registers and readings against the virtual printer's fiscal model, through
// the library with nothing scripted: what the application sees of the partial
// registers, the register values after a sale, the X reading, the Z reduction
// and the fiscal memory and journal that keep them.
#include <array>
#include <string>
#include <tuple>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

class ModelRegisters : public Fresh {
 protected:
  void SetUp() override {
    Fresh::SetUp();
    vp_use_model(1);
    vp_model_reset();
    vp_set_clock(2026, 11, 22, 10, 0, 0);
    ASSERT_EQ(E4Open(0, 0), 0);
  }
  void TearDown() override {
    E4Close();
    vp_use_model(0);
  }
};

using Entry = std::tuple<int, std::string, char>;  // RP, description, flag

std::vector<Entry> walk(unsigned char cat) {
  std::vector<Entry> out;
  EXPECT_EQ(E4RPPrim(cat), 0);
  for (int guard = 0; guard < 30; ++guard) {
    std::array<char, 100> compl_{};
    char sinal = 0;
    unsigned char rp = 0;
    const unsigned short ret = E4RPLe(cat, compl_.data(), &sinal, &rp);
    if (ret == 2867) break;
    EXPECT_EQ(ret, 0);
    if (ret != 0) break;
    out.emplace_back(rp, compl_.data(), sinal);
  }
  return out;
}

std::string value(unsigned char reg) {
  std::array<char, 40> v{};
  EXPECT_EQ(E4ValAtu(reg, v.data()), 0) << "register " << int(reg);
  return v.data();
}

long long amount(unsigned char reg) { return std::stoll(value(reg)); }

std::string tape() { return read_file(vp_tape_path()); }

// A coupon of two items at 18 % and 7 % (10,00 and 2 x 2,50), paid with 20,00
// in cash: 15,00 of sales and 5,00 of change.
void sell() {
  ASSERT_EQ(E4IniCP(2, ""), 0);
  ASSERT_EQ(E4IteCF(20, "1", "ARROZ", "1,000", "10,00"), 0);
  ASSERT_EQ(E4IteCF(22, "2", "FEIJAO", "2,000", "2,50"), 0);
  ASSERT_EQ(E4RegPag(60, "20,00"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
}

TEST_F(ModelRegisters, EachCategoryWalksItsDefaultProgramming) {
  const std::vector<std::tuple<int, std::vector<Entry>>> cases{
      {1, {{40, "SANGRIA", '-'}, {41, "SUPRIMENTO", '+'}}},
      {2, {{20, "18,00", ' '}, {21, "12,00", ' '}, {22, "07,00", ' '}}},
      {4, {{36, "05,00", ' '}}},
      {5, {{60, "DINHEIRO", '0'}, {61, "CARTAO", '1'}, {62, "OUTROS", '0'}}},
      {6, {{0, "GERAL", ' '}, {1, "TEF", ' '}}},
  };
  for (const auto& [cat, want] : cases) EXPECT_EQ(walk(static_cast<unsigned char>(cat)), want) << "category " << cat;

  std::array<char, 100> d{};
  char s = 0;
  EXPECT_EQ(E4VerRP(61, d.data(), &s), 0);
  EXPECT_STREQ(d.data(), "CARTAO");
  EXPECT_EQ(s, '1');
  EXPECT_EQ(E4VerRP(45, d.data(), &s), 2582);  // not programmed
}

TEST_F(ModelRegisters, CreatedRegistersJoinTheWalkAndSurviveARestart) {
  unsigned char reg = 42;
  EXPECT_EQ(E4RPCria(1, "TROCO INICIAL", "+", &reg), 0);
  reg = 23;
  EXPECT_EQ(E4RPCria(2, "25", "", &reg), 0);
  reg = 3;
  EXPECT_EQ(E4RPCria(6, "CONFERENCIA", "", &reg), 0);
  EXPECT_EQ(reg, 119);
  // A payment method: the store number procedure runs its X reading.
  reg = 63;
  EXPECT_EQ(E4RPCria(5, "CHEQUE", "0", &reg), 0);
  EXPECT_NE(tape().find("LEITURA X"), std::string::npos);
  EXPECT_EQ(read_file("ArqRegPgto.sts"), "00001");

  // The same programming again is accepted; another name on the number is not.
  reg = 42;
  EXPECT_EQ(E4RPCria(1, "TROCO INICIAL", "+", &reg), 0);
  EXPECT_EQ(E4RPCria(1, "OUTRO", "+", &reg), 2049);

  E4Close();
  vp_model_reload();
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_EQ(walk(1), (std::vector<Entry>{{40, "SANGRIA", '-'}, {41, "SUPRIMENTO", '+'}, {42, "TROCO INICIAL", '+'}}));
  EXPECT_EQ(std::get<1>(walk(2).back()), "25,00");
  EXPECT_EQ(walk(5).back(), (Entry{63, "CHEQUE", '0'}));
  EXPECT_EQ(walk(6).back(), (Entry{3, "CONFERENCIA", ' '}));
}

TEST_F(ModelRegisters, ValuesFollowASale) {
  const long long coo = amount(3);
  sell();
  EXPECT_EQ(amount(3), coo + 1);
  EXPECT_EQ(amount(80), 1);  // the CCF, register 137
  EXPECT_EQ(amount(20), 1000);
  EXPECT_EQ(amount(22), 500);
  EXPECT_EQ(amount(60), 1500);  // the change came out of the cash
  EXPECT_EQ(amount(0), 1500);   // grand total

  std::array<char, 40> v{};
  EXPECT_EQ(E4ValImp(20, v.data()), 0);
  EXPECT_EQ(std::stoll(v.data()), 180);
  EXPECT_EQ(E4InfCup(501, v.data()), 0);  // received on the last coupon
  EXPECT_EQ(std::stoll(v.data()), 2000);
}

TEST_F(ModelRegisters, XReadingPrintsTheDayAndTakesACoo) {
  sell();
  const long long coo = amount(3);
  ASSERT_EQ(E4IniCP(4, ""), 0);
  EXPECT_EQ(amount(3), coo + 1);
  const std::string t = tape();
  const auto x = t.rfind("LEITURA X");
  ASSERT_NE(x, std::string::npos);
  EXPECT_NE(t.find("VENDA BRUTA DIARIA", x), std::string::npos);
  EXPECT_NE(t.find("15,00", x), std::string::npos);
  EXPECT_EQ(amount(20), 1000);  // a reading changes no total

  ASSERT_EQ(E4LMF(1, 0, "0001", "0001"), 0);  // the fiscal memory, printed
  EXPECT_EQ(amount(3), coo + 2);
  EXPECT_NE(tape().find("LEITURA DA MEMORIA FISCAL"), std::string::npos);

  ASSERT_EQ(E4IniCP(2, ""), 0);
  EXPECT_EQ(E4IniCP(4, ""), 2561);  // not over an open coupon
  EXPECT_EQ(amount(3), coo + 3);
}

TEST_F(ModelRegisters, ZReductionClosesTheDayOnce) {
  sell();
  ASSERT_EQ(E4IniCP(5, ""), 0);
  EXPECT_EQ(amount(4), 1);
  EXPECT_EQ(amount(106), 2189);  // reductions left in the fiscal memory
  EXPECT_EQ(amount(0), 1500);
  EXPECT_NE(tape().find("REDUCAO Z"), std::string::npos);

  std::array<char, 40> v{};
  EXPECT_EQ(E4ValRed(4, v.data()), 0);
  EXPECT_STREQ(v.data(), "000001");
  EXPECT_EQ(E4ValRed(0, v.data()), 0);
  EXPECT_EQ(std::stoll(v.data()), 1500);

  std::array<char, 9> data{}, movimento{};
  std::array<char, 5> hora{};
  unsigned char verao = 9, reducao = 0;
  EXPECT_EQ(E4RdData(data.data(), hora.data(), &verao, movimento.data(), &reducao), 0);
  EXPECT_EQ(reducao, 1);

  EXPECT_EQ(E4IniCP(5, ""), 2561);  // already reduced today
  EXPECT_EQ(amount(4), 1);
  vp_set_clock(2026, 11, 23, 9, 0, 0);  // the next day may be reduced again
  EXPECT_EQ(E4IniCP(5, ""), 0);
  EXPECT_EQ(amount(4), 2);
}

TEST_F(ModelRegisters, ReductionDataAndFiscalMemoryMatchTheSales) {
  sell();
  ASSERT_EQ(E4IniCP(5, ""), 0);
  // Read after the reduction: the day just closed.
  std::vector<char> buf(2300, '\0');
  ASSERT_EQ(E4DadosReducao(buf.data()), 0);
  const std::string rec(buf.data(), buf.size());
  // label, value (the last 13 digits), tax (16 digits), comma
  EXPECT_EQ(rec.substr(0, 45), "01T1800        " "0000000001000" "0000000000000180" ",");
  EXPECT_EQ(rec.substr(45, 45), "02T1200        " "0000000000000" "0000000000000000" ",");
  EXPECT_EQ(rec.substr(90, 45), "03T0700        " "0000000000500" "0000000000000035" ",");
  EXPECT_EQ(rec.substr(135, 15), "01S0500        ");
  EXPECT_NE(rec.find("SANGRIA        0000000000000,"), std::string::npos);

  std::array<char, 21> mf{};
  ASSERT_EQ(E4RegMemFisc(1, mf.data()), 0);
  EXPECT_EQ(std::string(mf.data()).substr(0, 8), "22112026");  // date, then time and the day's sales
  EXPECT_EQ(std::string(mf.data()).substr(12), "00001500");
  EXPECT_EQ(E4RegMemFisc(2, mf.data()), 2582);  // not made yet

  // The day reduced stays readable until the next day's first document.
  vp_set_clock(2026, 11, 23, 9, 0, 0);
  EXPECT_EQ(amount(20), 1000);
  ASSERT_EQ(E4IniCP(2, ""), 0);
  EXPECT_EQ(amount(20), 0);
}

TEST_F(ModelRegisters, ADayLeftOpenIsReducedTheNextMorning) {
  sell();
  vp_set_clock(2026, 11, 23, 8, 0, 0);
  EXPECT_EQ(E4IniCP(2, ""), 2561);  // the reduction of the 22nd comes first
  ASSERT_EQ(E4IniCP(5, ""), 0);
  std::array<char, 21> mf{};
  ASSERT_EQ(E4RegMemFisc(1, mf.data()), 0);
  EXPECT_EQ(std::string(mf.data()).substr(0, 12), "221120260800");  // the day reduced, the time it was
  sell();  // the 23rd begins
  EXPECT_EQ(amount(20), 1000);
}

TEST_F(ModelRegisters, TransfersEndWithTheEndMark) {
  sell();
  ASSERT_EQ(E4IniCP(5, ""), 0);
  const std::vector<std::uint8_t> mark{0xCF, 0xDE, 0xB3, 0xD1};

  ASSERT_EQ(E4LeMFD(1, "1", "999999", "mfd.txt"), 0);
  const std::string mfd = read_file("mfd.txt");
  EXPECT_NE(mfd.find("ARROZ"), std::string::npos);
  EXPECT_NE(mfd.find("REDUCAO Z"), std::string::npos);
  const auto ack = last_input(199);
  ASSERT_EQ(ack.size(), 6u);
  EXPECT_EQ(std::vector<std::uint8_t>(ack.begin() + 2, ack.end()), mark);
  EXPECT_GT(vp_count_cmd(199), 3);  // more than one 253-byte packet of data

  // Only the coupon: by its COO.
  const std::string coo = std::to_string(amount(3) - 1);
  ASSERT_EQ(E4LeMFD(1, coo.c_str(), coo.c_str(), "coupon.txt"), 0);
  const std::string coupon = read_file("coupon.txt");
  EXPECT_NE(coupon.find("ARROZ"), std::string::npos);
  EXPECT_EQ(coupon.find("REDUCAO Z"), std::string::npos);

  // By reduction number: the day the first reduction closed.
  ASSERT_EQ(E4LeMFD(2, "0001", "0001", "day.txt"), 0);
  EXPECT_EQ(read_file("day.txt"), mfd);
  ASSERT_EQ(E4LeMFD(2, "0002", "0002", "none.txt"), 0);
  EXPECT_EQ(read_file("none.txt"), "");

  ASSERT_EQ(E4LMFSerial(1, 0, "0001", "0001", "mf.txt"), 0);
  // number, restart counter, the reduction's COO, the day
  EXPECT_NE(read_file("mf.txt").find("0001 001 " + value(3) + "  22/11/2026"), std::string::npos);
  const auto mf_ack = last_input(206);
  EXPECT_EQ(std::vector<std::uint8_t>(mf_ack.begin() + 2, mf_ack.end()), mark);
}

}  // namespace
