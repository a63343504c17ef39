// Document records: the last document's type, the operator, the store number,
// the item increases per coupon, the day's totals and the cancelled coupons.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <string>
#include <utility>

#include "orbelan.h"
#include "state/documents.h"
#include "state/increases.h"
#include "support/fixture.h"

using namespace orbelan;
using namespace orbtest;

namespace {

// The last coupon's CCF (register 137) and the printer's business date.
void impressora(const std::string& ccf, const std::string& data) {
  stick(133, 0, bytes_with(30, 1, ccf));
  stick(139, 0, bytes_with(10, 1, data));
}

std::string total_cupom(std::uint16_t* ret = nullptr) {
  char total[20] = "lixo", ccf[7] = "";
  const std::uint16_t r = Get_TotalAcrescItensCF(total, ccf);
  if (ret != nullptr) *ret = r;
  return total;
}

std::string total_dia() {
  char out[18] = "lixo";
  EXPECT_EQ(CalcularTotalAcrescItensDia(out), 0);
  return out;
}

void bloqueia(std::initializer_list<const char*> nomes) {
  for (const char* nome : nomes) {
    std::remove(nome);
    ASSERT_EQ(::mkdir(nome, 0755), 0);
  }
}

}  // namespace

TEST_F(Fresh, DocumentTypeAndOperatorFiles) {
  char tipo[4] = "xyz";
  EXPECT_EQ(Ler_Tipo_Ultimo_Cupom(tipo), 2902);
  EXPECT_STREQ(tipo, "");
  // Only the first three characters count; fewer than three is no type.
  for (const auto& [conteudo, lido] : {std::pair{"RGRX", "RGR"}, {"CC", ""}}) {
    write_file("EcfZandor.cpm", conteudo);
    EXPECT_EQ(Ler_Tipo_Ultimo_Cupom(tipo), 0);
    EXPECT_STREQ(tipo, lido);
  }
  EXPECT_EQ(Ler_Tipo_Ultimo_Cupom(nullptr), 0);
  char nome[21] = "lixo";
  EXPECT_EQ(Incluir_Operador("ABCDEFGHIJKLMNOPQRSTUVWXY"), 0);
  EXPECT_EQ(Incluir_Operador("Ana"), 0);
  EXPECT_EQ(read_file("NomeOper.cfg"), "Ana");
  bloqueia({"EcfZandor.cpm", "NomeOper.cfg"});
  EXPECT_EQ(Incluir_Tipo_Cupom("CPF"), 2902);
  EXPECT_EQ(Ler_Tipo_Ultimo_Cupom(tipo), 2902);
  EXPECT_EQ(Incluir_Operador("Ana"), 2902);
  EXPECT_EQ(Ler_Operador(nome), 0);  // no operator, not an error
  EXPECT_STREQ(nome, "");
}

TEST_F(Session, StoreNumber) {
  const std::pair<std::string, const char*> casos[] = {
      {"9999", "0000"}, {"12", "0012"}, {"1a2-b", "0012"}, {"12345", "2345"}, {"", "0000"}};
  char loja[5] = "zzzz";
  for (const auto& [resposta, esperada] : casos) {
    push(246, 0, bytes_with(5, 0, resposta));
    std::strcpy(loja, "zzzz");
    EXPECT_EQ(Obter_Numero_da_Loja(loja), 0);
    EXPECT_STREQ(loja, esperada) << resposta;
    EXPECT_EQ(last_input(246).size(), 2U);
  }
  push(246, 2302);
  EXPECT_NE(Obter_Numero_da_Loja(loja), 0);
  EXPECT_STREQ(loja, "");
  E4Close();
  EXPECT_EQ(Obter_Numero_da_Loja(loja), 2869);
}

