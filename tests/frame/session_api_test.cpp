// Session open and close, the configuration keys, the driver bridge (sequence field, 16-bit results, last error), the
// identity, clock and status queries, NULL arguments, and replies reported longer than their buffer.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

const std::string kSection = "[QuorvelPOS\\ImpressoraFiscal]\n";

Bytes with(Bytes b, std::size_t at, std::uint8_t v) {
  if (b.size() <= at) b.resize(at + 1);
  b[at] = v;
  return b;
}

const Bytes kCliche = with(bytes_with(40, 1, std::string("CABECALHO\0OUTRO\0RUA X, 1", 25)), 0, 1);

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

std::string inf_ecf(unsigned short ret = 0) {
  char serie[32] = "x", cgc[32] = "x", ie[32] = "x", im[32] = "x", cliche[600] = "x", firm[16] = "x", seq[16] = "x";
  unsigned char modelo = 9;
  EXPECT_EQ(E4InfECF(serie, cgc, ie, im, cliche, firm, seq, &modelo), ret);
  return std::string(serie) + "|" + cgc + "|" + ie + "|" + im + "|" + cliche + "|" + firm + "|" + seq + "|" +
         std::to_string(modelo);
}

// Command, flag, mode and input length of the recorded calls.
std::string shapes() {
  std::string out;
  for (const auto& c : operations())
    out += (out.empty() ? "" : " ") + std::to_string(c.cmd) + "/" + std::to_string(c.flag) + "/" +
           std::to_string(c.mode) + "/" + std::to_string(c.inlen);
  return out;
}

void call_everything_with_null() {
  E4GetError(nullptr), E4Status(nullptr), E4StaECF(nullptr, nullptr);
  E4InfECF(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  E4RdData(nullptr, nullptr, nullptr, nullptr, nullptr);
  for (int opc = -1; opc <= 11; ++opc) E4InfEspECF(opc, nullptr);
}

// A reply of `size` bytes reported as far longer than any reply buffer.
void oversized(int cmd, std::size_t size, std::uint8_t marker_at = 0, std::uint8_t marker = 'A') {
  std::vector<std::uint8_t> b(size, 'A');
  b[marker_at] = marker;
  vp_set_reply_len(cmd, 0, b.data(), static_cast<int>(b.size()), 100000);
}

}  // namespace

TEST_F(Fresh, SequenceRunsFromOneTo255AcrossCommandsAndSessions) {
  // Neither closing nor reopening resets the counter; 255 is followed by 1.
  vp_answer_identity();
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_EQ(last_input(10).size(), 0u);  // the date query has no sequence field
  ASSERT_EQ(E4Close(), 0);
  ASSERT_EQ(E4Open(0, 0), 0);
  for (int i = 0; i < 300; ++i) ASSERT_EQ(E4Verao(1), 0);
  std::size_t i = 0;
  for (const auto& c : operations())
    ASSERT_TRUE(c.inlen == 0 || (c.in[0] | (c.in[1] << 8)) == static_cast<int>(i++ % 255) + 1) << "field " << i;
  ASSERT_GE(i, 310u);
  E4Close();
}

TEST_F(Session, SixteenBitResultsAndTheDriversLastError) {
  push(24, 65536 + 5);
  EXPECT_EQ(E4Verao(1), 5);  // the error read follows a failure
  push(24, 65536, {1, 2, 3});
  EXPECT_EQ(E4Verao(1), 0);
  EXPECT_EQ(E4Verao(0), 0);
  push(3, 0, {0, 0x34, 0x12, 0x56});
  unsigned int err = 99;
  EXPECT_EQ(E4GetError(&err), 0);
  EXPECT_EQ(err, 0x1234u);
  EXPECT_EQ(shapes(), "24/0/0/2 3/1/1/0 24/0/0/2 25/0/0/2 3/1/1/0");
  push(3, 38, {0, 1, 1});
  EXPECT_EQ(E4GetError(&err), 2872);
  EXPECT_EQ(err, 0u);
}

