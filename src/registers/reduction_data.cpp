// The day's totals per tax rate and per totaliser as one record of fixed-width
// entries, as a sale application prints them in its own reduction report.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
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

// The 15-byte label of a tax register: its number in the category, "T" for
// goods or "S" for services, the rate's four digits and eight blanks; false
// for a register outside the tax ranges.
bool rotulo_aliquota(std::uint8_t reg, const Resposta& detalhe, std::array<char, kLarguraRotulo>& rotulo) {
  int numero = 0;
  char tipo = 'T';
  if (reg >= 20 && reg <= 34) {
    numero = reg - 19;
  } else if (reg >= 36 && reg <= 39) {
    numero = reg - 35;
    tipo = 'S';
  } else if (reg >= 100 && reg <= 110) {
    numero = reg - 95;
    tipo = 'S';
  } else {
    return false;
  }
  rotulo.fill(' ');
  rotulo[0] = static_cast<char>('0' + numero / 10);
  rotulo[1] = static_cast<char>('0' + numero % 10);
  rotulo[2] = tipo;
  // The rate's digits, without the separator at byte 3.
  rotulo[3] = static_cast<char>(detalhe[1]);
  rotulo[4] = static_cast<char>(detalhe[2]);
  rotulo[5] = static_cast<char>(detalhe[4]);
  rotulo[6] = static_cast<char>(detalhe[5]);
  return true;
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

// Whether a reply answers for the register asked for.
bool eco(std::uint16_t ret, const Resposta& r, std::uint8_t reg) { return ret == 0 && r[0] == reg; }

// Tax-rate entries: label, accumulated value, tax value and a comma.
std::uint16_t entradas_aliquotas(Registro& reg_out) {
  std::array<std::uint8_t, 100> lista{};
  std::size_t n = 0;
  std::uint16_t ret = lista_da_categoria(2, lista, n);
  if (ret == 0) ret = lista_da_categoria(4, lista, n);

  for (std::size_t i = 0; ret == 0 && i < n; ++i) {
    const std::uint8_t reg = lista[i];
    std::array<char, kLarguraRotulo> rotulo{};
    Resposta r;
    ret = consulta(36, reg, r);
    const bool aliquota = rotulo_aliquota(reg, r, rotulo);
    if (eco(ret, r, reg) && aliquota) reg_out.campo({rotulo.data(), rotulo.size()}, kLarguraRotulo);
    if (ret == 0) {
      ret = consulta(133, reg, r);
      if (eco(ret, r, reg) && aliquota) reg_out.campo(r.text(6), kLarguraValor);
    }
    if (ret == 0) {
      ret = consulta(136, reg, r);
      if (eco(ret, r, reg) && aliquota) {
        reg_out.campo(r.text(1), kLarguraImposto);
        reg_out.campo(",", 1);
      }
    }
    if (ret == kSemDados && i < 30) ret = 0;
  }
  return ret;
}

// The thirteen fixed entries: label, value and a comma.
std::uint16_t entradas_fixas(Registro& reg_out) {
  std::uint16_t ret = 0;
  for (const Fixo& f : kFixos) {
    Resposta r;
    if (f.reg == 134) {
      // The service discounts are only reported where the printer keeps them.
      Input in;
      in.seq();
      ret = executa(241, 1, in, r);
      if (ret == 0 && r[0] == 0) ret = kSemDados;
    }
    if (ret == 0) {
      ret = consulta(133, f.reg, r);
      if (eco(ret, r, f.reg)) {
        reg_out.campo(f.rotulo, kLarguraRotulo);
        reg_out.campo(r.text(6), kLarguraValor);
        reg_out.campo(",", 1);
      }
    }
    if (ret == kSemDados) ret = 0;
    if (ret != 0) break;
  }
  return ret;
}

// Non-fiscal totaliser entries: name blank-padded to 15, value and a comma.
std::uint16_t entradas_totalizadores(Registro& reg_out) {
  std::array<std::uint8_t, 100> lista{};
  std::size_t n = 0;
  std::uint16_t ret = lista_da_categoria(1, lista, n);
  for (std::size_t i = 0; ret == 0 && i < n; ++i) {
    const std::uint8_t reg = lista[i];
    const bool totalizador = reg >= 40 && reg <= 54;
    Resposta r;
    ret = consulta(33, reg, r);
    if (eco(ret, r, reg) && totalizador) {
      std::array<char, kLarguraRotulo> nome{};
      nome.fill(' ');
      const std::string_view texto = r.text(3);
      std::memcpy(nome.data(), texto.data(), std::min(texto.size(), nome.size()));
      reg_out.campo({nome.data(), nome.size()}, kLarguraRotulo);
    }
    if (ret == 0) {
      ret = consulta(133, reg, r);
      if (eco(ret, r, reg) && totalizador) {
        reg_out.campo(r.text(6), kLarguraValor);
        reg_out.campo(",", 1);
      }
    }
    if (ret == kSemDados && i < 15) ret = 0;
  }
  return ret;
}

// Increases, cancellations and discounts of the non-fiscal operations.
std::uint16_t entradas_nao_fiscais(Registro& reg_out) {
  std::uint16_t ret = 0;
  for (const Fixo& f : kNaoFiscais) {
    Resposta r;
    ret = consulta(133, f.reg, r);
    if (eco(ret, r, f.reg) && f.reg >= 17 && f.reg <= 19) {
      reg_out.campo(f.rotulo, kLarguraRotulo);
      reg_out.campo(r.text(6), kLarguraValor);
      reg_out.campo(",", 1);
    }
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
  if (ret == 0) ret = entradas_fixas(registro);
  if (ret == 0) ret = entradas_totalizadores(registro);
  if (ret == 0) ret = entradas_nao_fiscais(registro);
  // Whatever was gathered before a failure is handed out; no terminator.
  if (Buffer != nullptr && registro.size() != 0) std::memcpy(Buffer, registro.data(), registro.size());
  ORB_LOG("E4DadosReducao%s - fim com ret=%d \n", ret);
  return TrataRetorno(ret);
}

}  // extern "C"
