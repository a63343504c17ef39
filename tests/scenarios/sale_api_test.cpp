// Whole sales, from the consumer's identification to the vouchers of the card
// payments and their reversal. The document state (command 6) and the counters
// (command 133: the COO, then the CCF) are scripted as a printer reports them.
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

class Sale : public Session {
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

// The entry and exit lines of the sale's functions and main steps, in order.
std::vector<std::string> steps() {
  static const std::set<std::string> names = {
      "E4Cons", "E4IniCP", "Abre_Cupom_Fiscal", "E4IteCF", "E4IteCFEsp", "Vender_Item", "E4DesIt", "E4AcrIt",
      "Executa_Acrescimo_Desconto_Em_Item", "E4AcrCup", "E4RegPag", "Pagamento_Fiscal_E_NaoFiscal",
      "Totaliza_Fiscal_e_NaoFiscal", "E4FimCP", "Finalizar", "ControlarFinalizacaoCupom", "Imprime_Valor_Recebido",
      "Troco_Fiscal_E_NaoFiscal", "Finaliza_Cupom_Fiscal", "ImprimeMensagem", "CortedePapel",
      "Incluir_TotalAcrescItensCF"};
  std::vector<std::string> out;
  for (const auto& l : log_lines()) {
    const auto at = l.find("5600 - ");
    if (at == std::string::npos || !names.contains(l.substr(0, at))) continue;
    const std::string rest = l.substr(at + 7);
    if (rest.starts_with("inicio") || rest.starts_with("fim com ret=")) out.push_back(l);
  }
  return out;
}

}  // namespace

TEST_F(Sale, IdentifiedConsumerItemsAdjustmentsTwoPaymentsAndClosing) {
  // What the previous coupon of the day left behind.
  write_file("EcfZandor.pgt", "000099#$60");
  write_file("EcfZandor.ind", "$1");
  write_file("EcfZandorCoo.pgt", "\nCPF000099$60");
  write_file("EcfAcresItens.cpf", "000044 0011.00\r\n");
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
  EXPECT_EQ(sent(), (Cmds{141, 133, 133,                           // opening, its COO recorded
                          193, 193,                                // items
                          6, 207,                                  // item discount
                          138, 6, 207, 133,                        // item increase, recorded by CCF
                          150,                                     // coupon increase
                          6, 153, 185, 6, 185,                     // payments, the first totals
                          6, 6, 6, 189, 130, 142, 224, 133, 139}));  // closing, the increases' day total
  EXPECT_EQ(payload(141), texts({"Maria", "123", "Rua A", ""}));
  EXPECT_EQ(payloads(193).front(),
            Bytes{20} + texts({"7891", "ARROZ"}) + Bytes{2} + texts({"1000", "Un", "1000"}) + Bytes{'A'});
  EXPECT_EQ(payloads(207), (std::vector<Bytes>{Bytes{1, 0, 1} + texts({"0,50"}), Bytes{2, 0, 0} + texts({"1,50"})}));
  EXPECT_EQ(payload(150), texts({"2,00"}));
  EXPECT_EQ(payloads(185), (std::vector<Bytes>{Bytes{60} + texts({"2000"}), Bytes{61} + texts({"1550"})}));
  EXPECT_EQ(payload(189), Bytes{0});
  EXPECT_EQ(payload(130), texts({"Volte sempre"}));
  // The consumer went out with the opening: the closing carries three empty texts.
  EXPECT_EQ(payload(142), Bytes{5} + texts({"Rita", "", "", ""}));
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000100#$60$61");
  EXPECT_TRUE(file_exists("EcfZandor.ind"));
  EXPECT_EQ(read_file("EcfZandor.ind"), "");
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "\nCPF000099$60\r\n\nCPF000100$60$61");
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CPF");
  EXPECT_EQ(read_file("EcfAcresItens.cpf"), "000045 0021.50\r\n");
  EXPECT_EQ(read_file("EcfTotalAcrescItens.cpf"), "22112026000045" "1.50\r\n");
  const std::string corte = "\x01";  // the cut request, printed as a character
  const std::vector<std::string> trace = {
      "E4Cons5600 - inicio - Nome=Maria Numero=123 Endereco=Rua A",
      "E4Cons5600 - fim com ret=0 ",
      "E4IniCP5600 - inicio - Opc=2 ",
      "Abre_Cupom_Fiscal5600 - inicio ",
      "Abre_Cupom_Fiscal5600 - fim com ret=0 ",
      "E4IniCP5600 - fim com ret=0 ",
      "E4IteCF5600 - inicio - RP=20 Codigo=7891 Descricao=ARROZ Quantidade=1000, Valor=1000",
      "E4IteCFEsp5600 - inicio - RP=20 Codigo=7891 Descricao=ARROZ Quantidade=1000, Valor=1000, Unidade= ",
      "Vender_Item5600 - inicio - RP=20 Codigo=7891 Descricao=ARROZ Quantidade=1000, Valor=1000, Unidade=, IAT=A ",
      "Vender_Item5600 - fim com ret=0 ",
      "E4IteCFEsp5600 - fim com ret=0 ",
      "E4IteCF5600 - fim com ret=0 ",
      "E4IteCF5600 - inicio - RP=21 Codigo=7892 Descricao=FEIJAO Quantidade=2000, Valor=850",
      "E4IteCFEsp5600 - inicio - RP=21 Codigo=7892 Descricao=FEIJAO Quantidade=2000, Valor=850, Unidade= ",
      "Vender_Item5600 - inicio - RP=21 Codigo=7892 Descricao=FEIJAO Quantidade=2000, Valor=850, Unidade=, IAT=A ",
      "Vender_Item5600 - fim com ret=0 ",
      "E4IteCFEsp5600 - fim com ret=0 ",
      "E4IteCF5600 - fim com ret=0 ",
      "E4DesIt5600 - inicio - Opc=0 RP=20 SeqItem=1 Valor=0,50 Descricao=desconto",
      "Executa_Acrescimo_Desconto_Em_Item5600 - inicio - Opc=1 SeqItem=1 Valor=0,50 ",
      "Executa_Acrescimo_Desconto_Em_Item5600 - fim com ret=0 ",
      "E4DesIt5600 - fim com ret=0 ",
      "E4AcrIt5600 - inicio - Opc=0 RP=21 SeqItem=2 Valor=1,50 Descricao=acrescimo",
      "Executa_Acrescimo_Desconto_Em_Item5600 - inicio - Opc=0 SeqItem=2 Valor=1,50 ",
      "Executa_Acrescimo_Desconto_Em_Item5600 - fim com ret=0 ",
      "E4AcrIt5600 - fim com ret=0 ",
      "E4AcrCup5600 - inicio - Opc=0 - Valor=2,00 ",
      "E4AcrCup5600 - fim com ret=0 ",
      "E4RegPag5600 - inicio - RP=60 Valor=2000",
      "Pagamento_Fiscal_E_NaoFiscal5600 - inicio - RP=60 Valor=2000",
      "Totaliza_Fiscal_e_NaoFiscal5600 - inicio ",
      "Totaliza_Fiscal_e_NaoFiscal5600 - fim com ret=0 ",
      "Pagamento_Fiscal_E_NaoFiscal5600 - fim com ret=0 ",
      "E4RegPag5600 - fim com ret=0 ",
      "E4RegPag5600 - inicio - RP=61 Valor=1550",
      "Pagamento_Fiscal_E_NaoFiscal5600 - inicio - RP=61 Valor=1550",
      "Pagamento_Fiscal_E_NaoFiscal5600 - fim com ret=0 ",
      "E4RegPag5600 - fim com ret=0 ",
      "E4FimCP5600 - inicio - Prox=[Volte sempre] ",
      "Finalizar5600 - inicio - msgCupom=[Volte sempre], qtdAvanco=[0], CortaPapel=[" + corte + "]",
      "ControlarFinalizacaoCupom5600 - inicio - Prox=[Volte sempre] - qtdeAvanco=[0]",
      "Imprime_Valor_Recebido5600 - inicio ",
      "Imprime_Valor_Recebido5600 - fim com ret=0 ",
      "Troco_Fiscal_E_NaoFiscal5600 - inicio ",
      "Troco_Fiscal_E_NaoFiscal5600 - fim com ret=0 ",
      "Finaliza_Cupom_Fiscal5600 - inicio - msg=Volte sempre - qtdeAvanco=0, CortaPapel=" + corte,
      "ImprimeMensagem5600 - inicio  ",
      "ImprimeMensagem5600 - fim com ret=0 ",
      "CortedePapel5600 - inicio ",
      "CortedePapel5600 - fim com ret=0 ",
      "Incluir_TotalAcrescItensCF5600 - inicio ",
      "Incluir_TotalAcrescItensCF5600 - fim com ret=0",
      "Finaliza_Cupom_Fiscal5600 - fim com ret=0 ",
      "ControlarFinalizacaoCupom5600 - fim com ret=0 ",
      "Finalizar5600 - fim com ret=0 ",
      "E4FimCP5600 - fim com ret=0 "};
  EXPECT_EQ(steps(), trace);
}