TEST_F(Fresh, ConfigurationKeysDetailLinesAndPaperLowThinning) {
  vp_answer_identity();
  const std::string k = "leChaveConfig5600 ", missing = k + "Arquivo quorvel.conf nao contem a ",
                    ov = "E4Open5600 OV nao iniciado OVSetingsBuf=";
  // Keys match by prefix, also in later sections, and are cut to their width; TIPO_PD other than 0 or 1 counts as 0.
  const std::pair<std::string, std::vector<std::string>> cases[] = {  // no quorvel.conf at all, then three
      {"", {k + "Nao conseguiu abrir o arquivo quorvel.conf", ov + " ret=-1", "E4Open5600 TIPO_PD[0] "}},
      {kSection + "OVSetings=0\n", {missing + "chave LowPaperCounter", k + "Chave OVSetings=0", ov + "0 ret=0"}},
      {"OVSetings=1\n[QuorvelPOS\\ImpressoraFiscalX]\nOVSetings=2\n[Outra]\nOVSetings=3\n",
       {missing + "configuracao para QuorvelPOS\\ImpressoraFiscal ", ov + " ret=2"}},
      {kSection + "OVSetingsX=1\r\nTIPO_PD=7\r\n[Outra]\r\nLowPaperCounter=123\r\n",
       {k + "Chave LowPaperCounter=12", k + "Chave OVSetings=1", missing + "chave OVULTerm", ov + "1 ret=1",
        k + "Chave TIPO_PD=7", "E4Open5600 TIPO_PD[0] "}}};
  for (const auto& [conf, lines] : cases) {
    SCOPED_TRACE(conf);
    for (const char* f : {"quorvel.conf", "Orbelan.txt"}) std::remove(f);
    if (!conf.empty()) write_file("quorvel.conf", conf);
    EXPECT_EQ(E4Open(0, 0), 0);
    for (const auto& l : lines) EXPECT_TRUE(logged(l)) << l;
    EXPECT_EQ(E4Close(), 0);
  }
  // Detail lines only at level 1; the level is read at each opening. Paper low is reported once every
  // LowPaperCounter + 1 queries.
  std::remove("Orbelan.txt");
  write_file("quorvel.conf", kSection + "OVSetings=1\nLowPaperCounter=2\n");
  enable_trace(2);
  ASSERT_EQ(E4Open(0, 0), 0);
  EXPECT_TRUE(logged(ov + "1 ret=1"));
  EXPECT_FALSE(logged(k + "Chave OVSetings=1"));
  stick(5, 0, with(Bytes(20, 0), 5, 1));
  std::string seen;
  for (int i = 0; i < 7; ++i) seen += status()[4];
  EXPECT_EQ(seen, "1001001");
  E4Close();
}

TEST_F(Session, OpeningTwiceStartsAgainAndClosingTwiceIsRefused) {
  EXPECT_EQ(E4Open(0, 0), 0);
  EXPECT_TRUE(logged("E4Open5600 - Erro ja iniciado"));
  EXPECT_EQ(count_calls(VP_INICIALIZA), 1);  // the first was cleared with the opening's calls
  EXPECT_EQ(vp_count_cmd(21), 1);
  EXPECT_EQ(E4Close(), 0);
  const auto log = read_file("Orbelan.txt");
  vp_clear_calls();
  EXPECT_EQ(E4Close(), 2869);
  EXPECT_EQ(vp_call_count(), 0);  // a closed session never reaches the driver
  EXPECT_EQ(read_file("Orbelan.txt"), log);
}

TEST_F(Session, FailingFinishKeepsTheSessionOpen) {
  vp_set_fini_result(65536 + 3);
  EXPECT_EQ(E4Close(), 3);
  EXPECT_FALSE(logged("LiberaLib5600 - inicio "));
  EXPECT_NE(E4Close(), 2869);
  EXPECT_EQ(log_lines().back().rfind("E4Close5600 - fim com ret=", 0), 0u);  // still logging
}

TEST_F(Fresh, FailedOpeningsLeaveTheSessionClosed) {
  vp_answer_identity();
  vp_set_init_result(38);
  EXPECT_EQ(E4Open(0, 0), 2872);
  EXPECT_EQ(commands(), Cmds{3});  // no identity query, only the error read
  const auto log = read_file("Orbelan.txt");
  EXPECT_EQ(E4Close(), 2869);
  EXPECT_EQ(read_file("Orbelan.txt"), log);  // the log was switched off

  vp_clear_calls();
  fail_dlopen("libMrZandor.so");
  EXPECT_EQ(E4Open(0, 0), 2900);
  EXPECT_TRUE(logged("CarregaLib5600 Erro ao carregar a Lib libMrZandor.so"));
  EXPECT_EQ(vp_call_count(), 0);
  EXPECT_EQ(E4Close(), 2869);
}

TEST_F(Fresh, OperationsAreRefusedBeforeOpening) {
  char text[600] = "x", out[600] = "old", walk[600], sinal = 'x';
  unsigned char b1 = 9, b2 = 9;
  unsigned int err = 77;
  const unsigned short results[] = {E4Status(text), E4StaECF(&b1, &b2), E4InfEspECF(2, text), E4IniCP(2, ""),
                                    E4Cons("Maria", "1", "Rua"), E4CortaPapel(), E4LMF(1, 0, "1", "2"),
                                    E4LeMFDEsp(9, 1, "1", "2", "x.txt"), E4GetError(&err), E4ValAtu(8, out),
                                    E4RPLe(1, walk, &sinal, &b1)};
  for (std::size_t i = 0; i < std::size(results); ++i) EXPECT_EQ(results[i], 2869) << "call " << i;
  EXPECT_EQ(text + std::to_string(b2) + "|" + out + std::to_string(err) + std::to_string(b1), "x9|00");  // some cleared
  EXPECT_EQ(E4ImpItem(0), 0);  // only a layout choice: allowed before the session
  EXPECT_EQ(vp_call_count(), 0);
  for (const char* file : {"Orbelan.txt", "EcfZandor.pgt", "x.txt"}) EXPECT_FALSE(file_exists(file)) << file;
}

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
}

