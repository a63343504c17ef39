// Partial registers: the walk over one category with its cached register list,
// the detail of one register, the search for a free number and the creation of
// a register.
#include "registers/partials.h"

#include <algorithm>

#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/encodings.h"
#include "frame/identity.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"
#include "orbelan.h"
#include "state/regpgto.h"

namespace orbelan {

std::array<std::uint8_t, 100> ListaRegistradores{};
std::int32_t TamListaRegistradores = 0;
std::int32_t Ultima_Categoria_Lida = 0;
std::int32_t Ultimo_Registrador_Lido = -1;

namespace {

constexpr std::uint16_t kArgumentoInvalido = 2049;
constexpr std::uint16_t kCategoriaFull = 2582;
constexpr std::uint16_t kRegistradorInvalido = 2842;
constexpr std::uint16_t kCategoriaInvalidaPrim = 2843;
constexpr std::uint16_t kFimRegistradores = 2867;

// Printer number of the first management report type; the application counts
// those from 0.
constexpr int kBaseRelatorio = 116;
// The walk's "no candidate" mark. It is also a valid tax register number, so a
// programmed register 32 ends a walk over category 2 like the end of the list.
constexpr std::uint8_t kSemCandidato = 32;

struct Faixa {
  int lo;
  int hi;
};

bool categoria_valida(int cat) { return cat == 1 || cat == 2 || cat == 4 || cat == 5 || cat == 6; }

// The printer numbers a walk visits in each category.
Faixa faixa_enumeracao(int cat) {
  switch (cat) {
    case 1: return {40, 54};
    case 2: return {20, 34};
    case 4: return {36, 39};
    case 5: return {60, 78};
    case 6: return {116, 132};
    default: return {0, 0};
  }
}

// The printer numbers the free-number search considers; the last report type
// (132) is never offered as free.
Faixa faixa_livre(int cat) {
  if (cat == 6) return {116, 131};
  return faixa_enumeracao(cat);
}

const char* ou_vazio(const char* s) { return s != nullptr ? s : ""; }
char caractere(const char* c) { return c != nullptr ? *c : ' '; }

void limpa_cache() {
  Ultima_Categoria_Lida = 0;
  Ultimo_Registrador_Lido = -1;
  ListaRegistradores.fill(0);
  TamListaRegistradores = 0;
}

}  // namespace

std::uint16_t Executa_Leitura_Registrador(int Categoria, int Reg, char* Compl, char* Sinal) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  if (Compl != nullptr) Compl[0] = '\0';
  if (Sinal != nullptr) *Sinal = ' ';
  ORB_LOG("Executa_Leitura_Registrador%s - inicio - Categoria=%d - Reg=%d\n", Categoria, Reg);
  if (ret == 0 && !categoria_valida(Categoria)) {
    ORB_LOG("Executa_Leitura_Registrador%s Categoria invalida: %d \n", Categoria);
    ret = kArgumentoInvalido;
  }
  if (ret == 0) {
    const bool com_sinal = Categoria == 1 || Categoria == 5;
    const int cmd = com_sinal ? 33 : (Categoria == 6 ? 238 : 36);
    Input in;
    in.seq().byte(static_cast<std::uint8_t>(Reg));
    Reply<kTamDescricaoRegistrador> r;
    ret = executa(cmd, 1, in, r);
    if (ret == 0) {
      // Reply bytes 0 and 2 carry nothing the library uses.
      const std::size_t de = com_sinal ? 3 : 1;
      const std::size_t n = static_cast<std::size_t>(r.len) > de ? static_cast<std::size_t>(r.len) - de : 0;
      copy_out(Compl, r.field(de, n), kTamDescricaoRegistrador);
      if (Categoria == 1) {
        if (Sinal != nullptr) *Sinal = static_cast<char>(r[1]);
        ORB_LOG("Executa_Leitura_Registrador%s - Sinal=%c \n", static_cast<char>(r[1]));
      } else if (Categoria == 5) {
        const char ccd = r[1] != 0 ? '1' : '0';
        if (Sinal != nullptr) *Sinal = ccd;
        ORB_LOG("Executa_Leitura_Registrador%s - CCD=%c \n", ccd);
      }
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Executa_Leitura_Registrador%s - fim com ret=%d - Compl=%s \n", ret, ou_vazio(Compl));
  return ret;
}

std::uint16_t Ler_Proximo_Registrador(char* Compl, char* Sinal, std::uint8_t* RP) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  if (Compl != nullptr) Compl[0] = '\0';
  if (Sinal != nullptr) *Sinal = ' ';
  if (RP != nullptr) *RP = 0;
  ORB_LOG("Ler_Proximo_Registrador%s - inicio - Categoria=%d \n", Ultima_Categoria_Lida);
  if (ret == 0 && !categoria_valida(Ultima_Categoria_Lida)) {
    ORB_LOG("Ler_Proximo_Registrador%s Categoria invalida \n");
    ret = kArgumentoInvalido;
  }
  if (ret == 0) {
    const Faixa f = faixa_enumeracao(Ultima_Categoria_Lida);
    std::uint8_t candidato = kSemCandidato;
    const std::int32_t tam = std::clamp<std::int32_t>(TamListaRegistradores, 0, ListaRegistradores.size());
    for (std::int32_t i = 0; i < tam; ++i) {
      const int b = ListaRegistradores[static_cast<std::size_t>(i)];
      if (b >= f.lo && b <= f.hi && b > Ultimo_Registrador_Lido) {
        candidato = static_cast<std::uint8_t>(b);
        break;
      }
    }
    if (candidato != kSemCandidato) {
      ret = Executa_Leitura_Registrador(Ultima_Categoria_Lida, candidato, Compl, Sinal);
      if (ret == 0) {
        if (RP != nullptr)
          *RP = static_cast<std::uint8_t>(Ultima_Categoria_Lida == 6 ? candidato - kBaseRelatorio : candidato);
        Ultimo_Registrador_Lido = candidato;
      }
    } else {
      ret = kFimRegistradores;
      ORB_LOG("Ler_Proximo_Registrador%s - fim registradores \n");
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Ler_Proximo_Registrador%s - fim com ret=%d - Compl=%s \n", ret, ou_vazio(Compl));
  return ret;
}

std::uint16_t Proximo_Registrador_Livre(int Tipo, std::uint8_t* RegLivre) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  int livre = 0;
  if (RegLivre != nullptr) *RegLivre = 0;
  ORB_LOG("Proximo_Registrador_Livre%s - inicio - Tipo=%d \n", Tipo);
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<200> r;
    ret = executa(38, 1, in, r);
    if (ret == 0) {
      const Faixa f = faixa_livre(Tipo);
      if (r.len <= 0) {
        livre = f.lo;
      } else {
        int esperado = f.lo;
        for (std::int32_t i = 0; i < r.len; ++i) {
          const int b = r[static_cast<std::size_t>(i)];
          if (b < f.lo || b > f.hi) continue;
          if (b != esperado) break;
          livre = b;
          ++esperado;
        }
        ++livre;
        if (livre < f.lo) {
          livre = f.lo;
        } else if (livre > f.hi) {
          livre = 0;
          ret = kCategoriaFull;
        }
      }
      if (RegLivre != nullptr) *RegLivre = static_cast<std::uint8_t>(livre);
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Proximo_Registrador_Livre%s - fim com ret=%d - RegLivre=%d \n", ret, livre);
  return ret;
}

std::uint16_t Detalhe_Registrador_Parcial(int RP, char* Parametro, char* Descricao) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Detalhe_Registrador_Parcial%s - inicio - RP=%d \n", RP);
  if (Parametro != nullptr) *Parametro = '\0';
  if (Descricao != nullptr) Descricao[0] = '\0';
  if (ret == 0) {
    Input in;
    in.seq().byte(static_cast<std::uint8_t>(RP));
    Reply<30> r;
    ret = executa(33, 1, in, r);
    if (ret == 0) {
      if (Parametro != nullptr) *Parametro = static_cast<char>(r[1]);
      copy_out(Descricao, r.text(3), kTamDescricaoDetalhe);
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Detalhe_Registrador_Parcial%s - fim com ret=%d - Descricao=%s - Paramatro=%c  \n", ret,
          ou_vazio(Descricao), Parametro != nullptr ? *Parametro : ' ');
  return ret;
}

std::uint16_t Le_Registrador_Parcial(const char* quem, bool reinicia_no_fim, std::uint8_t Cat, char* Compl,
                                    char* Sinal, std::uint8_t* RP) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  dumpLog("%s%s - inicio - Cat=%d\n", quem, trace_version(), Cat);
  if (Compl != nullptr) Compl[0] = '\0';
  if (Sinal != nullptr) *Sinal = '\0';
  if (RP != nullptr) *RP = 0;
  if (ret == 0 && !categoria_valida(Cat)) {
    dumpLog("%s%s Categoria invalida \n", quem, trace_version());
    ret = kArgumentoInvalido;
  }
  if (ret == 0 && Cat != Ultima_Categoria_Lida) ret = E4RPPrim(Cat);
  if (ret == 0) ret = Ler_Proximo_Registrador(Compl, Sinal, RP);
  // The restart's own result does not matter: the end of the walk is reported.
  if (ret == kFimRegistradores && reinicia_no_fim) (void)E4RPPrim(Cat);
  ret = TrataRetorno(ret);
  dumpLog("%s%s - fim com ret=%d Compl=%s Sinal=%c RP=%d\n", quem, trace_version(), ret, ou_vazio(Compl),
          caractere(Sinal), RP != nullptr ? *RP : 0);
  return ret;
}

std::uint16_t Proximo_Registrador_Parcial(const char* quem, LeitorParcial ler, std::uint8_t Cat, char* Compl,
                                          char* Sinal, std::uint8_t* RP) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  dumpLog("%s%s - inicio - Cat=%d\n", quem, trace_version(), Cat);
  if (ret == 0) ret = ler(Cat, Compl, Sinal, RP);
  ret = TrataRetorno(ret);
  dumpLog("%s%s - fim com ret=%d \n", quem, trace_version(), ret);
  return ret;
}

}  // namespace orbelan

