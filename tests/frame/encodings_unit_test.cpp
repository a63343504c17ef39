#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "frame/encodings.h"
#include "frame/session.h"
#include "support/fixture.h"

using namespace orbelan;

namespace {

// Runs an in-place formatter over `text` in a buffer of `size` bytes.
template <typename F>
std::string in_place(const std::string& text, std::size_t size, F f) {
  std::vector<char> b(size, 'x');
  std::memcpy(b.data(), text.c_str(), std::min(text.size() + 1, size));
  f(std::span<char>{b});
  return {b.data(), strnlen(b.data(), b.size())};
}

std::string two_places(const std::string& s, int width, std::size_t size = 32) {
  std::vector<char> out(size, 0);
  FormataValorDuasCasas(s, out, width);
  return {out.data(), strnlen(out.data(), out.size())};
}

std::string bytes(std::initializer_list<int> b) { return {b.begin(), b.end()}; }

}  // namespace

TEST(EncodNumbers, DigitsInAnyBaseAndTheZeroAsymmetry) {
  std::array<char, 12> b{};
  EXPECT_EQ(LongtoAsk(0, b, 10), 0);
  EXPECT_STREQ(b.data(), "");
  EXPECT_EQ(intoAsk(0, b, 10), 1);
  EXPECT_STREQ(b.data(), "0");
  EXPECT_EQ(LongtoAsk(1234567890, b, 10), 10);
  EXPECT_STREQ(b.data(), "1234567890");
  EXPECT_EQ(intoAsk(0xBEEF, b, 16), 4);
  EXPECT_STREQ(b.data(), "BEEF");
  EXPECT_EQ(LongtoAsk(5, b, 2), 3);
  EXPECT_STREQ(b.data(), "101");

  std::array<char, 4> small{};  // cut, most significant digits kept
  EXPECT_EQ(LongtoAsk(123456, small, 10), 3);
  EXPECT_STREQ(small.data(), "123");
  EXPECT_EQ(intoAsk(7, std::span<char>{}, 10), 0);
  EXPECT_EQ(intoAsk(7, b, 0), 0);  // no such base: empty text
  EXPECT_STREQ(b.data(), "");
}

TEST(EncodPacking, CompactaAndExpandeRoundTrip) {
  std::array<std::uint8_t, 4> p{0xEE, 0xEE, 0xEE, 0xEE};
  Compacta("123", p, 3);
  EXPECT_EQ(p[0], 0x01);
  EXPECT_EQ(p[1], 0x23);
  EXPECT_EQ(p[2], 0xEE);  // two bytes, no terminator
  std::array<char, 4> d{'x', 'x', 'x', 'x'};
  Expande(p, d, 3);
  EXPECT_EQ(std::string(d.data(), 4), "123x");

  Compacta("001234", p, 6);
  EXPECT_EQ(p[0], 0x00);
  EXPECT_EQ(p[1], 0x12);
  EXPECT_EQ(p[2], 0x34);
  std::array<char, 6> six{};
  Expande(p, six, 6);
  EXPECT_EQ(std::string(six.data(), 6), "001234");

  // Short buffers and short sources are bounded; missing digits read as 0.
  std::array<std::uint8_t, 1> one{};
  Compacta("123456", one, 6);
  EXPECT_EQ(one[0], 0x12);
  Compacta("1", one, 2);
  EXPECT_EQ(one[0], 0x10);
  std::array<char, 2> two{};
  Expande(p, two, 6);
  EXPECT_EQ(std::string(two.data(), 2), "00");
  Expande({}, two, 2);
  EXPECT_EQ(std::string(two.data(), 2), "00");
}

TEST(EncodAmounts, FormataValorFields) {
  auto fv = [](const std::string& s, int end, std::size_t size = 32) {
    return in_place(s, size, [end](std::span<char> b) { FormataValor(b, end); });
  };
  EXPECT_EQ(fv("12,5", 12), "000000001250");
  EXPECT_EQ(fv("1,999", 8), "00000199");    // third decimal cut, not rounded
  EXPECT_EQ(fv("12.50", 8), "00125000");    // a point is no separator
  EXPECT_EQ(fv("-1 234,56", 10), "0000123456");
  EXPECT_EQ(fv("", 5), "00000");
  EXPECT_EQ(fv("7,", 4), "0700");
  EXPECT_EQ(fv("12,5", 12, 6), "01250");    // field cut to the buffer

  std::array<char, 16> b{};
  std::strcpy(b.data(), "123456,78");
  EXPECT_EQ(FormataValor(b, 6), 1);  // too many digits: the last ones stay
  EXPECT_STREQ(b.data(), "345678");
  std::strcpy(b.data(), "1,5");
  EXPECT_EQ(FormataValor(b, 6), 0);
  EXPECT_EQ(FormataValor(std::span<char>{}, 6), 0);

  auto fv2 = [](const std::string& s, int end) {
    return in_place(s, 32, [end](std::span<char> b) { FormataValor2(b, end); });
  };
  EXPECT_EQ(fv2("12.34", 17), "00000000000001234");
  EXPECT_EQ(fv2("1,999", 6), "001999");
}

