// Fuzz target: the texts an application passes. The input is a function
// number (one byte, modulo the number of calls below), a small number used
// for the call's numeric argument (one byte), a document to leave open first
// (one byte, see fuzz::prepare; its high bit also turns the peripheral
// libraries on), then the texts, separated by NUL bytes (a piece holding only
// 0xFF passes NULL). The session opens against the printer model with the
// monitoring agent enabled, then the chosen function runs with those texts.
#include <cstddef>
#include <cstdint>

#include "harness.h"
#include "orbelan.h"
#include "roads.h"

namespace {

using fuzz::Texts;

void configure(bool perifericos) {
  fuzz::write_file("quorvel.conf", fuzz::quorvel_conf(perifericos));
  fuzz::write_file("Cheque.dat", fuzz::cheque_layout(999));
}

using Call = void (*)(Texts& t, std::uint8_t n);

// The functions that take texts, each called with the next texts in order.
const Call kCalls[] = {
    [](Texts& t, std::uint8_t) { E4Cons(t.next(), t.next(), t.next()); },
    [](Texts& t, std::uint8_t n) { E4IniCP(n, t.next()); },
    [](Texts& t, std::uint8_t n) { E4IniCP_JP(n, t.next()); },
    [](Texts& t, std::uint8_t n) { E4IteCF(n, t.next(), t.next(), t.next(), t.next()); },
    [](Texts& t, std::uint8_t n) { E4IteCFEsp(n, t.next(), t.next(), t.next(), t.next(), t.next()); },
    [](Texts& t, std::uint8_t n) {
      E4IteCFEsp2(static_cast<unsigned char>(20 + n % 16), t.next(), t.next(), t.next(), t.next(), t.next(), n >> 4);
    },
    [](Texts& t, std::uint8_t n) { E4DesIt(n & 3, 20, n >> 2, t.next(), t.next()); },
    // For a percentage the amount is written back: 13 bytes at least.
    [](Texts& t, std::uint8_t n) { E4AcrIt(n & 3, 20, n >> 2, t.next_writable(0, 13), t.next()); },
    [](Texts& t, std::uint8_t n) { E4DesCup(n & 3, t.next()); },
    [](Texts& t, std::uint8_t n) { E4AcrCup(n & 3, t.next()); },
    [](Texts& t, std::uint8_t n) { E4RegPag(n, t.next()); },
    [](Texts& t, std::uint8_t n) { E4RegPagEsp(n, t.next(), t.next()); },
    [](Texts& t, std::uint8_t n) { E4RegPag_JP(n, t.next()); },
    [](Texts& t, std::uint8_t n) { E4RegPagEsp_JP(n, t.next(), t.next()); },
    [](Texts& t, std::uint8_t n) { E4EstornaPgto_JP(n, 60, t.next()); },
    [](Texts& t, std::uint8_t n) { E4FimCP(n & 1, t.next()); },
    [](Texts& t, std::uint8_t n) { E4FimCPEsp_JP(n & 1, n >> 1, t.next()); },
    [](Texts& t, std::uint8_t n) { E4OpeCNF(n, t.next(), t.next(), t.next()); },
    [](Texts& t, std::uint8_t) { E4CancelaCCD(t.next()); },
    [](Texts& t, std::uint8_t) { E4CancelaCCDEsp(t.next()); },
    [](Texts& t, std::uint8_t) { E4Print(t.next()); },
    [](Texts& t, std::uint8_t) {
      // The file printed is one of the texts too.
      const char* nome = t.next_name();
      const char* conteudo = t.next();
      if (conteudo != nullptr && *nome != '\0') fuzz::write_file(nome, conteudo);
      E4ImpVinc(nome, t.next());
    },
    [](Texts& t, std::uint8_t) { E4ProgOp(t.next()); },
    [](Texts& t, std::uint8_t n) {
      unsigned char reg = n >> 3;
      E4RPCria(n & 7, t.next(), t.next(), &reg);
    },
    [](Texts& t, std::uint8_t n) {
      unsigned char reg = n >> 3;
      E4RPCria_JP(n & 7, t.next(), t.next(), &reg);
    },
    [](Texts& t, std::uint8_t n) { E4LMF(n & 3, n >> 2, t.next(), t.next()); },
    [](Texts& t, std::uint8_t n) { E4LMFSerial(n & 3, n >> 2, t.next(), t.next(), t.next_name()); },
    [](Texts& t, std::uint8_t n) { E4LeMFD(n & 7, t.next(), t.next(), t.next_name()); },
    [](Texts& t, std::uint8_t n) { E4LeMFDEsp(n >> 3, n & 7, t.next(), t.next(), t.next_name()); },
    [](Texts& t, std::uint8_t n) {
      const unsigned short bancos[] = {1, 341, 500, 999, 1000};
      E4ImpChq(bancos[n % 5], t.next(), t.next(), t.next(), t.next(), t.next(), t.next());
    },
    // Texto must have room for one more character.
    [](Texts& t, std::uint8_t) { E4Aut(t.next_writable(1)); },
    [](Texts& t, std::uint8_t n) { E4AutEsp(t.next_writable(1), n & 7); },
    [](Texts& t, std::uint8_t n) { E4ImpCodB(n & 15, n >> 4, 50, 0, t.next()); },
    [](Texts& t, std::uint8_t) { E4infOvitraM(t.next(), t.next(), t.next(), t.next()); },
};
constexpr std::size_t kCallCount = sizeof kCalls / sizeof kCalls[0];

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  fuzz::begin();
  configure((data[2] & 0x80) != 0);
  Texts texts(data + 3, size - 3);
  E4Open(0, 0);
  fuzz::prepare(data[2] & 0x7F);
  kCalls[data[0] % kCallCount](texts, data[1]);
  fuzz::end();
  return 0;
}
