// How trace lines reach the file: whole, each in one piece where it fits the
// line buffer, and in pieces that still make one line where it does not; the
// ring position follows every byte written.
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <string>
#include <vector>

#include "frame/dumplog.h"
#include "support/fixture.h"

using namespace orbelan;
using orbtest::read_file;
using orbtest::write_file;

namespace {

const std::string kStamp = R"(\d\d/\d\d/\d\d \d\d:\d\d:\d\d - )";

class TraceWrite : public ::testing::Test {
 protected:
  void SetUp() override {
    flgLog = 0;
    TamLog = 5000000;
    fCircular = 0;
    posicao = 0;
    std::remove("Orbelan.txt");
    write_file("Orbelan.cfg", "Trace=1\nTamanho=" + std::to_string(limite));
    openCfg("Orbelan");
    openLog("Orbelan", "Orbelan.txt");
  }
  void TearDown() override { closeLog(); }
  long limite = 5000000;
};

std::string header() { return "Arquivo de LOG Orbelan.txt:\n\n"; }

}  // namespace

TEST_F(TraceWrite, LinesLongerThanTheLineBufferAreWrittenWhole) {
  const std::string longa(5000, 'L');
  dumpLog("antes\n");
  dumpLog("texto=%s fim=%d\n", longa.c_str(), 42);
  std::vector<unsigned char> bytes(1000);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i);
  dumpBytes(bytes.data(), static_cast<int>(bytes.size()));
  dumpLog("depois\n");

  std::string dump;
  char hex[4];
  for (unsigned char b : bytes) {
    std::snprintf(hex, sizeof hex, " %02x", b);
    dump += hex;
  }
  const std::string text = read_file("Orbelan.txt");
  EXPECT_TRUE(std::regex_match(text, std::regex(header() + kStamp + "antes\n" + kStamp + "texto=" + longa +
                                                " fim=42\n" + dump + "\n" + kStamp + "depois\n")))
      << text.substr(0, 200);
  EXPECT_EQ(posicao, static_cast<int>(text.size()));
}

TEST_F(TraceWrite, FormatWithoutFieldsAndEmptyDumps) {
  dumpLog("%s", "");
  dumpBytes(nullptr, 5);
  dumpBytes("x", -1);
  dumpLog("fim\n");
  EXPECT_TRUE(std::regex_match(read_file("Orbelan.txt"), std::regex(header() + kStamp + "\n\n" + kStamp + "fim\n")));
}

class TraceWriteRing : public TraceWrite {
 protected:
  TraceWriteRing() { limite = 100; }
};

TEST_F(TraceWriteRing, LongLinesKeepTheRingPosition) {
  // Header 29 bytes; a 300-byte text passes the limit at once, so the next
  // line starts again at the top and the one after it right behind.
  dumpLog("%s\n", std::string(300, 'a').c_str());
  EXPECT_EQ(posicao, 29 + 20 + 301);
  dumpLog("um\n");
  EXPECT_EQ(fCircular, 1);
  EXPECT_EQ(posicao, 23);
  dumpBytes("\x01\x02", 2);
  EXPECT_EQ(posicao, 23 + 7);
  const std::string text = read_file("Orbelan.txt");
  EXPECT_EQ(text.size(), 29u + 20 + 301);
  EXPECT_TRUE(std::regex_match(text.substr(0, 30), std::regex(kStamp + "um\n 01 02\n"))) << text.substr(0, 30);
}
