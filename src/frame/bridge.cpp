// The printer driver bridge.
//
// Every entry point is looked up again at each call; a lookup fails when the
// loader reports an error, not when it returns a null address.
#include "frame/bridge.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>

#include "agent/agent.h"
#include "frame/command.h"
#include "frame/dumplog.h"
#include "peripherals/loader.h"

namespace orbelan {

void* handle_global = nullptr;
std::int32_t ProximoSequencial = 0;

namespace {

// The driver's calling convention: 32-bit integers throughout.
using FnInicializa = std::int32_t (*)(std::int32_t*);
using FnFinaliza = std::int32_t (*)();
using FnOperacao = std::int32_t (*)(std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                                    std::uint8_t*, std::int32_t*, std::int32_t*, std::uint8_t*);
using FnVersaoSW = std::int32_t (*)(std::int32_t);

constexpr std::uint16_t kSemLib = 2900;
constexpr std::uint16_t kEntradaInvalida = 2049;

// Remembered so the last loader message can be logged.
const char* ultimo_erro = nullptr;

// handle_global keeps its value after the driver is unloaded, as the session
// close expects; this tells whether it still refers to a loaded library, so a
// command issued after the close is refused instead of going through a stale
// handle.
bool driver_carregado = false;

void* driver() { return driver_carregado ? handle_global : nullptr; }

}  // namespace

bool Driver_Carregado() { return driver_carregado; }

void* procura_simbolo(void* lib, const char* name) {
  dlerror();
  void* sym = dlsym(lib, name);
  ultimo_erro = dlerror();
  return ultimo_erro != nullptr ? nullptr : sym;
}

std::uint16_t CarregaLib() {
  AbreArquivoLog();
  ORB_LOG("CarregaLib%s - inicio \n");
  char nome[200];
  std::snprintf(nome, sizeof nome, "lib%s.so", "MrZandor");
  std::uint16_t ret = 0;
  handle_global = dlopen(nome, RTLD_LAZY);
  driver_carregado = handle_global != nullptr;
  if (handle_global == nullptr) {
    ORB_LOG("CarregaLib%s Erro ao carregar a Lib %s\n", nome);
    ret = kSemLib;
  }
  ORB_LOG("CarregaLib%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t LiberaLib() {
  ORB_LOG("LiberaLib%s - inicio \n");
  if (handle_global == nullptr) {
    ORB_LOG("LiberaLib%s Lib nao carregada!\n");
    return kSemLib;
  }
  ORB_LOG("LiberaLib%s - fim com ret=%d \n", 0);
  return 0;
}

std::int32_t Executa_FC_Inicializa() {
  ORB_LOG("Executa_FC_Inicializa%s - inicio \n");
  std::int32_t ret = kSemLib;
  if (driver() == nullptr) {
    ORB_LOG("Executa_FC_Inicializa%s Erro ao carregar a Lib \n");
  } else if (auto fn = reinterpret_cast<FnInicializa>(procura_simbolo(driver(), "FC_Inicializa"));
             fn == nullptr) {
    ORB_LOG("Executa_FC_Inicializa%s Erro no dlsym - erro=%s \n", ultimo_erro != nullptr ? ultimo_erro : "");
  } else {
    std::int32_t printID = 0;
    ret = fn(&printID);
    ORB_LOG("Executa_FC_Inicializa%s - printID=%d \n", printID);
  }
  ORB_LOG("Executa_FC_Inicializa%s - fim com ret=%d \n", ret);
  return ret;
}

std::int32_t Executa_FC_Finaliza() {
  ORB_LOG("Executa_FC_Finaliza%s - inicio \n");
  std::int32_t ret = kSemLib;
  if (driver() == nullptr) {
    ORB_LOG("Executa_FC_Finaliza%s Lib nao carregada!\n");
  } else {
    if (auto fn = reinterpret_cast<FnFinaliza>(procura_simbolo(driver(), "FC_Finaliza")); fn == nullptr)
      ORB_LOG("Executa_FC_Finaliza%s Erro no dlsym\n");
    else
      ret = fn();
    // The driver is unloaded whatever its finish returned; the handle keeps its
    // value (the next load overwrites it).
    FreeMemLibrary(handle_global);
    driver_carregado = false;
  }
  ORB_LOG("Executa_FC_Finaliza%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t Executa_FC_Operacao(std::int32_t cmd, std::int32_t flag, std::int32_t mode,
                                  std::int32_t inlen, std::uint8_t* inbuf, std::int32_t* aux,
                                  std::int32_t* outlen, std::uint8_t* outbuf) {
  ORB_LOG("Executa_FC_Operacao%s - inicio - cmd=%d\n", cmd);
  std::uint16_t ret = kSemLib;
  if (driver() == nullptr) {
    ORB_LOG("Executa_FC_Operacao%s Lib nao carregada!\n");
  } else if (auto fn = reinterpret_cast<FnOperacao>(procura_simbolo(driver(), "FC_Operacao"));
             fn == nullptr) {
    ORB_LOG("Executa_FC_Operacao%s Erro no dlsym\n");
  } else {
    ret = static_cast<std::uint16_t>(fn(cmd, flag, mode, inlen, inbuf, aux, outlen, outbuf) & 0xFFFF);
  }
  ORB_LOG("Executa_FC_Operacao%s - fim com ret=%d tamanho=%d \n", ret, outlen != nullptr ? *outlen : 0);
  return ret;
}

void Executa_FC_VersaoSW(std::int32_t arg) {
  ORB_LOG("Executa_FC_VersaoSW%s - inicio \n");
  std::int32_t ret = kSemLib;
  if (driver() == nullptr) {
    ORB_LOG("Executa_FC_VersaoSW%s Lib nao carregada!\n");
  } else if (auto fn = reinterpret_cast<FnVersaoSW>(procura_simbolo(driver(), "FC_VersaoSW"));
             fn == nullptr) {
    ORB_LOG("Executa_FC_VersaoSW%s Erro no dlsym\n");
  } else {
    ret = fn(arg);
  }
  ORB_LOG("Executa_FC_VersaoSW%s - fim com ret=%d \n", ret);
}

void Proximo_Sequencial(std::uint8_t* buf) {
  if (++ProximoSequencial > 255) ProximoSequencial = 1;
  buf[0] = static_cast<std::uint8_t>(ProximoSequencial & 0xFF);
  buf[1] = static_cast<std::uint8_t>((ProximoSequencial >> 8) & 0xFF);
}

void FreeMemLibrary(void* handle) {
  if (handle != nullptr) dlclose(handle);
}

void CloseLibrary() {
  // The peripheral libraries and the monitoring plug-in are released; the
  // printer driver itself stays loaded.
  FechaPerifericos();
  LiberaOV();
}

std::uint16_t executa_raw(int cmd, int flag, int mode, Input& in, std::uint8_t* out,
                          std::size_t outsize, std::int32_t& outlen) {
  if (!in.ok()) return kEntradaInvalida;  // never send a command that did not fit
  std::int32_t aux = 0;
  std::int32_t reported = 0;
  const std::uint16_t ret = Executa_FC_Operacao(cmd, flag, mode, in.size(), in.data(), &aux, &reported, out);
  outlen = std::clamp<std::int32_t>(reported, 0, static_cast<std::int32_t>(outsize));
  return ret;
}

}  // namespace orbelan
