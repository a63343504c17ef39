// The library seen from outside: what it exports, and under which versions.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>
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

std::string slurp(const std::string& path) {
  std::ifstream f(path);
  std::stringstream s;
  s << f.rdbuf();
  return s.str();
}

// name -> version node, as the library exports them.
std::map<std::string, std::string> exported() {
  std::map<std::string, std::string> out;
  std::istringstream in(run(std::string("nm -D --defined-only --with-symbol-versions ") + ORBELAN_LIBRARY));
  const std::regex fn(R"(^[0-9a-f]+ T (E4\w+)@@?(\S+)$)");
  for (std::string l; std::getline(in, l);)
    if (std::smatch m; std::regex_match(l, m, fn)) out[m[1]] = m[2];
  return out;
}

}  // namespace

TEST(Exports, VersionScriptHeaderAndLibraryAgree) {
  // name -> node, from the version script
  std::map<std::string, std::string> script;
  std::istringstream map(slurp(ORBELAN_SOURCE_DIR "/symbols/libOrbelan.map"));
  std::string node;
  const std::regex open(R"(^(Orbelan_[0-9.]+) \{)"), name(R"(^\s+(E4\w+);)");
  for (std::string l; std::getline(map, l);) {
    std::smatch m;
    if (std::regex_search(l, m, open)) node = m[1];
    else if (std::regex_search(l, m, name)) script[m[1]] = node;
  }
  ASSERT_FALSE(script.empty());

  std::set<std::string> declared;
  const std::string header = slurp(ORBELAN_SOURCE_DIR "/include/orbelan.h");
  const std::regex proto(R"(ORBELAN_API unsigned short (E4\w+)\()");
  for (auto it = std::sregex_iterator(header.begin(), header.end(), proto); it != std::sregex_iterator(); ++it)
    declared.insert((*it)[1]);

  const auto lib = exported();
  for (const auto& [fn, ver] : script) {
    EXPECT_TRUE(declared.count(fn)) << fn << " is versioned but not declared in orbelan.h";
    auto it = lib.find(fn);
    if (it == lib.end())
      ADD_FAILURE() << fn << " is versioned but not exported";
    else
      EXPECT_EQ(it->second, ver) << fn;
  }
  for (const auto& fn : declared) EXPECT_TRUE(script.count(fn)) << fn << " is declared but has no version node";
}

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
