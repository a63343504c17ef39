// Documents end to end on the fiscal model: what the operator sees on paper,
// what the application gets back and the files the library keeps.
#include <algorithm>

#include "e2e/model.h"

using namespace e2e;
using orbtest::read_file;

namespace {

unsigned printer_error() {
  unsigned err = 0;
  E4GetError(&err);
  return err;
}

void sale_paid_by_card_then_cash() {
  ASSERT_EQ(E4IniCP(2, ""), 0);
  ASSERT_EQ(E4IteCF(20, "7891", "CAFE 500 G", "2,000", "12,50"), 0);
  ASSERT_EQ(E4RegPag(61, "20,00"), 0);
  ASSERT_EQ(E4RegPag(60, "10,00"), 0);
  ASSERT_EQ(E4FimCP(0, "VOLTE SEMPRE"), 0);
}

TEST_F(OnModel, SaleWithConsumerTwoPaymentsAndOneVoucherPerPayment) {
  ASSERT_EQ(E4ProgOp("MARIA"), 0);
  ASSERT_EQ(E4Cons("JOSE", "987.654.321-00", "RUA B, 2"), 0);
  sale_paid_by_card_then_cash();
  EXPECT_EQ(read_file("NomeOper.cfg"), "MARIA");
  const auto coupon = tape_from("CUPOM FISCAL");
  EXPECT_EQ(figure(coupon, "TOTAL R$"), "25,00");
  EXPECT_EQ(figure(coupon, "CARTAO"), "20,00");
  EXPECT_EQ(figure(coupon, "TROCO R$"), "5,00");
  EXPECT_TRUE(printed("CPF/CNPJ CONSUMIDOR: 987.654.321-00"));
  EXPECT_TRUE(printed("VOLTE SEMPRE"));
  EXPECT_EQ(value(60), 500);
  EXPECT_EQ(value(61), 2000);

  ASSERT_EQ(E4IniCP(17, "61"), 0);
  ASSERT_EQ(E4Print("AUT. 0001"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  EXPECT_TRUE(printed("COO DO DOCUMENTO VINCULADO: 000001"));
  EXPECT_EQ(E4IniCP(17, "61"), 2561);  // the payment has its voucher
  EXPECT_EQ(E4IniCP(17, "60"), 2561);  // cash admits none
  EXPECT_EQ(vp_coo(), 2);
}

TEST_F(OnModel, CancellingACouponReversesItsCardVoucherFirst) {
  sale_paid_by_card_then_cash();
  ASSERT_EQ(E4IniCP(17, "61"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  ASSERT_EQ(E4CanCup(), 0);
  EXPECT_TRUE(printed("COO DO COMPROVANTE ESTORNADO: 000002"));
  EXPECT_TRUE(printed("COO DO DOCUMENTO CANCELADO: 000001"));
  EXPECT_EQ(value(20), 0);
  EXPECT_EQ(value(7), 2500);
  EXPECT_EQ(value(60) + value(61), 0);
  EXPECT_EQ(E4CanCup(), 2561);  // nothing left to cancel
}

TEST_F(OnModel, NonFiscalCouponAndAReportFromAFile) {
  ASSERT_EQ(E4IniCP(19, ""), 0);
  ASSERT_EQ(E4OpeCNF(41, "+", "SUPRIMENTO", "50,00"), 0);
  EXPECT_EQ(E4IteCF(20, "1", "X", "1,000", "1,00"), 2561);  // no sale in it
  ASSERT_EQ(E4RegPag(60, "50,00"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  EXPECT_EQ(figure(tape_from("COMPROVANTE NAO-FISCAL"), "SUPRIMENTO"), "50,00");
  EXPECT_EQ(value(41), 5000);

  orbtest::write_file("fechamento.txt", "CAIXA 01\nABERTURA 08:00\nFECHAMENTO 18:00\n");
  ASSERT_EQ(E4IniCP(20, "1"), 0);
  ASSERT_EQ(E4ImpVinc("fechamento.txt", "3"), 0);
  ASSERT_EQ(E4FimCP(0, ""), 0);
  const auto report = tape_from("RELATORIO GERENCIAL");
  for (const char* line : {"CAIXA 01", "ABERTURA 08:00", "FECHAMENTO 18:00"})
    EXPECT_NE(std::find(report.begin(), report.end(), line), report.end()) << line;
  EXPECT_EQ(vp_doc_state(), 0);
  EXPECT_EQ(vp_coo(), 2);
}

TEST_F(OnModel, XAndZReadingsThenTheDayIsClosed) {
  sale_paid_by_card_then_cash();
  ASSERT_EQ(E4IniCP(4, ""), 0);
  EXPECT_EQ(figure(tape_from("LEITURA X"), "VENDA BRUTA DIARIA"), "25,00");
  ASSERT_EQ(E4IniCP(5, ""), 0);
  EXPECT_EQ(figure(tape_from("REDUCAO Z"), "VENDA BRUTA DIARIA"), "25,00");
  char data[9] = "", hora[5] = "", movimento[9] = "";
  unsigned char verao = 0, reducao = 0;
  ASSERT_EQ(E4RdData(data, hora, &verao, movimento, &reducao), 0);
  EXPECT_EQ(reducao, 1);
  EXPECT_EQ(E4IniCP(2, ""), 2561);  // no more sales today
  EXPECT_EQ(printer_error(), 151u);
}

TEST_F(OnModel, ACouponOpenAtARestartIsCancelledByTheNextProcess) {
  ASSERT_EQ(E4IniCP(2, ""), 0);
  ASSERT_EQ(E4IteCF(20, "1", "PAO", "1,000", "4,00"), 0);
  ASSERT_EQ(E4Close(), 0);

  vp_model_reload();  // the application and the printer's driver start again
  ASSERT_EQ(E4Open(0, 0), 0);
  unsigned char opc = 0, resposta = 0;
  ASSERT_EQ(E4StaECF(&opc, &resposta), 0);
  EXPECT_EQ(opc, 2);
  EXPECT_EQ(value(20), 400);
  ASSERT_EQ(E4CanCup(), 0);
  EXPECT_TRUE(printed("CUPOM FISCAL CANCELADO"));
  EXPECT_EQ(value(7), 400);
  ASSERT_EQ(E4StaECF(&opc, &resposta), 0);
  EXPECT_EQ(opc, 0);
  sale_paid_by_card_then_cash();  // and the day goes on
  EXPECT_EQ(vp_ccf(), 2);
}

}  // namespace
