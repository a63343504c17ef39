// The store-number procedure around the creation of a payment register, kept
// as a state file ("ArqRegPgto.sts": state digit + saved store number) so that
// an interrupted run resumes at the next session open or document opening.
#pragma once

#include <array>
#include <cstdint>

namespace orbelan {

// The last 5 bytes read from or written to the status file (byte 5 stays NUL).
// Byte 0: '0' normal, '1' about to set "9999", '2' "9999" in force, '3' restore
// under way, '4' restored, closing and cut pending.
extern std::array<char, 6> statusArqRegPgto;

// The state digit in memory ('2' asks for the restore at the next opening).
inline char Estado_ArqRegPgto() { return statusArqRegPgto[0]; }

// op 1 reads, op 2 writes the 5 bytes of `buffer` with fopen mode `mode`.
// 0; 2902 open failed; 2903 short read; 2904 short write.
std::uint16_t readWriteArqRegPgto(int op, const char* mode, char* buffer);

// Resumes (or starts) the procedure at session open; translated result.
std::uint16_t trataArqRegPgtoOpen();
// Runs state 1 (set "9999") or state 3 (restore, close, cut, and a management
// report when flag[0] is '1'); translated result.
std::uint16_t trataArqRegPgtoStatus(int state, const char* flag);

}  // namespace orbelan
