// Identity, clock and status queries, callers passing NULL, and a driver
// reporting more reply bytes than the reply buffer holds.
#include <cstring>
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

std::string status() {
  char s[16] = "";
  EXPECT_EQ(E4Status(s), 0);
  return s;
}

std::string inf(int opc) {
  char buf[600] = {};
  EXPECT_EQ(E4InfEspECF(opc, buf), 0) << opc;
  return buf;
}

// E4InfECF's texts joined by "|", then the model.
std::string inf_ecf(unsigned short ret = 0) {
  char serie[32] = "x", cgc[32] = "x", ie[32] = "x", im[32] = "x", cliche[600] = "x", firm[16] = "x", seq[16] = "x";
  unsigned char modelo = 9;
  EXPECT_EQ(E4InfECF(serie, cgc, ie, im, cliche, firm, seq, &modelo), ret);
  return std::string(serie) + "|" + cgc + "|" + ie + "|" + im + "|" + cliche + "|" + firm + "|" + seq + "|" +
         std::to_string(modelo);
}

Bytes with(Bytes b, std::size_t at, std::uint8_t v) {
  if (b.size() <= at) b.resize(at + 1);
  b[at] = v;
  return b;
}

// Command, flag, mode and input length of a recorded call.
std::string shape(const vp_call& c) {
  return std::to_string(c.cmd) + "/" + std::to_string(c.flag) + "/" + std::to_string(c.mode) + "/" +
         std::to_string(c.inlen);
}

const Bytes kCliche = with(bytes_with(40, 1, std::string("CABECALHO\0OUTRO\0RUA X, 1", 25)), 0, 1);

void call_everything_with_null() {
  E4GetError(nullptr);
  E4InfECF(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  for (int opc = -1; opc <= 11; ++opc) E4InfEspECF(opc, nullptr);
  E4Status(nullptr);
  E4StaECF(nullptr, nullptr);
  E4RdData(nullptr, nullptr, nullptr, nullptr, nullptr);
}

// A reply of `size` bytes reported as far longer than any reply buffer.
void oversized(int cmd, std::size_t size, std::uint8_t marker_at = 0, std::uint8_t marker = 'A') {
  std::vector<std::uint8_t> b(size, 'A');
  b[marker_at] = marker;
  vp_set_reply_len(cmd, 0, b.data(), static_cast<int>(b.size()), 100000);
}

}  // namespace

TEST_F(Session, StatusPositions) {
  // One response byte at a time; position 8 is set while its byte is zero.
  const std::pair<int, std::size_t> moves[] = {{1, 1}, {2, 2}, {3, 3}, {4, 5}, {5, 4}, {8, 8}, {10, 10}};
  for (int byte = 0; byte < 20; ++byte) {
    push(5, 0, with(Bytes(20, 0), static_cast<std::size_t>(byte), 0x80));
    std::string want = "00000000100000";
    for (auto [from, to] : moves)
      if (from == byte) want[to] = want[to] == '1' ? '0' : '1';
    EXPECT_EQ(status(), want) << "byte " << byte;
  }
  EXPECT_EQ(shape(operations().back()), "5/1/0/0");
  push(5, 2);  // a failed query still clears the caller's text
  char s[16] = "xxxxxxxxxxxxxxx";
  EXPECT_EQ(E4Status(s), 2049);
  EXPECT_STREQ(s, "00000000000000");
}

TEST_F(Fresh, PaperLowIsReportedOnceEveryLowPaperCounterPlusOneQueries) {
  write_file("quorvel.conf", "[QuorvelPOS\\ImpressoraFiscal]\nLowPaperCounter=2\n");
  vp_answer_identity();
  ASSERT_EQ(E4Open(0, 0), 0);
  stick(5, 0, with(Bytes(20, 0), 5, 1));
  std::string seen;
  for (int i = 0; i < 7; ++i) seen += status()[4];
  EXPECT_EQ(seen, "1001001");
  stick(5, 0, Bytes(20, 0));
  EXPECT_EQ(status()[4], '0');
  E4Close();
}

