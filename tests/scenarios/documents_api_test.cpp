// Whole roads of the documents, from a sale to the reversal of its vouchers, to the store-number procedure resumed
// across sessions. The document state (command 6) and the counters (133: the COO, then the CCF) are scripted.
#include <initializer_list>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "orbelan.h"
#include "support/fixture.h"

using namespace orbtest;

namespace {

void counters(std::initializer_list<std::string> values) {
  for (const auto& v : values) push(133, 0, bytes_with(20, 1, v));
}

// A store with its operator and business day.
class Store : public Session {
 protected:
  void SetUp() override {
    Session::SetUp();
    write_file("NomeOper.cfg", "Rita");
    stick(139, 0, bytes_with(10, 1, "22112026"));  // business date
  }

  // Coupon 000100 with one item, paid with `pagamentos` and closed.
  void venda(std::initializer_list<std::pair<std::uint8_t, const char*>> pagamentos) {
    counters({"000100", "000100"});
    state(2);
    ASSERT_EQ(E4IniCP(2, ""), 0);
    ASSERT_EQ(E4IteCF(20, "1", "ITEM", "1000", "1200"), 0);
    for (const auto& [rp, valor] : pagamentos) {
      ASSERT_EQ(E4RegPag(rp, valor), 0);
      state(14);
    }
    state(16);
    ASSERT_EQ(E4FimCP(0, nullptr), 0);
    vp_clear_calls();
  }
};

// The entry and exit lines logged by the functions named in `expected`, in order.
std::vector<std::string> steps(const std::vector<std::string>& expected) {
  std::set<std::string> names;
  for (const auto& l : expected) names.insert(l.substr(0, l.find("5600 - ")));
  std::vector<std::string> out;
  for (const auto& l : log_lines()) {
    const auto at = l.find("5600 - ");
    if (at != std::string::npos && names.contains(l.substr(0, at)) &&
        (l.compare(at + 7, 6, "inicio") == 0 || l.compare(at + 7, 12, "fim com ret=") == 0))
      out.push_back(l);
  }
  return out;
}


// The commands of the store-number procedure among those sent.
Cmds procedure() {
  Cmds out;
  for (int c : sent())
    if (c == 160 || c == 224 || c == 245 || c == 246) out.push_back(c);
  return out;
}

}  // namespace

