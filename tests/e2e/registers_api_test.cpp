// Registers end to end on the fiscal model: the walk and creation as an
// application sees them, and the second family's payment on "OUTROS" and its
// walk that starts over.
#include <string>
#include <vector>

#include "e2e/model.h"

using namespace e2e;

namespace {

using Walk = std::vector<std::string>;  // "RP:description:sign"

std::string step(unsigned short (*read)(unsigned char, char*, char*, unsigned char*), unsigned char cat) {
  char compl_[100] = "", sinal = 0;
  unsigned char rp = 0;
  const unsigned short ret = read(cat, compl_, &sinal, &rp);
  if (ret != 0) return std::to_string(ret);
  return std::to_string(rp) + ":" + compl_ + ":" + (sinal != 0 ? std::string(1, sinal) : "");
}

Walk walk(unsigned char cat) {
  Walk out;
  EXPECT_EQ(E4RPPrim(cat), 0);
  for (int guard = 0; guard < 40; ++guard) {
    const std::string s = step(E4RPLe, cat);
    if (s == "2867") break;
    out.push_back(s);
  }
  return out;
}

bool has(const Walk& w, const std::string& prefix) {
  for (const auto& s : w)
    if (s.rfind(prefix, 0) == 0) return true;
  return false;
}

TEST_F(OnModel, RegisterWalkAndCreation) {
  const Walk methods = walk(5);
  ASSERT_FALSE(methods.empty());
  EXPECT_TRUE(has(methods, "60:DINHEIRO"));
  EXPECT_TRUE(has(methods, "61:CARTAO"));
  EXPECT_TRUE(has(walk(1), "41:SUPRIMENTO"));

  unsigned char reg = 63;
  ASSERT_EQ(E4RPCria(5, "PIX", "1", &reg), 0);
  EXPECT_EQ(reg, 63);
  const Walk after = walk(5);
  EXPECT_EQ(after.size(), methods.size() + 1);
  EXPECT_TRUE(has(after, std::to_string(reg) + ":PIX"));

  // the new method takes payments like any other
  ASSERT_EQ(E4IniCP(2, ""), 0);
  ASSERT_EQ(E4IteCF(20, "1", "LEITE", "1,000", "6,00"), 0);
  ASSERT_EQ(E4RegPag(reg, "6,00"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  EXPECT_EQ(value(reg), 600);
  EXPECT_EQ(figure(tape_from("CUPOM FISCAL"), "PIX"), "6,00");
  reg = 63;
  EXPECT_EQ(E4RPCria(5, "VALE", "1", &reg), 2049);  // the number is taken
  EXPECT_EQ(walk(5), after);
}

TEST_F(OnModel, PaymentOnOutrosAndTheWalkThatStartsOver) {
  ASSERT_EQ(E4IniCP(2, ""), 0);
  ASSERT_EQ(E4IteCF(20, "1", "LEITE", "2,000", "6,00"), 0);
  ASSERT_EQ(E4RegPag_JP(0, "500"), 0);  // found by its name
  ASSERT_EQ(E4RegPag_JP(0, "700"), 0);  // and remembered
  EXPECT_EQ(vp_doc_state(), 16);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  Walk paid;
  for (const auto& l : tape_from("CUPOM FISCAL"))
    if (l.rfind("OUTROS ", 0) == 0) paid.push_back(l.substr(l.find_last_of(' ') + 1));
  EXPECT_EQ(paid, (Walk{"5,00", "7,00"}));

  unsigned char outros = 0;
  for (const auto& s : walk(5))
    if (s.find(":OUTROS") != std::string::npos) outros = static_cast<unsigned char>(std::stoi(s));
  ASSERT_NE(outros, 0);
  EXPECT_EQ(value(outros), 1200);

  const Walk first = walk(5);
  ASSERT_EQ(E4RPPrim(5), 0);
  Walk cycled;
  for (std::size_t i = 0; i < 2 * first.size() + 1; ++i) cycled.push_back(step(E4RPLe_JP, 5));
  EXPECT_EQ(Walk(cycled.begin(), cycled.begin() + static_cast<long>(first.size())), first);
  EXPECT_EQ(cycled[first.size()], "2867");
  EXPECT_EQ(Walk(cycled.begin() + static_cast<long>(first.size()) + 1, cycled.end()), first);
}

}  // namespace
