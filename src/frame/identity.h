// The printer's identity (cached at session open), its clock and its states.
#pragma once

#include <array>
#include <cstdint>

namespace orbelan {

extern std::array<char, 25> Nro_Serie_Fabricacao;
extern std::array<char, 50> numSerieECF;
extern std::array<char, 20> CGC_ECF, IE_ECF, IM_ECF;
extern std::int32_t TipoImp;
extern std::array<char, 10> VersaoFirmwareCompleta, VersaoFirmware;
extern std::array<char, 20> DescricaoMarca, DescricaoModelo;
extern std::array<char, 10> Nro_Sequencial;
extern char Valor_IAT;
extern std::uint8_t Valor_Reducao;

// Recoveries run by the session open, in this order.
std::uint16_t RecuperarNro_Serie_Fabricacao();
std::uint16_t RecuperarModeloFirmwareImpressora();
std::uint16_t RecuperarDescricaoMarcaModeloImpressora();
std::uint16_t RecuperarCGC_IE_IM_Impressora();
std::uint16_t RecuperarNro_Sequencial_ECF();
std::uint16_t RecuperarValor_IAT();
std::uint16_t EstadoReducao();

// Accessors of the cache; each output holds the cached field's size.
void Ler_Nro_Serie_Fabricacao(char* dst);
void Ler_CGC_IE_IM_ECF(char* cgc, char* ie, char* im);
void Ler_Firmware_ECF(char* dst);
void Ler_Firmware_Completo_ECF(char* dst);
void Ler_Descricao_Marca_ECF(char* dst);
void Ler_Descricao_Modelo_ECF(char* dst);
void Ler_Nro_Sequencial_ECF(char* dst);
void Ler_Valor_IAT(char* dst);
void Ler_Modelo_ECF(std::uint8_t* dst);

// Header (cliche) and address lines; each output holds 256 bytes.
std::uint16_t LerClicheEndereco(char* cliche, char* endereco);

// Live queries.
std::uint16_t Estado_Cupom_Atual(std::uint8_t* CUPA, std::uint8_t* CUPR);
std::uint16_t Estado_Pos_Reducao(std::uint8_t* PosReducao);
// Writes "DD/MM/YYYY HH:MM:SS" (19 characters, no terminator) into a zeroed
// buffer of at least 20 bytes.
std::uint16_t Consulta_Data_Hora_Segundos(char* DataHora);

}  // namespace orbelan