TEST_F(Session, CouponIncreasesAndCancellations) {
  impressora("000045", "02012025");
  EXPECT_EQ(Incluir_Dados_AcresItens("000045", 3, "1,50"), 0);
  EXPECT_EQ(Incluir_Cancelamento_Item_ou_AcresItem("000045", 3), 0);
  char valor[12] = "";
  EXPECT_EQ(Ler_ValorAcrescimoItem("000045", "003", valor), 0);
  EXPECT_STREQ(valor, "1.50");
  std::uint8_t cancelado = 0;
  EXPECT_EQ(Ler_ItemouAcrescItemCancelado("000045", "003", &cancelado), 0);
  EXPECT_EQ(cancelado, 1);
  // The cancelled increase leaves nothing to record for the day.
  EXPECT_EQ(total_cupom(), "");
  EXPECT_EQ(Incluir_TotalAcrescItensCF(), 0);
  EXPECT_FALSE(file_exists("EcfTotalAcrescItens.cpf"));
  Limpar_AcrescItens();
  EXPECT_EQ(Incluir_Dados_AcresItens("000045", 1, "0,10"), 0);
  EXPECT_EQ(Incluir_Dados_AcresItens("000045", 2, "0.10"), 0);
  EXPECT_EQ(Incluir_Dados_AcresItens("000044", 4, "9,00"), 0);  // another coupon's
  EXPECT_EQ(total_cupom(), "0.20");
  // Yesterday's lines go before today's first one is written.
  write_file("EcfTotalAcrescItens.cpf", "010120250000405.00\r\n");
  EXPECT_EQ(Incluir_TotalAcrescItensCF(), 0);
  EXPECT_EQ(Incluir_TotalAcrescItensCF(), 0);
  EXPECT_EQ(read_file("EcfTotalAcrescItens.cpf"), "020120250000450.20\r\n020120250000450.20\r\n");
}

TEST_F(Session, DayTotalLeavesCancelledCouponsOut) {
  impressora("000046", "02012025");
  write_file("EcfTotalAcrescItens.cpf", "020120250000450.20\r\n020120250000461.00\r\n020120250000470.05\r\n");
  EXPECT_EQ(total_dia(), "00000000000000125");
  EXPECT_EQ(IncluiDadosCFCancelado_Arquivo(), 0);  // the last coupon, for the business day
  EXPECT_EQ(read_file("EcfCancelados.cpf"), "02012025000046\r\n");
  EXPECT_EQ(total_dia(), "00000000000000025");
  std::uint8_t cancelado = 0;
  EXPECT_EQ(Ler_CupomFiscalCancelado("02012025", "000046", &cancelado), 0);
  EXPECT_EQ(cancelado, 1);
  EXPECT_EQ(Ler_CupomFiscalCancelado("01012025", "000046", &cancelado), 0);
  EXPECT_EQ(cancelado, 0);
  // A new business day: the old cancellations go, and the day total is zero
  // until a coupon of the new day is recorded.
  impressora("000050", "03012025");
  EXPECT_EQ(total_dia(), "00000000000000000");
  EXPECT_EQ(IncluiDadosCFCancelado_Arquivo(), 0);
  EXPECT_EQ(read_file("EcfCancelados.cpf"), "03012025000050\r\n");
}

TEST_F(Session, DayFilesMissingOrBlocked) {
  impressora("000046", "02012025");
  EXPECT_EQ(total_dia(), "00000000000000000");
  char data[9] = "lixo";
  EXPECT_EQ(Ler_DataMovimentoTotalAcrescItens(data), 2902);
  EXPECT_STREQ(data, "");
  std::uint8_t flag = 7;
  EXPECT_EQ(Ler_CupomFiscalCancelado("02012025", "000046", &flag), 2902);
  EXPECT_EQ(flag, 0);
  std::uint16_t ret = 1;
  EXPECT_EQ(total_cupom(&ret), "");
  EXPECT_EQ(ret, 2902);
  bloqueia({"EcfAcresItens.cpf", "EcfTotalAcrescItens.cpf", "EcfCancelados.cpf"});
  EXPECT_EQ(Limpar_AcrescItens(), 0);
  EXPECT_EQ(Incluir_Dados_AcresItens("000046", 1, "1,00"), 2902);
  EXPECT_EQ(Incluir_Cancelamento_Item_ou_AcresItem(nullptr, 1), 2902);
  EXPECT_EQ(IncluiDadosCFCancelado_Arquivo(), 2902);
}
