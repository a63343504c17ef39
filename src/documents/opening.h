// Opening documents (fiscal and non-fiscal coupons, vouchers, management
// reports, readings) and the consumer identification of the next coupon.
#pragma once

#include <array>
#include <cstdint>

namespace orbelan {

// The consumer's identification: three NUL-terminated fields laid end to end.
struct DadosConsumidor {
  std::array<char, 31> Nome;      // up to 30 characters
  std::array<char, 21> Numero;    // tax identifier, up to 20 characters
  std::array<char, 80> Endereco;  // up to 79 characters
};
static_assert(sizeof(DadosConsumidor) == 132);

extern DadosConsumidor Consumidor;
extern std::int32_t FLAGCONS;  // 1 while Consumidor waits for a coupon opening

// 1 while a fiscal / non-fiscal coupon is known to be open.
extern std::uint8_t fCupomFiscalOpen;
extern std::uint8_t fCupomNFiscalOpen;

// Document type codes recorded when a document is opened.
inline constexpr char TIPO_CUPOM_FISCAL[4] = "CPF";
inline constexpr char TIPO_CUPOM_NAO_FISCAL[4] = "CNF";
inline constexpr char TIPO_CUPOM_CCD[4] = "CCD";
inline constexpr char TIPO_RELATORIO_GRL[4] = "RGR";

// Opens a fiscal coupon (command 141), carrying the pending consumer.
std::uint16_t Abre_Cupom_Fiscal();

}  // namespace orbelan
