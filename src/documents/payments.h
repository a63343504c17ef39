// Payments of the fiscal and non-fiscal coupon, totalling, change and the
// amounts read around them.
#pragma once

#include <cstdint>

namespace orbelan {

// One payment on register RP (60..78); Mensagem may be NULL (no message).
std::uint16_t Pagamento_Fiscal_E_NaoFiscal(std::uint8_t RP, const char* Valor, const char* Mensagem);

// The trace names of an exported payment: the one its refusal line names and
// the one its exit line names.
struct NomesPagamento {
  const char* recusa;
  const char* fim;
};

// An exported payment once its register is known. `ret` is the result so far
// (e.g. 2869 without a session); RP outside 60..78 is refused with 2049; then
// the payment, the translation and the exit line, and, when it was accepted,
// its record in the coupon's and the day's payment files.
std::uint16_t Registra_Pagamento(const NomesPagamento& nomes, std::uint16_t ret, std::uint8_t RP,
                                 const char* Valor, const char* Mensagem);

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