TEST_F(Sale, CardPaymentGetsOneVoucher) {
  venda({{60, "500"}, {61, "1000"}});
  state(17);
  EXPECT_EQ(E4IniCP(17, "61"), 0);
  EXPECT_EQ(E4Print("CARTAO 1234"), 0);
  EXPECT_EQ(E4FimCP(0, nullptr), 0);
  EXPECT_EQ(sent(), (Cmds{218, 6, 130, 6, 228, 224}));
  EXPECT_EQ(payload(218), (Bytes{0x00, 0x01, 0x00, 2}));  // coupon 000100, its second payment
  EXPECT_EQ(payload(130), texts({"CARTAO 1234"}));
  EXPECT_EQ(payload(228), Bytes{5} + texts({"Rita"}));
  EXPECT_EQ(read_file("EcfZandor.ind"), "$2");
  EXPECT_EQ(read_file("EcfZandorCOO.ind"), "\nCOO000100$2");
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CCD");
  // The coupon had one card payment on 61: no second voucher for it.
  vp_clear_calls();
  EXPECT_EQ(E4IniCP(17, "61"), 2561);
  EXPECT_EQ(sent(), Cmds{});
  EXPECT_EQ(read_file("EcfZandor.ind"), "$2");
  EXPECT_EQ(read_file("EcfZandorCOO.ind"), "\nCOO000100$2");
}

TEST_F(Sale, CancellationReversesTheVouchersNewestFirstThenTheCoupon) {
  venda({{61, "500"}, {62, "700"}});
  state(17);
  for (const char* reg : {"61", "62"}) {
    ASSERT_EQ(E4IniCP(17, reg), 0);
    ASSERT_EQ(E4FimCP(0, nullptr), 0);
  }
  EXPECT_EQ(payloads(218), (std::vector<Bytes>{{0x00, 0x01, 0x00, 1}, {0x00, 0x01, 0x00, 2}}));
  EXPECT_EQ(read_file("EcfZandorCOO.ind"), "\nCOO000100$1$2");
  // Nothing open; the vouchers were COO 101 and 102, each reversal stays open
  // (state 27) until it is closed.
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
