// Payment records: the flat files of the current coupon and the line files of
// the day, on the layouts the vouchers depend on.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <string>

#include "state/payment_records.h"
#include "support/fixture.h"

using namespace orbelan;
using namespace orbtest;

namespace {

// The printer's current COO as the register read returns it.
void coo_atual(const std::string& coo) { stick(133, 0, bytes_with(30, 1, coo)); }

// The ordinal chosen for a voucher of `meio` in the current coupon, or in the
// day's record of `coo`.
std::uint8_t indice(unsigned meio, std::uint16_t* ret = nullptr) {
  std::uint8_t ord = 99;
  const std::uint16_t r = Ler_Indice_Pagamento(meio, &ord);
  if (ret != nullptr) *ret = r;
  return ord;
}

std::uint8_t indice_coo(const char* coo, unsigned meio, std::uint16_t* ret = nullptr) {
  std::uint8_t ord = 99;
  const std::uint16_t r = Ler_Indice_PagamentoCOO(coo, meio, &ord);
  if (ret != nullptr) *ret = r;
  return ord;
}

}  // namespace

TEST_F(Session, CurrentCouponRecordsAndReaders) {
  Limpar_Pagamentos();
  Limpar_IndicesPagamentos();
  EXPECT_EQ(Incluir_COO_Pagamento("000123"), 0);
  for (unsigned meio : {1U, 12U, 1U}) EXPECT_EQ(Incluir_Indice_Pagamento(meio), 0);
  EXPECT_EQ(read_file("EcfZandor.pgt"), "000123#$1$12$1");
  unsigned qtde = 0;
  EXPECT_EQ(Ler_Qtde_Pagamentos(&qtde), 0);
  EXPECT_EQ(qtde, 3U);
  // Each voucher takes the next unused payment of its means.
  EXPECT_EQ(indice(1), 1);
  EXPECT_EQ(indice(12), 2);
  EXPECT_EQ(Incluir_Indice_Pagamento_EmissaoCCD(1), 0);
  EXPECT_EQ(read_file("EcfZandor.ind"), "$1");
  EXPECT_EQ(indice(1), 3);
  EXPECT_EQ(Incluir_Indice_Pagamento_EmissaoCCD(3), 0);
  std::uint16_t ret = 1;
  EXPECT_EQ(indice(1, &ret), 0);
  EXPECT_EQ(ret, 0);
}

TEST_F(Fresh, CurrentCouponQuirks) {
  write_file("EcfZandor.pgt", "000123#$1$1");
  write_file("EcfZandor.ind", "$1");
  EXPECT_EQ(indice(1), 2);
  // Ordinals are compared by their first digit: 12 marks ordinal 1 as used.
  write_file("EcfZandor.ind", "$12");
  std::uint8_t uso = 0;
  EXPECT_EQ(Verificar_IndicePagto_EmissaoCCD(1, &uso), 0);
  EXPECT_EQ(uso, 1);
  // Without the index file the first match is given with the open failure.
  std::remove("EcfZandor.ind");
  std::uint16_t ret = 1;
  EXPECT_EQ(indice(1, &ret), 1);
  EXPECT_EQ(ret, 2902);

  // Only the first 199 bytes are seen: "000123#" and 96 items "$1" end there.
  std::string pgt = "000123#";
  for (int i = 0; i < 96; ++i) pgt += "$1";
  write_file("EcfZandor.pgt", pgt + "$1$7");
  write_file("EcfZandor.ind", "");
  unsigned qtde = 0;
  EXPECT_EQ(Ler_Qtde_Pagamentos(&qtde), 0);
  EXPECT_EQ(qtde, 96U);
  EXPECT_EQ(indice(7), 0);

  std::remove("EcfZandor.pgt");  // a long COO keeps its terminator
  EXPECT_EQ(Incluir_COO_Pagamento("0123456789ABCDEF"), 0);
  EXPECT_EQ(Incluir_COO_Pagamento(nullptr), 0);
  EXPECT_EQ(read_file("EcfZandor.pgt"), "012345678##");
  char coo[10] = "";
  EXPECT_EQ(Ler_COO_Pagamento(coo), 0);
  EXPECT_STREQ(coo, "012345");
}

