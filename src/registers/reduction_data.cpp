// The day's totals per tax rate and per totaliser as one record of fixed-width
// entries, as a sale application prints them in its own reduction report.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <span>
#include <string_view>

#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "orbelan.h"

namespace orbelan {

namespace {

// The printer's answer for a register that has nothing to report; such a
// register is skipped and the record goes on.
constexpr std::uint16_t kSemDados = 22;

// 30 tax entries of 45 bytes, then 13 fixed, 15 totaliser and 3 non-fiscal
// entries of 29 bytes.
constexpr std::size_t kTamRegistro = 30 * 45 + (13 + 15 + 3) * 29;

constexpr std::size_t kLarguraRotulo = 15;
constexpr std::size_t kLarguraValor = 13;
constexpr std::size_t kLarguraImposto = 16;

// The record being built: fields laid end to end with their exact widths, a
// shorter text leaving NULs in the rest of its field. A field that would pass
// the record's largest size is dropped, and so is everything after it.
class Registro {
 public:
  void campo(std::string_view texto, std::size_t largura) {
    if (cheio_ || largura > b_.size() - pos_) {
      cheio_ = true;
      return;
    }
    std::memcpy(b_.data() + pos_, texto.data(), std::min(texto.size(), largura));
    pos_ += largura;
  }
  const char* data() const { return b_.data(); }
  std::size_t size() const { return pos_; }

