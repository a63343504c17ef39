// The X reading and the Z reduction, both printed by the printer on request
// and both followed by a paper cut.
#include "registers/readings.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <string>
#include <string_view>

#include "agent/agent.h"
#include "documents/closing.h"
#include "documents/reports.h"
#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/identity.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"
#include "state/documents.h"

namespace orbelan {

namespace {

// Availability poll after a reduction: ten tries, five seconds after the
// first failure and one after each later one.
constexpr int kTentativasDisponibilidade = 10;
constexpr unsigned kEsperaInicialUs = 100000;
constexpr unsigned kEsperaPrimeiraS = 5;
constexpr unsigned kEsperaSeguintesS = 1;

// The number in the first two characters of `s`, read up to the first
// non-digit (so "" and "x1" give 0).
int dois_digitos(std::string_view s) {
  int n = 0;
  for (std::size_t i = 0; i < 2 && i < s.size() && s[i] >= '0' && s[i] <= '9'; ++i) n = n * 10 + (s[i] - '0');
  return n;
}

// The operator's name, as the reading commands carry it.
std::uint16_t le_operador(std::array<char, 21>& operador) {
  operador.fill('\0');
  const std::uint16_t ret = Ler_Operador(operador.data());
  operador.back() = '\0';
  return ret;
}

// Operator name (left out when empty, no terminator) and two zero bytes.
void operador_e_zeros(Input& in, const std::array<char, 21>& operador) {
  in.seq().raw(view(operador)).zeros(2);
}

}  // namespace

std::uint16_t CalcularMinutos(const char* Texto, std::uint8_t* Valor) {
  // Only the first four characters are looked at.
  const std::string_view texto = in_text(Texto, 4);
  int h = dois_digitos(texto);
  const int m = dois_digitos(texto.size() > 2 ? texto.substr(2) : std::string_view{});
  if (h < 5 && m > 0) h = h + 1;
  if (h > 4) h = 5;
  if (Valor != nullptr) *Valor = static_cast<std::uint8_t>(h);
  return 0;
}

std::uint16_t LeituraX(const char* Param) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("LeituraX%s - inicio \n");
  std::array<char, 21> operador{};
  if (ret == 0) ret = le_operador(operador);
  if (ret == 0) {
    Input in;
    operador_e_zeros(in, operador);
    Reply<10> r;
    ret = executa(160, 0, in, r);
  }
  if (ret == 0) {
    // A failed cut is reported, and no report is opened on a printer that
    // cannot cut.
    ret = CortedePapel();
    if (ret == 0 && in_text(Param, 1) == "1") ret = Abre_Gerencial(0);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("LeituraX%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t ReducaoZ(const char* Hora) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  // Byte 0 is the flag, bytes 1..4 the time; nothing past them is read.
  const std::string_view hora = in_text(Hora, 5);
  ORB_LOG("ReducaoZ%s - inicio - Hora=%s \n", std::string(hora).c_str());
  std::array<char, 21> operador{};
  if (ret == 0) ret = le_operador(operador);
  if (ret == 0) {
    Input in;
    operador_e_zeros(in, operador);
    if (!hora.empty()) {
      std::uint8_t minutos = 0;
      CalcularMinutos(std::string(hora.substr(1)).c_str(), &minutos);
      in.byte(static_cast<std::uint8_t>(hora[0])).byte(minutos);
    }
    Reply<10> r;
    ret = executa(162, 0, in, r);
    if (ret != 0 && flagIniciaOV != 0) {
      std::array<char, 40> detalhe{};
      std::snprintf(detalhe.data(), detalhe.size(), "|Erro Impressora = %d||", ret);
      informaOV("2950    ", tipoInfGrupo3.data(), "Erro ao emitir Reducao Z", detalhe.data());
    }
  }
  if (ret == 0) {
    // The reduction is accepted; the printer goes on printing the fiscal
    // memory report after it and answers again once that is done.
    usleep(kEsperaInicialUs);
    std::uint16_t disponivel = 0;
    for (int tentativa = 0; tentativa < kTentativasDisponibilidade; ++tentativa) {
      Input vazio;  // not even the sequence field
      Reply<10> r;
      disponivel = executa(1, 1, vazio, r);
      if (disponivel == 0) break;
      if (tentativa == 0) {
        ORB_LOG("ReducaoZ%s Aguardando 5s para impressao automatica da MF...\n");
        sleep(kEsperaPrimeiraS);
      } else {
        ORB_LOG("ReducaoZ%s Aguardando mais 1s...\n");
        sleep(kEsperaSeguintesS);
      }
    }
    ORB_LOG("ReducaoZ%s verificada a disponibilidade ret=%d\n", disponivel);
    // A printer still busy is no failure of the reduction.
    ret = 0;
  }
  if (ret == 0) ret = CortedePapel();
  if (ret == 0) ret = EstadoReducao();
  ret = TrataRetorno(ret);
  ORB_LOG("ReducaoZ%s - fim com ret=%d \n", ret);
  return ret;
}

}  // namespace orbelan
