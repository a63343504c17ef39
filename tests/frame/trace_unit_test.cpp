// The trace log module driven directly: control file, log file and ring.
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <string>
#include <vector>

#include "frame/dumplog.h"
#include "support/fixture.h"

using namespace orbelan;
using namespace orbtest;

namespace {

const std::string kHeader = "Arquivo de LOG Orbelan.txt:\n\n";  // 29 bytes
const std::string kStamp = R"(\d\d/\d\d/\d\d \d\d:\d\d:\d\d - )";

class Trace : public ::testing::Test {
 protected:
  void SetUp() override {
    flgLog = fCircular = posicao = 0;
    TamLog = 5000000;
    for (const char* f : {"Orbelan.cfg", "Orbelan.txt"}) std::remove(f);
  }
  void TearDown() override { closeLog(); }
  // Reads `cfg` as the control file and opens the log.
  void start(const std::string& cfg) {
    write_file("Orbelan.cfg", cfg);
    openCfg("Orbelan");
    openLog("Orbelan", "Orbelan.txt");
  }
};

}  // namespace

TEST_F(Trace, ControlFileLevelAndSize) {
  // A missing control file is created, and the trace stays off.
  EXPECT_EQ(openCfg("Orbelan"), 0);
  EXPECT_EQ(read_file("Orbelan.cfg"), "Trace=0\nTamanho=5000000");
  openLog("Orbelan", "Orbelan.txt");
  dumpLog("nada %d\n", 1);
  dumpBytes("\x01", 1);
  EXPECT_FALSE(file_exists("Orbelan.txt"));

  // The key's name is not examined; the level is one digit, the first after a "=" in sixth place; the size is looked
  // for from that digit on, within the first 50 bytes, and is kept when zero.
  const struct {
    std::string cfg;
    int level, size;
  } cases[] = {{"Trace=1", 1, 5000000},           {"XXXXX=3\nTamanho=1000", 3, 1000},
               {"Trace=12\nTamanho=2000", 1, 2000}, {"Trace=x5", 5, 5000000},
               {"Trace:3\nTamanho=1000", 0, 5000000}, {"Trace=Tamanho=800", 8, 5000000},
               {"Trace=2\nTamanho=0", 2, 5000000},  {"Trace=2\nTamanho=-50", 2, -50},
               {"Trace=1\n" + std::string(31, ' ') + "Tamanho=123456", 1, 123},
               {"Trace=1\n" + std::string(41, ' ') + "Tamanho=1000", 1, 5000000}};
  for (const auto& c : cases) {
    write_file("Orbelan.cfg", c.cfg);
    flgLog = 7, TamLog = 77;
    EXPECT_EQ(openCfg("Orbelan"), c.level) << c.cfg;
    EXPECT_EQ((std::pair{flgLog, TamLog}), (std::pair{c.level, c.size})) << c.cfg;
  }
}

TEST_F(Trace, LinesDumpsAndContinuation) {
  // Lines and dumps longer than the line buffer are written whole.
  start("Trace=1\nTamanho=1000000");
  dumpLog("Teste%s - fim com ret=%d \n", "5600", 7);
  dumpBytes("\x00\xab\xff", 3);
  dumpLog("texto=%s fim=%d\n", std::string(5000, 'L').c_str(), 42);
  const std::vector<unsigned char> bytes(1000, 0x5a);
  dumpBytes(bytes.data(), 1000);
  dumpLog("%s", "");  // nothing to format, and dumps of nothing
  dumpBytes(nullptr, 5), dumpBytes("x", -1);
  const std::string text = read_file("Orbelan.txt");
  EXPECT_TRUE(std::regex_match(text, std::regex(kHeader + kStamp + "Teste5600 - fim com ret=7 \n 00 ab ff\n" + kStamp +
                                                "texto=L{5000} fim=42\n(?: 5a){1000}\n" + kStamp + "\n\n")))
      << text.substr(0, 200);
  EXPECT_EQ(posicao, static_cast<int>(text.size()));

  // Closed, nothing is written; reopened, the log is continued without a new header.
  closeLog();
  dumpLog("perdida\n");
  start("Trace=1");
  EXPECT_EQ(posicao, static_cast<int>(text.size()));
  dumpLog("segunda\n");
  const std::string more = read_file("Orbelan.txt");
  EXPECT_TRUE(more.starts_with(text) && std::regex_match(more.substr(text.size()), std::regex(kStamp + "segunda\n")))
      << more.substr(text.size());
}

TEST_F(Trace, RingWrapsPastTheLimitAndOverwritesInPlace) {
  // Header 29 bytes, each line 28 (stamp 20 + "line NN\n"): lines start at 29, 57 and 85; 85 equals the limit and does
  // not wrap, 113 does.
  start("Trace=1\nTamanho=85");
  for (int i = 0; i < 8; ++i) dumpLog("line %02d\n", i);
  EXPECT_EQ(read_file("Orbelan.txt").size(), 113u);
  EXPECT_EQ((std::pair{fCircular, posicao}), (std::pair{1, 28}));
  EXPECT_EQ(log_lines(), (std::vector<std::string>{"line 07", "line 04", "line 05", "line 06", ""}));

  // A deleted log is recreated without header and appended to from 0.
  std::remove("Orbelan.txt");
  dumpLog("again\n");
  dumpLog("more\n");
  EXPECT_EQ(fCircular, 0);
  EXPECT_EQ(log_lines(), (std::vector<std::string>{"again", "more"}));

  // A line far past the limit is written whole; the next starts at the top.
  dumpLog("%s\n", std::string(300, 'a').c_str());
  EXPECT_EQ(posicao, 51 + 20 + 301);
  dumpLog("um\n");
  dumpBytes("\x01\x02", 2);
  EXPECT_EQ(posicao, 23 + 7);
  const std::string text = read_file("Orbelan.txt");
  EXPECT_EQ(text.size(), 51u + 20 + 301);
  EXPECT_TRUE(std::regex_match(text.substr(0, 30), std::regex(kStamp + "um\n 01 02\n"))) << text.substr(0, 30);
}
