// Closing the open document by the printer's state, the closing message, and
// the paper advance and cut.
#include <string>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

Bytes bytes(const std::string& s) { return Bytes(s.begin(), s.end()); }

using Closing = Session;

}  // namespace

TEST_F(Closing, DispatchOnTheDocumentState) {
  struct Row {
    std::uint8_t state;
    unsigned short ret;
    std::vector<int> cmds;
  };
  // Fiscal closings end with the CCF read of the item-increase bookkeeping
  // (133); 22 is only totalled; 24 is totalled again before its amounts.
  const std::vector<Row> rows = {
      {0, 0, {6}},           {2, 2862, {6}},       {19, 2634, {6}},     {9, 0, {6}},
      {14, 0, {6, 6, 188, 6, 142, 224, 133}},      {15, 0, {6, 6, 6, 189, 142, 224, 133}},
      {16, 0, {6, 142, 224, 133}},                 {17, 0, {6, 228, 224}},
      {18, 0, {6, 228, 224}},                      {20, 0, {6, 153, 158, 224}},
      {21, 0, {6, 158, 224}},                      {22, 0, {6, 153}},
      {23, 0, {6, 6, 188, 6, 158, 224}},           {24, 0, {6, 153, 6, 188, 6, 189, 158, 224}},
      {25, 0, {6, 158, 224}},                      {26, 0, {6, 221, 224}},
      {27, 0, {6, 229, 224}},
  };
  for (const auto& row : rows) {
    vp_clear_calls();
    state(row.state);
    EXPECT_EQ(E4FimCP(0, nullptr), row.ret) << int(row.state);
    EXPECT_EQ(sent(), row.cmds) << int(row.state);
  }
}

TEST_F(Closing, FiscalClosingCarriesMessageOperatorAndLateConsumer) {
  write_file("NomeOper.cfg", "Maria");
  ASSERT_EQ(E4Cons("Ana", "123", "Rua B"), 0);
  state(16);
  EXPECT_EQ(E4FimCP(7, "Volte sempre"), 0);
  EXPECT_EQ(sent(), (Cmds{6, 130, 142, 224, 133}));
  EXPECT_EQ(payload(130), bytes(std::string("Volte sempre") + '\0'));
  EXPECT_EQ(payload(142), bytes(std::string("\x05Maria\0Ana\0" "123\0Rua B\0", 21)));
  // The consumer is spent: the next closing carries three empty texts.
  EXPECT_EQ(E4FimCup(), 0);
  EXPECT_EQ(payload(142), bytes(std::string("\x05Maria\0\0\0\0", 10)));
}

TEST_F(Closing, FailuresStopTheRemainingSteps) {
  state(16);
  push(142, 1);
  EXPECT_EQ(E4FimCP(0, nullptr), 2561);
  EXPECT_EQ(sent(), (Cmds{6, 142}));

  vp_clear_calls();
  state(14);
  push(188, 1);
  EXPECT_EQ(E4FimCP(0, nullptr), 2561);
  EXPECT_EQ(sent(), (Cmds{6, 6, 188}));

  // In 24 the amount received is printed whatever the totalling gave.
  vp_clear_calls();
  state(24);
  push(153, 1);
  EXPECT_EQ(E4FimCP(0, nullptr), 0);
  EXPECT_EQ(sent(), (Cmds{6, 153, 6, 188, 6, 189, 158, 224}));
}

TEST_F(Closing, LongMessageIsCutAndMasked) {
  const std::string msg = "\"" + std::string(399, 'x');
  state(21);
  EXPECT_EQ(E4FimCP(0, msg.c_str()), 0);
  EXPECT_TRUE(logged("ControlarFinalizacaoCupom5600 - inicio - Prox=[" + msg.substr(0, 299) + "] - qtdeAvanco=[0]"));
  EXPECT_EQ(payload(130), bytes("'" + std::string(251, 'x') + '\0'));
}

TEST_F(Closing, CutSwitchAndManualCut) {
  EXPECT_EQ(E4CortaPapel(), 2960);  // refused while closings cut, silently
  EXPECT_FALSE(logged("E4CortaPapel5600 - inicio "));
  EXPECT_EQ(E4CorteImp(2), 0);  // anything but 1 switches cutting off
  state(16);
  EXPECT_EQ(E4FimCP(0, nullptr), 0);
  EXPECT_EQ(E4CortaPapel(), 0);
  EXPECT_EQ(sent(), (Cmds{6, 142, 133, 223, 224}));
  EXPECT_EQ(payload(223), Bytes{1});
  EXPECT_EQ(payload(224), Bytes{});

  vp_clear_calls();
  push(223, 1);
  EXPECT_EQ(E4CortaPapel(), 2561);
  EXPECT_EQ(sent(), Cmds{223});

  EXPECT_EQ(E4CorteImp(1), 0);
  EXPECT_EQ(E4CortaPapel(), 2960);
}

TEST_F(Closing, PaperAdvanceOnlyInStateZeroAndModulo256) {
  EXPECT_EQ(E4AvancaPapel(1, 5), 0);
  EXPECT_TRUE(sent().empty());
  EXPECT_EQ(E4AvancaPapel(0, 300), 0);
  EXPECT_EQ(sent(), Cmds{223});
  EXPECT_EQ(payload(223), Bytes{44});
}
