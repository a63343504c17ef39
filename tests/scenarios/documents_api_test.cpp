// Whole roads of the other documents: a non-fiscal coupon, a management report
// printed from a file, the day's readings, and the store-number procedure of a
// payment register creation resumed across sessions after refusals.
#include <initializer_list>
#include <string>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

using Documents = Session;

constexpr const char* kStatus = "ArqRegPgto.sts";

// The commands of the store-number procedure among those sent.
Cmds procedure() {
  Cmds out;
  for (int c : sent())
    if (c == 160 || c == 224 || c == 245 || c == 246) out.push_back(c);
  return out;
}

void refuse(int cmd) {
  for (int i = 0; i < 3; ++i) push(cmd, 1);
}

}  // namespace

TEST_F(Documents, NonFiscalCouponClosedByItsPayment) {
  write_file("EcfZandorCoo.pgt", "\nCPF000199$61");
  push(133, 0, bytes_with(20, 1, "000200"));  // the COO, read twice by the opening
  push(133, 0, bytes_with(20, 1, "000200"));
  EXPECT_EQ(E4IniCP(19, "Suprimento"), 0);
  EXPECT_EQ(E4OpeCNF(40, "+", "Troco inicial", "50"), 0);
  state(20);  // a payment in state 20 totals and closes the coupon
  EXPECT_EQ(E4RegPag(60, "5000"), 0);
  state(0);
  EXPECT_EQ(E4FimCP(0, nullptr), 0);  // nothing left to close
  EXPECT_EQ(sent(), (Cmds{157, 133, 133, 159, 6, 153, 158, 224, 6}));
  EXPECT_EQ(payload(157), Bytes{0} + texts({"", "", "", "Suprimento"}));
  EXPECT_EQ(payload(159), Bytes({40, 0}) + texts({"50,00"}));
  EXPECT_EQ(payload(158), Bytes{5} + texts({""}));
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CNF");
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000200#$60");
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "\nCPF000199$61\r\n\nCNF000200$60");
}

TEST_F(Documents, ManagementReportPrintedFromAFile) {
  write_file("NomeOper.cfg", "Rita");
  write_file("relatorio.txt", "Caixa 1\r\n" + std::string(80, 'x') + "\n\nTotal\n");
  EXPECT_EQ(E4IniCP(20, "3"), 0);
  state(26);
  EXPECT_EQ(E4ImpVinc("relatorio.txt", "10"), 0);  // fewer lines than asked
  EXPECT_EQ(E4ImpVinc("relatorio.txt", "1"), 0);
  EXPECT_EQ(E4ImpVinc("relatorio.txt", "0"), 0);
  EXPECT_EQ(E4ImpVinc("relatorio.txt", "abc"), 0);
  EXPECT_EQ(E4FimCP(0, "ignorada"), 0);
  EXPECT_EQ(sent(), (Cmds{220, 130, 130, 130, 130, 130, 6, 221, 224}));
  EXPECT_EQ(payload(220), Bytes({'t' + 3, 0}));
  EXPECT_EQ(payloads(130), (std::vector<Bytes>{texts({"Caixa 1"}), texts({std::string(56, 'x')}), texts({""}),
                                               texts({"Total"}), texts({"Caixa 1"})}));
  EXPECT_EQ(payload(221), Bytes{5} + texts({"Rita"}));
  EXPECT_EQ(read_file("EcfZandor.cpm"), "RGR");
  // Failures are given untranslated, a missing file's and a refused line's.
  vp_clear_calls();
  EXPECT_EQ(E4ImpVinc("falta.txt", "3"), 2902);
  push(130, 0);
  push(130, 1);
  EXPECT_EQ(E4ImpVinc("relatorio.txt", "3"), 2904);
  EXPECT_EQ(sent(), (Cmds{130, 130}));
  EXPECT_FALSE(logged("E4ImpVinc5600 - fim com ret=2904 "));  // returned without its exit line
}

