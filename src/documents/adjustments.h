// Item cancellation, item and coupon discounts and increases.
#pragma once

#include <cstdint>

namespace orbelan {

// Cancels item SeqItem (command 180).
std::uint16_t Executa_Cancelamento_Item(std::uint16_t SeqItem);

// Item discount/increase in driver mode 0..4 (command 207); SeqItem 0 is the
// last item sold. Refused with 2561 outside document states 2, 20 and 22.
std::uint16_t Executa_Acrescimo_Desconto_Em_Item(std::uint8_t Modo, std::uint16_t SeqItem,
                                                 const char* Valor);

// The printer's discount indicator, one byte (NULL is not written).
std::uint16_t Ler_Indicador_Desconto(std::uint8_t* out);

// Total of discounts (Opc 0) or increases (otherwise) on the subtotal, as text;
// `out` holds at least 18 bytes (NULL is not written).
std::uint16_t TotalDesconto_Acrescimo_Subtotal(std::uint16_t Opc, char* out);

}  // namespace orbelan
