// The journal's capacity figures and serial number.
#include "registers/journal.h"

#include <array>
#include <string>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;
using namespace orbelan;

namespace {

// Command 14's reply: the size code at 8, the free share at 9..12.
Bytes details(std::uint8_t size_code, const std::string& free) {
  auto b = bytes_with(30, 9, free);
  b[8] = size_code;
  return b;
}

using JournalFigures = Session;

TEST_F(JournalFigures, DetailsAndFreeBytesInSinglePrecision) {
  std::array<char, 11> size{};
  std::array<char, 6> free{};
  push(14, 0, details(3, "2500"));
  EXPECT_EQ(Ler_Detalhes_MFD(size.data(), free.data()), 0);
  EXPECT_STREQ(size.data(), "1073741824");
  EXPECT_STREQ(free.data(), "02500");
  push(14, 0, details(4, "2500"));
  EXPECT_EQ(Ler_Detalhes_MFD(size.data(), free.data()), 0);
  EXPECT_STREQ(size.data(), "");

  std::array<char, 17> v{};
  const std::pair<std::uint8_t, const char*> cases[] = {
      {1, "0000000033124936"},  // 33124935.27 exactly
      {2, "0000000066249872"},
      {9, "0000000000000000"}};  // unknown size
  for (const auto& [code, want] : cases) {
    push(14, 0, details(code, "1234"));
    EXPECT_EQ(Calcular_Qtde_MFD_Disponivel(v.data()), 0);
    EXPECT_STREQ(v.data(), want);
  }
  push(14, 1);
  EXPECT_EQ(Calcular_Qtde_MFD_Disponivel(v.data()), 2561);
  EXPECT_STREQ(v.data(), "");
}

TEST_F(JournalFigures, UsedShareAndReductionsLeft) {
  std::array<char, 7> used{};
  for (const auto& [free, want] : {std::pair{"2500", "007500"}, {"9999", "000001"}, {"0000", "010000"}}) {
    push(14, 0, details(1, free));
    EXPECT_EQ(Calcular_Percentual_MFD_Utilizada(used.data()), 0);
    EXPECT_STREQ(used.data(), want);
  }
  std::array<char, 5> left{};
  for (const auto& [made, want] : {std::pair{"0100", "2090"}, {"2189", "0001"}, {"2190", "0000"}, {"2500", "0000"}}) {
    push(133, 0, bytes_with(10, 1, made));
    EXPECT_EQ(Calcular_Qtde_Reducoes_Restantes(left.data()), 0);
    EXPECT_STREQ(left.data(), want);
  }
  EXPECT_EQ(last_input(133).at(2), 4);
}

TEST_F(JournalFigures, SerialNumberIsFourteenBytes) {
  std::array<char, 15> serie{};
  push(231, 0, bytes_with(20, 0, "MF123456789012XYZ"));
  EXPECT_EQ(ConsultaNumeroSerieMFD(serie.data()), 0);
  EXPECT_STREQ(serie.data(), "MF123456789012");
  EXPECT_EQ(last_input(231).size(), 2u);
  E4Close();
  EXPECT_EQ(ConsultaNumeroSerieMFD(serie.data()), 2869);
  EXPECT_STREQ(serie.data(), "");
}

}  // namespace
