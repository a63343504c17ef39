// The library against the virtual printer's fiscal model with nothing
// scripted: a factory-fresh printer and what a user sees of it.
#pragma once

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

namespace e2e {

class OnModel : public orbtest::Fresh {
 protected:
  void SetUp() override {
    Fresh::SetUp();
    vp_use_model(1);
    vp_model_reset();
    vp_set_clock(2026, 11, 22, 10, 30, 0);
    ASSERT_EQ(E4Open(0, 0), 0);
  }
  void TearDown() override {
    E4Close();
    vp_use_model(0);
  }
};

// The paper tape from its last line holding `title` up to the next cut.
inline std::vector<std::string> tape_from(const std::string& title) {
  std::vector<std::string> all, out;
  std::istringstream in(orbtest::read_file(vp_tape_path()));
  for (std::string line; std::getline(in, line);) all.push_back(line);
  std::size_t i = all.size();
  for (std::size_t j = 0; j < all.size(); ++j)
    if (all[j].find(title) != std::string::npos) i = j;
  for (; i < all.size() && all[i].find("(corte)") == std::string::npos; ++i) out.push_back(all[i]);
  return out;
}

inline bool printed(const std::string& text) {
  return orbtest::read_file(vp_tape_path()).find(text) != std::string::npos;
}

// The figures printed after `label` on the tape lines it starts.
inline std::vector<std::string> figures(const std::vector<std::string>& tape, const std::string& label) {
  std::vector<std::string> out;
  for (const auto& l : tape) {
    if (l.rfind(label + " ", 0) != 0) continue;
    std::istringstream in(l.substr(label.size()));
    for (std::string f; in >> f;) out.push_back(f);
  }
  return out;
}
// The last of them ("" when none is printed).
inline std::string figure(const std::vector<std::string>& tape, const std::string& label) {
  const auto f = figures(tape, label);
  return f.empty() ? "" : f.back();
}

// A register's current value as the library reads it.
inline long long value(unsigned char reg) {
  char v[40] = "";
  EXPECT_EQ(E4ValAtu(reg, v), 0) << "register " << int(reg);
  return std::stoll("0" + std::string(v));
}

// Cents below 1.000,00 as the tape prints them.
inline std::string money(long long cents) {
  char text[32];
  std::snprintf(text, sizeof text, "%lld,%02lld", cents / 100, cents % 100);
  return text;
}

}  // namespace e2e
