// Opening documents (fiscal and non-fiscal coupons, vouchers, management
// reports, readings) and the consumer identification of the next coupon.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

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

// What a form of the document opening makes of E4IniCP's steps.
struct VarianteAbertura {
  const char* nome;   // the function its trace lines name
  bool marca_aberto;  // options 2 and 19 set fCupomFiscalOpen / fCupomNFiscalOpen
  // Options of its own, tried before an unknown option is refused: true when
  // it served `Opc`, its result then in `ret`. NULL: none.
  bool (*opcao_propria)(unsigned char Opc, std::string_view param, std::uint16_t& ret);
};

// The door every document opening goes through (E4IniCP and its variants);
// `Param` may be NULL. The result is translated.
std::uint16_t Inicia_Documento(const VarianteAbertura& v, unsigned char Opc, const char* Param);

// The payment register a voucher option names in the first two characters of
// `param`; 2582, with the "Registrador invalido" line of `nome`, when it is not
// 60..78.
std::uint16_t Registrador_Comprovante(const char* nome, std::string_view param, std::uint8_t& reg);
// Opens a voucher on `reg` for coupon `coo` (empty: the coupon just paid) and
// records the document type "CCD" when it opened.
std::uint16_t Abre_Comprovante(const char* coo, std::uint8_t reg);

}  // namespace orbelan
