// A printer driver for benchmarking: the four entry points of libMrZandor.so,
// answering every command at once from a few canned replies. Nothing is
// recorded and nothing is modelled beyond what the measured roads need (the
// document state of a sale, the register a query echoes, the number of a
// fiscal-memory record, the packet counter of a journal transfer), so that the
// time measured is the library's and not the driver's.
//
// Reply sizes stay within the smallest buffer the library hands over for each
// command (the driver is never told the buffer's size).
#include <cstdint>
#include <cstring>

#include "fast_driver.h"

namespace {

using u8 = std::uint8_t;

// Commands not listed below answer an empty success.
int g_comandos = 0;          // FC_Operacao calls since the last reset
u8 g_estado = 0;             // document state reported by command 6
long g_bytes_jornal = 1L << 20;  // journal data a transfer hands out
int g_registros_mf = 2190;   // fiscal-memory records

// Calls kept for a replay of the driver alone (command, input length and the
// input bytes the replies depend on).
struct Chamada {
  int cmd;
  int flag;
  int inlen;
  u8 in[16];
};
constexpr int kMaxGravadas = 20000;
Chamada g_gravadas[kMaxGravadas];
int g_ngravadas = 0;
bool g_gravando = false;

// Register lists (command 38 lists them all; command 37 per category).
constexpr u8 kTodos[] = {20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 33, 34, 36, 37, 38, 39,
                         40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 51, 52, 53, 54,
                         60, 61, 62, 63, 64, 65, 66, 67, 68, 69, 70, 71, 72, 73, 74, 75, 76, 77, 78};
constexpr u8 kCat1[] = {1, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 51, 52, 53, 54, 0};
constexpr u8 kCat2[] = {2, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 33, 34, 0};
constexpr u8 kCat4[] = {4, 36, 37, 38, 39, 0};

// Status (command 5): paper present, nothing to report.
constexpr u8 kStatus[] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0};

// Journal text; its first 253 bytes are the data of one full packet (no NUL).
constexpr char kLinhaJornal[] =
    "COO:012345  CCF:004321  22/11/2026 10:41:07  ITEM 001 7891000100016 ARROZ TIPO 1 5KG     "
    "1,000 UN X 24,90 T1 18,00%      24,90  SUBTOTAL R$ 24,90  DINHEIRO 50,00  TROCO 25,10    "
    "OBRIGADO VOLTE SEMPRE  MD-5:3f2a9c1e7b6d4f80a1c2e3b4d5f6a7b8c9d0e1f2 ECF-IF VERSAO 01.0\n";
constexpr std::int32_t kDadosPacote = 253;
static_assert(sizeof kLinhaJornal - 1 >= kDadosPacote);

constexpr u8 kFimDados[] = {0xCF, 0xDE, 0xB3, 0xD1};

// The identity a session opening asks for (commands 21, 86, 236, 28, 61, 53, 10).
struct Canned {
  int cmd;
  u8 bytes[60];
  std::int32_t len;
};
constexpr Canned kIdentidade[] = {
    {21, {1, 'Z', 'D', '0', '1', '0', '2', '0', '3', '0', '4', '0', '5', '0', '6', '0', '7', '0', '8', '0', '9'}, 22},
    {86, {6, 'V', '0', '1', '.', '0', '5', '.', '0', '2'}, 10},
    {236, {'Z', 'A', 'N', 'D', 'O', 'R', 0, 'M', 'Z', '-', '5', '6', '0', '0', ' ', 'F', 'I'}, 18},
    {28, {0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
          '1', '2', '.', '3', '4', '5', '.', '6', '7', '8', '/', '0', '0', '0', '1', '-', '9', '0', 0,
          '1', '2', '3', '.', '4', '5', '6', '.', '7', '8', '9', '.', '1', '1', '0', 0,
          '4', '4', '5', '5', '6', '6', '7'}, 57},
    {61, {'0', '0', '1'}, 4},
    {53, {0}, 1},
    {10, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, '2', '2', '1', '1', '2', '0', '2', '6', '1', '0', '3', '0', 0,
          '2', '2', '1', '1', '2', '0', '2', '6'}, 33},
};

int responde(const u8* dados, std::int32_t n, u8* out, int* outlen) {
  if (out != nullptr && n > 0) std::memcpy(out, dados, static_cast<std::size_t>(n));
  if (outlen != nullptr) *outlen = n;
  return 0;
}

u8 bcd(int v) { return static_cast<u8>(((v / 10) % 10) << 4 | (v % 10)); }

// A register query's reply: the register echoed in byte 0, `texto` from `em`.
int eco(u8 reg, std::size_t em, const char* texto, u8* out, int* outlen) {
  u8 b[24] = {};
  b[0] = reg;
  const std::size_t n = std::strlen(texto);
  std::memcpy(b + em, texto, n);
  return responde(b, static_cast<std::int32_t>(em + n + 1), out, outlen);
}

int jornal(const u8* in, u8* out, int* outlen) {
  const long contador = in != nullptr ? in[0] | in[1] << 8 : 0;
  const long pacotes = (g_bytes_jornal + kDadosPacote - 1) / kDadosPacote;
  if (contador > pacotes) return responde(nullptr, 0, out, outlen);  // the end acknowledged
  u8 b[2 + kDadosPacote] = {};
  if (contador == pacotes) {
    std::memcpy(b + 2, kFimDados, sizeof kFimDados);
    return responde(b, 2 + sizeof kFimDados, out, outlen);
  }
  const long resto = g_bytes_jornal - contador * kDadosPacote;
  const std::int32_t n = resto < kDadosPacote ? static_cast<std::int32_t>(resto) : kDadosPacote;
  std::memcpy(b + 2, kLinhaJornal, static_cast<std::size_t>(n));
  return responde(b, 2 + n, out, outlen);
}

