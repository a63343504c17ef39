// Closing the open document, the closing message, and the paper handling every
// closing ends with (line advance and cut).
#pragma once

#include <cstdint>

namespace orbelan {

// 1: each document closing ends with a paper cut; 0: no automatic cut (the
// application may cut on demand with E4CortaPapel). Initially 1.
extern std::int32_t FLAGCORTE;

// The texts below may be NULL (read as empty). `CortaPapel` non-zero asks for a
// cut at the end, still subject to FLAGCORTE; `qtdeAvanco` lines are advanced
// first when it is at least 1.

// Closes whatever document is open (traced wrapper of ControlarFinalizacaoCupom);
// the result is translated.
std::uint16_t Finalizar(const char* msgCupom, std::int32_t qtdAvanco, char CortaPapel);
// The dispatch on the printer's document state.
std::uint16_t ControlarFinalizacaoCupom(const char* msg, std::int32_t qtdeAvanco, char CortaPapel);
// Closes a fiscal coupon in its payment phase (command 142) with the operator
// and, when identified, the consumer.
std::uint16_t Finaliza_Cupom_Fiscal(const char* msg, std::int32_t qtdeAvanco, char CortaPapel);
// An exported closing with a message: `Prox` kept to 299 characters, the
// session check, `fecha` (Finalizar or ControlarFinalizacaoCupom) with it,
// `qtdeAvanco` lines and a cut, and the translation, between the entry and
// exit lines of `nome`.
std::uint16_t Fechamento_Exportado(const char* nome, const char* Prox, std::int32_t qtdeAvanco,
                                   std::uint16_t (*fecha)(const char*, std::int32_t, char));
// Prints a free text line (command 130); at most 252 characters go out.
std::uint16_t ImprimeMensagem(const char* msg);
// Advances two lines.
std::uint16_t AvancaPapel();
// Cuts the paper when FLAGCORTE is 1; otherwise returns 0 at once.
std::uint16_t CortedePapel();

}  // namespace orbelan
