// Value and text encodings: number texts, packed digits, amounts, masks, the code page, and the translation of the
// printer's result codes into the library's.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "frame/encodings.h"
#include "frame/result.h"
#include "support/fixture.h"

using namespace orbelan;
using namespace orbtest;

namespace {

// Runs an in-place function over `text` held in a buffer of `size` bytes (all "x" for an empty text); the function's
// result, if any, comes first as "n:".
template <typename F>
std::string in_place(const std::string& text, std::size_t size, F f) {
  std::vector<char> b(size, 'x');
  if (!text.empty()) std::memcpy(b.data(), text.c_str(), std::min(text.size() + 1, size));
  std::string n;
  if constexpr (std::is_void_v<decltype(f(std::span<char>{b}))>) f(std::span<char>{b});
  else n = std::to_string(f(std::span<char>{b})) + ":";
  return n + std::string(b.data(), strnlen(b.data(), b.size()));
}

std::string num(int (*f)(std::uint32_t, std::span<char>, int), std::uint32_t v, int base, std::size_t size = 12) {
  return in_place("", size, [&](std::span<char> b) { return f(v, b, base); });
}

std::string fv(const std::string& s, int end, std::size_t size = 32) {
  return in_place(s, size, [end](std::span<char> b) { return FormataValor(b, end); });
}

// The translation: each library code followed by the driver codes and inclusive ranges it stands for.
const char kByLibraryCode[] =
    "2049: 2 7 12-13 27 33-34 36-37 39 41 81 85 113-115 140 144 148 150 157 160-163 165-177 181 187 197 202 207 210 "
    "213-215 222 232 238 240 270 272-273 289-291 352 364 379 381 2561: 1 21 132 145 151 153-155 158 185 208-209 "
    "217-219 221 227-228 235 259-260 263-266 356 2563: 3 2564: 4 2570: 10 234 387-388 2574: 14 2576: 16 2578: 18 "
    "2579: 19 2580: 182 198 204-206 371 2582: 22 2583: 23 26 2585: 25 2592: 15 32 2595: 35 2602: 42 192 2609: 216 "
    "374 376 2613: 230 2623: 63 2625: 65 2626: 66 2628: 68 2629: 69 2634: 74 2635: 70 72 75 100 183 199 201 239 "
    "241-242 258 261 267 271 340-342 345 350 362-363 367 2636: 76 2648: 88 65532 2653: 93 2655: 95 2656: 96 2657: 97 "
    "2666: 8192 8196 2670: 224 339 360-361 8194-8195 2683: 123 8193 2690: 77-79 86 98 139 152 184 188-191 193-195 "
    "211-212 231 236-237 274 365-366 370 372-373 375 377-378 380 382-383 2691: 186 368-369 2693: 133 2698: 138 2701: "
    "116 2702: 142 2706: 357 2707: 147 2724: 164 2743: 336 2744: 254 282 346 2745: 180 200 223 226 2747: 252-253 "
    "255-257 262 275-281 283 285-288 338 344 347 349 353-354 2748: 337 351 2749: 220 229 343 348 2751: 9011 2821: 17 "
    "2822: 83 2854: 269 2855: 268 2866: 225 233 2871: 44-45 355 2872: 38 149 358 2880: 84";

}  // namespace

