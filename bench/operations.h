// The measured operations, as a sale application calls them, and the session
// they run in.
#pragma once

#include <string>

namespace bench {

// One measured operation: a name and the calls it makes. `run` returns the
// first nonzero result code met, or 0.
struct Operacao {
  const char* nome;
  unsigned short (*run)();
};

// E4Status.
unsigned short status();
// A whole sale of `itens_venda` items (default 10): opening, items, one cash
// payment with change, closing with message and cut.
unsigned short venda();
extern int itens_venda;
// E4RPPrim over the payment methods, then E4RPProx until the end of the walk.
unsigned short registradores();
// E4DadosReducao.
unsigned short dados_reducao();
// E4LeMFD by COO range into "jornal.txt" (size set on the driver).
unsigned short jornal();
// E4RegMemFisc for the last of the printer's fiscal-memory records.
unsigned short memoria_fiscal();

// The operations above, in the order they are reported.
extern const Operacao kOperacoes[6];

// How the trace log is set up for a session.
struct Trace {
  int nivel = 0;                 // "Trace=" level; 0 = off
  long limite = 5000000;         // "Tamanho="
  long preenchido = 5000000;     // bytes the log holds when the session opens
};

// (Re)opens the session in the current directory with the trace set up as
// asked (nothing happens when it is already open that way). False if E4Open
// failed.
bool abre_sessao(const Trace& t);
void fecha_sessao();

// Writes `bytes` of old log text to `caminho` (replacing it).
void preenche_log(const std::string& caminho, long bytes);

}  // namespace bench