TEST_F(Fresh, SerialNumberAtOpening) {
  vp_answer_identity();
  const auto serial = [](const std::string& text, std::uint8_t at21) {
    return with(with(bytes_with(25, 1, text), 0, 1), 21, at21);
  };
  // A wrong marker fails the opening, which stops there; the session stays marked open with empty identity texts (not
  // the placeholders).
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
}

TEST_F(Session, IdentityTexts) {
  const std::string ids = "ZD010203040506070809|12.345.678/0001-90|123.456.789.110|4455667|";
  push(30, 0, kCliche);
  EXPECT_EQ(inf_ecf(), ids + "CABECALHO\r\nRUA X, 1|010502|001|6");
  EXPECT_EQ(shapes(), "30/0/0/2");
  push(30, 38);  // firmware, sequence and model left empty
  EXPECT_EQ(inf_ecf(2872), ids + "|||0");

  push(30, 0, kCliche);
  EXPECT_EQ(inf(0) + "|" + inf(1) + "|" + inf(2) + "|" + inf(3) + "|" + inf(5),
            "\x06|010502|CABECALHO\r\nRUA X, 1|ZD010203040506070809|001");
  // 6, 7 and 8 ask the printer again and refresh the cache; an unknown printer type reads as 0.
  stick(236, 0, bytes_with(20, 0, std::string("OUTRA\0MODELO2", 13)));
  stick(86, 0, with(bytes_with(10, 1, "V02.00.01"), 0, 7));
  EXPECT_EQ(inf(6) + "|" + inf(7) + "|" + inf(8), "OUTRA|MODELO2|V02.00.01");
  EXPECT_EQ(inf(1) + "|" + inf(0), "020001|");
  char buf[600] = "keep";
  for (int opc : {-1, 11}) EXPECT_EQ(E4InfEspECF(opc, buf), 2049) << opc;
  EXPECT_STREQ(buf, "keep");
}

TEST_F(Session, DocumentStateAndClock) {
  // 99: a state left out of the mapping leaves the caller's value alone.
  const std::pair<int, int> mapped[] = {{0, 0},   {2, 2},   {14, 14}, {15, 99}, {16, 16}, {17, 18}, {18, 18}, {19, 19},
                                        {20, 20}, {21, 99}, {22, 22}, {23, 23}, {24, 99}, {25, 25}, {26, 13}, {27, 99}};
  for (auto [state, want] : mapped) {
    vp_clear_calls();
    push(6, 0, {static_cast<std::uint8_t>(state), 42});
    unsigned char opc = 99, resp = 0;
    EXPECT_EQ(E4StaECF(&opc, &resp), 0);
    EXPECT_EQ(opc, want) << state;
    EXPECT_EQ(resp, 42);
  }
  auto reply = with(with(bytes_with(40, 12, "221120261030"), 11, 1), 24, 1);
  std::memcpy(reply.data() + 25, "23112026", 8);
  push(10, 0, reply);
  char data[16] = "", hora[16] = "", mov[16] = "";
  unsigned char verao = 0, reducao = 0;
  EXPECT_EQ(E4RdData(data, hora, &verao, mov, &reducao), 0);
  EXPECT_EQ(std::string(data) + " " + hora + " " + mov + " " + std::to_string(verao) + std::to_string(reducao),
            "22112026 1030 23112026 11");
  EXPECT_EQ(shapes(), "6/1/0/0 10/1/0/0");
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
  oversized(30, 255, 0, 1), oversized(5, 20), oversized(6, 10), oversized(3, 15), oversized(27, 10), oversized(24, 10);
  char big[600], small[32];
  unsigned char b1, b2, model;  // option 0 writes one byte
  unsigned int err;
  EXPECT_EQ(E4InfECF(small, small, small, small, big, small, small, &b1), 0);
  EXPECT_EQ(std::strlen(big), 254u + 2);
  for (int opc = 0; opc <= 10; ++opc) EXPECT_EQ(E4InfEspECF(opc, big), 0) << opc;
  const unsigned short results[] = {E4InfEspECF(0, reinterpret_cast<char*>(&model)), E4Status(small),
                                    E4StaECF(&b1, &b2), E4RdData(small, small, &b1, small, &b2), E4Verao(1),
                                    E4GetError(&err)};
  for (const auto r : results) EXPECT_EQ(r, 0);
  EXPECT_EQ(model, 6);
  EXPECT_EQ(err, 0x4141u);
  EXPECT_EQ(E4Close(), 0);
}
