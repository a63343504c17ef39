// Item increases of the current fiscal coupon, the day's increase total per
// coupon, and the fiscal coupons cancelled in the day.
#pragma once

#include <cstdint>

namespace orbelan {

extern char NOME_ARQ_ACRESITENSCF[20];       // "EcfAcresItens.cpf"
extern char NOME_ARQ_TOTALACRESCITENSCF[24];  // "EcfTotalAcrescItens.cpf"
extern char NOME_ARQ_CFCANCELADOS[20];        // "EcfCancelados.cpf"
extern char NOME_ARQ_VALORITEMCF[20];         // "EcfValorItem.cpf" (reserved)

// Current coupon: CCF(6) " "/"C" item(%03d) [value] "\r\n" per line.
std::uint16_t Limpar_AcrescItens();
std::uint16_t Incluir_Dados_AcresItens(const char* CCF, int Item, const char* Valor);
std::uint16_t Incluir_Cancelamento_Item_ou_AcresItem(const char* CCF, int Item);
// `Item` is the 3-character item text; `Valor` holds 12 bytes.
std::uint16_t Ler_ValorAcrescimoItem(const char* CCF, const char* Item, char* Valor);
std::uint16_t Ler_ItemouAcrescItemCancelado(const char* CCF, const char* Item, std::uint8_t* Cancelado);
// Sum of the not-cancelled increases of the last coupon as "%.2f" (`Total`
// holds 20 bytes) and that coupon's CCF (`CCF` holds 7 bytes).
std::uint16_t Get_TotalAcrescItensCF(char* Total, char* CCF);

// Day file of coupon totals: date(8) CCF(6) total "\r\n" per line.
std::uint16_t Limpar_TotalAcresItensCF();
std::uint16_t Ler_DataMovimentoTotalAcrescItens(char* Data);  // Data holds 9 bytes
std::uint16_t Incluir_TotalAcrescItensCF();

// Day file of cancelled fiscal coupons: date(8) CCF(6) "\r\n" per line.
std::uint16_t Limpar_CuponsCFCancelados();
std::uint16_t Incluir_CuponsCancelados(const char* Data, const char* CCF);
std::uint16_t Ler_DataMovimentoCFCancelado(char* Data);  // Data holds 9 bytes
std::uint16_t Ler_CupomFiscalCancelado(const char* Data, const char* CCF, std::uint8_t* Cancelado);
std::uint16_t IncluiDadosCFCancelado_Arquivo();

// The printer's business date, 8 characters and a NUL (9 bytes); translated.
std::uint16_t LeDataMovimentoAtual(char* Data);
// The day's total of item increases of the coupons not cancelled, formatted
// as a 17-digit amount (`out` holds 18 bytes).
std::uint16_t CalcularTotalAcrescItensDia(char* out);

}  // namespace orbelan