TEST(EncodAmounts, TwoDecimalTexts) {
  EXPECT_EQ(two_places("12,5", 15), "12,50");
  EXPECT_EQ(two_places(",5", 15), "0,50");
  EXPECT_EQ(two_places("3.", 15), "3.00");
  EXPECT_EQ(two_places("7", 14), "7,00");
  EXPECT_EQ(two_places("1,2345", 15), "1,23");
  EXPECT_EQ(two_places("1.000,5", 15), "1.000,50");  // the comma wins over the point
  EXPECT_EQ(two_places("", 15), ",00");
  EXPECT_EQ(two_places("1234567", 6), "123,00");     // held to the width
  EXPECT_EQ(two_places("12345,67", 6), "123,67");
  EXPECT_EQ(two_places("12,5", 15, 3), "12");        // and to the buffer

  std::array<char, 8> out{};
  AcrescentaPonto("1250", out);
  EXPECT_STREQ(out.data(), "12.50");
  AcrescentaPonto("5", out);
  EXPECT_STREQ(out.data(), "0.05");
  AcrescentaPonto("25", out);
  EXPECT_STREQ(out.data(), "0.25");
  AcrescentaPonto("", out);
  EXPECT_STREQ(out.data(), "0.25");  // untouched
  AcrescentaPonto("123456789", out);
  EXPECT_STREQ(out.data(), "1234567");

  std::array<char, 8> s{"1,50"};
  FormatacomPonto(s, out);
  EXPECT_STREQ(s.data(), "1.50");
  EXPECT_STREQ(out.data(), "1.50");

  std::int32_t pos = -1;
  EXPECT_EQ(ProcuraPosicaoVirgulaouPonto("1.000,5", pos), 0);
  EXPECT_EQ(pos, 6);
  EXPECT_EQ(ProcuraPosicaoVirgulaouPonto("12.5", pos), 0);
  EXPECT_EQ(pos, 3);
  EXPECT_EQ(ProcuraPosicaoVirgulaouPonto("125", pos), 1);
  EXPECT_EQ(pos, 3);
}

TEST(EncodFields, LeftPadAndEliminaCaracter) {
  std::array<char, 20> b{};
  LeftPad("1234", b, 10);
  EXPECT_STREQ(b.data(), "0000001234");
  LeftPad("123456", b, 4);
  EXPECT_STREQ(b.data(), "3456");
  LeftPad("", b, 3);
  EXPECT_STREQ(b.data(), "000");
  std::strcpy(b.data(), "42");
  LeftPad(b.data(), b, 6);  // padding a text in its own buffer
  EXPECT_STREQ(b.data(), "000042");
  std::array<char, 4> small{};
  LeftPad("7", small, 18);
  EXPECT_STREQ(small.data(), "000");

  auto el = [](const std::string& s, int len, char c, std::size_t size = 16) {
    return in_place(s, size, [len, c](std::span<char> b) { EliminaCaracter(b, len, c); });
  };
  EXPECT_EQ(el("V01.02.03", 9, 'V'), "01.02.03");
  EXPECT_EQ(el("1.2.3xyz", 5, '.'), "123");  // beyond len dropped
  EXPECT_EQ(el("abc", 3, 'z', 3), "ab");     // full span: cut to keep the NUL
  EXPECT_EQ(el("abc", -1, 'a'), "");
}

