// The document-processor libraries (cheque filler, authenticator, CMC7 reader):
// loading them, their entry points, and the translation of their results.
#pragma once

#include <cstdint>

namespace orbelan {

// Call forms of the entry points.
using PdSemArgs = int (*)();                              // open, close, bufferCmc7, cleanCmc7
using PdPreencheCheque = int (*)(int, std::uint8_t*);     // (input length, input bytes)
using PdAutentica = int (*)(int, int, char*);             // (mode 55/56/57, text length, text)
using PdCarregaECF = int (*)(char*, char*, char*, char*, int);  // four fiscal data records, 0
using PdReadCmc7 = int (*)(char*, int*);                  // (text out, bytes read out)

// Library handles; null when not loaded.
extern void* pd_chequeHandle;
extern void* pd_autenticaHandle;
extern void* pd_cmc7Handle;

// Entry points; null until resolved, kept after the library is unloaded.
extern PdSemArgs Inicia_Pd_cheque;
extern PdSemArgs Fecha_Pd_cheque;
extern PdPreencheCheque Opera_Pd_cheque;
extern PdSemArgs Inicia_Pd_autentica;
extern PdSemArgs Fecha_Pd_autentica;
extern PdAutentica Opera_Pd_autentica;
extern PdCarregaECF CarregaECF_Pd_autentica;
extern PdSemArgs Inicia_Pd_cmc7;
extern PdSemArgs Fecha_Pd_cmc7;
extern PdSemArgs Buffer_Pd_cmc7;
extern PdReadCmc7 Read_Pd_cmc7;
extern PdSemArgs Clean_Pd_cmc7;

// Each returns 1 when the library and all its entry points were found, else 0.
int LoadPd_chequeApi();
int LoadPd_AutenticaApi();
int LoadPd_cmc7Api();

// The API result code of a peripheral library's result (reported to the agent).
std::uint16_t TrataRetornoProcDoc(int ret);

// Session wiring. Loads the three libraries in order, stopping at the first
// failure; FLAGPD takes each loader's result. Returns 0 or 2900.
std::uint16_t CarregaPerifericos();
// Opens the three devices in order; 0, or 2859 at the first failure.
std::uint16_t IniciaPerifericos();
// Closes and unloads every loaded library (when FLAGPD is set).
void FechaPerifericos();

}  // namespace orbelan
