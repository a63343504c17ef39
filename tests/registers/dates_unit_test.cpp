// The date helpers of the journal readings and the bound of the date-to-COO search.
#include <array>
#include <cstdlib>
#include <ctime>
#include <string>

#include "registers/dates.h"
#include "support/fixture.h"

using namespace orbtest;
using orbelan::comparaComMascara;
using orbelan::timeCompare;

namespace {

std::string minus_plus(const char* data, int dias, int subtrai) {
  std::array<char, 9> out{};
  orbelan::timeMinusPlus(data, dias, subtrai, out);
  return out.data();
}

TEST(Dates, MaskAndComparison) {
  EXPECT_EQ(comparaComMascara("12/03/2024 and more", "NN/NN/NNNN"), 1);
  EXPECT_EQ(comparaComMascara("12-03.2024", "NN/NN/NNNN"), 1);  // any punctuation
  EXPECT_EQ(comparaComMascara("12/03/202", "NN/NN/NNNN"), 0);   // shorter than the mask
  EXPECT_EQ(comparaComMascara("1a/03/2024", "NN/NN/NNNN"), 0);
  EXPECT_EQ(comparaComMascara("12\t3x", "NN N?"), 1);  // any white space; "?" anything
  EXPECT_EQ(comparaComMascara("12x34", "NN NN"), 0);
  EXPECT_EQ(comparaComMascara(nullptr, "N"), 0);
  EXPECT_EQ(timeCompare("10/03/2024", "10032024"), 0);
  EXPECT_EQ(timeCompare("11032024", "10/03/2024"), 1);
  EXPECT_EQ(timeCompare("31122024", "01012025"), 2);
  EXPECT_EQ(timeCompare(nullptr, "01012000"), 2);
}

TEST(Dates, MinusPlusCountsWholeDaysFromTheDayAfter) {
  EXPECT_EQ(minus_plus("10032024", 0, 0), "11032024");
  EXPECT_EQ(minus_plus("10032024", 20, 1), "20022024");  // leap year
  EXPECT_EQ(minus_plus("31122023", 0, 0), "01012024");
  EXPECT_EQ(minus_plus("15012024", 1800, 1), "11022019");
  EXPECT_EQ(minus_plus("31022024", 0, 0), "03032024");  // carried over as a calendar does
  // Summer time switching at a midnight that does not exist, and in the small hours.
  for (const char* tz : {"BRT3BRST,M10.3.0/0,M2.3.0/0", "CET-1CEST,M3.5.0,M10.5.0/3"}) {
    setenv("TZ", tz, 1);
    tzset();
    EXPECT_EQ(minus_plus("25102015", 10, 0), "05112015") << tz;  // across 18/10/2015
    EXPECT_EQ(minus_plus("05032016", 30, 1), "05022016") << tz;  // across 21/02/2016
    EXPECT_EQ(minus_plus("01042024", 10, 1), "23032024") << tz;  // across 31/03/2024
    EXPECT_EQ(timeCompare("18/10/2015", "18102015"), 0) << tz;
  }
  unsetenv("TZ");
  tzset();
}

using DateSearch = Session;

TEST_F(DateSearch, GivesUpAfterEighteenHundredDays) {
  push(10, 0, bytes_with(40, 25, "15032024"));
  push(133, 0, bytes_with(8, 1, "000500"));
  for (int i = 0; i < 180; ++i) {
    push(194, 0, bytes_with(60, 2, "0001 001 000100  12/03/2024 22:00:00\r\n\r\n"));
    push(194, 0, {0, 0, 0xCF, 0xDE, 0xB3, 0xD1});
    push(194, 0);
  }
  std::array<char, 7> cooi{'x'}, coof{'y'};
  EXPECT_EQ(orbelan::pegaCOOEntreDatas("10032024", "15032024", cooi.data(), coof.data()), 2);
  EXPECT_EQ(vp_count_cmd(194), 180 * 3);
  const auto last = operations()[operations().size() - 3];  // the last reading's first packet
  EXPECT_EQ(std::string(last.in + 2, last.in + 10), "07042019");
  EXPECT_STREQ(cooi.data(), "x");
  EXPECT_STREQ(coof.data(), "y");
  EXPECT_FALSE(file_exists("espelho.log"));
  EXPECT_FALSE(file_exists("datas.log"));
}

}  // namespace
