// The printer's own document station: device selection, paper sensing and
// document spacing. Works on printers of type 6 only.
#pragma once

#include <cstdint>

namespace orbelan {

// Device codes of the printer's stations.
inline constexpr std::uint8_t kEstacaoCupom = '2';      // receipt station
inline constexpr std::uint8_t kEstacaoDocumento = '4';  // document station

// out: 1 byte, the selected device code.
std::uint16_t Ler_Dispositivo_Selecionado(std::uint8_t* out);
// Selects `device` unless it already is the selected one.
std::uint16_t Seleciona_Dispositivo(std::uint8_t device);
// Waits (at most about 2 s) for a document in the station; 2871 when absent.
std::uint16_t Papel_Posicionado();
// out: 1 byte, the document spacing for the printer type. No command, no log.
void LerEspacoDocumento(std::uint8_t* out);
// Sends the spacing (1 byte at `spacing`) when no document is open.
std::uint16_t EspacoDocumento(const std::uint8_t* spacing);
// out: line spacing in lines per inch, and the document spacing.
std::uint16_t Le_Espaco_Entre_Linhas_Documentos(unsigned* lines, unsigned* document);

}  // namespace orbelan