TEST_F(Store, IdentifiedConsumerItemsAdjustmentsTwoPaymentsAndClosing) {
  // What the previous coupon of the day left behind.
  for (const auto& [f, c] : {std::pair{"EcfZandor.pgt", "000099#$60"}, {"EcfZandor.ind", "$1"},
                             {"EcfZandorCoo.pgt", "\nCPF000099$60"}, {"EcfAcresItens.cpf", "000044 0011.00\r\n"}})
    write_file(f, c);
  counters({"000100", "000100", "000045", "000045"});  // COO twice at the opening, then the CCF twice
  state(2);
  char acrescimo[16] = "1,50";
  ASSERT_EQ(E4Cons("Maria", "123", "Rua A"), 0);
  ASSERT_EQ(E4IniCP(2, ""), 0);
  ASSERT_EQ(E4IteCF(20, "7891", "ARROZ", "1000", "1000"), 0);
  ASSERT_EQ(E4IteCF(21, "7892", "FEIJAO", "2000", "850"), 0);
  ASSERT_EQ(E4DesIt(0, 20, 1, "0,50", "desconto"), 0);
  ASSERT_EQ(E4AcrIt(0, 21, 2, acrescimo, "acrescimo"), 0);
  ASSERT_EQ(E4AcrCup(0, "2,00"), 0);
  ASSERT_EQ(E4RegPag(60, "2000"), 0);  // totals the coupon first
  state(14);
  ASSERT_EQ(E4RegPag(61, "1550"), 0);
  state(15);  // paid with change
  ASSERT_EQ(E4FimCP(0, "Volte sempre"), 0);
  // The opening and its COO, items, item discount, item increase recorded by CCF, coupon increase, payments (the
  // first totals), closing with the increases' day total.
  EXPECT_EQ(sent(), (Cmds{141, 133, 133, 193, 193, 6, 207, 138, 6, 207, 133, 150, 6, 153, 185, 6, 185, 6, 6, 6, 189,
                          130, 142, 224, 133, 139}));
  EXPECT_EQ(payload(141), texts({"Maria", "123", "Rua A", ""}));
  EXPECT_EQ(payloads(193).front(),
            Bytes{20} + texts({"7891", "ARROZ"}) + Bytes{2} + texts({"1000", "Un", "1000"}) + Bytes{'A'});
  EXPECT_EQ(payloads(207), (std::vector<Bytes>{Bytes{1, 0, 1} + texts({"0,50"}), Bytes{2, 0, 0} + texts({"1,50"})}));
  EXPECT_EQ(payload(150), texts({"2,00"}));
  EXPECT_EQ(payloads(185), (std::vector<Bytes>{Bytes{60} + texts({"2000"}), Bytes{61} + texts({"1550"})}));
  EXPECT_EQ(payload(189), Bytes{0});
  EXPECT_EQ(payload(130), texts({"Volte sempre"}));
  EXPECT_EQ(payload(142), Bytes{5} + texts({"Rita", "", "", ""}));  // the consumer went out with the opening
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000100#$60$61");
  EXPECT_TRUE(file_exists("EcfZandor.ind") && read_file("EcfZandor.ind").empty());
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "\nCPF000099$60\r\n\nCPF000100$60$61");
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CPF");
  EXPECT_EQ(read_file("EcfAcresItens.cpf"), "000045 0021.50\r\n");
  EXPECT_EQ(read_file("EcfTotalAcrescItens.cpf"), "22112026000045" "1.50\r\n");
  const auto in = [](const std::string& f) { return f + "5600 - inicio "; };
  const auto ok = [](const std::string& f) { return f + "5600 - fim com ret=0 "; };
  const std::vector<std::string> trace = {  // "\x01": the cut request, printed as a character
      "E4Cons5600 - inicio - Nome=Maria Numero=123 Endereco=Rua A", ok("E4Cons"), "E4IniCP5600 - inicio - Opc=2 ",
      in("Abre_Cupom_Fiscal"), ok("Abre_Cupom_Fiscal"), ok("E4IniCP"),
      "E4IteCF5600 - inicio - RP=20 Codigo=7891 Descricao=ARROZ Quantidade=1000, Valor=1000",
      "E4IteCFEsp5600 - inicio - RP=20 Codigo=7891 Descricao=ARROZ Quantidade=1000, Valor=1000, Unidade= ",
      "Vender_Item5600 - inicio - RP=20 Codigo=7891 Descricao=ARROZ Quantidade=1000, Valor=1000, Unidade=, IAT=A ",
      ok("Vender_Item"), ok("E4IteCFEsp"), ok("E4IteCF"),
      "E4IteCF5600 - inicio - RP=21 Codigo=7892 Descricao=FEIJAO Quantidade=2000, Valor=850",
      "E4IteCFEsp5600 - inicio - RP=21 Codigo=7892 Descricao=FEIJAO Quantidade=2000, Valor=850, Unidade= ",
      "Vender_Item5600 - inicio - RP=21 Codigo=7892 Descricao=FEIJAO Quantidade=2000, Valor=850, Unidade=, IAT=A ",
      ok("Vender_Item"), ok("E4IteCFEsp"), ok("E4IteCF"),
      "E4DesIt5600 - inicio - Opc=0 RP=20 SeqItem=1 Valor=0,50 Descricao=desconto",
      "Executa_Acrescimo_Desconto_Em_Item5600 - inicio - Opc=1 SeqItem=1 Valor=0,50 ",
      ok("Executa_Acrescimo_Desconto_Em_Item"), ok("E4DesIt"),
      "E4AcrIt5600 - inicio - Opc=0 RP=21 SeqItem=2 Valor=1,50 Descricao=acrescimo",
      "Executa_Acrescimo_Desconto_Em_Item5600 - inicio - Opc=0 SeqItem=2 Valor=1,50 ",
      ok("Executa_Acrescimo_Desconto_Em_Item"), ok("E4AcrIt"), "E4AcrCup5600 - inicio - Opc=0 - Valor=2,00 ",
      ok("E4AcrCup"), "E4RegPag5600 - inicio - RP=60 Valor=2000",
      "Pagamento_Fiscal_E_NaoFiscal5600 - inicio - RP=60 Valor=2000", in("Totaliza_Fiscal_e_NaoFiscal"),
      ok("Totaliza_Fiscal_e_NaoFiscal"), ok("Pagamento_Fiscal_E_NaoFiscal"), ok("E4RegPag"),
      "E4RegPag5600 - inicio - RP=61 Valor=1550", "Pagamento_Fiscal_E_NaoFiscal5600 - inicio - RP=61 Valor=1550",
      ok("Pagamento_Fiscal_E_NaoFiscal"), ok("E4RegPag"), "E4FimCP5600 - inicio - Prox=[Volte sempre] ",
      "Finalizar5600 - inicio - msgCupom=[Volte sempre], qtdAvanco=[0], CortaPapel=[\x01]",
      "ControlarFinalizacaoCupom5600 - inicio - Prox=[Volte sempre] - qtdeAvanco=[0]",
      in("Imprime_Valor_Recebido"), ok("Imprime_Valor_Recebido"), in("Troco_Fiscal_E_NaoFiscal"),
      ok("Troco_Fiscal_E_NaoFiscal"),
      "Finaliza_Cupom_Fiscal5600 - inicio - msg=Volte sempre - qtdeAvanco=0, CortaPapel=\x01",
      "ImprimeMensagem5600 - inicio  ", ok("ImprimeMensagem"), in("CortedePapel"), ok("CortedePapel"),
      in("Incluir_TotalAcrescItensCF"), "Incluir_TotalAcrescItensCF5600 - fim com ret=0",
      ok("Finaliza_Cupom_Fiscal"), ok("ControlarFinalizacaoCupom"), ok("Finalizar"), ok("E4FimCP")};
  EXPECT_EQ(steps(trace), trace);
}

