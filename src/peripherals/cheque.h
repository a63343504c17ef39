// Cheque filling from the per-bank layouts of "Cheque.dat".
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>

namespace orbelan {

inline constexpr std::size_t kTamRegistroLayout = 86;  // bytes per layout record
inline constexpr std::size_t kBancos = 1000;             // bank numbers 0..999
inline constexpr std::uint32_t kSemLayout = 65535;       // index entry of a bank without record

extern std::array<std::uint8_t, kTamRegistroLayout> LayOut;  // the record last read
extern std::array<std::uint32_t, kBancos> vLayOut;           // record number per bank
extern std::FILE* fLayOut;                                   // the layout file of the last load
// The texts converted for the printer (printer path only); 100 bytes each.
extern std::array<char, 100> novoNome, novoCidade, novoLinAdic1, novoLinAdic2;

// Rebuilds the bank index from "Cheque.dat"; 0 or 2560.
std::uint16_t XCarregaLayOutCheques();
// Builds one cheque command and sends it to the cheque library (FlagPD set) or
// to the printer. NULL texts read as empty.
std::uint16_t E4ImpChqPD(std::uint16_t Banco, const char* Nome, const char* Cidade, const char* Data,
                         const char* Valor, const char* LinAdic1, const char* LinAdic2, int FlagPD);
// The column where the city line ends and the date begins, by bank.
int CalcCIL(int bank);

}  // namespace orbelan
