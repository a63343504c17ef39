// Fiscal memory and journal readings transferred to a file packet by packet, and the date range turned into COOs.
#include <string>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

const Bytes kMark{0xCF, 0xDE, 0xB3, 0xD1};

// A packet as the printer sends it: two header bytes, then the data.
Bytes packet(const std::string& data) { return bytes_with(2 + data.size(), 2, data); }
Bytes end_mark() { return Bytes{0, 0} + kMark; }
Bytes counter(int n) { return {static_cast<std::uint8_t>(n & 0xFF), static_cast<std::uint8_t>(n >> 8)}; }
Bytes nth_input(int cmd, std::size_t n) {
  for (const auto& c : operations())
    if (c.cmd == cmd && n-- == 0) return input(c);
  return {};
}

using Journal = Session;

TEST_F(Journal, ByCooOrReductionWritesEveryPacketAndAcknowledgesTheEndMark) {
  push(199, 0, packet("linha 1\r\n"));
  push(199, 0, packet("linha 2") + Bytes{0, 'X'});  // a packet's text ends at its NUL
  push(199, 0, end_mark());
  write_file("mfd.txt", "old content");
  EXPECT_EQ(E4LeMFD(1, "1", "250", "mfd.txt"), 0);
  EXPECT_EQ(read_file("mfd.txt"), "linha 1\r\nlinha 2");
  EXPECT_EQ(commands(), (Cmds{199, 199, 199, 199}));
  EXPECT_EQ(nth_input(199, 0), (counter(0) + Bytes{0x00, 0x00, 0x01, 0x00, 0x02, 0x50, 'T'}));
  EXPECT_EQ(nth_input(199, 3), counter(3) + kMark);
  // By reduction number: short bounds are packed from a field ending in its NUL.
  push(216, 0, end_mark());
  EXPECT_EQ(E4LeMFD(2, "12", "123456", "mfd.txt"), 0);
  EXPECT_EQ(nth_input(216, 0), (counter(0) + Bytes{0x01, 0x20, 0x12, 0x34, 'T'}));
}

TEST_F(Journal, RefusedPacketClosesTheTransferUnlessTheLastOneWasFull) {
  push(199, 5);
  EXPECT_EQ(E4LeMFD(1, "1", "2", "mfd.txt"), 0);
  EXPECT_EQ(commands(), (Cmds{199, 7}));
  EXPECT_EQ(read_file("mfd.txt"), "");
  vp_clear_calls();
  const std::string full(253, 'x');  // a reply length of 255
  push(199, 0, packet(full));
  push(199, 5);
  EXPECT_EQ(E4LeMFD(1, "1", "2", "mfd.txt"), 2903);
  EXPECT_EQ(commands(), (Cmds{199, 199, 3}));
  EXPECT_EQ(read_file("mfd.txt"), full);
  vp_clear_calls();
  EXPECT_EQ(E4LeMFD(1, "1", "2", "no/such/dir/mfd.txt"), 2902);
  EXPECT_EQ(E4LMFSerial(1, 0, "1", "2", nullptr), 2902);
  EXPECT_EQ(sent(), Cmds{});
  // The 16-bit packet counter never wraps: the transfer is cut before (untraced, to be quick).
  E4Close();
  enable_trace(0);
  ASSERT_EQ(E4Open(0, 0), 0);
  stick(199, 0, packet("a"));
  EXPECT_EQ(E4LeMFD(1, "1", "2", "mfd.txt"), 2903);
  EXPECT_EQ(vp_count_cmd(199), 0xFFFF);
  EXPECT_EQ(sent().back(), 7);
  EXPECT_EQ(read_file("mfd.txt").size(), 0xFFFFu);
}

