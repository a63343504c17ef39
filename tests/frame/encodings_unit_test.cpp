// Value and text encodings: number texts, packed digits, amounts, masks and the code page.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "frame/encodings.h"
#include "support/fixture.h"

using namespace orbelan;
using namespace orbtest;

namespace {

// Runs an in-place function over `text` held in a buffer of `size` bytes.
template <typename F>
std::string in_place(const std::string& text, std::size_t size, F f) {
  std::vector<char> b(size, 'x');
  std::memcpy(b.data(), text.c_str(), std::min(text.size() + 1, size));
  f(std::span<char>{b});
  return {b.data(), strnlen(b.data(), b.size())};
}

// A number text function's result and text, as "n:text".
std::string num(int (*f)(std::uint32_t, std::span<char>, int), std::uint32_t v, int base, std::size_t size = 12) {
  std::vector<char> b(size, 'x');
  const int n = f(v, b, base);
  return std::to_string(n) + ":" + std::string(b.data(), strnlen(b.data(), b.size()));
}

std::string fv(const std::string& s, int end, std::size_t size = 32) {
  return in_place(s, size, [end](std::span<char> b) { FormataValor(b, end); });
}

std::string two_places(const std::string& s, int width, std::size_t size = 32) {
  std::vector<char> out(size, 0);
  FormataValorDuasCasas(s, out, width);
  return {out.data(), strnlen(out.data(), out.size())};
}

}  // namespace

TEST(Encodings, NumbersPackingPaddingAndAmounts) {
  auto pad = [](const std::string& s, int width, std::size_t size = 12) {
    return in_place("", size, [&](std::span<char> b) { LeftPad(s, b, width); });
  };
  auto el = [](const std::string& s, int len, char c, std::size_t size = 16) {
    return in_place(s, size, [len, c](std::span<char> b) { EliminaCaracter(b, len, c); });
  };
  std::array<std::uint8_t, 3> p{0xEE, 0xEE, 0xEE};
  Compacta("123", p, 3);
  std::array<std::uint8_t, 1> one{};
  Compacta("123456", one, 6);  // bounded by the output
  std::array<char, 4> d{'x', 'x', 'x', 'x'};
  Expande(p, d, 3);
  const std::string expanded(d.data(), 4);
  Expande({}, d, 2);  // missing bytes read as 0
  const std::pair<std::string, std::string> cases[] = {
      {num(LongtoAsk, 0, 10), "0:"}, {num(intoAsk, 0, 10), "1:0"}, {num(intoAsk, 0xBEEF, 16), "4:BEEF"},
      {num(LongtoAsk, 123456, 10, 4), "3:123"},  // cut, leading digits kept
      {num(intoAsk, 7, 0), "0:"}, {std::string(p.begin(), p.end()), "\x01\x23\xEE"}, {expanded, "123x"},
      {std::string(1, static_cast<char>(one[0])), "\x12"}, {std::string(d.data(), 2), "00"},
      {pad("1234", 10), "0000001234"}, {pad("123456", 4), "3456"}, {pad("7", 18, 4), "000"},
      {in_place("42", 12, [](std::span<char> b) { LeftPad(b.data(), b, 6); }), "000042"},  // inside its own buffer
      {el("V01.02", 6, 'V'), "01.02"}, {el("1.2.3xyz", 5, '.'), "123"},
      {el("abc", 3, 'z', 3), "ab"},  // a full span keeps room for the NUL
      {fv("12,5", 12), "000000001250"}, {fv("1,999", 8), "00000199"},  // third decimal cut, not rounded
      {fv("12.50", 8), "00125000"},                                      // a point is no separator
      {fv("", 5), "00000"}, {fv("12,5", 12, 6), "01250"},                // field cut to the buffer
      {in_place("1,999", 32, [](std::span<char> s) { FormataValor2(s, 6); }), "001999"},
      {two_places("12,5", 15), "12,50"}, {two_places(",5", 15), "0,50"}, {two_places("3.", 15), "3.00"},
      {two_places("7", 14), "7,00"}, {two_places("1.000,5678", 15), "1.000,56"},
      {two_places("12345,67", 6), "123,67"}, {two_places("12,5", 15, 3), "12"}};  // held to width and buffer
  for (std::size_t i = 0; i < std::size(cases); ++i) EXPECT_EQ(cases[i].first, cases[i].second) << "case " << i;

  std::array<char, 16> b{"123456,78"};
  EXPECT_EQ(FormataValor(b, 6), 1);  // digits lost
  EXPECT_STREQ(b.data(), "345678");
  std::array<char, 8> out{};
  for (const auto& [cents, text] : {std::pair{"1250", "12.50"}, {"5", "0.05"}, {"25", "0.25"}, {"", "0.25"}}) {
    AcrescentaPonto(cents, out);  // an empty text leaves the output alone
    EXPECT_STREQ(out.data(), text);
  }
  std::array<char, 8> s{"1,50"};
  FormatacomPonto(s, out);
  EXPECT_STREQ(s.data(), "1.50");
  EXPECT_STREQ(out.data(), "1.50");
  std::int32_t pos = -1;
  EXPECT_EQ(ProcuraPosicaoVirgulaouPonto("1.000,5", pos), 0);
  EXPECT_EQ(pos, 6);
  EXPECT_EQ(ProcuraPosicaoVirgulaouPonto("125", pos), 1);
  EXPECT_EQ(pos, 6);
}

TEST(EncodText, MasksAndCodePage) {
  std::array<char, 8> src{"a\x1b\"b\\c"};
  std::array<char, 8> dst{};
  MascaraCaracter(src, dst);
  EXPECT_STREQ(src.data(), "a 'b/c");
  EXPECT_STREQ(dst.data(), "a 'b/c");
  std::array<char, 8> esp{"\xe9t\x01\"\x7f"};
  MascaraCaracterEsp(esp, dst);
  EXPECT_STREQ(dst.data(), " t \"\x7f");  // accented letters become blanks too

  std::array<char, 8> cp{"\xe7\xc7\xa4\x41\x9f\xa0\xfe"};
  ConversaoCP850(cp, dst);
  EXPECT_STREQ(dst.data(), "\x87\x80\xa4\x41\x9f\xff\xe8");
  EXPECT_STREQ(cp.data(), dst.data());
  std::array<char, 3> tiny{};
  ConversaoCP850(cp, tiny);
  EXPECT_EQ(std::string(tiny.data(), 3), std::string("\x87\x80", 3));
}

TEST_F(Session, DecimalPlaces) {
  push(232, 0, {3, 2, 9, 9});
  std::uint8_t out[2] = {9, 9};
  EXPECT_EQ(LeCasasDecimais(out), 0);
  EXPECT_EQ((std::array<std::uint8_t, 2>{out[0], out[1]}), (std::array<std::uint8_t, 2>{3, 2}));
  EXPECT_EQ(last_input(232).size(), 2u);
  push(232, 1, {3, 2});
  EXPECT_NE(LeCasasDecimais(out), 0);
  EXPECT_EQ(out[0] + out[1], 0);
}
