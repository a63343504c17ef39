// Calls before the session is open, callers passing NULL, and a driver
// reporting more reply bytes than the reply buffer holds.
#include <cstring>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

void call_everything_with_null() {
  E4GetError(nullptr);
  E4InfECF(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  for (int opc = -1; opc <= 11; ++opc) E4InfEspECF(opc, nullptr);
  E4Status(nullptr);
  E4StaECF(nullptr, nullptr);
  E4RdData(nullptr, nullptr, nullptr, nullptr, nullptr);
}

// A reply filling `size` bytes with no terminator anywhere, reported as far
// longer than any reply buffer.
void oversized(int cmd, std::size_t size, std::uint8_t marker_at, std::uint8_t marker) {
  std::vector<std::uint8_t> b(size, 'A');
  b[marker_at] = marker;
  vp_set_reply_len(cmd, 0, b.data(), static_cast<int>(b.size()), 100000);
}

}  // namespace

TEST_F(Fresh, EveryOperationIsRefusedBeforeOpening) {
  char text[600] = "x";
  char out[600] = "old";
  char sinal = 'x';
  unsigned char b1 = 9, b2 = 9, reg = 40;
  unsigned int err = 77;
  const unsigned short results[] = {
      E4Close(), E4Status(text), E4StaECF(&b1, &b2), E4RdData(text, text, &b1, text, &b2), E4Verao(1),
      E4InfECF(text, text, text, text, text, text, text, &b1), E4InfEspECF(2, text), E4InfEspECF(10, text),
      // documents
      E4IniCP(2, ""), E4IniCup(2), E4Cons("Maria", "1", "Rua"), E4IteCFEsp2(20, "1", "X", "1", "1", "kg", 1),
      E4CanIt(20, 1), E4AcrIt(2, 20, 1, out, nullptr), E4DesCup(0, "1"), E4RegPag(61, "1,00"), E4CorteImp(0),
      E4FimCP(0, "x"), E4FimCup(), E4AvancaPapel(0, 1), E4CortaPapel(), E4CanCup(), E4CanCupEsp(),
      // registers and readings
      E4RPPrim(1), E4RPProx(1, out, &sinal, &b1), E4VerRP(40, out, &sinal), E4RPCria(1, "X", "+", &reg),
      E4ValRed(0, out), E4ValImp(20, out), E4InfCup(1, out), E4RegMemFisc(3, out), E4DadosReducao(out),
      E4LeMFDEsp(9, 1, "1", "2", "x.txt"), E4LMFSerial(1, 0, "1", "2", "x.txt"), E4LMF(1, 0, "1", "2"),
      // peripherals and variants
      E4ImpCodB(2, 1, 80, 0, "123"), E4OpenGv(), E4LeCMC7(out), E4RPCria_JP(5, "X", "1", nullptr),
      E4CanCP_JP(1, 3), E4FimDoc_JP()};
  for (std::size_t i = 0; i < std::size(results); ++i) EXPECT_EQ(results[i], 2869) << "call " << i;
  EXPECT_STREQ(text, "x");
  EXPECT_EQ(b2, 9);
  EXPECT_EQ(reg, 40);
  // Outputs cleared all the same.
  EXPECT_EQ(E4GetError(&err), 2869);
  EXPECT_EQ(err, 0u);
  for (auto read : {E4ValAtu, E4ValAtuEsp_JP}) {
    std::strcpy(out, "old");
    EXPECT_EQ(read(8, out), 2869);
    EXPECT_STREQ(out, "");
  }
  EXPECT_EQ(E4RPLe(1, out, &sinal, &b1), 2869);
  EXPECT_EQ(b1, 0);
  EXPECT_EQ(E4StatGv(&b1), 2869);
  EXPECT_EQ(b1, 0);
  EXPECT_EQ(E4ImpItem(0), 0);  // only a layout choice: allowed before the session
  EXPECT_EQ(vp_call_count(), 0);
  for (const char* file : {"Orbelan.txt", "EcfZandor.pgt", "x.txt"}) EXPECT_FALSE(file_exists(file)) << file;

  // The refused cut switch left end-of-document cutting on, and the refused
  // identification was not kept.
  vp_answer_identity();
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_EQ(E4CortaPapel(), 2960);
  EXPECT_EQ(E4IniCP(2, ""), 0);
  EXPECT_EQ(last_input(141).size(), 5u);
  E4Close();
}

TEST_F(Fresh, NullArgumentsClosedAndOpen) {
  call_everything_with_null();
  vp_answer_identity();
  ASSERT_EQ(E4OpenEsp(nullptr, 0), 0);
  push(30, 0, {1, 'C', 0, 'X', 0, 'E', 0});
  push(27, 0, {2});
  call_everything_with_null();
  EXPECT_EQ(E4Close(), 0);
}

TEST_F(Fresh, ReplyLengthsBeyondTheBufferAreClamped) {
  oversized(21, 25, 0, 1);
  oversized(86, 10, 0, 6);
  oversized(236, 50, 0, 'A');
  oversized(28, 60, 1, 2);
  oversized(61, 10, 0, 'A');
  oversized(53, 10, 0, 1);
  oversized(10, 40, 0, 'A');
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_TRUE(logged("Executa_FC_Operacao5600 - fim com ret=0 tamanho=100000 "));

  oversized(30, 255, 0, 1);
  oversized(5, 20, 0, 'A');
  oversized(6, 10, 0, 'A');
  oversized(3, 15, 0, 'A');
  oversized(27, 10, 0, 'A');
  oversized(24, 10, 0, 'A');
  char big[600];
  char small[32];
  unsigned char b1, b2;
  unsigned int err;
  EXPECT_EQ(E4InfECF(small, small, small, small, big, small, small, &b1), 0);
  EXPECT_EQ(std::strlen(big), 254u + 2);
  for (int opc = 0; opc <= 10; ++opc) EXPECT_EQ(E4InfEspECF(opc, big), 0) << opc;
  unsigned char model;  // option 0 writes one byte
  EXPECT_EQ(E4InfEspECF(0, reinterpret_cast<char*>(&model)), 0);
  EXPECT_EQ(model, 6);
  EXPECT_EQ(E4Status(small), 0);
  EXPECT_EQ(E4StaECF(&b1, &b2), 0);
  EXPECT_EQ(E4RdData(small, small, &b1, small, &b2), 0);
  EXPECT_EQ(E4Verao(1), 0);
  EXPECT_EQ(E4GetError(&err), 0);
  EXPECT_EQ(err, 0x4141u);
  EXPECT_EQ(E4Close(), 0);
}
