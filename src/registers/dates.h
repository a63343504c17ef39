// Date helpers of the journal readings, and the conversion of a date range into
// the range of document counters (COO) it covers.
#pragma once

#include <cstdint>
#include <span>

namespace orbelan {

// The COO range of the documents issued from DataIni to DataFim (DDMMYYYY),
// found in the fiscal memory read by date. COOI and COOF each receive six
// digits and a NUL (at least 7 bytes; NULL is not written). Returns 0 on
// success; 2 when the printer's data forbids the conversion or nothing was
// found; -1 when the reading ended without the blank line that closes it; or
// the fiscal-memory transfer's code.
int pegaCOOEntreDatas(const char* DataIni, const char* DataFim, char* COOI, char* COOF);

// Data (DDMMYYYY) moved by Dias days, backwards when Subtrai is non-zero,
// counted from the day after Data. Resultado receives "%d%m%Y" (9 bytes).
void timeMinusPlus(const char* Data, int Dias, int Subtrai, std::span<char> Resultado);

// Compares two dates, each DD/MM/YYYY or DDMMYYYY: 0 equal, 1 A later, 2 A
// earlier.
int timeCompare(const char* A, const char* B);

// 1 when Texto starts with the shape of Mascara ("N" a digit, " " a blank,
// "/" and ":" punctuation, anything else any character), else 0.
int comparaComMascara(const char* Texto, const char* Mascara);

}  // namespace orbelan
