// The trace log module driven directly: control file parsing, the log file
// and its ring.
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <string>

#include "frame/dumplog.h"
#include "support/fixture.h"

using namespace orbelan;
using orbtest::file_exists;
using orbtest::log_lines;
using orbtest::read_file;
using orbtest::write_file;

namespace {

constexpr char kHeader[] = "Arquivo de LOG Orbelan.txt:\n\n";  // 29 bytes

class Trace : public ::testing::Test {
 protected:
  void SetUp() override {
    flgLog = 0;
    TamLog = 5000000;
    fCircular = 0;
    posicao = 0;
    std::remove("Orbelan.cfg");
    std::remove("Orbelan.txt");
  }
  // Reads `cfg` as the control file and opens the log; returns the level.
  int start(const std::string& cfg) {
    write_file("Orbelan.cfg", cfg);
    const int level = openCfg("Orbelan");
    openLog("Orbelan", "Orbelan.txt");
    return level;
  }
};

}  // namespace

TEST_F(Trace, MissingControlFileIsCreatedAndLoggingStaysOff) {
  EXPECT_EQ(openCfg("Orbelan"), 0);
  EXPECT_EQ(read_file("Orbelan.cfg"), "Trace=0\nTamanho=5000000");
  EXPECT_EQ(TamLog, 5000000);
  openLog("Orbelan", "Orbelan.txt");
  dumpLog("nada %d\n", 1);
  dumpBytes("\x01", 1);
  EXPECT_FALSE(file_exists("Orbelan.txt"));
}

TEST_F(Trace, ControlFileLevelAndSize) {
  struct Case {
    std::string cfg;
    int level;
    int size;
  } cases[] = {
      {"Trace=1", 1, 5000000},
      {"XXXXX=3\nTamanho=1000", 3, 1000},  // the key's name is not examined
      {"Trace=12\nTamanho=2000", 1, 2000},  // one digit
      {"Trace=x5", 5, 5000000},             // the first digit after "="
      {"Trace:3\nTamanho=1000", 0, 5000000},  // sixth character not "="
      {"", 0, 5000000},
      {"Trace=Tamanho=800", 8, 5000000},  // searched from the level digit on
      {"Trace=2\nTamanho=0", 2, 5000000},   {"Trace=2\nTamanho=abc", 2, 5000000},
      {"Trace=2\nTamanho=-50", 2, -50},     {"Trace=2\nTamanho= 300", 2, 300},
      {"Trace=1\n" + std::string(31, ' ') + "Tamanho=123456", 1, 123},    // cut at byte 50
      {"Trace=1\n" + std::string(41, ' ') + "Tamanho=1000", 1, 5000000},  // past byte 50
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.cfg);
    write_file("Orbelan.cfg", c.cfg);
    flgLog = 7;
    TamLog = 77;
    EXPECT_EQ(openCfg("Orbelan"), c.level);
    EXPECT_EQ(flgLog, c.level);
    EXPECT_EQ(TamLog, c.size);
  }
}

TEST_F(Trace, LinesDumpsAndHeader) {
  ASSERT_EQ(start("Trace=1\nTamanho=1000"), 1);
  EXPECT_EQ(read_file("Orbelan.txt"), kHeader);
  EXPECT_EQ(posicao, 29);
  dumpLog("Teste%s - fim com ret=%d \n", "5600", 7);
  const unsigned char bytes[] = {0x00, 0xab, 0xff};
  dumpBytes(bytes, 3);
  const std::string text = read_file("Orbelan.txt");
  EXPECT_TRUE(std::regex_match(text, std::regex(std::string(kHeader) +
                                                R"(\d\d/\d\d/\d\d \d\d:\d\d:\d\d - Teste5600 - fim com ret=7 \n)"
                                                R"( 00 ab ff\n)")))
      << text;
  EXPECT_EQ(posicao, static_cast<int>(text.size()));

  // An existing log is continued, not given a new header.
  closeLog();
  dumpLog("perdida\n");
  EXPECT_EQ(read_file("Orbelan.txt"), text);
  start("Trace=1");
  EXPECT_EQ(posicao, static_cast<int>(text.size()));
  dumpLog("segunda\n");
  EXPECT_EQ(log_lines(), (std::vector<std::string>{"Arquivo de LOG Orbelan.txt:", "",
                                                    "Teste5600 - fim com ret=7 ", " 00 ab ff", "segunda"}));
}

TEST_F(Trace, RingWrapsPastTheLimitAndOverwritesInPlace) {
  // Header 29 bytes, each line 28 (stamp 20 + "line NN\n"): lines start at 29,
  // 57 and 85; 85 equals the limit and does not wrap, 113 does.
  start("Trace=1\nTamanho=85");
  for (int i = 0; i < 8; ++i) dumpLog("line %02d\n", i);
  EXPECT_EQ(read_file("Orbelan.txt").size(), 113u);
  EXPECT_EQ(fCircular, 1);
  EXPECT_EQ(posicao, 28);
  EXPECT_EQ(log_lines(), (std::vector<std::string>{"line 07", "line 04", "line 05", "line 06", ""}));

  // A deleted log is recreated without header and appended to from 0.
  std::remove("Orbelan.txt");
  dumpLog("again\n");
  dumpLog("more\n");
  EXPECT_EQ(fCircular, 0);
  EXPECT_EQ(log_lines(), (std::vector<std::string>{"again", "more"}));
}

