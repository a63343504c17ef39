// Credit/debit vouchers: opening against a recorded payment, closing, reversal
// and the second copy.
#pragma once

#include <cstdint>

namespace orbelan {

// Opens a voucher (command 218) for the first payment of register `Reg` not yet
// used by a voucher. `COO` is a text of at most 7 bytes naming the coupon; NULL
// or empty means the coupon whose payments are recorded as current. Records the
// voucher when the printer printed it. 2561 when no usable payment exists.
std::uint16_t Abre_CCD(const char* COO, std::uint8_t Reg);

// Closes the open voucher (command 228).
std::uint16_t Finaliza_CCD(std::int32_t qtdeAvanco, char CortaPapel);

// Opens the reversal of the voucher with that COO (command 219). No session
// check and no translation: the driver's result is returned as it is. The last
// two arguments are not used.
std::uint16_t CancelaCupomCCD(const char* COO, std::int32_t qtdeAvanco, char CortaPapel);

// Closes an open reversal (command 229), spending the consumer identification.
std::uint16_t Finaliza_Estorno_CCD(std::int32_t qtdeAvanco, char CortaPapel);

// The same closing, leaving the consumer identification alone (E4FimDoc).
std::uint16_t Finaliza_Estorno(std::int32_t qtdeAvanco, char CortaPapel);

// The closing shared by vouchers, reversals and management reports (command
// `cmd`), traced under the name `nome`: the operator's name, then the paper
// advance and the cut; the consumer identification is spent when
// `gasta_consumidor`.
std::uint16_t Finaliza_Documento(const char* nome, int cmd, bool gasta_consumidor, std::int32_t qtdeAvanco,
                                 char CortaPapel);

// Prints the second copy of the last voucher (command 225) and cuts.
std::uint16_t ImpSegundaViaCCD();

}  // namespace orbelan
