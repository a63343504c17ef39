// The last document type opened, the operator's name, and the printer's owner
// and store number read on demand.
#pragma once

#include <cstdint>

namespace orbelan {

extern char NOME_ARQ_TIPO_CUPOM[20];  // "EcfZandor.cpm"
extern char NOME_ARQ_OPERADOR[20];    // "NomeOper.cfg"

// Rewrites the type file with `Tipo` ("CPF", "CNF", "CCD", "RGR"); 0 or 2902.
std::uint16_t Incluir_Tipo_Cupom(const char* Tipo);
// The last type stored, 3 characters and a NUL (`Tipo` holds 4 bytes); 0 or 2902.
std::uint16_t Ler_Tipo_Ultimo_Cupom(char* Tipo);
// Rewrites the operator file with `Nome` (stored whole); 0 or 2902.
std::uint16_t Incluir_Operador(const char* Nome);
// The operator's name cut to 20 characters (`Nome` holds 21 bytes); always 0.
std::uint16_t Ler_Operador(char* Nome);

// out[0] = index of the current owner, out[1] = owner changes still possible.
std::uint16_t Ler_Indice_Proprietario(std::uint8_t* out);
// The current owner's registration date and time, 12 digits and a NUL (13
// bytes). Returns the driver's result untranslated.
std::int32_t Ler_DataHora_Proprietario_Atual(char* out);
// The store number as 4 digits and a NUL (`out` holds 5 bytes); "9999" reads
// as "0000".
std::uint16_t Obter_Numero_da_Loja(char* out);

}  // namespace orbelan