TEST(Encodings, NumbersPackingPaddingAndAmounts) {
  auto pad = [](const std::string& s, int width, std::size_t size = 12) {
    return in_place("", size, [&](std::span<char> b) { LeftPad(s, b, width); });
  };
  auto two_places = [](const std::string& s, int width, std::size_t size = 32) {
    return in_place("", size, [&](std::span<char> b) { FormataValorDuasCasas(s, b, width); });
  };
  std::array<std::uint8_t, 3> p{0xEE, 0xEE, 0xEE};
  Compacta("123", p, 3);
  std::array<std::uint8_t, 1> one{};
  Compacta("123456", one, 6);  // bounded by the output
  std::array<char, 4> d{'x', 'x', 'x', 'x'};
  Expande(p, d, 3);
  const std::pair<std::string, std::string> cases[] = {
      {num(LongtoAsk, 0, 10), "0:"}, {num(intoAsk, 0, 10), "1:0"}, {num(intoAsk, 0xBEEF, 16), "4:BEEF"},
      {num(LongtoAsk, 123456, 10, 4), "3:123"}, {std::string(p.begin(), p.end()), "\x01\x23\xEE"},
      {std::string(d.data(), 4), "123x"}, {std::string(1, static_cast<char>(one[0])), "\x12"},
      {pad("1234", 10), "0000001234"}, {pad("123456", 4), "3456"}, {pad("7", 18, 4), "000"},
      {in_place("42", 12, [](std::span<char> b) { LeftPad(b.data(), b, 6); }), "000042"},  // inside its own buffer
      // A third decimal is cut, not rounded; a point is no separator; digits lost; the field cut to the buffer.
      {fv("12,5", 12), "0:000000001250"}, {fv("1,999", 8), "0:00000199"}, {fv("12.50", 8), "0:00125000"},
      {fv("123456,78", 6), "1:345678"}, {fv("12,5", 12, 6), "0:01250"},
      {in_place("1,999", 32, [](std::span<char> s) { return FormataValor2(s, 6); }), "0:001999"},
      {two_places("12,5", 15), "12,50"}, {two_places(",5", 15), "0,50"}, {two_places("3.", 15), "3.00"},
      {two_places("7", 14), "7,00"}, {two_places("1.000,5678", 15), "1.000,56"},
      {two_places("12345,67", 6), "123,67"}, {two_places("12,5", 15, 3), "12"}};  // held to width and buffer
  for (std::size_t i = 0; i < std::size(cases); ++i) EXPECT_EQ(cases[i].first, cases[i].second) << "case " << i;
}

TEST(EncodText, MasksAndCodePage) {
  std::array<char, 8> src{"a\x1b\"b\\c"}, esp{"\xe9t\x01\"\x7f"}, dst{};
  MascaraCaracter(src, dst);
  EXPECT_EQ(std::string(src.data()) + "|" + dst.data(), "a 'b/c|a 'b/c");
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

TEST(Translation, EveryEntryAndEveryHole) {
  std::map<int, int> table;
  std::istringstream in(kByLibraryCode);
  int to = 0;
  for (std::string item; in >> item;) {
    const auto dash = item.find('-');
    const int lo = std::stoi(item.substr(0, dash));
    const int hi = dash == std::string::npos ? lo : std::stoi(item.substr(dash + 1));
    if (item.back() == ':') to = lo;
    else
      for (int c = lo; c <= hi; ++c) ASSERT_TRUE(table.emplace(c, to).second) << c;
  }
  for (int code = 0; code <= 65535; ++code) {
    const auto it = table.find(code);
    ASSERT_EQ(traduz_codigo(code), it != table.end() ? it->second : code) << "code " << code;
  }
}

TEST_F(Session, PrinterCodesAreRememberedAndTheLastErrorIsRead) {
  // Every nonzero code reads the error; holes and library codes pass unchanged, and codes outside the printer's ranges
  // are not remembered.
  HWError = 7;
  const std::tuple<int, int, int> cases[] = {{0, 0, 0},         {38, 2872, 38},     {196, 196, 196},
                                             {386, 386, 386},   {387, 2570, 386},   {8193, 2683, 8193},
                                             {9011, 2751, 8193}, {8197, 8197, 8193}, {2869, 2869, 8193}};
  for (const auto& [code, want, remembered] : cases) {
    vp_clear_calls();
    EXPECT_EQ(TrataRetorno(code), want) << code;
    EXPECT_EQ(commands(), code != 0 ? Cmds{3} : Cmds{}) << code;
    EXPECT_EQ(HWError, remembered) << code;
  }
  const auto c = operations().back();
  EXPECT_EQ((Cmds{c.cmd, c.flag, c.mode, c.inlen}), (Cmds{3, 1, 1, 0}));
  EXPECT_TRUE(logged("TrataRetorno5600 - De:38 Para:2872 "));
}
