// Closing the open document by its state, the message, the paper advance and cut; cancelling the open document by
// its state, or the last one by its recorded type, with the reversal of its vouchers.
#include <cstdio>
#include <string>
#include <tuple>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

// The register reads (133) give the COO, or the CCF of a cancelled coupon recorded with the business date (139).
class Closing : public Session {
 protected:
  void SetUp() override {
    Session::SetUp();
    stick(139, 0, bytes_with(10, 1, "15032024"));
  }
};
using Cancel = Closing;

}  // namespace

TEST_F(Closing, DispatchOnTheDocumentStateAndFailures) {
  // State, a command refused (or 0), result, commands. Fiscal closings end with the CCF read of the item-increase
  // bookkeeping (133); 22 is only totalled; 24 is totalled again before its amounts.
  const std::tuple<std::uint8_t, int, unsigned short, Cmds> rows[] = {
      {0, 0, 0, {6}}, {2, 0, 2862, {6}}, {19, 0, 2634, {6}}, {9, 0, 0, {6}}, {16, 0, 0, {6, 142, 224, 133}},
      {14, 0, 0, {6, 6, 188, 6, 142, 224, 133}}, {15, 0, 0, {6, 6, 6, 189, 142, 224, 133}}, {17, 0, 0, {6, 228, 224}},
      {18, 0, 0, {6, 228, 224}}, {20, 0, 0, {6, 153, 158, 224}}, {21, 0, 0, {6, 158, 224}}, {22, 0, 0, {6, 153}},
      {23, 0, 0, {6, 6, 188, 6, 158, 224}}, {24, 0, 0, {6, 153, 6, 188, 6, 189, 158, 224}}, {25, 0, 0, {6, 158, 224}},
      {26, 0, 0, {6, 221, 224}}, {27, 0, 0, {6, 229, 224}},
      // A failure stops the remaining steps, but in 24 the amount received is printed whatever the totalling gave.
      {16, 142, 2561, {6, 142}}, {14, 188, 2561, {6, 6, 188}},
      {24, 153, 0, {6, 153, 6, 188, 6, 189, 158, 224}},
  };
  for (const auto& [s, refused, ret, cmds] : rows) {
    vp_clear_calls();
    state(s);
    if (refused != 0) push(refused, 1);
    EXPECT_EQ(E4FimCP(0, nullptr), ret) << int(s);
    EXPECT_EQ(sent(), cmds) << int(s);
  }
}

TEST_F(Closing, MessageOperatorAndLateConsumer) {
  write_file("NomeOper.cfg", "Maria");
  ASSERT_EQ(E4Cons("Ana", "123", "Rua B"), 0);
  state(16);
  EXPECT_EQ(E4FimCP(7, "Volte sempre"), 0);
  EXPECT_EQ(payload(142), Bytes{5} + texts({"Maria", "Ana", "123", "Rua B"}));
  EXPECT_EQ(E4FimCup(), 0);
  EXPECT_EQ(payload(142), Bytes{5} + texts({"Maria", "", "", ""}));  // the consumer was spent

  const std::string msg = "\"" + std::string(399, 'x');  // a long message is cut and its quotes masked
  state(21);
  EXPECT_EQ(E4FimCP(0, msg.c_str()), 0);
  EXPECT_EQ(payload(130), texts({"'" + std::string(251, 'x')}));
}

TEST_F(Closing, CutSwitchManualCutAndPaperAdvance) {
  EXPECT_EQ(E4CortaPapel(), 2960);  // refused while closings cut
  EXPECT_EQ(E4CorteImp(2), 0);      // anything but 1 switches cutting off
  state(16);
  EXPECT_EQ(E4FimCP(0, nullptr), 0);
  EXPECT_EQ(E4CortaPapel(), 0);
  EXPECT_EQ(payload(224), Bytes{});
  push(223, 1);
  EXPECT_EQ(E4CortaPapel(), 2561);
  EXPECT_EQ(E4CorteImp(1), 0);
  EXPECT_EQ(E4CortaPapel(), 2960);
  EXPECT_EQ(E4AvancaPapel(1, 5), 0);  // the advance: only in state 0, modulo 256
  EXPECT_EQ(E4AvancaPapel(0, 300), 0);
  EXPECT_EQ(sent(), (Cmds{6, 142, 133, 223, 224, 223, 223}));
  EXPECT_EQ(payloads(223), (std::vector<Bytes>{{1}, {1}, {44}}));
}

TEST_F(Cancel, OpenFiscalCouponIsCancelledAndRecorded) {
  write_file("NomeOper.cfg", "Ana");
  state(2);  // no preparation before totalling
  reply(133, "000042");
  push(154, 1);
  EXPECT_EQ(E4CanCup(), 2561);
  EXPECT_FALSE(file_exists("EcfCancelados.cpf"));
  EXPECT_EQ(E4CanCup(), 0);
  EXPECT_EQ(sent(), (Cmds{6, 6, 154, 6, 6, 154, 224, 139, 133}));
  EXPECT_EQ(payload(154), Bytes{5} + texts({"Ana"}));
  EXPECT_EQ(read_file("EcfCancelados.cpf"), "15032024000042\r\n");
}

