// Value and text encodings: number and digit fields, packed decimal digits,
// amounts with two decimals, character masking and the code page 850 mapping.
// None of these allocate; outputs are bounded by the spans they are given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace orbelan {

// ISO 8859-1 -> code page 850 for 0xA0..0xFF (0xA4 has no row): 95 pairs
// (source, target) sorted by source, then a zero terminator.
extern const std::uint8_t TabelaConv[191];

// Digits of `value` in `base`, most significant first, letters from "A" above 9;
// NUL-terminated. Returns the number of digits. LongtoAsk(0) gives "" and 0,
// intoAsk(0) gives "0" and 1.
int LongtoAsk(std::uint32_t value, std::span<char> buf, int base);
int intoAsk(std::uint32_t value, std::span<char> buf, int base);

// Packs `n` digit characters two per byte (odd n: first byte 0|digit); writes
// (n + 1) / 2 bytes, no terminator.
void Compacta(std::string_view src, std::span<std::uint8_t> dst, int n);
// The inverse: produces `n` digit characters, no terminator.
void Expande(std::span<const std::uint8_t> src, std::span<char> dst, int n);

// Amount field: digits of `str` with two implied decimals, right-aligned so that
// the terminator lands at index `end`, zero-filled in front. `str` is a buffer of
// at least end + 1 bytes. Returns 0, or 1 when there were more digits than fit
// (then only the last `end` digits are kept).
int FormataValor(std::span<char> str, int end);
// As FormataValor, every digit kept, no decimal handling.
int FormataValor2(std::span<char> str, int end);
// Text with exactly two decimals ("12,5" -> "12,50"), at most `width` characters.
void FormataValorDuasCasas(std::string_view str, std::span<char> out, int width);
// Replaces the first "," of `str` by "." (in place) and copies it to `out`.
void FormatacomPonto(std::span<char> str, std::span<char> out);
// "1250" -> "12.50"; one digit "5" -> "0.05", two "25" -> "0.25"; empty input
// leaves `out` untouched.
void AcrescentaPonto(std::string_view str, std::span<char> out);
// 1-based position of the first "," (failing that, the first "."): 0 and `pos`
// set, or 1 and `pos` untouched.
int ProcuraPosicaoVirgulaouPonto(std::string_view str, std::int32_t& pos);
// Right-aligns `src` in `width` characters, "0" in front, NUL at `width`; a
// longer `src` keeps its last `width` characters. `dst` holds width + 1 bytes.
void LeftPad(std::string_view src, std::span<char> dst, int width);
// Removes every `c` from the first `len` characters of `str` (in place).
void EliminaCaracter(std::span<char> str, int len, char c);

// Decimal places of quantities (out[0]) and prices (out[1]), command 232.
std::uint16_t LeCasasDecimais(std::uint8_t out[2]);

// Character masks applied before printing; both clean `src` in place (up to its
// NUL or its end) and copy it to `dst`. Return 0.
int MascaraCaracter(std::span<char> src, std::span<char> dst);
int MascaraCaracterEsp(std::span<char> src, std::span<char> dst);

// Code page conversions, in place up to the text's NUL.
int ConversaoCP850(std::span<char> str, std::span<char> dst);
int ConversaoASCII(std::span<char> str);

}  // namespace orbelan
