// The library against the virtual printer's fiscal model with nothing
// scripted: a fixture from a factory-fresh printer and what a user sees of it.
#pragma once

#include <array>
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
    vp_set_clock(2026, 3, 9, 9, 15, 0);
    ASSERT_EQ(E4Open(0, 0), 0);
  }
  void TearDown() override {
    E4Close();
    vp_use_model(0);
  }
};

inline std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) out.push_back(line);
  return out;
}

// The paper tape from its last line starting with `title` (the whole tape
// when `title` is empty), up to the next cut.
inline std::vector<std::string> tape_from(const std::string& title = "") {
  const auto all = lines_of(orbtest::read_file(vp_tape_path()));
  std::size_t from = 0;
  if (!title.empty()) {
    from = all.size();
    for (std::size_t i = 0; i < all.size(); ++i)
      if (all[i].find(title) != std::string::npos) from = i;
  }
  std::vector<std::string> out;
  for (std::size_t i = from; i < all.size() && all[i].find("(corte)") == std::string::npos; ++i)
    out.push_back(all[i]);
  return out;
}

// The figure a tape line labelled `label` ends with ("" when none is printed).
inline std::string figure(const std::vector<std::string>& tape, const std::string& label) {
  for (const auto& l : tape)
    if (l.rfind(label, 0) == 0 && l.size() > label.size() && l[label.size()] == ' ')
      return l.substr(l.find_last_of(' ') + 1);
  return "";
}

inline bool printed(const std::string& text) {
  return orbtest::read_file(vp_tape_path()).find(text) != std::string::npos;
}

// A register's current value as the library reads it, in cents.
inline long long value(unsigned char reg) {
  std::array<char, 40> v{};
  EXPECT_EQ(E4ValAtu(reg, v.data()), 0) << "register " << int(reg);
  return std::stoll("0" + std::string(v.data()));
}

// Cents as the tape prints them: "1.234,56".
inline std::string money(long long cents) {
  std::string units = std::to_string(cents / 100);
  for (int at = static_cast<int>(units.size()) - 3; at > 0; at -= 3) units.insert(at, ".");
  const long long c = cents % 100;
  return units + "," + (c < 10 ? "0" : "") + std::to_string(c);
}

}  // namespace e2e