TEST_F(Fresh, MissingOrBlockedFiles) {
  char coo[10] = "junk";
  EXPECT_EQ(Ler_COO_Pagamento(coo), 2902);
  EXPECT_STREQ(coo, "");
  unsigned qtde = 5;
  EXPECT_EQ(Ler_Qtde_Pagamentos(&qtde), 2902);
  EXPECT_EQ(qtde, 0U);
  std::uint8_t flag = 9;
  EXPECT_EQ(Verifica_ExisteCOO_ArqIndPgtoporCOO("000123", &flag), 2902);
  EXPECT_EQ(flag, 0);
  // A directory standing where a state file should be cannot be opened as a file.
  for (const char* nome : {"EcfZandor.pgt", "EcfZandor.ind", "EcfZandorCoo.pgt", "EcfZandorCOO.ind"})
    ASSERT_EQ(::mkdir(nome, 0755), 0);
  EXPECT_EQ(Limpar_Pagamentos(), 0);
  EXPECT_EQ(Limpar_IndicesPagamentosCOO(), 0);
  EXPECT_EQ(Incluir_COO_Pagamento("000123"), 2902);
  EXPECT_EQ(Incluir_Indice_Pagamento_EmissaoCCD(1), 2902);
  EXPECT_EQ(Incluir_Indice_COO(NOME_ARQ_PAGTOPORCOO, nullptr, "CPF"), 2902);
  EXPECT_EQ(Incluir_Indice_PagamentoCOO(1, nullptr), 2902);
}

TEST_F(Session, DayRecordLines) {
  // The first record of an empty file has no separator; every later one has.
  Limpar_PagamentosCOO();
  coo_atual("000123");
  EXPECT_EQ(Incluir_Indice_COO(NOME_ARQ_PAGTOPORCOO, "999999", "CPF"), 0);
  EXPECT_EQ(Incluir_Indice_PagamentoCOO(1, NOME_ARQ_PAGTOPORCOO), 0);
  EXPECT_EQ(Incluir_Indice_PagamentoCOO(12, NOME_ARQ_PAGTOPORCOO), 0);
  coo_atual("000124");
  EXPECT_EQ(Incluir_Indice_COO(NOME_ARQ_PAGTOPORCOO, nullptr, "CNF"), 0);
  EXPECT_EQ(Incluir_Indice_PagamentoCOO(3, NOME_ARQ_PAGTOPORCOO), 0);
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "\nCPF000123$1$12\r\n\nCNF000124$3");
  // The voucher file takes the COO given, once per COO; none given, the printer's.
  vp_clear_calls();
  for (unsigned meio : {2U, 3U}) {
    EXPECT_EQ(Incluir_Indice_COO(NOME_ARQ_INDPGTOPORCOO, "000123", nullptr), 0);
    EXPECT_EQ(Incluir_Indice_PagamentoCOO(meio, NOME_ARQ_INDPGTOPORCOO), 0);
  }
  EXPECT_TRUE(commands().empty());
  EXPECT_EQ(Incluir_Indice_COO(NOME_ARQ_INDPGTOPORCOO, nullptr, nullptr), 0);
  EXPECT_EQ(read_file("EcfZandorCOO.ind"), "\nCOO000123$2$3\r\n\nCOO000124");
  std::uint8_t flag = 0;
  EXPECT_EQ(Verifica_ExisteCOO_ArqIndPgtoporCOO("000124", &flag), 0);
  EXPECT_EQ(flag, 1);
  EXPECT_EQ(Verifica_ExisteCOO_ArqIndPgtoporCOO("000125", &flag), 0);
  EXPECT_EQ(flag, 0);
  stick(133, 2302);  // a failed COO read starts no record
  EXPECT_NE(Incluir_Indice_COO(NOME_ARQ_PAGTOPORCOO, nullptr, "CPF"), 0);
  EXPECT_EQ(read_file("EcfZandorCoo.pgt"), "\nCPF000123$1$12\r\n\nCNF000124$3");
}

TEST_F(Fresh, DayOrdinalsFollowTheFixedStride) {
  write_file("EcfZandorCOO.ind", "");
  write_file("EcfZandorCoo.pgt", "\nCPF000122$12\r\n\nCPF000123$1$12");
  EXPECT_EQ(indice_coo("000123", 12), 0);  // "$1" hides the "$" of "$12"
  EXPECT_EQ(indice_coo("000123", 1), 1);
  write_file("EcfZandorCoo.pgt", "\nCPF000122$12\r\n\nCPF000123$01$12");
  EXPECT_EQ(indice_coo("000123", 12), 2);
  EXPECT_EQ(indice_coo("00123", 12), 0);  // other than six characters never matches
  EXPECT_EQ(indice_coo(nullptr, 12), 0);
  // A used ordinal moves the choice to the next payment of that means.
  write_file("EcfZandorCoo.pgt", "\nCPF000123$12$05$12");
  write_file("EcfZandorCOO.ind", "\nCOO000122$3\r\n\nCOO000123$1");
  EXPECT_EQ(indice_coo("000123", 12), 3);
  std::uint8_t uso = 0;
  EXPECT_EQ(Verificar_IndicePgtoCOO_EmissaoCCD("000122", 3, &uso), 0);
  EXPECT_EQ(uso, 1);
  std::remove("EcfZandorCOO.ind");
  std::uint16_t ret = 0;
  write_file("EcfZandorCoo.pgt", "\nCPF000123$01$12");
  EXPECT_EQ(indice_coo("000123", 12, &ret), 2);
  EXPECT_EQ(ret, 2902);
}
