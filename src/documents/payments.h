// Payments of the fiscal and non-fiscal coupon, totalling, change and the
// amounts read around them.
#pragma once

#include <cstdint>

namespace orbelan {

// One payment on register RP (60..78); Mensagem may be NULL (no message).
std::uint16_t Pagamento_Fiscal_E_NaoFiscal(std::uint8_t RP, const char* Valor, const char* Mensagem);

// Totals the coupon (command 153).
std::uint16_t Totaliza_Fiscal_e_NaoFiscal();
// Prints the change when the document state is 15 or 24; otherwise 0.
std::uint16_t Troco_Fiscal_E_NaoFiscal();
// Prints the amount received when the document state is 14, 23 or 24; otherwise 0.
std::uint16_t Imprime_Valor_Recebido();

// Sum of the payment registers received, left-padded to 18 characters; `out`
// holds at least 19 bytes (NULL is not written).
std::uint16_t CalculaTotalRecebido(char* out);

// The subtotal / total of payments, in the smallest currency unit held in a
// float; 0 is stored first (NULL is not written).
std::uint16_t Ler_Valor_Subtotal(float* out);
std::uint16_t Ler_Total_Pagamentos(float* out);

}  // namespace orbelan
