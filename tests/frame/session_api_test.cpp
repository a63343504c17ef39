#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

TEST_F(Session, OpenReadsIdentity) {
  char serie[32] = "", cgc[32] = "", ie[32] = "", im[32] = "", cliche[600] = "", firm[16] = "", seq[16] = "";
  unsigned char modelo = 0;
  EXPECT_EQ(E4InfECF(serie, cgc, ie, im, cliche, firm, seq, &modelo), 0);
  EXPECT_STREQ(serie, "ZD010203040506070809");
}