TEST_F(Documents, XReadingThenReductionWaitingForAPrinterThatStaysBusy) {
  write_file("NomeOper.cfg", "Rita");
  write_file("EcfZandor.pgt", "000300#$61");
  write_file("EcfZandor.ind", "$1");
  write_file("EcfZandorCoo.pgt", "\nCPF000300$61");
  write_file("EcfZandorCOO.ind", "\nCOO000300$1");
  stick(1, 1);  // the availability poll never succeeds
  clear_waits();
  EXPECT_EQ(E4IniCP(4, ""), 0);
  EXPECT_EQ(E4IniCP(5, ""), 0);
  EXPECT_EQ(sent(), (Cmds{160, 224, 162, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 224, 10}));
  EXPECT_EQ(payload(160), texts({"Rita", ""}));
  EXPECT_EQ(payload(162), texts({"Rita", ""}));
  EXPECT_TRUE(last_input(1).empty());  // not even the sequence field
  ASSERT_EQ(waits().size(), 11U);      // one before each poll, a second each after the second
  EXPECT_TRUE(!waits().back().micro && waits().back().amount == 1U);
  EXPECT_TRUE(logged("ReducaoZ5600 verificada a disponibilidade ret=1"));
  EXPECT_TRUE(logged("ReducaoZ5600 - fim com ret=0 "));
  // The day's files end with the day; the last coupon's stay for its vouchers.
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "");
  EXPECT_TRUE(file_exists("EcfZandorCOO.ind"));
  EXPECT_EQ(read_file("EcfZandorCOO.ind"), "");
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000300#$61");
  EXPECT_EQ(read_file("EcfZandor.ind"), "$1");
}

TEST_F(Fresh, RegisterCreationRefusedMidwayResumesAtTheNextOpens) {
  vp_answer_identity();
  stick(246, 0, bytes_with(5, 0, "0042"));  // the printer's store number
  const auto reopen = [] {
    E4Close();
    vp_clear_calls();
    return E4Open(0, 0);
  };
  ASSERT_EQ(E4Open(0, 0), 0);
  ASSERT_EQ(read_file(kStatus), "00042");
  // A new payment register: store "9999" is refused three times, so the
  // procedure stops in state "1"; the next session sends it.
  refuse(245);
  push(4, 0, {0, 1});  // no X reading due after a reduction
  vp_clear_calls();
  unsigned char reg = 62;
  EXPECT_EQ(E4RPCria(5, "CARTAO", "1", &reg), 0);
  EXPECT_EQ(procedure(), (Cmds{245, 245, 245}));
  EXPECT_EQ(read_file(kStatus), "10042");
  ASSERT_EQ(reopen(), 0);
  EXPECT_EQ(procedure(), Cmds{245});
  EXPECT_EQ(payload(245), texts({"9999"}));
  EXPECT_EQ(read_file(kStatus), "20042");
  // The next document restores the saved number before it opens; refused
  // again, the procedure stops in state "3" and the coupon opens all the same.
  refuse(245);
  vp_clear_calls();
  EXPECT_EQ(E4IniCP(2, ""), 0);
  EXPECT_EQ(sent(), (Cmds{245, 245, 245, 141, 133, 133}));
  EXPECT_EQ(payload(245), texts({"0042"}));
  EXPECT_EQ(read_file(kStatus), "30042");
  // Resumed step by step by the following sessions.
  ASSERT_EQ(reopen(), 0);
  EXPECT_EQ(procedure(), Cmds{245});
  EXPECT_EQ(payload(245), texts({"0042"}));
  EXPECT_EQ(read_file(kStatus), "40042");
  ASSERT_EQ(reopen(), 0);
  EXPECT_EQ(procedure(), (Cmds{160, 224}));
  EXPECT_EQ(payload(160), (Bytes{0, 0}));
  EXPECT_EQ(read_file(kStatus), "00042");
  E4Close();
}
