// CMC7 reading: the printer's document station and the reader library.
#include <cstring>
#include <string>
#include <vector>

#include "orbelan.h"
#include "recorder.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Cmc7 = Session;

TEST_F(Cmc7, PrinterReadingIsMappedBoundedAndEmptyOnFailure) {
  push(222, 0, bytes_with(0, 0, "/00123=4567^890/"));
  char valor[300];
  std::memset(valor, 'X', sizeof valor);
  EXPECT_EQ(E4LeCMC7(valor), 0);
  EXPECT_STREQ(valor, ">00123<4567=890>");
  EXPECT_EQ(last_input(222).size(), 4u);
  push(222, 44, bytes_with(0, 0, "123"));
  EXPECT_EQ(E4LeCMC7(valor), 2871);
  EXPECT_STREQ(valor, "");

  E4Close();
  stick(86, 0, bytes_with(10, 1, "V01.05.02"));  // printer type 0: no document station
  ASSERT_EQ(E4Open(0, 0), 0);
  std::strcpy(valor, "stale");
  EXPECT_EQ(E4LeCMC7(valor), 2561);
  EXPECT_STREQ(valor, "");
  EXPECT_EQ(vp_count_cmd(222), 2);
}

using Cmc7Library = PdSession;

TEST_F(Cmc7Library, CopiesTheCountReadUnmappedAndTranslatesErrors) {
  const std::string leitura = "<00123<4567>890=123456789012345678;";  // 35 bytes
  dbl_set_text("readCmc7", leitura.c_str());
  dbl_push_result("readCmc7.count", 34);
  dbl_push_result("readCmc7.count", 500);  // cut to the 37-byte reading buffer
  char valor[64];
  std::memset(valor, 'X', sizeof valor);
  EXPECT_EQ(E4LeCMC7(valor), 0);
  EXPECT_EQ(std::string(valor, 35), leitura.substr(0, 34) + "X");
  EXPECT_EQ(std::string(dbl_get(2)->fn), "cleanCmc7");
  std::memset(valor, 'X', sizeof valor);
  EXPECT_EQ(E4LeCMC7(valor), 0);
  EXPECT_EQ(std::string(valor, 38), leitura + std::string(2, '\0') + "X");
  EXPECT_EQ(vp_count_cmd(222), 0);

  dbl_reset();
  dbl_push_result("bufferCmc7", 420);
  EXPECT_EQ(E4LeCMC7(valor), 2573);
  EXPECT_STREQ(valor, "");
  dbl_push_result("readCmc7", 307);
  EXPECT_EQ(E4LeCMC7(valor), 2871);
  EXPECT_EQ(dbl_count(), 3);  // bufferCmc7, bufferCmc7, readCmc7: no cleanCmc7
}

}  // namespace