TEST_F(Store, CardPaymentGetsOneVoucher) {
  venda({{60, "500"}, {61, "1000"}});
  state(17);
  EXPECT_EQ(E4IniCP(17, "61"), 0);
  EXPECT_EQ(E4Print("CARTAO 1234"), 0);
  EXPECT_EQ(E4FimCP(0, nullptr), 0);
  EXPECT_EQ(E4IniCP(17, "61"), 2561);  // the coupon had one card payment on 61: no second voucher
  EXPECT_EQ(sent(), (Cmds{218, 6, 130, 6, 228, 224}));
  EXPECT_EQ(payload(218), (Bytes{0x00, 0x01, 0x00, 2}));  // coupon 000100, its second payment
  EXPECT_EQ(payload(130), texts({"CARTAO 1234"}));
  EXPECT_EQ(payload(228), Bytes{5} + texts({"Rita"}));
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CCD");
  EXPECT_EQ(read_file("EcfZandor.ind"), "$2");
  EXPECT_EQ(read_file("EcfZandorCOO.ind"), "\nCOO000100$2");
}

TEST_F(Store, CancellationReversesTheVouchersNewestFirstThenTheCoupon) {
  venda({{61, "500"}, {62, "700"}});
  state(17);
  for (const char* reg : {"61", "62"}) {
    ASSERT_EQ(E4IniCP(17, reg), 0);
    ASSERT_EQ(E4FimCP(0, nullptr), 0);
  }
  EXPECT_EQ(payloads(218), (std::vector<Bytes>{{0x00, 0x01, 0x00, 1}, {0x00, 0x01, 0x00, 2}}));
  // Nothing open; the vouchers were COO 101 and 102, each reversal stays open (state 27) until it is closed.
  vp_clear_calls();
  push(6, 0, {0, 0});
  state(27);
  counters({"000102", "000045"});  // the current COO, then the CCF of the cancelled coupon
  EXPECT_EQ(E4CanCup(), 0);
  EXPECT_EQ(sent(), (Cmds{6, 133, 219, 6, 229, 224, 219, 6, 229, 224, 155, 224, 139, 133}));
  EXPECT_EQ(payloads(219), (std::vector<Bytes>{{0x00, 0x01, 0x02}, {0x00, 0x01, 0x01}}));
  EXPECT_EQ(payload(229), Bytes{5} + texts({"Rita"}));
  EXPECT_EQ(payload(155), Bytes{0} + texts({"Rita"}));
  EXPECT_EQ(read_file("EcfCancelados.cpf"), "22112026000045\r\n");
}

TEST_F(Store, NonFiscalCouponClosedByItsPayment) {
  write_file("EcfZandorCoo.pgt", "\nCPF000199$61");
  stick(133, 0, bytes_with(20, 1, "000200"));  // the COO, read twice by the opening
  EXPECT_EQ(E4IniCP(19, "Suprimento"), 0);
  EXPECT_EQ(E4OpeCNF(40, "+", "Troco inicial", "50"), 0);
  state(20);  // a payment in state 20 totals and closes the coupon
  EXPECT_EQ(E4RegPag(60, "5000"), 0);
  EXPECT_EQ(sent(), (Cmds{157, 133, 133, 159, 6, 153, 158, 224}));
  EXPECT_EQ(payload(157), Bytes{0} + texts({"", "", "", "Suprimento"}));
  EXPECT_EQ(payload(159), Bytes({40, 0}) + texts({"50,00"}));
  EXPECT_EQ(payload(158), Bytes{5} + texts({"Rita"}));
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CNF");
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000200#$60");
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "\nCPF000199$61\r\n\nCNF000200$60");
}

