// The printer's partial registers: walking the programmed registers of one
// category, reading one register's detail, finding a free number and creating
// a register.
//
// Categories (the `Cat` argument): 1 non-fiscal totalisers 40..54, 2 tax rates
// on goods 20..34, 4 tax rates on services 36..39, 5 payment methods 60..78,
// 6 management report types 116..132 (the application sees 0..16).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orbelan {

// The walk's cache: the printer's list of programmed register numbers (one per
// byte, ascending), its length, the category being walked (0: none) and the
// printer number last returned (-1: none).
extern std::array<std::uint8_t, 100> ListaRegistradores;
extern std::int32_t TamListaRegistradores;
extern std::int32_t Ultima_Categoria_Lida;
extern std::int32_t Ultimo_Registrador_Lido;

// Most bytes a register description output receives (text and NUL).
inline constexpr std::size_t kTamDescricaoRegistrador = 100;
// Most bytes Detalhe_Registrador_Parcial writes into Descricao (text and NUL).
inline constexpr std::size_t kTamDescricaoDetalhe = 28;

// Reads the detail of register `Reg` (printer numbering) of `Categoria`:
// Compl receives the description (at most kTamDescricaoRegistrador bytes),
// Sinal one character (the sign for category 1, "1"/"0" CCD flag for 5, a
// blank otherwise). NULL outputs are not written. Translated result.
std::uint16_t Executa_Leitura_Registrador(int Categoria, int Reg, char* Compl, char* Sinal);

// One step of the walk over Ultima_Categoria_Lida: the next programmed
// register after Ultimo_Registrador_Lido, with RP in the application's
// numbering. 2867 (translated) at the end of the walk. Translated result.
std::uint16_t Ler_Proximo_Registrador(char* Compl, char* Sinal, std::uint8_t* RP);

// The lowest free printer number of category `Tipo` (0 when the list has one
// but the category is full, with 2582). Reads the list afresh; the walk's
// cache is left alone. Translated result.
std::uint16_t Proximo_Registrador_Livre(int Tipo, std::uint8_t* RegLivre);

// Reads register `RP` with the detail command of categories 1 and 5:
// Parametro receives its flag byte, Descricao its description (at most
// kTamDescricaoDetalhe bytes). Translated result.
std::uint16_t Detalhe_Registrador_Parcial(int RP, char* Parametro, char* Descricao);

// The steps of E4RPLe, with `quem` naming the function in the trace. With
// `reinicia_no_fim` the end of the walk (2867, still returned) restarts the
// category at once, so that the next call returns its first register again.
// Translated result.
std::uint16_t Le_Registrador_Parcial(const char* quem, bool reinicia_no_fim, std::uint8_t Cat, char* Compl,
                                    char* Sinal, std::uint8_t* RP);

// A reader of the walk with E4RPLe's arguments.
using LeitorParcial = unsigned short (*)(unsigned char Cat, char* Compl, char* Sinal, unsigned char* RP);

// The steps of E4RPProx: the session check and trace around `ler`, with
// `quem` naming the function in the trace. Translated result.
std::uint16_t Proximo_Registrador_Parcial(const char* quem, LeitorParcial ler, std::uint8_t Cat, char* Compl,
                                          char* Sinal, std::uint8_t* RP);

}  // namespace orbelan