TEST_F(Cancel, CouponInPaymentIsPreparedFirstAndOthersClosed) {
  // State, amount paid (none: not read), the coupon's payments, result, commands.
  const std::tuple<std::uint8_t, std::string, std::string, unsigned short, Cmds> rows[] = {
      // a report or a reversal is closed; a reading cannot be cancelled
      {26, "", "", 0, {6, 221, 224}}, {27, "", "", 0, {6, 229, 224}}, {9, "", "", 2561, {6}},
      {14, "500", "000100#$61$62", 0, {6, 6, 138, 190, 154, 224, 139, 133}},
      {16, "0", "000100#", 0, {6, 6, 138, 190, 154, 224, 139, 133}},
      {24, "1200", "000100#$61", 0, {6, 6, 138, 190, 6, 188, 6, 189, 154, 224}},  // non-fiscal paid: change first
      {14, "500", "000100#$61", 0, {6, 6, 138, 190, 6, 185, 154, 224, 139, 133}},  // paid in part: 0,01 on 60
  };
  for (const auto& [st, paid, payments, ret, cmds] : rows) {
    SCOPED_TRACE(testing::Message() << int(st) << payments);
    vp_clear_calls();
    state(st);
    if (!paid.empty()) {
      push(138, 0, bytes_with(20, 0, "1000"));
      push(190, 0, bytes_with(20, 0, "\x01" + paid));
      write_file("EcfZandor.pgt", payments);
    }
    EXPECT_EQ(E4CanCup(), ret);
    EXPECT_EQ(sent(), cmds);
  }
  EXPECT_EQ(payloads(185), (std::vector<Bytes>{Bytes{60} + texts({"0,01"})}));
}

TEST_F(Cancel, LastDocumentByItsType) {
  state(0);
  reply(133, "000042");
  for (const char* tipo : {"CPF", "CNF", "RGR"}) {
    write_file("EcfZandor.cpm", tipo);
    EXPECT_EQ(E4CanCup(), 0) << tipo;
  }
  EXPECT_EQ(read_file("EcfCancelados.cpf"), "15032024000042\r\n");
  EXPECT_EQ(E4CanCupEsp(), 2751);
  write_file("EcfZandor.cpm", "XYZ");
  EXPECT_EQ(E4CanCup(), 2561);
  std::remove("EcfZandor.cpm");
  EXPECT_EQ(E4CanCup(), 2902);
  EXPECT_EQ(sent(), (Cmds{6, 155, 224, 139, 133, 6, 217, 224, 6, 6, 6, 6}));
  EXPECT_EQ(payload(217), (Bytes{0, 0}));
}

TEST_F(Cancel, VoucherReversals) {
  // The last coupon's day line, coupon 100's voucher ordinals (nullptr: no file), the states reported, the current
  // COO, a result of command 219 (or 0), the result, the commands.
  using Row = std::tuple<const char*, const char*, std::vector<std::uint8_t>, const char*, int, unsigned short, Cmds>;
  const Row rows[] = {
      // an open voucher is closed, then reversed with its non-fiscal coupon
      {"CNF000100$60", "$1", {17, 27}, "000101", 0, 0, {6, 228, 224, 133, 219, 6, 229, 224, 217, 224}},
      // the vouchers do not follow the last coupon: only they are reversed
      {"CPF000095$61$61", "$1$2", {0, 27, 27}, "000102", 0, 0, {6, 133, 219, 6, 229, 224, 219, 6, 229, 224}},
      {"CPF000100$61$62", "$1$2", {0}, "000102", 220, 2749, {6, 133, 219}},
      {"CPF000100$61", "$1$2$3$4$5$6$7$8$9$10", {0}, "000110", 0, 2049, {6, 133}},  // ten: unreadable count
      {"CPF000100$61", nullptr, {0}, "000110", 0, 2902, {6, 133}},  // no voucher record
  };
  int row = 0;
  for (const auto& [coupon, ordinals, states, coo, refused, ret, cmds] : rows) {
    SCOPED_TRACE(row++);
    vp_clear_calls();
    write_file("EcfZandor.cpm", "CCD");
    write_file("EcfZandorCoo.pgt", "\nCPF000099$60\r\n\n" + std::string(coupon));
    std::remove("EcfZandorCOO.ind");
    if (ordinals != nullptr) write_file("EcfZandorCOO.ind", "\nCOO000100" + std::string(ordinals));
    for (std::uint8_t s : states) push(6, 0, {s, 0});
    reply(133, coo);
    if (refused != 0) push(219, refused);
    EXPECT_EQ(E4CanCup(), ret);
    EXPECT_EQ(sent(), cmds);
  }
}