 private:
  std::array<char, kTamRegistro> b_{};
  std::size_t pos_ = 0;
  bool cheio_ = false;
};

using Resposta = Reply<50>;

// A query on one register: sequence and register number.
std::uint16_t consulta(int cmd, std::uint8_t reg, Resposta& r) {
  Input in;
  in.seq().byte(reg);
  return executa(cmd, 1, in, r);
}

// The registers of a category (command 37), appended to `lista` when the reply
// echoes the category. Returns the driver's code.
std::uint16_t lista_da_categoria(std::uint8_t cat, std::array<std::uint8_t, 100>& lista, std::size_t& n) {
  Resposta r;
  const std::uint16_t ret = consulta(37, cat, r);
  if (ret == 0 && r[0] == cat) {
    for (char c : r.text(1))
      if (n < lista.size()) lista[n++] = static_cast<std::uint8_t>(c);
  }
  return ret;
}

// The number of a tax register in its category and its kind, 'T' for goods or
// 'S' for services; 0 for a register outside the tax ranges.
int aliquota(std::uint8_t reg, char& tipo) {
  tipo = reg >= 20 && reg <= 34 ? 'T' : 'S';
  if (reg >= 20 && reg <= 34) return reg - 19;
  if (reg >= 36 && reg <= 39) return reg - 35;
  if (reg >= 100 && reg <= 110) return reg - 95;
  return 0;
}

// The 15-byte label of a tax register: its number and kind, the rate's four
// digits and eight blanks.
std::array<char, kLarguraRotulo> rotulo_aliquota(int numero, char tipo, const Resposta& detalhe) {
  std::array<char, kLarguraRotulo> rotulo;
  rotulo.fill(' ');
  rotulo[0] = static_cast<char>('0' + numero / 10);
  rotulo[1] = static_cast<char>('0' + numero % 10);
  rotulo[2] = tipo;
  // The rate's digits, without the separator at byte 3.
  rotulo[3] = static_cast<char>(detalhe[1]);
  rotulo[4] = static_cast<char>(detalhe[2]);
  rotulo[5] = static_cast<char>(detalhe[4]);
  rotulo[6] = static_cast<char>(detalhe[5]);
  return rotulo;
}

struct Fixo {
  const char* rotulo;
  std::uint8_t reg;
};

constexpr std::array<Fixo, 13> kFixos{{{"AS             ", 135},
                                       {"AT             ", 9},
                                       {"Can-S          ", 114},
                                       {"Can-T          ", 7},
                                       {"DS             ", 134},
                                       {"DT             ", 8},
                                       {"F1             ", 11},
                                       {"FS1            ", 111},
                                       {"I1             ", 12},
                                       {"IS1            ", 112},
                                       {"N1             ", 13},
                                       {"NS1            ", 113},
                                       {"OPNF           ", 16}}};

constexpr std::array<Fixo, 3> kNaoFiscais{{{"ACRE NAO-FISC  ", 19},
                                           {"CANC NAO-FISC  ", 17},
                                           {"DESC NAO-FISC  ", 18}}};

// Query `cmd` on `reg` once nothing has failed yet; `escreve` gets the reply
// when it answers for `reg` and the register is to be `gravado`.
template <typename Escreve>
void consulta_campos(std::uint16_t& ret, int cmd, std::uint8_t reg, bool gravado, Escreve&& escreve) {
  if (ret != 0) return;
  Resposta r;
  ret = consulta(cmd, reg, r);
  if (ret == 0 && r[0] == reg && gravado) escreve(r);
}

// The accumulated value of a register (command 133) as an entry's value field.
void campo_valor(Registro& reg_out, const Resposta& r) { reg_out.campo(r.text(6), kLarguraValor); }

// One entry for each register the printer lists in the categories `categorias`,
// written by `entrada(reg, ret)`; a register with nothing to report among the
// first `toleradas` is passed over.
template <typename Entrada>
std::uint16_t por_registro(std::initializer_list<std::uint8_t> categorias, std::size_t toleradas,
                           Entrada&& entrada) {
  std::array<std::uint8_t, 100> lista{};
  std::size_t n = 0;
  std::uint16_t ret = 0;
  for (std::uint8_t cat : categorias)
    if (ret == 0) ret = lista_da_categoria(cat, lista, n);
  for (std::size_t i = 0; ret == 0 && i < n; ++i) {
    entrada(lista[i], ret);
    if (ret == kSemDados && i < toleradas) ret = 0;
  }
  return ret;
}

// Tax-rate entries: label, accumulated value, tax value and a comma.
std::uint16_t entradas_aliquotas(Registro& reg_out) {
  return por_registro({2, 4}, 30, [&](std::uint8_t reg, std::uint16_t& ret) {
    char tipo = 'T';
    const int numero = aliquota(reg, tipo);
    consulta_campos(ret, 36, reg, numero != 0, [&](const Resposta& r) {
      reg_out.campo({rotulo_aliquota(numero, tipo, r).data(), kLarguraRotulo}, kLarguraRotulo);
    });
    consulta_campos(ret, 133, reg, numero != 0, [&](const Resposta& r) { campo_valor(reg_out, r); });
    consulta_campos(ret, 136, reg, numero != 0, [&](const Resposta& r) {
      reg_out.campo(r.text(1), kLarguraImposto);
      reg_out.campo(",", 1);
    });
  });
}

// Non-fiscal totaliser entries: name blank-padded to 15, value and a comma.
std::uint16_t entradas_totalizadores(Registro& reg_out) {
  return por_registro({1}, 15, [&](std::uint8_t reg, std::uint16_t& ret) {
    const bool totalizador = reg >= 40 && reg <= 54;
    consulta_campos(ret, 33, reg, totalizador, [&](const Resposta& r) {
      std::array<char, kLarguraRotulo> nome;
      nome.fill(' ');
      const std::string_view texto = r.text(3);
      std::memcpy(nome.data(), texto.data(), std::min(texto.size(), nome.size()));
      reg_out.campo({nome.data(), nome.size()}, kLarguraRotulo);
    });
    consulta_campos(ret, 133, reg, totalizador, [&](const Resposta& r) {
      campo_valor(reg_out, r);
      reg_out.campo(",", 1);
    });
  });
}

// Entries of a table of registers: label, value and a comma; a register with
// nothing to report is passed over.
std::uint16_t entradas_da_tabela(std::span<const Fixo> tabela, Registro& reg_out) {
  std::uint16_t ret = 0;
  for (const Fixo& f : tabela) {
    if (f.reg == 134) {
      // The service discounts are only reported where the printer keeps them.
      Input in;
      in.seq();
      Resposta r;
      ret = executa(241, 1, in, r);
      if (ret == 0 && r[0] == 0) ret = kSemDados;
    }
    consulta_campos(ret, 133, f.reg, true, [&](const Resposta& r) {
      reg_out.campo(f.rotulo, kLarguraRotulo);
      campo_valor(reg_out, r);
      reg_out.campo(",", 1);
    });
    if (ret == kSemDados) ret = 0;
    if (ret != 0) break;
  }
  return ret;
}

}  // namespace

}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4DadosReducao(char* Buffer) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4DadosReducao%s - inicio \n");
  Registro registro;
  if (ret == 0) ret = entradas_aliquotas(registro);
  // The thirteen fixed entries, then the increases, cancellations and
  // discounts of the non-fiscal operations after the totalisers.
  if (ret == 0) ret = entradas_da_tabela(kFixos, registro);
  if (ret == 0) ret = entradas_totalizadores(registro);
  if (ret == 0) ret = entradas_da_tabela(kNaoFiscais, registro);
  // Whatever was gathered before a failure is handed out; no terminator.
  if (Buffer != nullptr && registro.size() != 0) std::memcpy(Buffer, registro.data(), registro.size());
  ORB_LOG("E4DadosReducao%s - fim com ret=%d \n", ret);
  return TrataRetorno(ret);
}

}  // extern "C"
