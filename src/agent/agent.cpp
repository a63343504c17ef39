// The monitoring agent: its plug-in, the terminal's registration with it, the
// report groups, and the events sent to it.
#include "agent/agent.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string_view>

#include "frame/dumplog.h"
#include "frame/identity.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"
#include "orbelan.h"
#include "registers/journal.h"
#include "registers/values.h"

namespace orbelan {

namespace {

constexpr const char* kPluginOV = "/usr/share/OVAgented/libOAPlugin.so";

// The plug-in's entry points; every one returns nonzero for success.
using FnStartInfOV = int (*)(const char* nomeTerm, const char* ulTerm, int tempo);
using FnSendInf = int (*)(const char* codInf, const char* tipoInf, const char* campo1, const char* campo2,
                          const char* codFbr, int zero1, int zero2, const char* compl_);
using FnSendInfGen = int (*)(const char* mensagem);
using FnStopInfOV = int (*)(int zero);

FnStartInfOV StartInfOV = nullptr;
FnSendInf SendInf = nullptr;
FnSendInfGen SendInfGen = nullptr;
FnStopInfOV StopInfOV = nullptr;

// The number StartInfOV receives after the terminal's two texts.
constexpr int kTempoOV = 60;

using Grupo = std::array<std::int32_t, kCodigosPorGrupo>;

struct Faixa {
  std::int32_t de;
  std::int32_t ate;
};

// The default report groups, ascending.
constexpr Faixa kDefaultGrupo1[] = {
    {2563, 2564}, {2576, 2576}, {2585, 2585}, {2595, 2595}, {2612, 2613}, {2653, 2653},
    {2655, 2657}, {2661, 2661}, {2666, 2666}, {2683, 2683}, {2693, 2693}, {2698, 2698},
    {2702, 2703}, {2845, 2850}, {2858, 2858}, {2871, 2873}, {2898, 2898}};
constexpr Faixa kDefaultGrupo2[] = {{2570, 2570}, {2579, 2580}, {2592, 2592}, {2635, 2635},
                                    {2648, 2648}, {2670, 2670}, {2740, 2750}, {2859, 2860}};
constexpr Faixa kDefaultGrupo3[] = {{2905, 2905}, {5050, 5069}};
constexpr Faixa kDefaultGrupo4[] = {
    {2049, 2049}, {2560, 2561}, {2565, 2567}, {2573, 2574}, {2578, 2578}, {2582, 2583},
    {2600, 2600}, {2602, 2602}, {2609, 2611}, {2614, 2616}, {2619, 2619}, {2623, 2626},
    {2628, 2629}, {2634, 2634}, {2636, 2636}, {2639, 2640}, {2663, 2663}, {2690, 2691},
    {2701, 2701}, {2706, 2707}, {2724, 2724}, {2751, 2751}, {2819, 2824}, {2827, 2830},
    {2838, 2844}, {2851, 2852}, {2854, 2856}, {2862, 2870}, {2880, 2881}, {2900, 2900},
    {2902, 2904}, {2906, 2908}};

// A group laid out as a configured one: the codes ascending at the end, the
// unused slots (0) in front.
template <std::size_t N>
constexpr Grupo monta_grupo(const Faixa (&faixas)[N]) {
  std::size_t n = 0;
  for (const Faixa& f : faixas) n += static_cast<std::size_t>(f.ate - f.de + 1);
  Grupo g{};
  std::size_t i = g.size() - n;
  for (const Faixa& f : faixas)
    for (std::int32_t c = f.de; c <= f.ate; ++c) g[i++] = c;
  return g;
}

constexpr std::array<Grupo, kGruposOV> kTabelaDefault = {monta_grupo(kDefaultGrupo1), monta_grupo(kDefaultGrupo2),
                                                         monta_grupo(kDefaultGrupo3), monta_grupo(kDefaultGrupo4)};

constexpr bool tabela_default_ordenada() {
  for (const Grupo& g : kTabelaDefault)
    for (std::size_t i = 1; i < g.size(); ++i)
      if (g[i - 1] >= g[i] && g[i - 1] != 0) return false;
  return true;
}
static_assert(tabela_default_ordenada());
static_assert(kTabelaDefault[0][kCodigosPorGrupo - 29] == 2563 && kTabelaDefault[1][kCodigosPorGrupo - 20] == 2570 &&
              kTabelaDefault[2][kCodigosPorGrupo - 21] == 2905);

// The group chosen by the last search; kGruposOV when none is. A success (code
// 0) is reported under the group of the error before it, so at start, with no
// error seen yet, there is nothing to recover from and nothing is reported.
std::size_t grupoSelecionado = kGruposOV;

std::array<char, 3>& tipo_do_grupo(std::size_t g) {
  static std::array<char, 3>* const tipos[kGruposOV] = {&tipoInfGrupo1, &tipoInfGrupo2, &tipoInfGrupo3,
                                                         &tipoInfGrupo4};
  return *tipos[g];
}

void restaura_default() {
  Erro = kTabelaDefault;
  copy_text(tipoInfGrupo1, "03");
  copy_text(tipoInfGrupo2, "01");
  copy_text(tipoInfGrupo3, "02");
  copy_text(tipoInfGrupo4, "02");
}

// `s` left-aligned in exactly 8 characters, blank-padded.
void ajusta_8(std::array<char, 9>& campo) {
  const std::size_t n = strnlen(campo.data(), 8);
  std::fill(campo.begin() + static_cast<std::ptrdiff_t>(n), campo.begin() + 8, ' ');
  campo[8] = '\0';
}

// A text assembled piece by piece into a fixed buffer; what does not fit is cut.
template <std::size_t N>
class Texto {
 public:
  Texto& operator<<(std::string_view s) {
    const std::size_t n = std::min(s.size(), N - 1 - len_);
    std::copy_n(s.data(), n, buf_.data() + len_);
    len_ += n;
    return *this;
  }
  const char* c_str() const { return buf_.data(); }