TEST_F(Fresh, SerialNumberAndTaxIdentifiersAtOpening) {
  vp_answer_identity();
  const auto serial = [](const std::string& text, std::uint8_t at21) {
    return with(with(bytes_with(25, 1, text), 0, 1), 21, at21);
  };
  // A wrong marker fails the opening, which stops there; the session stays
  // marked open with empty identity texts (not the placeholders).
  stick(21, 0, with(serial("ABC", 0), 0, 0));
  EXPECT_EQ(E4Open(0, 0), 2049);
  EXPECT_EQ(commands(), (Cmds{21, 3, 3}));  // error reads by the query and the opening
  EXPECT_EQ(inf_ecf(), "||||\r\n|||0");
  ASSERT_EQ(E4Close(), 0);
  const std::pair<Bytes, std::string> cases[] = {
      {serial("ABCDEFGHIJKLMNOPQRST", 'U'), "ABCDEFGHIJKLMNOPQRSTU"},  // 20 + the byte at 21
      {serial("ABCDEFGHIJKLMNOPQRS", 'Y'), "ABCDEFGHIJKLMNOPQRSY"},    // 19, NUL, byte at 21
      {serial("ABC", 0), "ABC"},
      {serial(std::string(24, 'S'), 'S'), std::string(24, 'S')}};
  for (const auto& [reply, want] : cases) {
    stick(21, 0, reply);
    ASSERT_EQ(E4Open(0, 0), 0);
    EXPECT_EQ(inf(3), want);
    ASSERT_EQ(E4Close(), 0);
  }
  EXPECT_EQ(last_input(28), (Bytes{last_input(28)[0], 0, 255}));
  stick(28, 0, with(bytes_with(60, 14, "12.345.678/0001-90"), 1, 1));
  vp_clear_calls();
  EXPECT_EQ(E4Open(0, 0), 2049);
  EXPECT_EQ(commands(), (Cmds{21, 86, 236, 28, 3, 3}));
  EXPECT_EQ(inf_ecf().substr(0, 26), std::string(24, 'S') + "||");  // no tax identifiers
  E4Close();
}

TEST_F(Session, IdentityTexts) {
  const std::string ids = "ZD010203040506070809|12.345.678/0001-90|123.456.789.110|4455667|";
  push(30, 0, kCliche);
  EXPECT_EQ(inf_ecf(), ids + "CABECALHO\r\nRUA X, 1|010502|001|6");
  EXPECT_EQ(shape(operations().front()), "30/0/0/2");
  // Without the marker the header and address are empty; a failed header
  // query leaves firmware, sequence and model empty.
  push(30, 0, with(kCliche, 0, 2));
  EXPECT_EQ(inf_ecf(), ids + "\r\n|010502|001|6");
  push(30, 38);
  EXPECT_EQ(inf_ecf(2872), ids + "|||0");

  push(30, 0, kCliche);
  EXPECT_EQ(inf(0) + "|" + inf(1) + "|" + inf(2) + "|" + inf(3) + "|" + inf(5),
            "\x06|010502|CABECALHO\r\nRUA X, 1|ZD010203040506070809|001");
  char buf[600];
  std::memset(buf, 'x', sizeof buf);
  ASSERT_EQ(E4InfEspECF(4, buf), 0);
  EXPECT_EQ(std::string(buf, 43), std::string("12.345.678/0001-90\0" "123.456.789.110\0" "4455667\0", 43));
  // 6, 7 and 8 ask the printer again and refresh the cache; an unknown
  // printer type reads as 0.
  stick(236, 0, bytes_with(20, 0, std::string("OUTRA\0MODELO2", 13)));
  stick(86, 0, with(bytes_with(10, 1, "V02.00.01"), 0, 7));
  EXPECT_EQ(inf(6) + "|" + inf(7) + "|" + inf(8), "OUTRA|MODELO2|V02.00.01");
  EXPECT_EQ(inf(1) + "|" + inf(0), "020001|");
  push(236, 38);
  std::strcpy(buf, "keep");
  EXPECT_EQ(E4InfEspECF(6, buf), 2872);
  EXPECT_STREQ(buf, "keep");

  // 9: owner index and the changes left; binary, so not traced.
  push(27, 0, {3});
  ASSERT_EQ(E4InfEspECF(9, buf), 0);
  EXPECT_EQ(std::string(buf, 2), "\x03\x07");
  push(27, 0, {12});
  ASSERT_EQ(E4InfEspECF(9, buf), 0);
  EXPECT_EQ(buf[1], 0);
  // 10: owner date and time; the driver's code comes back raw and is translated once.
  push(28, 0, bytes_with(70, 2, "010120261230"));
  EXPECT_EQ(inf(10), "010120261230");
  EXPECT_EQ(last_input(28), (Bytes{last_input(28)[0], 0, 255}));
  vp_clear_calls();
  push(28, 38);
  EXPECT_EQ(E4InfEspECF(10, buf), 2872);
  EXPECT_EQ(commands(), (Cmds{28, 3}));
  for (int opc : {-1, 11}) {
    std::strcpy(buf, "keep");
    EXPECT_EQ(E4InfEspECF(opc, buf), 2049);
    EXPECT_STREQ(buf, "keep");
  }
}

