// Payment records: which payments each coupon holds and which of them a
// credit/debit voucher has already used. Two flat files serve the coupon just
// opened (no COO needed), two line files serve every coupon of the day.
#pragma once

#include <cstdint>
#include <cstdio>
#include <span>

namespace orbelan {

// File names, opened bare in the working directory.
extern char NOME_ARQ_PAGTO[20];          // "EcfZandor.pgt": COO#$code$code...
extern char NOME_ARQ_INDPGTO[20];        // "EcfZandor.ind": $ordinal... used by vouchers
extern char NOME_ARQ_PAGTOPORCOO[20];    // "EcfZandorCoo.pgt": a line per coupon of the day
extern char NOME_ARQ_INDPGTOPORCOO[20];  // "EcfZandorCOO.ind": a line per COO with vouchers

// Line end written before every record but the first of the line files.
inline constexpr const char* FINAL_LINHA = "\r\n";

// The printer's current COO (general register 3). `sCOO` is a zeroed buffer of
// at least 10 bytes. Returns the read's code, low byte only.
std::uint16_t Ler_COO_Ultimo_Cupom(char* sCOO);
// The printer's current CCF (general register 137). `sCCF` is a zeroed buffer
// of at least 7 bytes. Returns the read's code, low byte only.
std::uint16_t Ler_CCF_Ultimo_Cupom(char* sCCF);

// Truncate (or create) each file; always 0.
std::uint16_t Limpar_Pagamentos();
std::uint16_t Limpar_IndicesPagamentos();
std::uint16_t Limpar_PagamentosCOO();
std::uint16_t Limpar_IndicesPagamentosCOO();

// Appenders; 0 or 2902 when the file cannot be opened.
std::uint16_t Incluir_COO_Pagamento(const char* sCOO);            // COO + "#"
std::uint16_t Incluir_Indice_Pagamento(unsigned MeioPagto);       // "$code" to EcfZandor.pgt
std::uint16_t Incluir_Indice_Pagamento_EmissaoCCD(unsigned Indice);  // "$ordinal" to EcfZandor.ind
std::uint16_t Incluir_Indice_PagamentoCOO(unsigned Indice, const char* NomeArquivo);
// Starts a record line in a line file: "\n", the tag ("COO" when NULL) and the
// COO. For "EcfZandorCOO.ind" a given COO is used, and nothing is written when
// that COO already has a line; otherwise the COO is read from the printer.
std::uint16_t Incluir_Indice_COO(const char* NomeArquivo, const char* sCOO, const char* Tipo);

// Readers of the current coupon's files. `sCOO` holds at least 7 bytes.
std::uint16_t Ler_COO_Pagamento(char* sCOO);
std::uint16_t Ler_Qtde_Pagamentos(unsigned* Qtde);
// First payment of `MeioPagto` not yet used by a voucher (ordinal 0: none).
std::uint16_t Ler_Indice_Pagamento(unsigned MeioPagto, std::uint8_t* Indice);
std::uint16_t Verificar_IndicePagto_EmissaoCCD(unsigned Indice, std::uint8_t* StatusUso);

// Readers of the day files; `sCOO` is compared as a 6-character text.
std::uint16_t Ler_Indice_PagamentoCOO(const char* sCOO, unsigned MeioPagto, std::uint8_t* Indice);
std::uint16_t Verificar_IndicePgtoCOO_EmissaoCCD(const char* sCOO, unsigned Indice,
                                                 std::uint8_t* StatusUso);
std::uint16_t Verifica_ExisteCOO_ArqIndPgtoporCOO(const char* sCOO, std::uint8_t* Existe);

// Reads one line of `f` into `linha` ("\r" dropped, "\n" ends it, NUL
// terminated; characters beyond the buffer are skipped). Returns the number of
// characters stored, or -1 at the end of the file with nothing read.
int le_linha(std::FILE* f, std::span<char> linha);

}  // namespace orbelan
