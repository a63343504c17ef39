// Cheque filling: the per-bank layouts of "Cheque.dat", the cheque command,
// and the insertion and removal of the cheque in the printer's document station.
#include "peripherals/cheque.h"

#include <unistd.h>

#include <span>
#include <string_view>

#include "agent/agent.h"
#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/encodings.h"
#include "frame/identity.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"
#include "orbelan.h"
#include "peripherals/loader.h"
#include "peripherals/station.h"

namespace orbelan {

namespace {

// Every bank starts without a record, so a lookup before the first load finds
// nothing rather than record 0.
constexpr std::array<std::uint32_t, kBancos> sem_layouts() {
  std::array<std::uint32_t, kBancos> v{};
  v.fill(kSemLayout);
  return v;
}

}  // namespace

std::array<std::uint8_t, kTamRegistroLayout> LayOut{};
std::array<std::uint32_t, kBancos> vLayOut = sem_layouts();
std::FILE* fLayOut = nullptr;
std::array<char, 100> novoNome{}, novoCidade{}, novoLinAdic1{}, novoLinAdic2{};

namespace {

constexpr std::uint16_t kSemArquivo = 2560;
constexpr std::uint16_t kNaoDisponivel = 2561;
constexpr std::uint16_t kSemPapel = 2871;
constexpr std::uint16_t kNaoRetirado = 2872;
constexpr std::uint16_t kSemLayoutBanco = 2880;
constexpr std::uint16_t kSemLib = 2900;
constexpr std::uint16_t kBancoDefault = 999;
constexpr std::size_t kMaxComando = 255;  // longest cheque command the printer takes

// Widest text of each field of the command.
constexpr std::size_t kMaxValor = 15, kMaxCidade = 31, kMaxData = 9, kMaxNome = 81, kMaxLinAdic = 61;

// Field of the record: the low byte of the 16-bit value at `offset`.
std::uint8_t campo(std::size_t offset) { return LayOut[offset]; }
// Difference of two vertical positions, taken in 8 bits (it wraps).
std::uint8_t dif(std::size_t a, std::size_t b) { return static_cast<std::uint8_t>(campo(a) - campo(b)); }

void fecha_layouts() {
  if (fLayOut != nullptr) std::fclose(fLayOut);
  fLayOut = nullptr;
}

std::uint16_t falha_layout() {
  infOvitra(kSemLayoutBanco);
  return kSemLayoutBanco;
}

// Copies a caller's text into a 100-byte buffer and converts it to the
// printer's code page there.
void converte(std::array<char, 100>& destino, const char* texto) {
  copy_text(destino, in_text(texto, destino.size() - 1));
  ConversaoCP850(destino, destino);
}

// One status read of the document station (command 5); reply bytes 0, 2 and 3
// are looked at.
std::uint16_t le_estado(Reply<20>& r) {
  Input in;  // a status read carries no sequence field
  return executa(5, 1, in, r);
}

}  // namespace

int CalcCIL(int bank) {
  switch (bank) {
    case 1: return 92;
    case 4: return 103;
    case 23: return 106;
    case 27: return 93;
    case 33: return 91;
    case 39: return 110;
    case 104: return 100;
    case 151: return 112;
    case 237: return 106;
    case 341: return 92;
    case 356: return 97;
    case 399: return 86;
    case 409: return 100;
    case 422: return 87;
    case 745: return 97;
    case 756: return 92;
    case 999: return 92;
    default: return 107;
  }
}

std::uint16_t XCarregaLayOutCheques() {
  // The handle of the previous load is released here (and at the end of each
  // cheque): keeping one open handle per cheque would exhaust the process's
  // descriptors in a long-running application.
  fecha_layouts();
  fLayOut = std::fopen("Cheque.dat", "rb");
  if (fLayOut == nullptr) return kSemArquivo;
  vLayOut.fill(kSemLayout);
  std::array<std::uint8_t, kTamRegistroLayout> registro{};
  for (std::uint32_t n = 0; std::fread(registro.data(), 1, registro.size(), fLayOut) == registro.size(); ++n) {
    const unsigned banco = registro[0] | (registro[1] << 8);
    // A record naming a bank above 999 has no index entry: it is skipped.
    if (banco < kBancos) vLayOut[banco] = n;  // a bank present twice keeps its last record
  }
  return 0;
}

std::uint16_t E4ImpChqPD(std::uint16_t Banco, const char* Nome, const char* Cidade, const char* Data,
                         const char* Valor, const char* LinAdic1, const char* LinAdic2, int FlagPD) {
  if (Banco >= kBancos) return falha_layout();
  int banco = Banco;
  if (vLayOut[banco] == kSemLayout) {
    if (vLayOut[kBancoDefault] == kSemLayout) return falha_layout();
    ORB_LOG("E4ImpChqPD%s Banco %d nao cadastrado, assumindo layout default.\n", banco);
    banco = kBancoDefault;
  }
  const long posicao = static_cast<long>(vLayOut[banco]) * static_cast<long>(kTamRegistroLayout);
  if (fLayOut == nullptr || std::fseek(fLayOut, posicao, SEEK_SET) != 0 ||
      std::fread(LayOut.data(), 1, LayOut.size(), fLayOut) != LayOut.size())
    return falha_layout();

  // City fit: the city line ends where the date begins (posCIL); a city wider
  // than the room left of it moves the date right. A character takes 2.5
  // column units.
  const std::string_view cidade = in_text(Cidade);
  int posCIL = CalcCIL(banco);
  const int cid = static_cast<std::int8_t>(campo(76));
  const int espLocal = posCIL - cid;
  const int tamCidade = static_cast<int>(static_cast<double>(cidade.size()) * 2.5);
  dumpLog("tamCidade[%d], espLocal[%d] = posCIL[%d] - CID[%d]\n", tamCidade, espLocal, posCIL, cid);
  if (espLocal < tamCidade) {
    posCIL += tamCidade - espLocal;
    ORB_LOG("E4ImpChqPD%s Ajustando CIL = %d\n", posCIL);
  }

  Input in;
  in.seq()
      .byte(static_cast<std::uint8_t>(campo(70) - (FlagPD != 0 ? 0 : 3)))
      .byte(dif(56, 58))
      .byte(campo(78))
      .byte(dif(62, 58))
      .byte(0x90)
      .byte(dif(64, 62))
      .byte(0x90)
      .byte(dif(66, 64))
      .byte(0x90)
      .byte(dif(68, 66))
      .byte(static_cast<std::uint8_t>(posCIL))  // a column past 255 is sent as its low byte
      .byte(campo(76))
      .byte(campo(74))
      .byte(campo(72))
      .byte(dif(60, 68))
      .byte(0x82)
      .byte(dif(82, 60))
      .byte(0x82)
      .byte(0xFF);
  for (int i = 0; i < 7; ++i) in.byte(4);
  in.byte(2).byte(4).byte(4);
  in.text(in_text(Valor, kMaxValor))
      .text(cidade.substr(0, kMaxCidade))
      .text(in_text(Data, kMaxData))
      .text(in_text(Nome, kMaxNome))
      .text(in_text(LinAdic1, kMaxLinAdic))
      .text(in_text(LinAdic2, kMaxLinAdic))
      .raw("*");
  if (static_cast<std::size_t>(in.size()) > kMaxComando) return kNaoDisponivel;

  if (FlagPD != 0) {
    if (Opera_Pd_cheque == nullptr) return kSemLib;  // only with the cheque library loaded
    return TrataRetornoProcDoc(Opera_Pd_cheque(in.size(), in.data()));
  }
  Reply<10> r;
  return executa(104, 0, in, r);  // translated by the caller
}

}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4ImpChq(unsigned short Banco, const char* Nome, const char* Cidade, const char* Data,
                                    const char* Valor, const char* LinAdic1, const char* LinAdic2) {
  ORB_LOCK();
  auto t = [](const char* s) { return s != nullptr ? s : ""; };
  ORB_LOG("E4ImpChq%s Banco=%d Nome=%s Cidade=%s Data=%s Valor=%s LinAdic1=%s LinAdic2=%s\n", Banco, t(Nome),
          t(Cidade), t(Data), t(Valor), t(LinAdic1), t(LinAdic2));
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  if (ret == 0) {
    for (auto* b : {&novoNome, &novoCidade, &novoLinAdic1, &novoLinAdic2}) b->fill('\0');
    if (const std::uint16_t carga = XCarregaLayOutCheques(); carga != 0) {
      infOvitra(carga);
      ORB_LOG("E4ImpChq%s Erro retornado pelo XCarregaLayOutCheques [%d]\n", carga);
      return carga;
    }

    if (FLAGPD != 0) {
      ret = E4ImpChqPD(Banco, Nome, Cidade, Data, Valor, LinAdic1, LinAdic2, FLAGPD);
      fecha_layouts();
      if (ret != 0) ORB_LOG("E4ImpChq%s Erro retornado pelo procdoc [%d]\n", ret);
      return TrataRetornoProcDoc(ret);
    }

    converte(novoNome, Nome);
    converte(novoCidade, Cidade);
    converte(novoLinAdic1, LinAdic1);
    converte(novoLinAdic2, LinAdic2);
    if (TipoImp != 6) {
      ORB_LOG("E4ImpChq%s Funcao invalida para a impressora tipo %d\n", TipoImp);
      ret = kNaoDisponivel;
    }
  }

  bool inserido = false;
  Reply<20> st;
  if (ret == 0) {
    // Insertion: up to 10 rounds of 1 s for the sensor (byte 3) to see the
    // cheque, then up to 10 reads 100 ms apart while it stays seen.
    for (int rodada = 0; rodada < 10; ++rodada) {
      sleep(1);
      ret = le_estado(st);
      if (ret != 0 || st[3] != 0) break;
    }
    if (ret == 0 && st[3] == 1) {
      for (int leitura = 0; leitura < 10; ++leitura) {
        usleep(100000);
        ret = le_estado(st);
        if (ret != 0 || st[3] != 1) break;
      }
    }
    inserido = ret == 0 && st[3] == 1;
    if (ret == 0 && !inserido) ret = kSemPapel;
  }

  if (inserido) {
    ret = Seleciona_Dispositivo(kEstacaoDocumento);
    sleep(4);
    if (ret == 0)
      ret = E4ImpChqPD(Banco, novoNome.data(), novoCidade.data(), Data, Valor, novoLinAdic1.data(),
                       novoLinAdic2.data(), 0);
    if (ret != 0) {
      ORB_LOG("E4ImpChq%s Restaurar dispositivo \n");
      Seleciona_Dispositivo(kEstacaoCupom);
    } else {
      // Removal: up to 10 reads 2 s apart while either sensor still sees the
      // cheque. The document station stays selected.
      for (int leitura = 0; leitura < 10; ++leitura) {
        sleep(2);
        ret = le_estado(st);
        if (ret != 0 || st[0] == '2' || (st[3] != 1 && st[2] != 1)) break;
      }
      if (ret == 0 && (st[3] == 1 || st[2] == 1)) ret = kNaoRetirado;
    }
  }
  fecha_layouts();

  ret = TrataRetorno(ret);
  ORB_LOG("E4ImpChq%s - fim com ret=%d \n", ret);
  return ret;
}

}  // extern "C"
