// The state files: document type, operator, the store-number procedure, item increases, day totals, cancelled
// coupons, and the payment records of the current coupon and of the day on the layouts the vouchers depend on.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "orbelan.h"
#include "state/documents.h"
#include "state/increases.h"
#include "state/payment_records.h"
#include "state/regpgto.h"
#include "support/fixture.h"

using namespace orbelan;
using namespace orbtest;

namespace {

// The last coupon's CCF (register 137), or the current COO, and the printer's business date.
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

constexpr const char* kStatus = "ArqRegPgto.sts";
using Rets = std::vector<int>;

// The result and the ordinal chosen for a voucher of `meio` in the current coupon, or in the day's record of `coo`.
using Escolha = std::pair<int, int>;
Escolha indice(unsigned meio, std::optional<const char*> coo = std::nullopt) {
  std::uint8_t ord = 99;
  const int r = coo ? Ler_Indice_PagamentoCOO(*coo, meio, &ord) : Ler_Indice_Pagamento(meio, &ord);
  return {r, ord};
}

}  // namespace

TEST_F(Fresh, DocumentTypeAndOperatorFiles) {
  char tipo[4] = "xyz";
  // Only the first three characters count; fewer than three is no type.
  for (const auto& [conteudo, lido] : {std::pair{"RGRX", "RGR"}, {"CC", ""}}) {
    write_file("EcfZandor.cpm", conteudo);
    EXPECT_EQ(Ler_Tipo_Ultimo_Cupom(tipo), 0);
    EXPECT_STREQ(tipo, lido);
  }
  EXPECT_EQ(Ler_Tipo_Ultimo_Cupom(nullptr), 0);
  EXPECT_EQ(Incluir_Operador("ABCDEFGHIJKLMNOPQRSTUVWXY"), 0);
  EXPECT_EQ(Incluir_Operador("Ana"), 0);
  EXPECT_EQ(read_file("NomeOper.cfg"), "Ana");
}

