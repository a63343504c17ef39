// The library seen from outside: what it exports, under which versions and soname.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace {

std::string run(const std::string& cmd) {
  std::string out;
  if (FILE* p = popen(cmd.c_str(), "r")) {
    for (char buf[512]; fgets(buf, sizeof buf, p) != nullptr;) out += buf;
    pclose(p);
  }
  return out;
}

std::string slurp(const std::string& path) {
  std::ifstream f(path);
  return {std::istreambuf_iterator<char>(f), {}};
}

}  // namespace

TEST(Exports, OnlyTheDeclaredE4FunctionsUnderTheirVersionNodes) {
  std::map<std::string, std::string> script, lib;  // name -> version node
  const std::string map = slurp(ORBELAN_SOURCE_DIR "/symbols/libOrbelan.map");
  const std::regex entry(R"((Orbelan_[0-9.]+) \{|\s(E4\w+);)");
  std::string node;
  for (auto it = std::sregex_iterator(map.begin(), map.end(), entry); it != std::sregex_iterator(); ++it)
    if ((*it)[1].matched) node = (*it)[1];
    else script[(*it)[2]] = node;

  std::set<std::string> declared;
  const std::string header = slurp(ORBELAN_SOURCE_DIR "/include/orbelan.h");
  const std::regex proto(R"(ORBELAN_API unsigned short (E4\w+)\()");
  for (auto it = std::sregex_iterator(header.begin(), header.end(), proto); it != std::sregex_iterator(); ++it)
    declared.insert((*it)[1]);

  // The library's exports; the version nodes themselves are "A" symbols.
  std::istringstream nm(run(std::string("nm -D --defined-only --with-symbol-versions ") + ORBELAN_LIBRARY));
  const std::regex line(R"(^[0-9a-f]+ (\w) ([^@\s]+)(@@?(\S+))?$)"), version(R"(Orbelan_[1-5]\.[05])");
  for (std::string l; std::getline(nm, l);) {
    std::smatch m;
    ASSERT_TRUE(std::regex_match(l, m, line)) << l;
    if (m[1] == "A") {
      EXPECT_TRUE(std::regex_match(m[2].str(), version)) << l;
    } else {
      EXPECT_EQ(m[1], "T") << l;
      EXPECT_TRUE(script.count(m[2])) << "exported symbol not in the API: " << l;
      lib[m[2]] = m[4];
    }
  }
  for (const auto& [fn, ver] : script) {
    EXPECT_TRUE(declared.count(fn)) << fn << " is versioned but not declared in orbelan.h";
    EXPECT_EQ(lib[fn], ver) << fn;
  }
  for (const auto& fn : declared) EXPECT_TRUE(script.count(fn)) << fn << " is declared but has no version node";
  const std::string dyn = run(std::string("objdump -p ") + ORBELAN_LIBRARY);
  EXPECT_NE(dyn.find("SONAME               libOrbelan.so.5"), std::string::npos) << dyn;
}
