// The document-processor libraries: loading, entry points, result translation
// and their part in the session open and close.
#include "peripherals/loader.h"

#include <dlfcn.h>

#include "agent/agent.h"
#include "frame/bridge.h"
#include "frame/dumplog.h"
#include "frame/session.h"

namespace orbelan {

void* pd_chequeHandle = nullptr;
void* pd_autenticaHandle = nullptr;
void* pd_cmc7Handle = nullptr;

PdSemArgs Inicia_Pd_cheque = nullptr;
PdSemArgs Fecha_Pd_cheque = nullptr;
PdPreencheCheque Opera_Pd_cheque = nullptr;
PdSemArgs Inicia_Pd_autentica = nullptr;
PdSemArgs Fecha_Pd_autentica = nullptr;
PdAutentica Opera_Pd_autentica = nullptr;
PdCarregaECF CarregaECF_Pd_autentica = nullptr;
PdSemArgs Inicia_Pd_cmc7 = nullptr;
PdSemArgs Fecha_Pd_cmc7 = nullptr;
PdSemArgs Buffer_Pd_cmc7 = nullptr;
PdReadCmc7 Read_Pd_cmc7 = nullptr;
PdSemArgs Clean_Pd_cmc7 = nullptr;

namespace {

constexpr std::uint16_t kSemLib = 2900;
constexpr std::uint16_t kFalhaInicio = 2859;

// Opens `lib` by its bare name (the loader's search path decides where).
bool abre(const char* loader, const char* lib, void*& handle) {
  // A library still loaded by an earlier opening (one that failed after it, or
  // an opening repeated while open) is released first, so repeated openings
  // do not pile up references to it.
  if (handle != nullptr) dlclose(handle);
  handle = dlopen(lib, RTLD_LAZY);
  if (handle == nullptr) dumpLog("%s%s %s nao encontrada\n", loader, trace_version(), lib);
  return handle != nullptr;
}

// One entry point of a library: its symbol, its name in the message when it is
// missing, and where its address goes.
template <typename Fn>
struct Entrada {
  const char* simbolo;
  const char* rotulo;
  Fn& destino;
};

template <typename Fn>
Entrada<Fn> entrada(const char* simbolo, Fn& destino, const char* rotulo = nullptr) {
  return {simbolo, rotulo != nullptr ? rotulo : simbolo, destino};
}

// Resolves one entry point. Entry points resolved before a missing one stay
// set, and the library stays open.
template <typename Fn>
bool resolve(const char* loader, void* handle, const Entrada<Fn>& e) {
  void* p = procura_simbolo(handle, e.simbolo);
  if (p == nullptr) {
    dumpLog("%s%s Erro funcao %s nao encontrada\n", loader, trace_version(), e.rotulo);
    return false;
  }
  e.destino = reinterpret_cast<Fn>(p);
  return true;
}

// Opens `lib` into `handle` and resolves its entry points in order, stopping
// at the first that fails; traced under the name of the function `loader`.
// 1 when all are resolved.
template <typename... Fn>
int carrega(const char* loader, const char* lib, void*& handle, const Entrada<Fn>&... entradas) {
  return abre(loader, lib, handle) && (resolve(loader, handle, entradas) && ...) ? 1 : 0;
}

void fecha(void*& handle, PdSemArgs fecha_fn) {
  if (handle == nullptr) return;
  if (fecha_fn != nullptr) fecha_fn();
  dlclose(handle);
  handle = nullptr;
}

struct Traducao {
  int de, ate;
  std::uint16_t para;
};

// Peripheral results and their library codes; values between the ranges are
// not translated.
constexpr Traducao kTabela[] = {
    {-99, -99, 2560}, {-5, -3, 2648},   {257, 258, 2561}, {263, 263, 2561}, {294, 294, 2872},
    {307, 307, 2871}, {311, 311, 2871}, {313, 313, 2706}, {321, 321, 2049}, {324, 324, 2871},
    {326, 326, 2872}, {328, 328, 2561}, {333, 334, 2049}, {362, 363, 2561}, {416, 416, 2049},
    {417, 417, 2881}, {418, 419, 2049}, {420, 420, 2573}, {421, 423, 2049}, {425, 425, 2049},
    {426, 428, 2873}, {430, 431, 2873}, {433, 433, 2049}, {436, 436, 2745}, {439, 439, 2560},
    {513, 513, 2706}, {514, 516, 2648}, {517, 517, 2561}, {518, 519, 2706}, {520, 522, 2561},
    {523, 527, 2635}, {528, 528, 2706}, {529, 529, 2561}, {530, 530, 2635}, {531, 531, 2561},
};

}  // namespace

int LoadPd_chequeApi() {
  // The messages spell the first two with a capital C, unlike the symbols.
  return carrega("LoadPd_chequeApi", "libpd_cheque.so", pd_chequeHandle,
                 entrada("Open_cheque", Inicia_Pd_cheque, "Open_Cheque"),
                 entrada("Close_cheque", Fecha_Pd_cheque, "Close_Cheque"), entrada("PreencheCheque", Opera_Pd_cheque));
}

int LoadPd_AutenticaApi() {
  return carrega("LoadPd_AutenticaApi", "libpd_autentica.so", pd_autenticaHandle,
                 entrada("openAutentica", Inicia_Pd_autentica), entrada("closeAutentica", Fecha_Pd_autentica),
                 entrada("autentica", Opera_Pd_autentica), entrada("carregaECF", CarregaECF_Pd_autentica));
}

int LoadPd_cmc7Api() {
  return carrega("LoadPd_cmc7Api", "libpd_cmc7.so", pd_cmc7Handle, entrada("openCmc7", Inicia_Pd_cmc7),
                 entrada("closeCmc7", Fecha_Pd_cmc7), entrada("bufferCmc7", Buffer_Pd_cmc7),
                 entrada("readCmc7", Read_Pd_cmc7), entrada("cleanCmc7", Clean_Pd_cmc7));
}

std::uint16_t TrataRetornoProcDoc(int ret) {
  auto traduzido = static_cast<std::uint16_t>(ret);
  for (const auto& t : kTabela)
    if (ret >= t.de && ret <= t.ate) traduzido = t.para;
  if (traduzido != 0) ORB_LOG("TrataRetorno%s erro=%d  erro_ECF=%d\n", traduzido, ret);
  infOvitra(traduzido);
  return traduzido;
}

std::uint16_t CarregaPerifericos() {
  FLAGPD = LoadPd_chequeApi();
  if (FLAGPD == 0) {
    ORB_LOG("E4Open%s Erro apos LoadPd_chequeApi\n");
    return kSemLib;
  }
  FLAGPD = LoadPd_AutenticaApi();
  if (FLAGPD == 0) {
    ORB_LOG("E4Open%s Erro apos LoadPd_AutenticaApi\n");
    return kSemLib;
  }
  FLAGPD = LoadPd_cmc7Api();
  if (FLAGPD == 0) {
    ORB_LOG("E4Open%s Erro apos LoadPd_cmc7Api\n");
    return kSemLib;
  }
  return 0;
}

std::uint16_t IniciaPerifericos() {
  const struct {
    PdSemArgs inicia;
    const char* nome;
  } dispositivos[] = {
      {Inicia_Pd_cheque, "Inicia_Pd_cheque"},
      {Inicia_Pd_autentica, "Inicia_Pd_autentica"},
      {Inicia_Pd_cmc7, "Inicia_Pd_cmc7"},
  };
  for (const auto& d : dispositivos) {
    // Only reached with every entry point resolved; a null one counts as a
    // failed start rather than a call through nothing.
    const int r = d.inicia != nullptr ? d.inicia() : -1;
    if (r != 0) {
      ORB_LOG("E4Open%s Erro[%d] apos %s\n", r, d.nome);
      return kFalhaInicio;
    }
  }
  return 0;
}

void FechaPerifericos() {
  if (FLAGPD == 0) return;
  fecha(pd_chequeHandle, Fecha_Pd_cheque);
  fecha(pd_autenticaHandle, Fecha_Pd_autentica);
  fecha(pd_cmc7Handle, Fecha_Pd_cmc7);
  // The entry points still hold the addresses of the unloaded libraries; with
  // FLAGPD cleared no later request (an authentication or CMC7 reading made
  // after the close, which the session check does not stop) is routed to them.
  FLAGPD = 0;
}

}  // namespace orbelan