TEST_F(Session, StoreNumber) {
  const std::pair<std::string, const char*> casos[] = {
      {"9999", "0000"}, {"12", "0012"}, {"12345", "2345"}, {"1a2-b", "0012"}, {"", "0000"}};  // each changes the output
  char loja[5] = "zzzz";
  for (const auto& [resposta, esperada] : casos) {
    push(246, 0, bytes_with(5, 0, resposta));
    EXPECT_EQ(Obter_Numero_da_Loja(loja), 0);
    EXPECT_STREQ(loja, esperada) << resposta;
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
  std::uint8_t cancelado = 0;
  EXPECT_EQ(Ler_ValorAcrescimoItem("000045", "003", valor), 0);
  EXPECT_EQ(Ler_ItemouAcrescItemCancelado("000045", "003", &cancelado), 0);
  EXPECT_TRUE(std::string(valor) == "1.50" && cancelado == 1) << valor << int(cancelado);
  // The cancelled increase leaves nothing to record for the day.
  EXPECT_EQ(total_cupom(), "");
  EXPECT_EQ(Incluir_TotalAcrescItensCF(), 0);
  EXPECT_FALSE(file_exists("EcfTotalAcrescItens.cpf"));
  Limpar_AcrescItens();
  for (const auto& [ccf, item, valor] : {std::tuple{"000045", 1, "0,10"}, {"000045", 2, "0.10"}, {"000044", 4, "9,00"}})
    EXPECT_EQ(Incluir_Dados_AcresItens(ccf, item, valor), 0);  // the last is another coupon's
  EXPECT_EQ(total_cupom(), "0.20");
  // Yesterday's lines go before today's first one is written.
  write_file("EcfTotalAcrescItens.cpf", "010120250000405.00\r\n");
  EXPECT_EQ(Rets({Incluir_TotalAcrescItensCF(), Incluir_TotalAcrescItensCF()}), Rets(2, 0));
  EXPECT_EQ(read_file("EcfTotalAcrescItens.cpf"), "020120250000450.20\r\n020120250000450.20\r\n");
}

TEST_F(Session, DayTotalLeavesCancelledCouponsOut) {
  impressora("000046", "02012025");
  write_file("EcfTotalAcrescItens.cpf", "020120250000450.20\r\n020120250000461.00\r\n020120250000470.05\r\n");
  EXPECT_EQ(total_dia(), "00000000000000125");
  EXPECT_EQ(IncluiDadosCFCancelado_Arquivo(), 0);  // the last coupon, for the business day
  EXPECT_EQ(read_file("EcfCancelados.cpf"), "02012025000046\r\n");
  EXPECT_EQ(total_dia(), "00000000000000025");
  std::uint8_t hoje = 0, ontem = 9;
  EXPECT_EQ(Ler_CupomFiscalCancelado("02012025", "000046", &hoje), 0);
  EXPECT_EQ(Ler_CupomFiscalCancelado("01012025", "000046", &ontem), 0);
  EXPECT_TRUE(hoje == 1 && ontem == 0) << int(hoje) << int(ontem);  // cancelled on that business day only
  // A new business day: the old cancellations go, and the day total is zero until a coupon of the day is recorded.
  impressora("000050", "03012025");
  EXPECT_EQ(total_dia(), "00000000000000000");
  EXPECT_EQ(IncluiDadosCFCancelado_Arquivo(), 0);
  EXPECT_EQ(read_file("EcfCancelados.cpf"), "03012025000050\r\n");
}

TEST_F(Session, StateFilesMissingOrBlocked) {
  impressora("000046", "02012025");
  EXPECT_EQ(total_dia(), "00000000000000000");
  char data[9] = "lixo", coo[10] = "junk", tipo[4] = "xyz", nome[21] = "lixo";
  std::uint8_t flag = 7, existe = 9;
  unsigned qtde = 5;
  std::uint16_t ret = 1;
  EXPECT_EQ(total_cupom(&ret), "");
  EXPECT_EQ((Rets{ret, Ler_DataMovimentoTotalAcrescItens(data), Ler_COO_Pagamento(coo), Ler_Tipo_Ultimo_Cupom(tipo),
                  Ler_CupomFiscalCancelado("02012025", "000046", &flag),
                  Verifica_ExisteCOO_ArqIndPgtoporCOO("000123", &existe), Ler_Qtde_Pagamentos(&qtde)}),
            Rets(7, 2902));
  EXPECT_EQ(std::string(data) + coo + tipo, "");
  EXPECT_TRUE(flag == 0 && existe == 0 && qtde == 0);
  // A directory standing where a state file should be cannot be opened as a file.
  for (const char* nome : {"EcfAcresItens.cpf", "EcfTotalAcrescItens.cpf", "EcfCancelados.cpf", "EcfZandor.pgt",
                           "EcfZandor.ind", "EcfZandorCoo.pgt", "EcfZandorCOO.ind", "EcfZandor.cpm", "NomeOper.cfg"}) {
    std::remove(nome);
    ASSERT_EQ(::mkdir(nome, 0755), 0);
  }
  EXPECT_EQ(
      (Rets{Incluir_Tipo_Cupom("CPF"), Ler_Tipo_Ultimo_Cupom(tipo), Incluir_Operador("Ana"),
            Incluir_Dados_AcresItens("000046", 1, "1,00"), Incluir_Cancelamento_Item_ou_AcresItem(nullptr, 1),
            IncluiDadosCFCancelado_Arquivo(), Incluir_COO_Pagamento("000123"), Incluir_Indice_Pagamento_EmissaoCCD(1),
            Incluir_Indice_COO(NOME_ARQ_PAGTOPORCOO, nullptr, "CPF"), Incluir_Indice_PagamentoCOO(1, nullptr)}),
      Rets(10, 2902));
  // The cleaners have nothing to clean, and no operator is not an error.
  EXPECT_EQ((Rets{Limpar_AcrescItens(), Limpar_Pagamentos(), Limpar_IndicesPagamentosCOO(), Ler_Operador(nome)}),
            Rets(4, 0));
  EXPECT_STREQ(nome, "");
}

TEST_F(Session, SettingAndRestoringTheStoreNumber) {
  // Status before, step, report flag, a command refused once (or 0), result (-1: any failure), commands, after.
  const std::tuple<const char*, int, const char*, int, int, Cmds, const char*> casos[] = {
      {"00042", 1, "0", 245, 0, {245, 245}, "20042"},          // "9999" set at the second attempt
      {"20042", 3, "1", 0, 0, {245, 160, 224, 220}, "00042"},  // asked for, a management report follows
      {"20042", 3, "1", 160, -1, {245, 160}, "40042"},         // the closing refused: the next open closes it
      {"00042", 2, nullptr, 0, 0, {}, "00042"},                // other states do nothing
      {"20042", 3, "0", 224, 0, {245, 160, 224}, "00042"},     // a failed cut: the closing was printed
  };
  for (const auto& [antes, passo, flag, recusado, ret, cmds, depois] : casos) {
    SCOPED_TRACE(testing::Message() << antes << " " << recusado);
    std::string buf = antes;
    ASSERT_EQ(readWriteArqRegPgto(2, "w+", buf.data()), 0);
    vp_clear_calls();
    if (recusado != 0) push(recusado, 2302);
    const int r = trataArqRegPgtoStatus(passo, flag);
    EXPECT_TRUE(ret < 0 ? r != 0 : r == ret) << r;
    EXPECT_EQ(sent(), cmds);
    EXPECT_EQ(read_file(kStatus), depois);
    for (const auto& op : operations())  // every attempt repeats the same command, sequence field included
      EXPECT_TRUE(op.cmd != 245 || input(op) == last_input(245));
  }
  EXPECT_EQ(payload(245), texts({"0042"}));  // the saved number, then the closing under a new sequence number
  EXPECT_EQ(last_input(160).size(), 4U);
  EXPECT_NE(last_input(160)[0], last_input(245)[0]);
}

TEST_F(Fresh, SessionOpenReadsTheStatusFile) {
  // Status file before (none when empty), a command refused (or 0), result (-1: any failure), commands, after.
  const std::tuple<const char*, int, int, Cmds, const char*> casos[] = {
      {"", 0, 0, {246}, "00042"},          // the first open saves the printer's number
      {"00077", 0, 0, {246}, "00042"},     // every open refreshes it
      {"20042", 0, 0, {}, "20042"},        // the temporary number waits for the next document
      {"10042", 245, -1, {245}, "10042"},  // a failed step is left for the next open
      {"00042", 246, -1, {246}, "00042"},  // and so is a failed refresh
  };
  vp_answer_identity();
  stick(246, 0, bytes_with(5, 0, "0042"));
  for (const auto& [antes, recusado, ret, proc, depois] : casos) {
    SCOPED_TRACE(antes);
    std::remove(kStatus);
    if (*antes != '\0') write_file(kStatus, antes);
    if (recusado != 0) push(recusado, 2302);
    vp_clear_calls();
    const int r = E4Open(0, 0);
    EXPECT_TRUE(ret < 0 ? r != 0 : r == ret) << r;
    Cmds enviados = commands();  // those of the procedure
    std::erase_if(enviados, [](int c) { return c != 160 && c != 224 && c != 245 && c != 246; });
    EXPECT_EQ(enviados, proc);
    EXPECT_EQ(read_file(kStatus), depois);
    E4Close();
  }
}

TEST_F(Session, CurrentCouponRecordsReadersAndQuirks) {
  Limpar_IndicesPagamentos();
  EXPECT_EQ(Incluir_COO_Pagamento("000123"), 0);
  for (unsigned meio : {1U, 12U, 1U}) EXPECT_EQ(Incluir_Indice_Pagamento(meio), 0);
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000123#$1$12$1");
  unsigned qtde = 0;
  EXPECT_EQ(Ler_Qtde_Pagamentos(&qtde), 0);
  EXPECT_EQ(qtde, 3U);
  // Each voucher takes the next unused payment of its means.
  EXPECT_EQ(indice(1), Escolha(0, 1));
  EXPECT_EQ(indice(12), Escolha(0, 2));
  EXPECT_EQ(Incluir_Indice_Pagamento_EmissaoCCD(1), 0);
  EXPECT_EQ(indice(1), Escolha(0, 3));
  EXPECT_EQ(Incluir_Indice_Pagamento_EmissaoCCD(3), 0);
  EXPECT_EQ(indice(1), Escolha(0, 0));
  EXPECT_EQ(read_file("EcfZandor.ind"), "$1$3");
  write_file("EcfZandor.ind", "$12");  // ordinals compared by their first digit: 12 marks ordinal 1 as used
  std::uint8_t uso = 0;
  EXPECT_EQ(Verificar_IndicePagto_EmissaoCCD(1, &uso), 0);
  EXPECT_EQ(uso, 1);
  write_file("EcfZandor.pgt", "000123#$1$1");
  std::remove("EcfZandor.ind");
  EXPECT_EQ(indice(1), Escolha(2902, 1));  // no index file: the first match, with the open failure
  // Only the first 199 bytes are seen: "000123#" and 96 items "$1" end there.
  std::string pgt = "000123#";
  for (int i = 0; i < 96; ++i) pgt += "$1";
  write_file("EcfZandor.pgt", pgt + "$1$7");
  write_file("EcfZandor.ind", "");
  EXPECT_EQ(Ler_Qtde_Pagamentos(&qtde), 0);
  EXPECT_EQ(qtde, 96U);
  EXPECT_EQ(indice(7), Escolha(0, 0));
  std::remove("EcfZandor.pgt");  // a long COO keeps its terminator
  EXPECT_EQ(Incluir_COO_Pagamento("0123456789ABCDEF"), 0);
  EXPECT_EQ(Incluir_COO_Pagamento(nullptr), 0);
  EXPECT_EQ(read_file("EcfZandor.pgt"), "012345678##");
  char coo[10] = "";
  EXPECT_EQ(Ler_COO_Pagamento(coo), 0);
  EXPECT_STREQ(coo, "012345");
}

TEST_F(Session, DayRecordLinesAndOrdinals) {
  // The first record of an empty file has no separator; every later one has.
  Limpar_PagamentosCOO();
  impressora("000123", "02012025");
  EXPECT_EQ(Incluir_Indice_COO(NOME_ARQ_PAGTOPORCOO, "999999", "CPF"), 0);  // the printer's COO, not the one given
  for (unsigned meio : {1U, 12U}) EXPECT_EQ(Incluir_Indice_PagamentoCOO(meio, NOME_ARQ_PAGTOPORCOO), 0);
  impressora("000124", "02012025");
  EXPECT_EQ(Incluir_Indice_COO(NOME_ARQ_PAGTOPORCOO, nullptr, "CNF"), 0);
  EXPECT_EQ(Incluir_Indice_PagamentoCOO(3, NOME_ARQ_PAGTOPORCOO), 0);
  stick(133, 2302);  // a failed COO read starts no record
  EXPECT_NE(Incluir_Indice_COO(NOME_ARQ_PAGTOPORCOO, nullptr, "CPF"), 0);
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "\nCPF000123$1$12\r\n\nCNF000124$3");
  // The voucher file takes the COO given, once per COO; none given, the printer's.
  impressora("000124", "02012025");
  for (unsigned meio : {2U, 3U}) {
    EXPECT_EQ(Incluir_Indice_COO(NOME_ARQ_INDPGTOPORCOO, "000123", nullptr), 0);
    EXPECT_EQ(Incluir_Indice_PagamentoCOO(meio, NOME_ARQ_INDPGTOPORCOO), 0);
  }
  EXPECT_EQ(Incluir_Indice_COO(NOME_ARQ_INDPGTOPORCOO, nullptr, nullptr), 0);
  EXPECT_EQ(read_file("EcfZandorCOO.ind"), "\nCOO000123$2$3\r\n\nCOO000124");
  std::uint8_t sim = 0, nao = 9, uso = 0;
  EXPECT_EQ(Verifica_ExisteCOO_ArqIndPgtoporCOO("000124", &sim), 0);
  EXPECT_EQ(Verifica_ExisteCOO_ArqIndPgtoporCOO("000125", &nao), 0);
  EXPECT_TRUE(sim == 1 && nao == 0);
  write_file("EcfZandorCOO.ind", "");
  write_file("EcfZandorCoo.pgt", "\nCPF000122$12\r\n\nCPF000123$1$12");
  EXPECT_EQ(indice(12, "000123"), Escolha(0, 0));  // a fixed stride: "$1" hides the "$" of "$12"
  EXPECT_EQ(indice(1, "000123"), Escolha(0, 1));
  write_file("EcfZandorCoo.pgt", "\nCPF000122$12\r\n\nCPF000123$01$12");
  EXPECT_EQ(indice(12, "000123"), Escolha(0, 2));
  EXPECT_EQ(indice(12, static_cast<const char*>(nullptr)).second, 0);
  write_file("EcfZandorCoo.pgt", "\nCPF000123$12$05$12");
  write_file("EcfZandorCOO.ind", "\nCOO000122$3\r\n\nCOO000123$1");
  EXPECT_EQ(indice(12, "000123"), Escolha(0, 3));  // a used ordinal moves the choice to the next of that means
  EXPECT_EQ(Verificar_IndicePgtoCOO_EmissaoCCD("000122", 3, &uso), 0);
  EXPECT_EQ(uso, 1);
  std::remove("EcfZandorCOO.ind");
  write_file("EcfZandorCoo.pgt", "\nCPF000123$01$12");
  EXPECT_EQ(indice(12, "000123"), Escolha(2902, 2));
}
