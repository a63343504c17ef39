// The search for the first free number of a category.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orbelan.h"
#include "registers/partials.h"
#include "support/fixture.h"

using namespace orbtest;
using namespace orbelan;

TEST_F(Session, FreeNumberSearch) {
  std::vector<std::uint8_t> full5, full6;
  for (std::uint8_t r = 60; r <= 78; ++r) full5.push_back(r);
  for (std::uint8_t r = 116; r <= 131; ++r) full6.push_back(r);
  struct Case {
    int tipo;
    std::vector<std::uint8_t> list;
    unsigned short ret;
    int livre;
  } cases[] = {
      {5, {20, 40, 60, 61, 63, 116}, 0, 62}, {5, full5, 2582, 0},   {5, {20, 21, 40}, 0, 60},
      {5, {61, 62}, 0, 60},                  {5, {}, 0, 60},        {1, {40, 41, 42, 60}, 0, 43},
      {2, {20, 32, 34}, 0, 21},              {4, {36, 37, 38, 39}, 2582, 0},
      {6, full6, 2582, 0} /* 132 is never offered */,               {6, {116, 117, 132}, 0, 118},
      {3, {}, 0, 0},                         {3, {20, 40}, 2582, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "Tipo " << c.tipo << " livre " << c.livre);
    push(38, 0, c.list);
    std::uint8_t livre = 0xEE;
    EXPECT_EQ(Proximo_Registrador_Livre(c.tipo, &livre), c.ret);
    EXPECT_EQ(livre, c.livre);
  }
  push(38, 10);
  std::uint8_t livre = 9;
  EXPECT_EQ(Proximo_Registrador_Livre(5, &livre), 2570);
  EXPECT_EQ(livre, 0);
  // The walk's cache is not touched.
  EXPECT_EQ(Ultima_Categoria_Lida, 0);
  EXPECT_EQ(TamListaRegistradores, 0);
}
