// Document type, operator name, owner and store number.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <string>

#include "orbelan.h"
#include "state/documents.h"
#include "support/fixture.h"

using namespace orbelan;
using namespace orbtest;

TEST_F(Fresh, DocumentTypeFile) {
  char tipo[4] = "xyz";
  EXPECT_EQ(Ler_Tipo_Ultimo_Cupom(tipo), 2902);
  EXPECT_STREQ(tipo, "");

  EXPECT_EQ(Incluir_Tipo_Cupom("CNF"), 0);
  EXPECT_EQ(Incluir_Tipo_Cupom("CPF"), 0);
  EXPECT_EQ(read_file("EcfZandor.cpm"), "CPF");
  EXPECT_EQ(Ler_Tipo_Ultimo_Cupom(tipo), 0);
  EXPECT_STREQ(tipo, "CPF");

  // Only the first three characters count; fewer than three is no type.
  write_file("EcfZandor.cpm", "RGRX");
  EXPECT_EQ(Ler_Tipo_Ultimo_Cupom(tipo), 0);
  EXPECT_STREQ(tipo, "RGR");
  write_file("EcfZandor.cpm", "CC");
  EXPECT_EQ(Ler_Tipo_Ultimo_Cupom(tipo), 0);
  EXPECT_STREQ(tipo, "");
  EXPECT_EQ(Ler_Tipo_Ultimo_Cupom(nullptr), 0);

  std::remove("EcfZandor.cpm");
  ASSERT_EQ(::mkdir("EcfZandor.cpm", 0755), 0);
  EXPECT_EQ(Incluir_Tipo_Cupom("CPF"), 2902);
  EXPECT_EQ(Ler_Tipo_Ultimo_Cupom(tipo), 2902);
}

TEST_F(Fresh, OperatorNameIsCutOnReading) {
  char nome[21] = "lixo";
  EXPECT_EQ(Ler_Operador(nome), 0);  // no file is no operator, not an error
  EXPECT_STREQ(nome, "");

  const std::string longo = "ABCDEFGHIJKLMNOPQRSTUVWXY";  // 25 characters
  EXPECT_EQ(Incluir_Operador(longo.c_str()), 0);
  EXPECT_EQ(read_file("NomeOper.cfg"), longo);
  EXPECT_EQ(Ler_Operador(nome), 0);
  EXPECT_STREQ(nome, "ABCDEFGHIJKLMNOPQRST");

  EXPECT_EQ(Incluir_Operador("Ana"), 0);
  EXPECT_EQ(Ler_Operador(nome), 0);
  EXPECT_STREQ(nome, "Ana");

  std::remove("NomeOper.cfg");
  ASSERT_EQ(::mkdir("NomeOper.cfg", 0755), 0);
  EXPECT_EQ(Incluir_Operador("Ana"), 2902);
  EXPECT_EQ(Ler_Operador(nome), 0);
  EXPECT_STREQ(nome, "");
}

TEST_F(Session, StoreNumber) {
  struct Caso {
    std::string resposta;
    const char* loja;
  } casos[] = {{"9999", "0000"}, {"12", "0012"}, {"1a2-b", "0012"}, {"12345", "2345"}, {"", "0000"}};
  for (const auto& c : casos) {
    SCOPED_TRACE(c.resposta);
    push(246, 0, bytes_with(5, 0, c.resposta));
    char loja[5] = "zzzz";
    EXPECT_EQ(Obter_Numero_da_Loja(loja), 0);
    EXPECT_STREQ(loja, c.loja);
    EXPECT_EQ(last_input(246).size(), 2U);
  }

  push(246, 2302);
  char loja[5] = "zzzz";
  EXPECT_NE(Obter_Numero_da_Loja(loja), 0);
  EXPECT_STREQ(loja, "");
  E4Close();
  EXPECT_EQ(Obter_Numero_da_Loja(loja), 2869);
}
