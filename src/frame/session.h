// Session state: open/closed, the configuration read at open.
#pragma once

#include <array>
#include <cstdint>

namespace orbelan {

extern std::int32_t OPENOK;  // 1 while a session is open
extern std::int32_t FLAGPD;  // peripheral drivers in use ("TIPO_PD")
extern std::array<char, 3> sLowPaperCounter;
extern std::int32_t iLowPaperCounter;
extern std::array<char, 5> OVSetingsBuf;
extern std::array<char, 9> OVULTermBuf, OVNomeTermBuf, OVCodSftwBuf, OVCodHrdwBuf, OVTipHrdwBuf,
    OVCodFbrBuf;
extern std::array<char, 20> ValorReducaoZ;

// The result every operation gives while no session is open.
constexpr std::uint16_t kNaoAberto = 2869;

// Reads `key` of `section` from "quorvel.conf" into dest (at most `width`
// characters and a NUL; dest holds width + 1 bytes). Returns 0 found, 1 key not
// found, 2 section not found, -1 file not openable, 3 out of memory.
int leChaveConfig(const char* section, const char* key, int width, char* dest);

// The section of "quorvel.conf" the library reads.
inline constexpr const char* kSecaoConfig = "QuorvelPOS\\ImpressoraFiscal";

}  // namespace orbelan
