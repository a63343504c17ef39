// Identity, clock and status queries.
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

}  // namespace

TEST_F(Session, StatusPositions) {
  // One response byte at a time; position 8 is set while its byte is zero.
  const std::string none = "00000000100000";
  const std::pair<int, int> moves[] = {{1, 1}, {2, 2}, {3, 3}, {4, 5}, {5, 4}, {8, 8}, {10, 10}};
  for (int byte = 0; byte < 20; ++byte) {
    push(5, 0, with(Bytes(20, 0), static_cast<std::size_t>(byte), 0x80));
    std::string want = none;
    for (auto [from, to] : moves)
      if (from == byte) want[static_cast<std::size_t>(to)] = want[static_cast<std::size_t>(to)] == '1' ? '0' : '1';
    EXPECT_EQ(status(), want) << "byte " << byte;
  }
  EXPECT_EQ(shape(operations().back()), "5/1/0/0");

  // A failed query still clears the caller's text.
  push(5, 2);
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

  const struct {
    Bytes reply;
    std::string want;
  } cases[] = {
      {serial("ABCDEFGHIJKLMNOPQRST", 'U'), "ABCDEFGHIJKLMNOPQRSTU"},  // 20 + the byte at 21
      {serial("ABCDEFGHIJKLMNOPQRS", 'Y'), "ABCDEFGHIJKLMNOPQRSY"},    // 19, NUL, byte at 21
      {serial("ABC", 0), "ABC"},
      {serial(std::string(24, 'S'), 'S'), std::string(24, 'S')},
  };
  for (const auto& c : cases) {
    stick(21, 0, c.reply);
    ASSERT_EQ(E4Open(0, 0), 0);
    EXPECT_EQ(inf(3), c.want);
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

TEST_F(Session, InfECF) {
  push(30, 0, kCliche);
  EXPECT_EQ(inf_ecf(), "ZD010203040506070809|12.345.678/0001-90|123.456.789.110|4455667|CABECALHO\r\nRUA X, 1|"
                       "010502|001|6");
  EXPECT_EQ(shape(operations().front()), "30/0/0/2");
  // Without the marker the header and address are empty; a failed header
  // query leaves firmware, sequence and model empty.
  push(30, 0, with(kCliche, 0, 2));
  EXPECT_EQ(inf_ecf(), "ZD010203040506070809|12.345.678/0001-90|123.456.789.110|4455667|\r\n|010502|001|6");
  push(30, 38);
  EXPECT_EQ(inf_ecf(2872), "ZD010203040506070809|12.345.678/0001-90|123.456.789.110|4455667||||0");
}

TEST_F(Session, InfEspECFOptions) {
  EXPECT_EQ(inf(0), "\x06");
  EXPECT_EQ(inf(1), "010502");
  push(30, 0, kCliche);
  EXPECT_EQ(inf(2), "CABECALHO\r\nRUA X, 1");
  EXPECT_EQ(inf(3), "ZD010203040506070809");
  char buf[600];
  std::memset(buf, 'x', sizeof buf);
  ASSERT_EQ(E4InfEspECF(4, buf), 0);
  EXPECT_EQ(std::string(buf, 43), std::string("12.345.678/0001-90\0" "123.456.789.110\0" "4455667\0", 43));
  EXPECT_EQ(inf(5), "001");

  // 6, 7 and 8 ask the printer again and refresh the cache.
  stick(236, 0, bytes_with(20, 0, std::string("OUTRA\0MODELO2", 13)));
  stick(86, 0, with(bytes_with(10, 1, "V02.00.01"), 0, 7));
  EXPECT_EQ(inf(6), "OUTRA");
  EXPECT_EQ(inf(7), "MODELO2");
  EXPECT_EQ(inf(8), "V02.00.01");
  EXPECT_EQ(inf(1), "020001");
  EXPECT_EQ(inf(0), "");  // an unknown printer type reads as 0
  push(236, 38);
  std::strcpy(buf, "keep");
  EXPECT_EQ(E4InfEspECF(6, buf), 2872);
  EXPECT_STREQ(buf, "keep");

  // 9: owner index and the changes left; binary, so not traced.
  push(27, 0, {3});
  ASSERT_EQ(E4InfEspECF(9, buf), 0);
  EXPECT_EQ(buf[0], 3);
  EXPECT_EQ(buf[1], 7);
  push(27, 0, {12});
  ASSERT_EQ(E4InfEspECF(9, buf), 0);
  EXPECT_EQ(buf[1], 0);

  // 10: owner date and time; the driver's code comes back raw and is
  // translated once.
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
  const std::pair<int, int> mapped[] = {{0, 0},   {2, 2},   {14, 14}, {16, 16}, {17, 18}, {18, 18},
                                        {19, 19}, {20, 20}, {22, 22}, {23, 23}, {25, 25}, {26, 13}};
  for (auto [state, want] : mapped) {
    push(6, 0, {static_cast<std::uint8_t>(state), 42});
    unsigned char opc = 99, resp = 0;
    EXPECT_EQ(E4StaECF(&opc, &resp), 0);
    EXPECT_EQ(opc, want) << state;
    EXPECT_EQ(resp, 42);
  }
  for (int state : {15, 21, 24, 27}) {  // left as the caller set it
    push(6, 0, {static_cast<std::uint8_t>(state), 1});
    unsigned char opc = 99, resp = 0;
    EXPECT_EQ(E4StaECF(&opc, &resp), 0);
    EXPECT_EQ(opc, 99);
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
  EXPECT_STREQ(data, "22112026");
  EXPECT_STREQ(hora, "1030");
  EXPECT_STREQ(mov, "23112026");
  EXPECT_EQ(verao, 1);
  EXPECT_EQ(reducao, 1);
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
