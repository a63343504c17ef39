// Selling items on the open fiscal coupon.
#pragma once

#include <cstdint>

namespace orbelan {

// 1: each item prints on one line; 0: on two lines.
extern std::int32_t ImpressaoUmaLinha;

// Checks the item fields and sends the sale (command 193). NULL texts read as
// empty; IAT is 'A' or 'T'.
std::uint16_t Vender_Item(std::uint8_t RP, const char* Codigo, const char* Descricao,
                          const char* Quantidade, const char* Valor, const char* Unidade, char IAT);

// The number of the last item sold as decimal text; `out` holds at least 10
// bytes (NULL is not written).
std::uint16_t NumeroDoItemVendido(char* out);

}  // namespace orbelan
