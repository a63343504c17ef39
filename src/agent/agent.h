// The monitoring agent: its plug-in, the terminal's registration and the
// reporting of result codes and events.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orbelan {

// Number of report groups and of codes each group can hold.
inline constexpr std::size_t kGruposOV = 4;
inline constexpr std::size_t kCodigosPorGrupo = 200;

extern void* libInfOV;               // the plug-in, nullptr while not loaded
extern std::uint8_t flagIniciaOV;    // 1 while the agent is started
extern std::uint8_t flagInfOV;       // reporting armed (cleared by E4Close)
// Per group, the codes to report, sorted ascending (unused slots 0).
extern std::array<std::array<std::int32_t, kCodigosPorGrupo>, kGruposOV> Erro;
// Information type of each group, two characters.
extern std::array<char, 3> tipoInfGrupo1, tipoInfGrupo2, tipoInfGrupo3, tipoInfGrupo4;
extern std::array<char, 9> lastError;  // code text of the last event sent
extern std::uint8_t firstInform;       // 1 once an event was sent

// Loads the plug-in and looks up its four entry points; 1 when all were
// found, else 0 (the plug-in is then released).
int LoadlibInfOV();
// Unloads the plug-in if it is loaded (does not end the agent).
void DescarregaLibInfOV();
// Ends the agent if it was started and unloads the plug-in if it is loaded
// (session close and the release after a failed open).
void LiberaOV();
// Registers the terminal with the agent; returns StartInfOV's result (nonzero
// = started, flagIniciaOV set).
int iniciaOV();
// Ends the agent session and clears flagIniciaOV.
void finalizaOV();
// Reads the report groups from the configuration; returns the last key-read
// result (leChaveConfig's codes).
int ConfiguraOV();
// Reports one (translated) result code to the agent.
void infOvitra(std::int32_t code);
// Sends one event. codInf: the 8-character code text; tipoInf: the 2-character
// information type; descr and extra make up the complement. NULL texts read as
// empty. Returns 1 when the event was sent (or needed no sending), 0 when a
// send failed.
int informaOV(const char* codInf, const char* tipoInf, const char* descr, const char* extra);
// Index of `code` in the `count` first (ascending) codes of `group`, or -1.
int buscaBinaria(std::int32_t code, int count, const std::int32_t* group);
// Builds the inventory message of the session open and hands it to the
// plug-in; returns the result of the register read it makes (translated).
std::uint16_t EnviaInventarioOV();

}  // namespace orbelan
