// The printer's identity: read once per session open, then answered from the
// cache (the header and address lines are asked of the printer each time).
#include "frame/identity.h"

#include <string>

#include "agent/agent.h"
#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/encodings.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"
#include "orbelan.h"
#include "state/documents.h"

namespace orbelan {

std::array<char, 25> Nro_Serie_Fabricacao{};
std::array<char, 50> numSerieECF{"000000000000000000000"};
std::array<char, 20> CGC_ECF{}, IE_ECF{}, IM_ECF{};
std::int32_t TipoImp = 0;
std::array<char, 10> VersaoFirmwareCompleta{}, VersaoFirmware{};
std::array<char, 20> DescricaoMarca{}, DescricaoModelo{};
std::array<char, 10> Nro_Sequencial{};
char Valor_IAT = 'A';
std::uint8_t Valor_Reducao = 0;

namespace {

constexpr std::uint16_t kRespostaInvalida = 2049;

// The common shape of a query: refused while closed, otherwise the sequence
// field as the whole input and the query flag.
template <std::size_t N>
std::uint16_t consulta(int cmd, Reply<N>& r, int flag = 1) {
  if (OPENOK == 0) return kNaoAberto;
  Input in;
  in.seq();
  return executa(cmd, flag, in, r);
}

}  // namespace

std::uint16_t RecuperarNro_Serie_Fabricacao() {
  ORB_LOG("RecuperarNro_Serie_Fabricacao%s - inicio \n");
  Nro_Serie_Fabricacao.fill('\0');
  Reply<25> r;
  std::uint16_t ret = consulta(21, r);
  if (ret == 0) {
    if (r[0] != 1) {
      ret = kRespostaInvalida;
    } else {
      std::size_t n = copy_text(Nro_Serie_Fabricacao, r.text(1));
      // A serial shorter than 21 characters takes the byte at 21 as its last.
      if (n < 21 && r[21] != 0) Nro_Serie_Fabricacao[n] = static_cast<char>(r[21]);
      copy_text(numSerieECF, view(Nro_Serie_Fabricacao));
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("RecuperarNro_Serie_Fabricacao%s - fim com ret=%d Nro_Serie_Fabricacao=%s \n", ret,
          Nro_Serie_Fabricacao.data());
  return ret;
}

std::uint16_t RecuperarModeloFirmwareImpressora() {
  ORB_LOG("RecuperarModeloFirmwareImpressora%s - inicio \n");
  TipoImp = 0;
  VersaoFirmwareCompleta.fill('\0');
  VersaoFirmware.fill('\0');
  Reply<20> r;
  std::uint16_t ret = consulta(86, r);
  if (ret == 0) {
    TipoImp = r[0];
    const std::string_view firmware = r.field(1, 9);
    copy_text(VersaoFirmwareCompleta, firmware.substr(0, firmware.find('\0')));
    copy_text(VersaoFirmware, view(VersaoFirmwareCompleta));
    EliminaCaracter(VersaoFirmware, 9, 'V');
    EliminaCaracter(VersaoFirmware, 9, '.');
  }
  ret = TrataRetorno(ret);
  ORB_LOG("RecuperarModeloFirmwareImpressora%s - fim com ret=%d Modelo=%d \n", ret, TipoImp);
  return ret;
}

std::uint16_t RecuperarDescricaoMarcaModeloImpressora() {
  ORB_LOG("RecuperarDescricaoMarcaModeloImpressora%s - inicio \n");
  DescricaoMarca.fill('\0');
  DescricaoModelo.fill('\0');
  Reply<50> r;
  std::uint16_t ret = consulta(236, r);
  if (ret == 0) {
    const std::string_view marca = r.text(0);
    copy_text(DescricaoMarca, marca);
    // The model runs to its NUL or to the end of the reply.
    const std::size_t inicio = marca.size() + 1;
    if (inicio < static_cast<std::size_t>(r.len)) {
      const std::string_view resto = r.field(inicio, static_cast<std::size_t>(r.len) - inicio);
      copy_text(DescricaoModelo, resto.substr(0, resto.find('\0')));
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("RecuperarDescricaoMarcaModeloImpressora%s - fim com ret=%d - Marca=%s - Modelo=%s \n", ret,
          DescricaoMarca.data(), DescricaoModelo.data());
  return ret;
}

std::uint16_t RecuperarCGC_IE_IM_Impressora() {
  ORB_LOG("RecuperarCGC_IE_IM_Impressora%s - inicio \n");
  CGC_ECF.fill('\0');
  IE_ECF.fill('\0');
  IM_ECF.fill('\0');
  std::uint16_t ret = kNaoAberto;
  if (OPENOK != 0) {
    Input in;
    in.seq().byte(255);
    Reply<60> r;
    ret = executa(28, 1, in, r);
    if (ret == 0) {
      if (r[1] != 2) {
        ret = kRespostaInvalida;
      } else {
        const std::string_view cgc = r.text(14);
        const std::string_view ie = r.text(14 + cgc.size() + 1);
        const std::string_view im = r.text(14 + cgc.size() + 1 + ie.size() + 1);
        copy_text(CGC_ECF, cgc);
        copy_text(IE_ECF, ie);
        copy_text(IM_ECF, im);
      }
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("RecuperarCGC_IE_IM_Impressora%s - fim com ret=%d CGC=%s IE=%s IM=%s \n", ret, CGC_ECF.data(),
          IE_ECF.data(), IM_ECF.data());
  return ret;
}

std::uint16_t RecuperarNro_Sequencial_ECF() {
  ORB_LOG("RecuperarNro_Sequencial_ECF%s - inicio \n");
  Nro_Sequencial.fill('\0');
  Reply<20> r;
  std::uint16_t ret = consulta(61, r);
  if (ret == 0) copy_text(Nro_Sequencial, r.text(0));
  ret = TrataRetorno(ret);
  ORB_LOG("RecuperarNro_Sequencial_ECF%s - fim com ret=%d Nro_Sequencial=%s \n", ret, Nro_Sequencial.data());
  return ret;
}

std::uint16_t RecuperarValor_IAT() {
  ORB_LOG("RecuperarValor_IAT%s - inicio \n");
  Valor_IAT = 0;
  Reply<10> r;
  std::uint16_t ret = consulta(53, r);
  if (ret == 0) Valor_IAT = r[0] != 0 ? 'T' : 'A';
  ret = TrataRetorno(ret);
  ORB_LOG("RecuperarValor_IAT%s - fim com ret=%d Valor_IAT=%d \n", ret, Valor_IAT);
  return ret;
}

std::uint16_t EstadoReducao() {
  ORB_LOG("EstadoReducao%s - inicio \n");
  std::uint16_t ret = kNaoAberto;
  if (OPENOK != 0) {
    Input in;  // no input
    Reply<40> r;
    ret = executa(10, 1, in, r);
    if (ret == 0) Valor_Reducao = r[24];
  }
  // The agent hears of the day's reduction state each time it is read (a failed
  // read has nothing new to tell).
  if (ret == 0 && flagIniciaOV != 0) {
    std::array<char, 52> texto{};  // room for the longer text, blanks included
    copy_text(texto, Valor_Reducao != 0 ? " Ja ocorreu Reducao Z de Fechamento de Dia "
                                        : " Ainda nao ocorreu Reducao Z de Fechamento de Dia ");
    informaOV("INFODIA ", tipoInfGrupo2.data(), texto.data(), "");
  }
  ret = TrataRetorno(ret);
  ORB_LOG("EstadoReducao%s - fim com ret=%d Valor_Reducao=%d \n", ret, Valor_Reducao);
  return ret;
}

void Ler_Nro_Serie_Fabricacao(char* dst) { copy_out(dst, view(Nro_Serie_Fabricacao), Nro_Serie_Fabricacao.size()); }
void Ler_CGC_IE_IM_ECF(char* cgc, char* ie, char* im) {
  copy_out(cgc, view(CGC_ECF), CGC_ECF.size());
  copy_out(ie, view(IE_ECF), IE_ECF.size());
  copy_out(im, view(IM_ECF), IM_ECF.size());
}
void Ler_Firmware_ECF(char* dst) { copy_out(dst, view(VersaoFirmware), VersaoFirmware.size()); }
void Ler_Firmware_Completo_ECF(char* dst) {
  copy_out(dst, view(VersaoFirmwareCompleta), VersaoFirmwareCompleta.size());
}
void Ler_Descricao_Marca_ECF(char* dst) { copy_out(dst, view(DescricaoMarca), DescricaoMarca.size()); }
void Ler_Descricao_Modelo_ECF(char* dst) { copy_out(dst, view(DescricaoModelo), DescricaoModelo.size()); }
void Ler_Nro_Sequencial_ECF(char* dst) { copy_out(dst, view(Nro_Sequencial), Nro_Sequencial.size()); }
void Ler_Valor_IAT(char* dst) {
  if (dst != nullptr) *dst = Valor_IAT;
}
void Ler_Modelo_ECF(std::uint8_t* dst) {
  if (dst != nullptr) *dst = (TipoImp == 4 || TipoImp == 5 || TipoImp == 6) ? static_cast<std::uint8_t>(TipoImp) : 0;
}

std::uint16_t LerClicheEndereco(char* cliche, char* endereco) {
  copy_out(cliche, "", 256);
  copy_out(endereco, "", 256);
  Reply<255> r;
  const std::uint16_t ret = consulta(30, r, 0);
  if (ret == 0 && r[0] == 1) {
    // Three texts from byte 1: the header, one not used, the address.
    const std::string_view cabecalho = r.text(1);
    const std::string_view outro = r.text(1 + cabecalho.size() + 1);
    const std::string_view endereco_txt = r.text(1 + cabecalho.size() + 1 + outro.size() + 1);
    copy_out(cliche, cabecalho, 256);
    copy_out(endereco, endereco_txt, 256);
  }
  return TrataRetorno(ret);
}

}  // namespace orbelan

using namespace orbelan;

namespace {

// Room the library uses in E4InfECF's and E4InfEspECF's outputs.
constexpr std::size_t kCliche = 2 * 256 + 2;

// Header text, CR, LF, address text.
std::uint16_t cliche_e_endereco(char* out) {
  std::array<char, 256> cliche{}, endereco{};
  const std::uint16_t ret = LerClicheEndereco(cliche.data(), endereco.data());
  if (ret == 0) {
    // Each part is at most 255 characters, so the whole always fits.
    std::array<char, kCliche> junto{};
    std::span<char> livre{junto};
    for (const std::string_view parte : {view(cliche), std::string_view{"\r\n"}, view(endereco)})
      livre = livre.subspan(copy_text(livre, parte));
    copy_out(out, view(junto), kCliche);
  }
  return ret;
}

}  // namespace

extern "C" {

ORBELAN_API unsigned short E4InfECF(char* Serie, char* CGC, char* IE, char* IM, char* Cliche, char* Firm,
                                    char* Seq, unsigned char* Modelo) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4InfECF%s - inicio \n");
  if (ret == 0) {
    copy_out(Serie, "", Nro_Serie_Fabricacao.size());
    copy_out(Cliche, "", kCliche);
    copy_out(Firm, "", VersaoFirmware.size());
    copy_out(Seq, "", Nro_Sequencial.size());
    if (Modelo != nullptr) *Modelo = 0;
    copy_out(CGC, "00.000.000/0000-00", CGC_ECF.size());
    copy_out(IE, "000.000.000.000", IE_ECF.size());
    copy_out(IM, "000.000.000.000", IM_ECF.size());
    // The cached texts replace the placeholders, even when they are empty.
    Ler_Nro_Serie_Fabricacao(Serie);
    Ler_CGC_IE_IM_ECF(CGC, IE, IM);
    ret = cliche_e_endereco(Cliche);
    if (ret == 0) {
      Ler_Firmware_ECF(Firm);
      Ler_Nro_Sequencial_ECF(Seq);
      Ler_Modelo_ECF(Modelo);
    }
    ORB_LOG("E4InfECF%s Serie=%s CGC=%s IE=%s IM=%s Cliche=%s Firm=%s Seq=%s Modelo=%d\n",
            Serie != nullptr ? Serie : "", CGC != nullptr ? CGC : "", IE != nullptr ? IE : "",
            IM != nullptr ? IM : "", Cliche != nullptr ? Cliche : "", Firm != nullptr ? Firm : "",
            Seq != nullptr ? Seq : "", Modelo != nullptr ? *Modelo : 0);
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4InfECF%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4InfEspECF(int Opc, char* Retorno) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4InfEspECF%s - inicio - Opc=%d\n", Opc);
  if (ret == 0) {
    switch (Opc) {
      case 0:
        Ler_Modelo_ECF(reinterpret_cast<std::uint8_t*>(Retorno));
        break;
      case 1:
        Ler_Firmware_ECF(Retorno);
        break;
      case 2:
        ret = cliche_e_endereco(Retorno);
        break;
      case 3:
        Ler_Nro_Serie_Fabricacao(Retorno);
        break;
      case 4:
        // Three texts laid end to end, each with its NUL.
        if (Retorno != nullptr) {
          char* p = Retorno;
          for (const auto* campo : {&CGC_ECF, &IE_ECF, &IM_ECF}) {
            const std::size_t n = copy_text(std::span<char>{p, campo->size()}, view(*campo));
            p += n + 1;
          }
        }
        break;
      case 5:
        Ler_Nro_Sequencial_ECF(Retorno);
        break;
      case 6:
        if ((ret = RecuperarDescricaoMarcaModeloImpressora()) == 0) Ler_Descricao_Marca_ECF(Retorno);
        break;
      case 7:
        if ((ret = RecuperarDescricaoMarcaModeloImpressora()) == 0) Ler_Descricao_Modelo_ECF(Retorno);
        break;
      case 8:
        if ((ret = RecuperarModeloFirmwareImpressora()) == 0) Ler_Firmware_Completo_ECF(Retorno);
        break;
      case 9:
        ret = Ler_Indice_Proprietario(reinterpret_cast<std::uint8_t*>(Retorno));
        break;
      case 10:
        ret = static_cast<std::uint16_t>(Ler_DataHora_Proprietario_Atual(Retorno));
        break;
      default:
        ORB_LOG("E4InfEspECF%s - Opcao invalida \n");
        ret = kRespostaInvalida;
        break;
    }
  }
  const bool escrito = ret == 0 && Opc >= 0 && Opc <= 10;
  ret = TrataRetorno(ret);
  if (Opc == 9) {
    ORB_LOG("E4InfEspECF%s - fim com ret=%d \n", ret);
  } else {
    // Only what this call wrote is traced: a buffer it did not fill may hold
    // anything, terminator included, and option 0 writes a single byte.
    const std::size_t largura = Opc == 0 ? 1 : kCliche;
    const std::string retorno{escrito && Retorno != nullptr ? in_text(Retorno, largura) : std::string_view{}};
    ORB_LOG("E4InfEspECF%s - fim com ret=%d Retorno=%s \n", ret, retorno.c_str());
  }
  return ret;
}

}  // extern "C"
