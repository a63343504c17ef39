// The library seen from outside: what it exports, and under which versions.
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace {

std::string run(const std::string& cmd) {
  std::string out;
  if (FILE* p = popen(cmd.c_str(), "r")) {
    char buf[512];
    while (fgets(buf, sizeof buf, p) != nullptr) out += buf;
    pclose(p);
  }
  return out;
}

}  // namespace

TEST(Exports, OnlyE4FunctionsEachUnderAVersionNode) {
  const std::string out =
      run(std::string("nm -D --defined-only --with-symbol-versions ") + ORBELAN_LIBRARY);
  ASSERT_FALSE(out.empty());
  const std::regex line(R"(^[0-9a-f]+ (\w) ([^@\s]+)(@@?(\S+))?$)");
  std::set<std::string> versions;
  int functions = 0;
  std::istringstream in(out);
  for (std::string l; std::getline(in, l);) {
    std::smatch m;
    ASSERT_TRUE(std::regex_match(l, m, line)) << l;
    const std::string name = m[2], version = m[4];
    if (m[1] == "A") {  // the version nodes themselves
      EXPECT_TRUE(std::regex_match(name, std::regex(R"(Orbelan_[1-5]\.[05])"))) << name;
      versions.insert(name);
      continue;
    }
    EXPECT_EQ(m[1], "T") << l;
    EXPECT_EQ(name.rfind("E4", 0), 0u) << "exported symbol not in the API: " << name;
    EXPECT_TRUE(std::regex_match(version, std::regex(R"(Orbelan_[1-5]\.[05])"))) << l;
    ++functions;
  }
  EXPECT_GT(functions, 10);
  EXPECT_TRUE(versions.count("Orbelan_1.0"));
  EXPECT_TRUE(versions.count("Orbelan_5.5"));
}

TEST(Exports, SonameIsMajorVersionFive) {
  const std::string out = run(std::string("objdump -p ") + ORBELAN_LIBRARY);
  EXPECT_NE(out.find("SONAME               libOrbelan.so.5"), std::string::npos) << out;
}