TEST_F(Store, ManagementReportPrintedFromAFile) {
  write_file("relatorio.txt", "Caixa 1\r\n" + std::string(80, 'x') + "\n\nTotal\n");
  EXPECT_EQ(E4IniCP(20, "3"), 0);
  state(26);
  for (const char* linhas : {"10", "1", "0", "abc"}) EXPECT_EQ(E4ImpVinc("relatorio.txt", linhas), 0) << linhas;
  EXPECT_EQ(E4FimCP(0, "ignorada"), 0);
  EXPECT_EQ(payload(220), Bytes({'t' + 3, 0}));
  EXPECT_EQ(payloads(130), (std::vector<Bytes>{texts({"Caixa 1"}), texts({std::string(56, 'x')}), texts({""}),
                                               texts({"Total"}), texts({"Caixa 1"})}));
  EXPECT_EQ(payload(221), Bytes{5} + texts({"Rita"}));
  EXPECT_EQ(read_file("EcfZandor.cpm"), "RGR");
  // Failures are given untranslated, a missing file's and a refused line's.
  EXPECT_EQ(E4ImpVinc("falta.txt", "3"), 2902);
  push(130, 0);
  push(130, 1);
  EXPECT_EQ(E4ImpVinc("relatorio.txt", "3"), 2904);
  EXPECT_EQ(sent(), (Cmds{220, 130, 130, 130, 130, 130, 6, 221, 224, 130, 130}));  // "10": fewer lines than asked
  EXPECT_FALSE(logged("E4ImpVinc5600 - fim com ret=2904 "));  // returned without its exit line
}

TEST_F(Store, XReadingThenReductionWaitingForAPrinterThatStaysBusy) {
  for (const auto& [f, c] : {std::pair{"EcfZandor.pgt", "000300#$61"}, {"EcfZandor.ind", "$1"},
                             {"EcfZandorCoo.pgt", "\nCPF000300$61"}, {"EcfZandorCOO.ind", "\nCOO000300$1"}})
    write_file(f, c);
  stick(1, 1);  // the availability poll never succeeds
  EXPECT_EQ(E4IniCP(4, ""), 0);
  EXPECT_EQ(E4IniCP(5, ""), 0);
  EXPECT_EQ(sent(), (Cmds{160, 224, 162, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 224, 10}));
  EXPECT_EQ(payload(160), texts({"Rita", ""}));
  // The day's files end with the day; the last coupon's stay for its vouchers.
  EXPECT_EQ(read_file("EcfZandorCoo.pgt") + read_file("EcfZandorCOO.ind"), "");
  EXPECT_EQ(read_file("EcfZandor.pgt") + read_file("EcfZandor.ind"), "000300#$61$1");
}

TEST_F(Fresh, RegisterCreationRefusedMidwayResumesAtTheNextOpens) {
  vp_answer_identity();
  stick(246, 0, bytes_with(5, 0, "0042"));  // the printer's store number
  // A session opened again: the procedure's commands sent and the status left.
  const auto reopen = [](const Cmds& cmds, const char* status) {
    E4Close();
    vp_clear_calls();
    ASSERT_EQ(E4Open(0, 0), 0);
    EXPECT_EQ(procedure(), cmds);
    EXPECT_EQ(read_file("ArqRegPgto.sts"), status);
  };
  ASSERT_EQ(E4Open(0, 0), 0);
  // A new payment register: store "9999" is refused three times, so the procedure stops in state "1"; the next
  // session sends it.
  for (int i = 0; i < 3; ++i) push(245, 1);
  push(4, 0, {0, 1});  // no X reading due after a reduction
  vp_clear_calls();
  unsigned char reg = 62;
  EXPECT_EQ(E4RPCria(5, "CARTAO", "1", &reg), 0);
  EXPECT_EQ(procedure(), (Cmds{245, 245, 245}));
  EXPECT_EQ(read_file("ArqRegPgto.sts"), "10042");
  reopen({245}, "20042");
  EXPECT_EQ(payload(245), texts({"9999"}));
  // The next document restores the saved number before it opens; refused again, the procedure stops in state "3"
  // and the coupon opens all the same.
  for (int i = 0; i < 3; ++i) push(245, 1);
  vp_clear_calls();
  EXPECT_EQ(E4IniCP(2, ""), 0);
  EXPECT_EQ(sent(), (Cmds{245, 245, 245, 141, 133, 133}));
  EXPECT_EQ(payload(245), texts({"0042"}));
  EXPECT_EQ(read_file("ArqRegPgto.sts"), "30042");
  reopen({245}, "40042");  // resumed step by step by the following sessions
  EXPECT_EQ(payload(245), texts({"0042"}));
  reopen({160, 224}, "00042");
  EXPECT_EQ(payload(160), (Bytes{0, 0}));
  E4Close();
}