TEST_F(Session, DocumentState) {
  // 99: a state left out of the mapping leaves the caller's value alone.
  const std::pair<int, int> mapped[] = {{0, 0},   {2, 2},   {14, 14}, {15, 99}, {16, 16}, {17, 18},
                                        {18, 18}, {19, 19}, {20, 20}, {21, 99}, {22, 22}, {23, 23},
                                        {24, 99}, {25, 25}, {26, 13}, {27, 99}};
  for (auto [state, want] : mapped) {
    push(6, 0, {static_cast<std::uint8_t>(state), 42});
    unsigned char opc = 99, resp = 0;
    EXPECT_EQ(E4StaECF(&opc, &resp), 0);
    EXPECT_EQ(opc, want) << state;
    EXPECT_EQ(resp, 42);
  }
  EXPECT_EQ(shape(operations().back()), "6/1/0/0");
}

TEST_F(Session, DateTimeAndSummerTime) {
  auto reply = with(with(bytes_with(40, 12, "221120261030"), 11, 1), 24, 1);
  std::memcpy(reply.data() + 25, "23112026", 8);
  push(10, 0, reply);
  char data[16] = "", hora[16] = "", mov[16] = "";
  unsigned char verao = 0, reducao = 0;
  EXPECT_EQ(E4RdData(data, hora, &verao, mov, &reducao), 0);
  EXPECT_EQ(std::string(data) + " " + hora + " " + mov + " " + std::to_string(verao) + std::to_string(reducao),
            "22112026 1030 23112026 11");
  EXPECT_EQ(shape(operations().back()), "10/1/0/0");
  push(10, 38);
  std::strcpy(data, "keep");
  EXPECT_EQ(E4RdData(data, hora, &verao, mov, &reducao), 2872);
  EXPECT_STREQ(data, "keep");
  EXPECT_EQ(verao, 1);

  vp_clear_calls();
  EXPECT_EQ(E4Verao(1), 0);
  EXPECT_EQ(E4Verao(0), 0);
  const auto ops = operations();
  ASSERT_EQ(ops.size(), 2u);
  EXPECT_EQ(shape(ops[0]) + " " + shape(ops[1]), "24/0/0/2 25/0/0/2");
}

TEST_F(Fresh, NullArgumentsAndReplyLengthsBeyondTheBuffer) {
  call_everything_with_null();
  vp_answer_identity();
  ASSERT_EQ(E4OpenEsp(nullptr, 0), 0);
  push(30, 0, {1, 'C', 0, 'X', 0, 'E', 0});
  push(27, 0, {2});
  call_everything_with_null();
  EXPECT_EQ(E4Close(), 0);

  // Replies with no terminator anywhere, reported as 100000 bytes long.
  oversized(21, 25, 0, 1), oversized(86, 10, 0, 6), oversized(236, 50), oversized(28, 60, 1, 2);
  oversized(61, 10), oversized(53, 10, 0, 1), oversized(10, 40);
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_TRUE(logged("Executa_FC_Operacao5600 - fim com ret=0 tamanho=100000 "));
  oversized(30, 255, 0, 1), oversized(5, 20), oversized(6, 10), oversized(3, 15), oversized(27, 10);
  oversized(24, 10);
  char big[600], small[32];
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