TEST_F(Journal, FiscalMemoryTransferByReductionOrByDate) {
  // Type 2 reads by reduction number here (E4LMF reads it by date).
  push(206, 0, packet("MF 1\r\n"));
  push(206, 0, end_mark());
  EXPECT_EQ(E4LMFSerial(2, 1, "5", "12", "mf.txt"), 0);
  EXPECT_EQ(read_file("mf.txt"), "MF 1\r\n");
  EXPECT_EQ(nth_input(206, 0), (counter(0) + Bytes{0x00, 0x05, 0x00, 0x12, 'S', 'T', 0}));
  // Type 0 by date: "T" and no operator; the acknowledgement's result counts.
  write_file("NomeOper.cfg", "MARIA");
  push(194, 0, end_mark());
  push(194, 1);
  EXPECT_EQ(E4LMFSerial(0, 0, "01012024", "31012024", "mf.txt"), 2561);
  EXPECT_EQ(nth_input(194, 0), counter(0) + bytes_with(38, 0, "0101202431012024CT"));
  // Any refused packet fails the transfer, without command 7.
  push(206, 0, packet("abc"));
  push(206, 5);
  EXPECT_EQ(E4LMFSerial(1, 0, "1", "2", "mf.txt"), 2903);
  EXPECT_EQ(read_file("mf.txt"), "abc");
  EXPECT_EQ(vp_count_cmd(7), 0);
}

// Command 10 (the flag at 24, the printer's date at 25), then the current COO.
void script_printer(std::uint8_t flag = 0) {
  push(10, 0, Bytes(24, 0) + Bytes{flag} + bytes_with(15, 0, "15032024"));
  push(133, 0, bytes_with(8, 1, "000250"));
}
// One fiscal-memory transfer: the reading, the end mark, the acknowledgement.
void script_reading(const std::string& reading) {
  push(194, 0, packet("LEITURA DA MEMORIA FISCAL\r\nRED CRZ COO    DATA\r\n" + reading));
  push(194, 0, end_mark());
  push(194, 0);
}

TEST_F(Journal, DateRangeIsReadByCooFoundInTheFiscalMemoryOrElseByDate) {
  script_printer();
  script_reading(
      "0003 003 000240  12/03/2024 22:00:00\r\n"
      "0001 001 000100 05/03/2024 23:00:00 V\r\n"  // with a "V" the date is at 16
      "0002 002 000180  09/03/2024 22:00:00\r\n"
      "\r\nTOTAIS\r\n");
  push(199, 0, packet("journal"));
  push(199, 0, end_mark());
  EXPECT_EQ(E4LeMFD(0, "10032024", "15032024", "mfd.txt"), 0);
  EXPECT_EQ(read_file("mfd.txt"), "journal");
  EXPECT_EQ(commands(), (Cmds{10, 133, 194, 194, 194, 199, 199, 199}));
  EXPECT_EQ(last_input(133).at(2), 3);
  // Ten days back from the day after DataIni.
  EXPECT_EQ(nth_input(194, 0), counter(0) + bytes_with(38, 0, "0103202415032024CT"));
  EXPECT_EQ(nth_input(199, 0), (counter(0) + Bytes{0x00, 0x01, 0x01, 0x00, 0x02, 0x50, 'T'}));
  EXPECT_FALSE(file_exists("espelho.log") || file_exists("datas.log"));
  // Otherwise it reads by date: the printer forbids the conversion, or a reading with no closing blank line ends it.
  for (const bool forbidden : {true, false}) {
    vp_clear_calls();
    script_printer(forbidden);
    if (!forbidden) script_reading("0001 001 000100  05/03/2024 23:00:00\r\n");
    push(195, 0, end_mark());
    EXPECT_EQ(E4LeMFD(0, "10032024", "15032024", "mfd.txt"), 0);
    EXPECT_EQ(commands(), (forbidden ? Cmds{10, 133, 195, 195} : Cmds{10, 133, 194, 194, 194, 195, 195}));
    EXPECT_EQ(nth_input(195, 0), counter(0) + bytes_with(0, 0, "1003202415032024T"));
  }
  EXPECT_FALSE(file_exists("espelho.log"));
}

}  // namespace
