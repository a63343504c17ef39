// The printer driver bridge: loading the maker's driver library and calling
// its four entry points.
#pragma once

#include <cstdint>

namespace orbelan {

// The driver library; set by each load, not cleared by the release.
extern void* handle_global;
// Last sequence number handed out (1..255, then 1 again).
extern std::int32_t ProximoSequencial;

std::uint16_t CarregaLib();
std::uint16_t LiberaLib();
std::int32_t Executa_FC_Inicializa();
std::int32_t Executa_FC_Finaliza();
std::uint16_t Executa_FC_Operacao(std::int32_t cmd, std::int32_t flag, std::int32_t mode,
                                  std::int32_t inlen, std::uint8_t* inbuf, std::int32_t* aux,
                                  std::int32_t* outlen, std::uint8_t* outbuf);
void Executa_FC_VersaoSW(std::int32_t arg);
void FreeMemLibrary(void* handle);
// Releases the optional plug-ins after a failed session open.
void CloseLibrary();

// Whether the driver library is loaded now (handle_global may outlive it).
bool Driver_Carregado();

// Looks `name` up in `lib`; nullptr when the loader reports an error.
void* procura_simbolo(void* lib, const char* name);

}  // namespace orbelan