using namespace orbelan;

namespace {

// The rate of a tax register as the printer takes it: digits with two implied
// decimals, at least five of them ("7" -> "00700", "18" -> "01800").
std::array<char, 12> digitos_aliquota(const char* Nome) {
  std::array<char, 12> formatado{};
  FormataValorDuasCasas(in_text(Nome), formatado, 11);
  std::size_t digitos = 0;
  for (char c : view(formatado)) digitos += c >= '0' && c <= '9';
  std::array<char, 12> saida{};
  std::size_t n = digitos == 3 ? 2 : (digitos == 4 ? 1 : 0);
  std::fill_n(saida.begin(), n, '0');
  for (char c : view(formatado)) {
    if (c >= '0' && c <= '9' && n + 1 < saida.size()) saida[n++] = c;
  }
  return saida;
}

// After a new payment method: the store number goes to "9999" (through the
// status file) and, unless a reduction is pending, an X reading follows, whose
// opening restores the store number.
std::uint16_t apos_criar_meio_pagamento() {
  std::uint16_t ret = 0;
  if (Estado_ArqRegPgto() == '0') {
    (void)trataArqRegPgtoStatus(1, "0");  // superseded by the state query below
    std::uint8_t pos_reducao = 0;
    ret = Estado_Pos_Reducao(&pos_reducao);
    if (ret == 0 && pos_reducao == 0) ret = E4IniCup(4);
  }
  return ret;
}

}  // namespace