// Fiscal-memory record k (command 174): reduction number k, a date and a value.
int registro_mf(const u8* in, u8* out, int* outlen) {
  const int k = in != nullptr ? in[2] | in[3] << 8 : 0;
  if (k < 1 || k > g_registros_mf) {
    const u8 fim[] = {7};
    return responde(fim, 1, out, outlen);
  }
  const u8 b[] = {1,    0x22, 0x11, 0x26, 0x10, 0x41,  // DDMMYYhhmm
                  0x00, 0x00, 0x00, 0x01, 0x23, 0x45, 0x67, 0x89,  // value
                  bcd(k / 100), bcd(k % 100)};
  return responde(b, sizeof b, out, outlen);
}

}  // namespace

extern "C" {

FAST_DRIVER_API int FC_Inicializa(int* printer_id) {
  if (printer_id != nullptr) *printer_id = 1;
  return 0;
}

FAST_DRIVER_API int FC_Finaliza(void) { return 0; }

FAST_DRIVER_API int FC_VersaoSW(int) { return 0; }

FAST_DRIVER_API int FC_Operacao(int cmd, int flag, int, int inlen, unsigned char* inbuf, int* aux,
                                int* outlen, unsigned char* outbuf) {
  ++g_comandos;
  if (g_gravando && g_ngravadas < kMaxGravadas) {
    Chamada& c = g_gravadas[g_ngravadas++];
    c.cmd = cmd;
    c.flag = flag;
    c.inlen = inlen;
    std::memset(c.in, 0, sizeof c.in);
    if (inbuf != nullptr && inlen > 0)
      std::memcpy(c.in, inbuf, static_cast<std::size_t>(inlen < 16 ? inlen : 16));
  }
  if (aux != nullptr) *aux = 0;
  const u8* in = inlen > 0 ? inbuf : nullptr;
  const u8 reg = inlen > 2 && inbuf != nullptr ? inbuf[2] : 0;
  switch (cmd) {
    case 5:
      return responde(kStatus, sizeof kStatus, outbuf, outlen);
    case 6: {
      const u8 b[] = {g_estado, 0};
      return responde(b, sizeof b, outbuf, outlen);
    }
    // The sale road: opened (2), totalled (14), paid with change (15), closed (0).
    case 141: g_estado = 2; break;
    case 153: g_estado = 14; break;
    case 185:
    case 209: g_estado = 15; break;
    case 142: g_estado = 0; break;
    case 133:
      return eco(reg, 1, "000000000000012345", outbuf, outlen);
    case 136:
      return eco(reg, 1, "0000000000000360", outbuf, outlen);
    case 36:
      return eco(reg, 1, "18,00", outbuf, outlen);
    case 33:
      return eco(reg, 3, reg >= 60 ? "CARTAO CREDITO" : "SANGRIA", outbuf, outlen);
    case 38:
      return responde(kTodos, sizeof kTodos, outbuf, outlen);
    case 37:
      if (reg == 1) return responde(kCat1, sizeof kCat1, outbuf, outlen);
      if (reg == 2) return responde(kCat2, sizeof kCat2, outbuf, outlen);
      if (reg == 4) return responde(kCat4, sizeof kCat4, outbuf, outlen);
      break;
    case 241: {
      const u8 b[] = {1};
      return responde(b, sizeof b, outbuf, outlen);
    }
    case 139: {
      const u8 b[] = {0, '2', '2', '1', '1', '2', '0', '2', '6', 0};
      return responde(b, sizeof b, outbuf, outlen);
    }
    case 174:
      return registro_mf(in, outbuf, outlen);
    case 199:
      return jornal(in, outbuf, outlen);
    default:
      for (const Canned& c : kIdentidade)
        if (c.cmd == cmd) return responde(c.bytes, c.len, outbuf, outlen);
      break;
  }
  if (outlen != nullptr) *outlen = 0;
  return 0;
}

FAST_DRIVER_API void fd_reset(void) {
  g_comandos = 0;
  g_estado = 0;
}
FAST_DRIVER_API int fd_commands(void) { return g_comandos; }
FAST_DRIVER_API void fd_record(int on) {
  g_gravando = on != 0;
  if (g_gravando) g_ngravadas = 0;
}
FAST_DRIVER_API int fd_replay(void) {
  g_gravando = false;
  g_estado = 0;
  u8 out[300];
  int aux = 0;
  int len = 0;
  for (int i = 0; i < g_ngravadas; ++i) {
    Chamada& c = g_gravadas[i];
    FC_Operacao(c.cmd, c.flag, 0, c.inlen < 16 ? c.inlen : 16, c.in, &aux, &len, out);
  }
  return g_ngravadas;
}
FAST_DRIVER_API void fd_set_journal_bytes(long bytes) { g_bytes_jornal = bytes; }
FAST_DRIVER_API void fd_set_fiscal_records(int n) { g_registros_mf = n; }

}  // extern "C"
