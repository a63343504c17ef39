// The measured operations and their session.
#include "operations.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include "orbelan.h"

namespace bench {

int itens_venda = 10;

namespace {

unsigned short primeiro_erro(unsigned short atual, unsigned short novo) { return atual != 0 ? atual : novo; }

Trace g_trace{-1, 0, 0};  // the session's; level -1 = no session
bool g_aberta = false;

// Writes `texto` to `caminho` in 4 KiB pieces. A log grows by small writes;
// a file written in one large piece is held in large page-cache units, which
// makes later overwrites in place several times dearer than in a log that
// grew line by line.
void grava(const char* caminho, const std::string& texto) {
  const int fd = ::open(caminho, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (fd < 0) return;
  constexpr std::size_t kPedaco = 4096;
  for (std::size_t i = 0; i < texto.size(); i += kPedaco)
    if (::write(fd, texto.data() + i, std::min(kPedaco, texto.size() - i)) < 0) std::perror(caminho);
  ::close(fd);
}

}  // namespace

unsigned short status() {
  char s[16] = {};
  return E4Status(s);
}

unsigned short venda() {
  unsigned short ret = E4IniCP(2, "");
  for (int i = 0; i < itens_venda; ++i)
    ret = primeiro_erro(ret, E4IteCF(20, "7891000100016", "ARROZ TIPO 1 5KG", "1000", "2490"));
  ret = primeiro_erro(ret, E4RegPag(60, "99999"));
  return primeiro_erro(ret, E4FimCP(0, "Volte sempre"));
}

unsigned short registradores() {
  unsigned short ret = E4RPPrim(5);
  char compl_[101] = {};
  char sinal = 0;
  unsigned char rp = 0;
  int lidos = 0;
  unsigned short r = 0;
  while ((r = E4RPProx(5, compl_, &sinal, &rp)) == 0) ++lidos;
  // The walk ends with "no more registers" after the nineteenth.
  if (r != E4_ERR_WALK_END || lidos != 19) ret = primeiro_erro(ret, r != 0 ? r : 1);
  return ret;
}

unsigned short dados_reducao() {
  std::array<char, 2250> buf{};
  return E4DadosReducao(buf.data());
}

unsigned short jornal() { return E4LeMFD(1, "000001", "999999", "jornal.txt"); }

unsigned short memoria_fiscal() {
  char valor[21] = {};
  return E4RegMemFisc(2190, valor);
}

const Operacao kOperacoes[6] = {
    {"Status", status},
    {"Sale10", venda},
    {"Registers19", registradores},
    {"ReductionData", dados_reducao},
    {"Journal1MiB", jornal},
    {"FiscalMemory2190", memoria_fiscal},
};

void preenche_log(const std::string& caminho, long bytes) {
  // Lines of old trace text, as a log in the field holds.
  static const std::string kLinha = "01/01/26 08:00:00 - Executa_FC_Operacao5600 - fim com ret=0 tamanho=0 \n";
  std::string texto;
  texto.reserve(static_cast<std::size_t>(bytes));
  while (static_cast<long>(texto.size()) + static_cast<long>(kLinha.size()) <= bytes) texto += kLinha;
  texto.append(static_cast<std::size_t>(bytes) - texto.size(), '.');
  grava(caminho.c_str(), texto);
}

bool abre_sessao(const Trace& t) {
  if (g_aberta && t.nivel == g_trace.nivel && t.limite == g_trace.limite && t.preenchido == g_trace.preenchido)
    return true;
  fecha_sessao();
  grava("Orbelan.cfg", "Trace=" + std::to_string(t.nivel) + "\nTamanho=" + std::to_string(t.limite));
  preenche_log("Orbelan.txt", t.nivel != 0 ? t.preenchido : 0);
  grava("NomeOper.cfg", "OPERADOR 01");
  g_aberta = E4Open(0, 0) == 0;
  g_trace = t;
  return g_aberta;
}

void fecha_sessao() {
  if (g_aberta) E4Close();
  g_aberta = false;
}

}  // namespace bench
