// Result codes: the printer code translation and TrataRetorno.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <sstream>
#include <string>
#include <tuple>

#include "frame/result.h"
#include "orbelan.h"
#include "support/fixture.h"

using namespace orbelan;
using namespace orbtest;

namespace {

// The translation by library code, as driver codes and inclusive ranges.
const std::pair<std::uint16_t, const char*> kByLibraryCode[] = {
    {2049, "2 7 12-13 27 33-34 36-37 39 41 81 85 113-115 140 144 148 150 157 160-163 165-177 181 187 197 202 207 210 "
           "213-215 222 232 238 240 270 272-273 289-291 352 364 379 381"},
    {2561, "1 21 132 145 151 153-155 158 185 208-209 217-219 221 227-228 235 259-260 263-266 356"}, {2563, "3"},
    {2564, "4"}, {2570, "10 234 387-388"}, {2574, "14"}, {2576, "16"}, {2578, "18"}, {2579, "19"},
    {2580, "182 198 204-206 371"}, {2582, "22"}, {2583, "23 26"}, {2585, "25"}, {2592, "15 32"}, {2595, "35"},
    {2602, "42 192"}, {2609, "216 374 376"}, {2613, "230"}, {2623, "63"}, {2625, "65"}, {2626, "66"}, {2628, "68"},
    {2629, "69"}, {2634, "74"},
    {2635, "70 72 75 100 183 199 201 239 241-242 258 261 267 271 340-342 345 350 362-363 367"}, {2636, "76"},
    {2648, "88 65532"}, {2653, "93"}, {2655, "95"}, {2656, "96"}, {2657, "97"}, {2666, "8192 8196"},
    {2670, "224 339 360-361 8194-8195"}, {2683, "123 8193"},
    {2690, "77-79 86 98 139 152 184 188-191 193-195 211-212 231 236-237 274 365-366 370 372-373 375 377-378 380 "
           "382-383"},
    {2691, "186 368-369"}, {2693, "133"}, {2698, "138"}, {2701, "116"}, {2702, "142"}, {2706, "357"}, {2707, "147"},
    {2724, "164"}, {2743, "336"}, {2744, "254 282 346"}, {2745, "180 200 223 226"},
    {2747, "252-253 255-257 262 275-281 283 285-288 338 344 347 349 353-354"}, {2748, "337 351"},
    {2749, "220 229 343 348"}, {2751, "9011"}, {2821, "17"}, {2822, "83"}, {2854, "269"}, {2855, "268"},
    {2866, "225 233"}, {2871, "44-45 355"}, {2872, "38 149 358"}, {2880, "84"},
};

// Runs TrataRetorno and tells whether it issued the driver's error read.
bool reads_error(std::int32_t code, std::uint16_t want) {
  vp_clear_calls();
  EXPECT_EQ(TrataRetorno(code), want) << code;
  const auto ops = operations();
  if (ops.empty()) return false;
  EXPECT_EQ(ops.size(), 1u);
  EXPECT_EQ((std::vector<int>{ops[0].cmd, ops[0].flag, ops[0].mode, ops[0].inlen}), (std::vector<int>{3, 1, 1, 0}));
  return true;
}

}  // namespace

TEST(Translation, EveryEntryAndEveryHole) {
  std::map<int, int> table;
  for (const auto& [to, list] : kByLibraryCode) {
    std::istringstream in(list);
    for (std::string item; in >> item;) {
      const auto dash = item.find('-');
      const int lo = std::stoi(item.substr(0, dash));
      const int hi = dash == std::string::npos ? lo : std::stoi(item.substr(dash + 1));
      for (int c = lo; c <= hi; ++c) ASSERT_TRUE(table.emplace(c, to).second) << c;
    }
  }
  for (int code = 0; code <= 65535; ++code) {
    const auto it = table.find(code);
    ASSERT_EQ(traduz_codigo(code), it != table.end() ? it->second : code) << "code " << code;
  }
}

TEST_F(Session, PrinterCodesAreRememberedAndTheLastErrorIsRead) {
  // Every nonzero code reads the error; holes and library codes pass
  // unchanged, and codes outside the printer's ranges are not remembered.
  HWError = 7;
  const std::tuple<int, int, int> cases[] = {{0, 0, 0},         {38, 2872, 38},     {196, 196, 196},
                                             {386, 386, 386},   {387, 2570, 386},   {8193, 2683, 8193},
                                             {9011, 2751, 8193}, {8197, 8197, 8193}, {2869, 2869, 8193}};
  for (const auto& [code, want, remembered] : cases) {
    EXPECT_EQ(reads_error(code, static_cast<std::uint16_t>(want)), code != 0) << code;
    EXPECT_EQ(HWError, remembered) << code;
  }
  EXPECT_TRUE(logged("TrataRetorno5600 - De:38 Para:2872 "));
  const auto lines = log_lines();
  EXPECT_TRUE(std::none_of(lines.begin(), lines.end(), [](const auto& l) { return l.find("De:2869") != l.npos; }));
}
