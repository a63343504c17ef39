// Cancelling the current or the last document, the reversal of the vouchers
// issued against a coupon, and the preparation of a coupon in payment.
#pragma once

#include <cstdint>

namespace orbelan {

// The decision tree of the coupon cancellation. TrataErro non-zero makes "the
// last document was a management report" an error (9011); qtdeAvanco lines are
// advanced after each document; CortaPapel non-zero asks for a cut (subject to
// FLAGCORTE); CancelaAtual non-zero allows acting on a document still open.
// The result is not translated.
std::uint16_t CancelaCupomGeral(std::int32_t TrataErro, std::int32_t qtdeAvanco, std::uint8_t CortaPapel,
                                std::uint8_t CancelaAtual);

// An exported cancellation: the session check, the decision tree with these
// flags and the translation, between the entry and exit lines of `nome`;
// `brancos` are the blanks that end its entry line after "inicio".
std::uint16_t Cancelamento_Exportado(const char* nome, const char* brancos, std::int32_t TrataErro,
                                    std::int32_t qtdeAvanco, std::uint8_t CortaPapel, std::uint8_t CancelaAtual);

// Cancels the document open on the printer (command 154).
std::uint16_t Cancela_Cupom(std::int32_t qtdeAvanco, char CortaPapel);
// Cancels the last fiscal coupon, already closed (command 155), and records it
// as cancelled.
std::uint16_t Cancela_Cupom_Fiscal_Anterior(std::int32_t qtdeAvanco, char CortaPapel);
// Cancels the last non-fiscal coupon, already closed (command 217).
std::uint16_t Cancela_Cupom_Nao_Fiscal_Anterior(std::int32_t qtdeAvanco, char CortaPapel);

// Works out from the voucher index and the per-COO payment file how many
// vouchers stand behind the coupon before `nCooCCDCanc` (the current COO, six
// digits). Outputs (the caller zeroes them; NULL ones are not written):
// iQtdeCCD the number of vouchers; sTipoDoc (4 bytes) the last coupon's tag;
// iStDocEmitido 1 when the vouchers directly follow that coupon.
std::uint16_t analisaEstorno(const char* nCooCCDCanc, std::uint32_t* iQtdeCCD, char* sTipoDoc,
                             std::int32_t* iStDocEmitido);

// Brings a coupon in its payment phase into a state the printer will cancel.
std::uint16_t Pre_Cancelamento();

}  // namespace orbelan