TEST(EncodText, MasksAndCodePage) {
  std::array<char, 16> src{};
  std::array<char, 16> dst{};
  std::memcpy(src.data(), "a\x1b\"b\\c", 6);
  EXPECT_EQ(MascaraCaracter(src, dst), 0);
  EXPECT_STREQ(src.data(), "a 'b/c");
  EXPECT_STREQ(dst.data(), "a 'b/c");

  std::memcpy(src.data(), "\xe9t\x01\"\x7f", 6);
  MascaraCaracterEsp(src, dst);
  EXPECT_STREQ(dst.data(), " t \"\x7f");  // accented letters become blanks too

  std::array<char, 8> cp{};
  std::memcpy(cp.data(), "\xe7\xc7\xa4\x41\x9f\xa0\xff", 8);
  EXPECT_EQ(ConversaoCP850(cp, dst), 0);
  EXPECT_EQ(std::string(dst.data()), bytes({0x87, 0x80, 0xA4, 0x41, 0x9F, 0xFF, 0x98}));
  EXPECT_EQ(std::string(cp.data()), std::string(dst.data()));

  // Only four bytes come back, the table's target column not being in order.
  std::string all;
  for (int c = 1; c < 256; ++c) all += static_cast<char>(c);
  std::vector<char> back(all.begin(), all.end());
  back.push_back('\0');
  EXPECT_EQ(ConversaoASCII(back), 255);
  for (int c = 1; c < 256; ++c) {
    const int want = c == 0xAA ? 0xAC : c == 0xC4 ? 0xAD : c == 0xD1 ? 0xD0 : c == 0xEC ? 0xFD : c;
    EXPECT_EQ(static_cast<std::uint8_t>(back[c - 1]), want) << std::hex << c;
  }

  // Every source byte 0xA0..0xFF but 0xA4 has its row, in order.
  std::vector<int> sources;
  for (int i = 0; i < 95; ++i) sources.push_back(TabelaConv[2 * i]);
  for (int c = 0xA0, i = 0; c <= 0xFF; ++c)
    if (c != 0xA4) EXPECT_EQ(sources[i++], c);
  EXPECT_EQ(TabelaConv[190], 0);

  std::array<char, 3> tiny{};  // cut and terminated
  std::memcpy(cp.data(), "abcdef", 7);
  ConversaoCP850(cp, tiny);
  EXPECT_STREQ(tiny.data(), "ab");
  EXPECT_EQ(ConversaoASCII(std::span<char>{}), 0);
}

TEST(EncodCasas, ClosedSessionClearsAndRefuses) {
  OPENOK = 0;
  std::uint8_t out[2] = {9, 9};
  EXPECT_EQ(LeCasasDecimais(out), kNaoAberto);
  EXPECT_EQ(out[0], 0);
  EXPECT_EQ(out[1], 0);
  EXPECT_EQ(LeCasasDecimais(nullptr), kNaoAberto);
}

class EncodSession : public orbtest::Session {};

TEST_F(EncodSession, DecimalPlacesAndTraceLines) {
  orbtest::push(232, 0, {3, 2, 9, 9});
  std::uint8_t out[2] = {9, 9};
  EXPECT_EQ(LeCasasDecimais(out), 0);
  EXPECT_EQ(out[0], 3);
  EXPECT_EQ(out[1], 2);
  EXPECT_EQ(orbtest::last_input(232).size(), 2u);
  EXPECT_TRUE(orbtest::logged("LeCasasDecimais5600 - fim com ret=0 Casas Decimais Qtd=3, Casas Decimais Item=2"));

  orbtest::push(232, 1, {3, 2});
  EXPECT_NE(LeCasasDecimais(out), 0);
  EXPECT_EQ(out[0], 0);
  EXPECT_EQ(out[1], 0);

  std::array<char, 8> s{"9,99"};
  std::array<char, 8> o{};
  FormatacomPonto(s, o);
  AcrescentaPonto("1250", o);
  std::int32_t pos = 0;
  ProcuraPosicaoVirgulaouPonto("12.5", pos);
  std::array<char, 4> m{"\xe9"};
  MascaraCaracterEsp(m, o);
  EXPECT_TRUE(orbtest::logged("FormatacomPonto5600 - Tem virgula posicao=2 "));
  EXPECT_TRUE(orbtest::logged("FormatacomPonto5600 - fim - Valor Formatado=9.99 "));
  EXPECT_TRUE(orbtest::logged("AcrescentaPonto5600 - inicio - ValorOrigem=1250 "));
  EXPECT_TRUE(orbtest::logged("AcrescentaPonto5600 - tamanho valor origem=4 "));
  EXPECT_TRUE(orbtest::logged("AcrescentaPonto5600 - fim - ValorFormatado=12.50 "));
  EXPECT_TRUE(orbtest::logged("ProcuraPosicaoVirgulaouPonto5600 - Tem ponto posicao=3 "));
  EXPECT_TRUE(orbtest::logged("ProcuraPosicaoVirgulaouPonto5600 - fim com ret=0 Pos=3"));
  EXPECT_TRUE(orbtest::logged("MascaraCaracterEsp5600 trocando caractere=e9"));
}
