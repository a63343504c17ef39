// Session open and close, and the configuration file reader.
#include "frame/session.h"

#include <fcntl.h>

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "agent/agent.h"
#include "frame/bridge.h"
#include "frame/dumplog.h"
#include "frame/identity.h"
#include "frame/lines.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/text.h"
#include "orbelan.h"
#include "peripherals/loader.h"
#include "peripherals/station.h"
#include "state/regpgto.h"

namespace orbelan {

std::int32_t OPENOK = 0;
std::int32_t FLAGPD = 0;
std::array<char, 3> sLowPaperCounter{};
std::int32_t iLowPaperCounter = 0;
std::array<char, 5> OVSetingsBuf{};
std::array<char, 9> OVULTermBuf{}, OVNomeTermBuf{}, OVCodSftwBuf{}, OVCodHrdwBuf{}, OVTipHrdwBuf{},
    OVCodFbrBuf{};
std::array<char, 20> ValorReducaoZ{};

namespace {

constexpr std::size_t kLinhaMax = 1100;  // longest configuration line looked at (agent groups hold 1024)

}  // namespace

int leChaveConfig(const char* section, const char* key, int width, char* dest) {
  const std::string_view secao = in_text(section);
  const std::string_view chave = in_text(key);
  if (width < 0) width = 0;
  // The line buffer is sized for the section, key and value, as a line holding
  // any of them must fit; it lives on the stack, so running out of memory (3)
  // cannot happen here.
  const std::size_t limite = std::min(secao.size() + chave.size() + static_cast<std::size_t>(width) + 1, kLinhaMax);
  std::array<char, kLinhaMax + 1> linha{};

  Fd fd(::open("quorvel.conf", O_RDONLY));
  if (!fd) {
    ORB_LOG("leChaveConfig%s Nao conseguiu abrir o arquivo quorvel.conf\n");
    return -1;
  }

  bool achou_secao = false;
  int n;
  while ((n = ler_linha(fd.get(), linha, static_cast<int>(limite))) >= 0) {
    const std::string_view l{linha.data(), static_cast<std::size_t>(n)};
    if (l.empty() || l.front() != '[') continue;
    const std::string_view nome = l.substr(1, l.find(']') == std::string_view::npos ? l.npos : l.find(']') - 1);
    if (nome == secao) {
      achou_secao = true;
      break;
    }
  }
  if (!achou_secao) {
    ORB_LOG("leChaveConfig%s Arquivo quorvel.conf nao contem a configuracao para %s \n", section != nullptr ? section : "");
    return 2;
  }

  // Every following line is looked at, later sections included; the key is
  // matched as a prefix of the line.
  while ((n = ler_linha(fd.get(), linha, static_cast<int>(limite))) >= 0) {
    const std::string_view l{linha.data(), static_cast<std::size_t>(n)};
    const auto igual = l.find('=');
    if (igual == std::string_view::npos || !l.starts_with(chave)) continue;
    // The value is cut to the width of its destination.
    const std::string_view valor = l.substr(igual + 1, static_cast<std::size_t>(width));
    if (dest != nullptr) copy_text(std::span<char>{dest, static_cast<std::size_t>(width) + 1}, valor);
    ORB_LOG1("leChaveConfig%s Chave %s=%s\n", key != nullptr ? key : "", dest != nullptr ? dest : "");
    return 0;
  }
  ORB_LOG("leChaveConfig%s Arquivo quorvel.conf nao contem a chave %s\n", key != nullptr ? key : "");
  return 1;
}

namespace {

template <std::size_t N>
int le_chave(const char* key, std::array<char, N>& dest) {
  dest.fill('\0');
  return leChaveConfig(kSecaoConfig, key, static_cast<int>(N - 1), dest.data());
}

}  // namespace

}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4Open(unsigned char /*a*/, unsigned char /*b*/) {
  ORB_LOCK();
  ORB_LOG("E4Open%s - inicio \n");
  int ret = 0;
  if (OPENOK == 1) {
    if (flagIniciaOV != 0) infOvitra(2868);
    ORB_LOG("E4Open%s - Erro ja iniciado\n");
    ret = 2868;
  }
  // A close that failed has unloaded the driver all the same and left the
  // session marked open; without loading it again here the session could
  // never be started again in this process.
  if (ret == 0 || !Driver_Carregado()) ret = CarregaLib();

  // Deliberately replaces the result so far: an open session or a missing
  // driver is forgotten here and the opening goes on (a missing driver then
  // fails when the printer is initialised).
  ret = le_chave("LowPaperCounter", sLowPaperCounter);
  // The thinning counter starts empty, so the first paper-low status of the
  // session is reported; E4Status reloads it from sLowPaperCounter after each
  // report.
  iLowPaperCounter = 0;

  ret = le_chave("OVSetings", OVSetingsBuf);
  if (ret == 0 && std::atoi(OVSetingsBuf.data()) != 0) {
    for (auto* chave : {&OVULTermBuf, &OVNomeTermBuf, &OVCodSftwBuf, &OVCodHrdwBuf, &OVTipHrdwBuf, &OVCodFbrBuf})
      chave->fill('\0');
    const std::pair<const char*, std::array<char, 9>*> chaves[] = {
        {"OVULTerm", &OVULTermBuf}, {"OVNomeTerm", &OVNomeTermBuf}, {"OVCodSftw", &OVCodSftwBuf},
        {"OVCodHrdw", &OVCodHrdwBuf}, {"OVTipHrdw", &OVTipHrdwBuf},   {"OVCodFbr", &OVCodFbrBuf}};
    for (const auto& [nome, destino] : chaves)
      if ((ret = le_chave(nome, *destino)) != 0) break;
  }
  if (ret == 0 && std::atoi(OVSetingsBuf.data()) != 0) {
    if (LoadlibInfOV() == 0) {
      ORB_LOG("E4Open%s Erro %d\n", 2900);
      closeLog();
      ret = 2900;
    } else if (iniciaOV() == 0) {
      ORB_LOG("E4Open%s Erro %d\n", 2900);
      closeLog();
      DescarregaLibInfOV();
      ret = 2900;
    } else {
      ConfiguraOV();  // a missing group key leaves the default groups
      ret = 0;
    }
  } else {
    // With the agent disabled, or a key or the file missing, the opening goes
    // on without it.
    ORB_LOG("E4Open%s OV nao iniciado OVSetingsBuf=%s ret=%d\n", OVSetingsBuf.data(), ret);
    ret = 0;
  }

  std::array<char, 2> tipo_pd{};
  if (ret == 0) le_chave("TIPO_PD", tipo_pd);
  // Only 0 and 1 are meaningful; any other value would mark peripherals in use
  // without loading them, so it counts as 0.
  FLAGPD = std::atoi(tipo_pd.data()) == 1 ? 1 : 0;
  ORB_LOG1("E4Open%s TIPO_PD[%d] \n", FLAGPD);
  if (FLAGPD == 1) ret = CarregaPerifericos();

  if (ret == 0) {
    ret = Executa_FC_Inicializa();
    if (ret == 0) OPENOK = 1;
  }
  if (FLAGPD != 0 && ret == 0) ret = IniciaPerifericos();

  using Recuperacao = std::uint16_t (*)();
  for (Recuperacao passo : {RecuperarNro_Serie_Fabricacao, RecuperarModeloFirmwareImpressora,
                            RecuperarDescricaoMarcaModeloImpressora, RecuperarCGC_IE_IM_Impressora,
                            RecuperarNro_Sequencial_ECF, RecuperarValor_IAT, EstadoReducao}) {
    if (ret != 0) break;
    ret = passo();
  }
  if (ret == 0) ret = trataArqRegPgtoOpen();
  if (flagIniciaOV != 0 && ret == 0) ret = EnviaInventarioOV();
  if (ret == 0) {
    // The document spacing for this printer type; neither result matters here.
    std::array<std::uint8_t, 2> espaco{};
    LerEspacoDocumento(espaco.data());
    EspacoDocumento(espaco.data());
  }

  const std::uint16_t final = TrataRetorno(ret);
  ORB_LOG("E4Open%s - fim com ret=%d \n", final);
  if (final != 0) {
    closeLog();
    CloseLibrary();
  }
  return final;
}

ORBELAN_API unsigned short E4OpenEsp(unsigned char* pa, unsigned char b) {
  ORB_LOCK();
  ORB_LOG("E4OpenEsp%s - inicio \n");
  const std::uint16_t ret = TrataRetorno(static_cast<std::uint16_t>(E4Open(pa != nullptr ? *pa : 0, b)));
  ORB_LOG("E4OpenEsp%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4Close(void) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4Close%s - inicio \n");
  if (ret == 0) ret = static_cast<std::uint16_t>(Executa_FC_Finaliza() & 0xFFFF);
  if (ret == 0) {
    LiberaLib();
    OPENOK = 0;
    FechaPerifericos();
    LiberaOV();
  }
  ORB_LOG("E4Close%s - fim com ret=%d \n", ret);
  if (ret == 0) {
    flagInfOV = 0;
    closeLog();
  }
  return ret;
}

}  // extern "C"