extern "C" {

ORBELAN_API unsigned short E4RPPrim(unsigned char Cat) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4RPPrim%s - inicio - Cat=%d\n", Cat);
  limpa_cache();
  if (ret == 0 && !categoria_valida(Cat)) {
    ORB_LOG("E4RPPrim%s Categoria invalida \n");
    ret = kCategoriaInvalidaPrim;
  }
  if (ret == 0) {
    // The category is not sent: the list holds every category's registers.
    Input in;
    in.seq();
    Reply<200> r;
    ret = executa(38, 1, in, r);
    if (ret == 0) {
      Ultima_Categoria_Lida = Cat;
      Ultimo_Registrador_Lido = -1;
      // A longer list than the cache holds is cut: the walk never looks past it.
      TamListaRegistradores = std::min<std::int32_t>(r.len, ListaRegistradores.size());
      const std::size_t n = std::min<std::size_t>(static_cast<std::size_t>(r.len) + 1, ListaRegistradores.size());
      std::copy_n(r.b.begin(), n, ListaRegistradores.begin());
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4RPPrim%s - fim com ret=%d Ultima_Categoria_Lida=%d\n", ret, Ultima_Categoria_Lida);
  return ret;
}

ORBELAN_API unsigned short E4RPLe(unsigned char Cat, char* Compl, char* Sinal, unsigned char* RP) {
  ORB_LOCK();
  return Le_Registrador_Parcial("E4RPLe", false, Cat, Compl, Sinal, RP);
}

ORBELAN_API unsigned short E4RPProx(unsigned char Cat, char* Compl, char* Sinal, unsigned char* RP) {
  ORB_LOCK();
  return Proximo_Registrador_Parcial("E4RPProx", E4RPLe, Cat, Compl, Sinal, RP);
}

ORBELAN_API unsigned short E4VerRP(int RP, char* Descricao, char* Sinal) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  if (Descricao != nullptr) Descricao[0] = '\0';
  if (Sinal != nullptr) *Sinal = ' ';
  ORB_LOG("E4VerRP%s - inicio - RP=%d \n", RP);
  if (ret == 0) {
    int categoria = 0;
    int registrador = RP;
    if (RP >= 20 && RP <= 34) {
      categoria = 2;
    } else if (RP >= 36 && RP <= 39) {
      categoria = 4;
    } else if (RP >= 40 && RP <= 54) {
      categoria = 1;
    } else if (RP >= 60 && RP <= 78) {
      categoria = 5;
    } else if (RP >= 0 && RP <= 19) {
      categoria = 6;
      registrador = RP + kBaseRelatorio;
    } else {
      ORB_LOG("E4VerRP%s - Registrador invalido: %d \n", RP);
      ret = kArgumentoInvalido;
    }
    if (ret == 0) ret = Executa_Leitura_Registrador(categoria, registrador, Descricao, Sinal);
  }
  ret = TrataRetorno(ret);
  // Sinal is one character, not a text: only that character is shown.
  const char sinal[2] = {caractere(Sinal), '\0'};
  ORB_LOG("E4VerRP%s - fim com ret=%d - Descricao=%s Sinal=%s \n", ret, ou_vazio(Descricao), sinal);
  return ret;
}

ORBELAN_API unsigned short E4RPCria(unsigned char Cat, const char* Nome, const char* Param,
                                    unsigned char* Reg) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  const std::string_view param = in_text(Param, 1);
  ORB_LOG("E4RPCria%s - inicio - Cat=%d Nome=%s Param=%s Reg=%d\n", Cat, ou_vazio(Nome), ou_vazio(Param),
          Reg != nullptr ? *Reg : 0);
  const char p = param.empty() ? '\0' : param[0];
  if (ret == 0) {
    if (Cat == 1 && p != '+' && p != '-') ret = kArgumentoInvalido;
    if (Cat == 5 && p != '0' && p != '1') ret = kArgumentoInvalido;
    // Without the number to program there is nothing sensible to send; refusing
    // beats programming whatever register a default would name.
    if (Reg == nullptr) ret = kArgumentoInvalido;
  }
  if (ret == 0) {
    const std::uint8_t reg = *Reg;
    const std::string_view nome = in_text(Nome, 15);
    Input in;
    in.seq();
    int cmd = 0;
    switch (Cat) {
      case 1:
        cmd = 32;
        in.byte(reg).byte(static_cast<std::uint8_t>(p)).byte(0).text(nome);
        break;
      case 2:
      case 4:
        cmd = Cat == 2 ? 34 : 58;
        in.byte(reg).text(view(digitos_aliquota(Nome)));
        break;
      case 5:
        cmd = 59;
        in.byte(reg).byte(0).byte(p == '0' ? 0 : 1).text(nome);
        break;
      case 6:
        cmd = 213;
        in.byte(static_cast<std::uint8_t>(reg + kBaseRelatorio)).text(nome);
        break;
      default:
        ORB_LOG("E4RPCria%s - Registrador invalido \n");
        ret = kRegistradorInvalido;
        break;
    }
    if (ret == 0) {
      Reply<10> r;
      ret = executa(cmd, 0, in, r);
    }
    if (ret == 0) ret = E4RPPrim(Cat);
    // The caller gets the printer's number of a new report type back, not the
    // application's (a walk returns the latter).
    if (ret == 0 && Cat == 6) *Reg = static_cast<std::uint8_t>(reg + kBaseRelatorio);
    if (ret == 0 && Cat == 5) ret = apos_criar_meio_pagamento();
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4RPCria%s - fim com ret=%d - Reg=%d\n", ret, Reg != nullptr ? *Reg : 0);
  return ret;
}

}  // extern "C"