 private:
  std::array<char, N> buf_{};
  std::size_t len_ = 0;
};

// Looks `nome` up in the plug-in; false when the loader reports an error, its
// message then in `erro`.
bool procura(const char* nome, void*& destino, const char*& erro) {
  dlerror();
  destino = dlsym(libInfOV, nome);
  erro = dlerror();
  return erro == nullptr;
}

int bb(std::int32_t code, const std::int32_t* group, int baixo, int alto) {
  if (baixo > alto) return -1;
  const int meio = (baixo + alto) / 2;
  if (group[meio] == code) return meio;
  if (group[meio] >= code) return bb(code, group, baixo, meio - 1);
  return bb(code, group, meio + 1, alto);
}

// The codes of one "OVConfGrupo" value: each text between two commas, up to a
// ";" right after a comma; a code not followed by a comma is not taken.
void le_codigos(std::string_view valor, Grupo& g) {
  std::size_t n = 0;
  std::size_t virgula = valor.find(',');
  while (virgula != std::string_view::npos && n < g.size()) {
    if (virgula + 1 < valor.size() && valor[virgula + 1] == ';') break;
    const std::size_t proxima = valor.find(',', virgula + 1);
    if (proxima == std::string_view::npos) break;
    std::array<char, 10> numero{};
    copy_text(numero, valor.substr(virgula + 1, std::min<std::size_t>(proxima - virgula - 1, 9)));
    g[n++] = std::atoi(numero.data());
    virgula = proxima;
  }
}

constexpr std::string_view kImpOk = "IMPOK   ";
constexpr const char* kBrancos = "        ";

// One SendInf with the fields of information type `tipo` (1 to 3); any other
// type sends nothing and counts as sent.
int envia(int tipo, const char* codigo, const char* tipoInf, const char* complemento) {
  if (tipo < 1 || tipo > 3) return 1;
  switch (tipo) {
    case 1:
      ORB_LOG("informaOV%s szCodInf=%s szTipoInf=%s OVCodHrdwBuf=%s OVTipHrdwBuf=%s OVCodFbrBuf=%s szComplAux=%s\n",
              codigo, tipoInf, OVCodHrdwBuf.data(), OVTipHrdwBuf.data(), OVCodFbrBuf.data(), complemento);
      break;
    case 2:
      ORB_LOG("informaOV%s szCodInf=%s szTipoInf=%s OVCodSftwBuf=%s OVCodFbrBuf=%s szComplAux=%s\n", codigo,
              tipoInf, OVCodSftwBuf.data(), OVCodFbrBuf.data(), complemento);
      break;
    default:
      ORB_LOG("informaOV%s szCodInf=%s szTipoInf=%s OVCodFbrBuf=%s szComplAux=%s\n", codigo, tipoInf,
              OVCodFbrBuf.data(), complemento);
      break;
  }
  if (SendInf == nullptr) return 0;
  if (tipo == 1)
    return SendInf(codigo, tipoInf, OVCodHrdwBuf.data(), OVTipHrdwBuf.data(), OVCodFbrBuf.data(), 0, 0, complemento);
  if (tipo == 2) return SendInf(codigo, tipoInf, OVCodSftwBuf.data(), kBrancos, OVCodFbrBuf.data(), 0, 0, complemento);
  return SendInf(codigo, tipoInf, kBrancos, kBrancos, OVCodFbrBuf.data(), 0, 0, complemento);
}

}  // namespace

void* libInfOV = nullptr;
std::uint8_t flagIniciaOV = 0;
std::uint8_t flagInfOV = 1;
std::array<std::array<std::int32_t, kCodigosPorGrupo>, kGruposOV> Erro = kTabelaDefault;
std::array<char, 3> tipoInfGrupo1{"03"}, tipoInfGrupo2{"01"}, tipoInfGrupo3{"02"}, tipoInfGrupo4{"02"};
std::array<char, 9> lastError{};
std::uint8_t firstInform = 0;

int LoadlibInfOV() {
  ORB_LOG("LoadlibInfOV%s - inicio \n");
  // A plug-in still loaded from an earlier open is ended and released first, so
  // each open registers the terminal afresh and holds one reference only.
  LiberaOV();
  int ret = 0;
  libInfOV = dlopen(kPluginOV, RTLD_LAZY);
  if (libInfOV == nullptr) {
    const char* erro = dlerror();
    ORB_LOG("LoadlibInfOV%s erro=%s\n", erro != nullptr ? erro : "");
  } else {
    void* start = nullptr;
    void* send = nullptr;
    void* sendGen = nullptr;
    void* stop = nullptr;
    const char* erro = nullptr;
    if (!procura("StartInfOV", start, erro))
      ORB_LOG("LoadlibInfOV%s Erro funcao StartInfOV nao encontrada erro=%s\n", erro);
    else if (!procura("SendInf", send, erro))
      ORB_LOG("LoadlibInfOV%s Erro funcao SendInf nao encontrada erro=%s\n", erro);
    else if (!procura("SendInfGen", sendGen, erro))
      ORB_LOG("LoadlibInfOV%s Erro funcao SendInfGen nao encontrada erro=%s\n", erro);
    else if (!procura("StopInfOV", stop, erro))
      ORB_LOG("LoadlibInfOV%s Erro funcao StopInfOV nao encontrada erro=%s\n", erro);
    else
      ret = 1;
    if (ret == 1) {
      StartInfOV = reinterpret_cast<FnStartInfOV>(start);
      SendInf = reinterpret_cast<FnSendInf>(send);
      SendInfGen = reinterpret_cast<FnSendInfGen>(sendGen);
      StopInfOV = reinterpret_cast<FnStopInfOV>(stop);
    } else {
      // Nobody else would release a plug-in that is missing an entry point.
      DescarregaLibInfOV();
    }
  }
  ORB_LOG("LoadlibInfOV%s - fim com ret=%d \n", ret);
  return ret;
}

void DescarregaLibInfOV() {
  if (libInfOV != nullptr) dlclose(libInfOV);
  libInfOV = nullptr;
  StartInfOV = nullptr;
  SendInf = nullptr;
  SendInfGen = nullptr;
  StopInfOV = nullptr;
}

void LiberaOV() {
  if (libInfOV == nullptr) return;
  if (flagIniciaOV != 0) finalizaOV();
  DescarregaLibInfOV();
}

int iniciaOV() {
  ORB_LOG("iniciaOV%s - inicio \n");
  for (auto* campo : {&OVCodHrdwBuf, &OVTipHrdwBuf, &OVCodSftwBuf, &OVCodFbrBuf, &OVULTermBuf, &OVNomeTermBuf})
    ajusta_8(*campo);
  const int ret = StartInfOV != nullptr ? StartInfOV(OVNomeTermBuf.data(), OVULTermBuf.data(), kTempoOV) : 0;
  if (ret != 0)
    flagIniciaOV = 1;
  else
    ORB_LOG("iniciaOV%s A biblioteca OV nao foi iniciada ret=%d\n", ret);
  ORB_LOG("iniciaOV%s - fim com ret=%d \n", ret);
  return ret;
}

void finalizaOV() {
  ORB_LOG("finalizaOV%s - inicio \n");
  if (StopInfOV != nullptr) StopInfOV(0);
  ORB_LOG("finalizaOV%s A biblioteca OV foi finalizada\n");
  flagIniciaOV = 0;
  ORB_LOG("finalizaOV%s - fim com ret=%d \n", 0);
}

int ConfiguraOV() {
  ORB_LOG("ConfiguraOV%s - inicio \n");
  // Every configuration starts from the defaults, so a failed read leaves them
  // in force even after an earlier session configured its own groups.
  restaura_default();
  constexpr const char* kChaves[kGruposOV] = {"OVConfGrupo1", "OVConfGrupo2", "OVConfGrupo3", "OVConfGrupo4"};
  constexpr int kLargura = 1024;
  std::array<std::array<char, kLargura + 1>, kGruposOV> valores{};
  int ret = 0;
  for (std::size_t g = 0; g < kGruposOV && ret == 0; ++g)
    ret = leChaveConfig(kSecaoConfig, kChaves[g], kLargura, valores[g].data());
  if (ret == 0) {
    if (std::all_of(valores.begin(), valores.end(), [](const auto& v) { return v[0] == '\0'; })) {
      ORB_LOG1("ConfiguraOV%s Reportando com a tabela de erros default\n");
    } else {
      for (auto& g : Erro) g.fill(0);
      for (std::size_t g = 0; g < kGruposOV; ++g) {
        copy_text(tipo_do_grupo(g), view(valores[g]).substr(0, 2));
        le_codigos(view(valores[g]), Erro[g]);
        std::sort(Erro[g].begin(), Erro[g].end());
      }
    }
  }
  ORB_LOG("ConfiguraOV%s - fim com ret=%d \n", ret);
  return ret;
}

int buscaBinaria(std::int32_t code, int count, const std::int32_t* group) {
  if (group == nullptr || count <= 0) return -1;
  return bb(code, group, 0, count - 1);
}

// Runs for every result of the library, so it traces only what it decides.
void infOvitra(std::int32_t code) {
  if (flagIniciaOV == 0 || flagInfOV == 0) {
    flagInfOV = 1;
    return;
  }
  if (code != 0) {
    grupoSelecionado = kGruposOV;
    for (std::size_t g = 0; g < kGruposOV; ++g) {
      if (buscaBinaria(code, static_cast<int>(kCodigosPorGrupo), Erro[g].data()) >= 0) {
        grupoSelecionado = g;
        break;
      }
    }
    if (grupoSelecionado == kGruposOV) {
      ORB_LOG("infOvitra%s Erro %d nao listado, nao reportado ao OV\n", code);
      return;
    }
  }
  const char ativo = grupoSelecionado < kGruposOV ? OVSetingsBuf[grupoSelecionado] : '\0';
  // A group beyond the characters of "OVSetings" is traced as a blank.
  ORB_LOG1("infOvitra%s Erro %d, OVSetingsBuf[%d]=%c\n", code, static_cast<int>(grupoSelecionado),
           ativo != '\0' ? ativo : ' ');
  if (code != 0 && ativo != '1') return;
  if (grupoSelecionado == kGruposOV) return;

  std::array<char, 16> numero{};
  std::snprintf(numero.data(), numero.size(), "%-8d", static_cast<int>(code));
  std::array<char, 9> codigo{};
  copy_text(codigo, view(numero).substr(0, 8));
  std::array<char, 64> descricao{};
  if (HWError != 0)
    std::snprintf(descricao.data(), descricao.size(), "Erro retornado pela impressora = %d", static_cast<int>(HWError));
  else
    copy_text(descricao, "Nao ocorreu erro na impressora");
  Texto<96> extra;
  extra << "|" << "Numero de serie" << "|" << view(numSerieECF) << "||";
  informaOV(codigo.data(), tipo_do_grupo(grupoSelecionado).data(), descricao.data(), extra.c_str());
}

int informaOV(const char* codInf, const char* tipoInf, const char* descr, const char* extra) {
  ORB_LOG("informaOV%s - inicio \n");
  // The agent takes an 8-character code and a 2-character type; longer texts
  // are cut to them.
  std::array<char, 9> codigo{};
  copy_text(codigo, in_text(codInf, 8));
  std::array<char, 3> tipo{};
  copy_text(tipo, in_text(tipoInf, 2));
  if (view(codigo) == "0       ") copy_text(codigo, kImpOk);
  if (view(codigo) == "INFODIA ") copy_text(tipo, "03");

  int ret = 1;
  if (firstInform != 0 && view(codigo) == view(lastError)) {
    ORB_LOG1("informaOV%s Erro ja informado lastError=%s szCodInf=%s\n", lastError.data(), codigo.data());
  } else {
    Texto<512> complemento;
    complemento << in_text(descr, 511) << in_text(extra, 511);
    const int n = std::atoi(tipo.data());
    ret = envia(n, codigo.data(), tipo.data(), complemento.c_str());
    // A recovery is announced under all three types.
    if (ret != 0 && view(codigo) == kImpOk && n >= 1 && n <= 3) {
      constexpr const char* kTipos[] = {"01", "02", "03"};
      for (int outro = 1; outro <= 3 && ret != 0; ++outro)
        if (outro != n) ret = envia(outro, codigo.data(), kTipos[outro - 1], complemento.c_str());
    }
    if (ret != 0) {
      lastError = codigo;
      firstInform = 1;
    } else {
      ORB_LOG("informaOV%s Erro %d ao tentar enviar informe ao OV\n", ret);
    }
  }
  ret = ret != 0 ? 1 : 0;
  ORB_LOG("informaOV%s - fim com ret=%d \n", ret);
  return ret;
}

std::uint16_t EnviaInventarioOV() {
  ORB_LOG("EnviaInventarioOV%s - inicio \n");
  ValorReducaoZ.fill('\0');
  const std::uint16_t ret = Executa_Leitura_Registrador_Geral(133, 4, ValorReducaoZ.data(), 0, ValorReducaoZ.size());
  std::array<char, 20> dataHora{};
  Consulta_Data_Hora_Segundos(dataHora.data());
  dataHora.back() = '\0';
  std::array<char, 5> restantes{};
  Calcular_Qtde_Reducoes_Restantes(restantes.data());
  std::array<char, 7> percentual{};
  Calcular_Percentual_MFD_Utilizada(percentual.data());

  constexpr char kFim[] = {'|', static_cast<char>(0xAF), '|', '\0'};
  Texto<440> m;
  m << "INV" << view(OVNomeTermBuf) << view(OVULTermBuf) << view(dataHora) << "01";
  m << view(OVTipHrdwBuf) << "|" << view(OVCodHrdwBuf) << "|" << view(OVCodFbrBuf) << "|";
  m << "Numero de Serie" << "|" << view(Nro_Serie_Fabricacao) << "|";
  m << "Versao Aplic" << "|" << view(ArqTrace, sizeof ArqTrace) << " " << view(Versao, sizeof Versao) << "|";
  m << "Firmware" << "|" << view(VersaoFirmwareCompleta) << "|";
  m << "Modelo" << "|" << view(DescricaoModelo) << "|";
  m << "Marca" << "|" << view(DescricaoMarca) << "|";
  m << "Reducoes Z Restantes" << "|" << view(restantes) << "|";
  m << "Reducao Z" << "|" << view(ValorReducaoZ) << "|";
  m << "Percentual MFD" << "|" << view(percentual) << kFim;
  if (SendInfGen != nullptr) SendInfGen(m.c_str());
  ORB_LOG("EnviaInventarioOV%s - fim com ret=%d \n", ret);
  return ret;
}

}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4infOvitraM(const char* codInf, const char* tipoInf, const char* descr,
                                        const char* extra) {
  ORB_LOCK();
  ORB_LOG("E4infOvitraM%s - inicio \n");
  if (flagIniciaOV != 0) informaOV(codInf, tipoInf, descr, extra);
  ORB_LOG("E4infOvitraM%s - fim com ret=%d \n", 0);
  return 0;
}

}  // extern "C"
