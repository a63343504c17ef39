// Fiscal memory and electronic journal: the printed fiscal-memory reading, the
// transfers of either to a file on the host, and the journal's capacity.
#include "registers/journal.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>

#include "documents/closing.h"
#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/encodings.h"
#include "frame/file.h"
#include "frame/lock.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/sums.h"
#include "frame/text.h"
#include "orbelan.h"
#include "registers/dates.h"
#include "state/documents.h"

namespace orbelan {

namespace {

constexpr std::uint16_t kErroArquivo = 2902;  // destination file cannot be created or appended to
constexpr std::uint16_t kErroPacote = 2903;   // transfer packet refused

// A transfer packet's reply: two header bytes, then data.
constexpr std::size_t kTamPacote = 300;
using Pacote = Reply<kTamPacote>;
// The reply length of a packet the printer filled completely.
constexpr std::int32_t kPacoteCheio = 255;
// Bytes 2..5 of the packet that ends the data; also sent back to acknowledge it.
constexpr std::array<std::uint8_t, 4> kFimDados{0xCF, 0xDE, 0xB3, 0xD1};

// The packet counter travels in 16 bits. A transfer that has not ended when the
// counter would wrap is cut there instead of numbering packets again from 0;
// one number stays in reserve for acknowledging the end mark.
constexpr std::uint32_t kUltimoPacote = 0xFFFE;

constexpr std::size_t kTamBlocoData = 38;  // fiscal memory by date (command 194)

const char* nz(const char* s) { return s != nullptr ? s : ""; }

bool fim_dos_dados(const Pacote& r) {
  for (std::size_t i = 0; i < kFimDados.size(); ++i) {
    if (r[2 + i] != kFimDados[i]) return false;
  }
  return true;
}

// Appends a packet's data (bytes 2 to length-1, as text: it ends at its first
// NUL) to the destination file, opened for this packet only.
std::uint16_t anexa_pacote(const char* arquivo, const Pacote& r) {
  std::array<char, kTamPacote + 1> dados{};
  if (r.len > 2) {
    const std::string_view d = r.field(2, static_cast<std::size_t>(r.len) - 2);
    copy_text(dados, d);
  }
  File f(arquivo, "a+");
  if (!f) return kErroArquivo;
  // One write of the whole packet; a stream buffer would only add a query of
  // the file's block size to every packet.
  std::setvbuf(f.get(), nullptr, _IONBF, 0);
  std::fputs(dados.data(), f.get());
  return 0;
}

// Creates (or empties) the destination file.
std::uint16_t cria_destino(const char* arquivo) {
  File f(arquivo, "w+");
  return f ? 0 : kErroArquivo;
}

// One transfer packet: the counter in place of the sequence field, followed in
// the first packet by the command's block.
std::uint16_t envia_pacote(int cmd, std::uint32_t contador, std::span<const std::uint8_t> bloco,
                           Pacote& r) {
  Input in;
  in.u16(static_cast<std::uint16_t>(contador));
  if (contador == 0) in.raw(bloco.data(), bloco.size());
  return executa(cmd, 1, in, r);
}

// Acknowledges the end mark with the next counter and the mark itself.
std::uint16_t confirma_fim(int cmd, std::uint32_t contador) {
  Input in;
  in.u16(static_cast<std::uint16_t>(contador)).raw(kFimDados.data(), kFimDados.size());
  Pacote r;
  return executa(cmd, 1, in, r);
}

// A number bound packed two digits per byte into `digitos` / 2 bytes: a text
// shorter than the field is right-aligned in "0" characters first; a longer one
// gives its first `digitos` characters.
void compacta_limite(std::string_view texto, std::span<std::uint8_t> dst, int digitos) {
  std::array<char, 8> campo{};
  if (texto.size() < static_cast<std::size_t>(digitos)) {
    LeftPad(texto, campo, digitos);
    texto = view(campo);
  }
  Compacta(texto.substr(0, static_cast<std::size_t>(digitos)), dst, digitos);
}

// A reduction-number bound of the journal reading. Four or more characters:
// the first four. Fewer: right-aligned in six "0" characters, and the four
// characters from the field's fourth are packed, the last of them being its
// terminator (packed as 0): 12 goes out as 0x01 0x20. The printer expects the
// bound in this form.
void compacta_reducao_mfd(std::string_view texto, std::span<std::uint8_t> dst) {
  if (texto.size() >= 4) {
    Compacta(texto.substr(0, 4), dst, 4);
    return;
  }
  std::array<char, 7> campo{};
  LeftPad(texto, campo, 6);
  Compacta(view(campo).substr(3), dst, 4);  // the missing fourth character packs as 0
}

// Copies at most 8 characters of a date into the block; the rest stays 0.
void copia_data(std::span<std::uint8_t> dst, const char* data) {
  const std::string_view d = in_text(data, 8);
  for (std::size_t i = 0; i < d.size() && i < dst.size(); ++i) dst[i] = static_cast<std::uint8_t>(d[i]);
}

// The 38-byte block of the fiscal memory by date: start and end dates, "S"
// simplified or "C" complete, "I" printed or "T" transferred, and for a printed
// reading the operator's name.
std::array<std::uint8_t, kTamBlocoData> bloco_por_data(const char* Inicio, const char* Final,
                                                       unsigned char Opc, char destino,
                                                       std::string_view operador) {
  std::array<std::uint8_t, kTamBlocoData> b{};
  copia_data(std::span{b}.subspan(0, 8), Inicio);
  copia_data(std::span{b}.subspan(8, 8), Final);
  b[16] = Opc != 0 ? 'S' : 'C';
  b[17] = static_cast<std::uint8_t>(destino);
  operador = operador.substr(0, 20);
  for (std::size_t i = 0; i < operador.size(); ++i) b[18 + i] = static_cast<std::uint8_t>(operador[i]);
  return b;
}

// A journal size code of command 14 as text.
std::string_view tamanho_mfd(std::uint8_t codigo) {
  switch (codigo) {
    case 1: return "268435456";
    case 2: return "536870912";
    case 3: return "1073741824";
    default: return {};
  }
}

// Transfers packets of `cmd` into `arquivo` until the end mark, for the fiscal
// memory: any refused packet fails the transfer.
std::uint16_t transfere_mf(int cmd, std::span<const std::uint8_t> bloco, const char* arquivo) {
  std::uint16_t ret = 0;
  for (std::uint32_t contador = 0; ret == 0; ++contador) {
    if (contador > kUltimoPacote) {
      ret = kErroPacote;
      break;
    }
    Pacote r;
    // A reply carrying neither data nor the end mark is taken as a refusal:
    // asking again would only repeat it.
    if (envia_pacote(cmd, contador, bloco, r) != 0 || (r.len <= 2 && !fim_dos_dados(r))) {
      ret = kErroPacote;
      break;
    }
    if (fim_dos_dados(r)) {
      ret = confirma_fim(cmd, contador + 1);
      break;
    }
    ret = anexa_pacote(arquivo, r);
  }
  return ret;
}

// The capacity of the fiscal memory in reductions.
constexpr long kReducoesMF = 2190;

}  // namespace

std::uint16_t Ler_Detalhes_MFD(char* Tamanho, char* PercentualLivre) {
  std::array<char, 11> tamanho{};
  std::array<char, 6> livre{};
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Ler_Detalhes_MFD%s - inicio \n");
  if (ret == 0) {
    Input in;  // no input
    Reply<30> r;
    ret = executa(14, 1, in, r);
    if (ret == 0) {
      copy_text(tamanho, tamanho_mfd(r[8]));
      livre[0] = '0';
      for (std::size_t i = 0; i < 4; ++i) livre[1 + i] = static_cast<char>(r[9 + i]);
    }
  }
  copy_out(Tamanho, view(tamanho), tamanho.size());
  copy_out(PercentualLivre, view(livre), livre.size());
  ret = TrataRetorno(ret);
  ORB_LOG("Ler_Detalhes_MFD%s - fim com ret=%d - Tamanho=%s - PercentualLivre=%s\n", ret, tamanho.data(),
          livre.data());
  return ret;
}

std::uint16_t Calcular_Qtde_MFD_Disponivel(char* Valor) {
  std::array<char, 17> valor{};
  ORB_LOG("Calcular_Qtde_MFD_Disponivel%s - inicio \n");
  std::array<char, 11> tamanho{};
  std::array<char, 6> livre{};
  const std::uint16_t ret = Ler_Detalhes_MFD(tamanho.data(), livre.data());
  if (ret == 0) {
    // Single precision, as the printer's own figures are computed; each step is
    // rounded to float so that every target gives the same digits. The steps
    // pass through memory: on 32-bit x86 the x87 unit would otherwise carry
    // them on in extended precision, casts notwithstanding.
    const volatile float tam = static_cast<float>(std::strtoul(tamanho.data(), nullptr, 10));
    const volatile float percentual = static_cast<float>(std::atoi(livre.data())) / 100.0f;
    const volatile float produto = tam * percentual;
    const volatile float bytes = produto / 100.0f;
    std::array<char, 12> digitos{};
    LongtoAsk(static_cast<std::uint32_t>(bytes), digitos, 10);
    LeftPad(view(digitos), valor, 16);
  }
  copy_out(Valor, view(valor), valor.size());
  ORB_LOG("Calcular_Qtde_MFD_Disponivel%s - fim com ret=%d Valor=%s \n", ret, valor.data());
  return ret;
}

std::uint16_t Calcular_Percentual_MFD_Utilizada(char* Valor) {
  std::array<char, 7> valor{};
  ORB_LOG("Calcular_Percentual_MFD_Utilizada%s - inicio \n");
  std::array<char, 11> tamanho{};
  std::array<char, 6> livre{};
  const std::uint16_t ret = Ler_Detalhes_MFD(tamanho.data(), livre.data());
  if (ret == 0) {
    const int centesimos = std::atoi(livre.data());
    const int usado = centesimos <= 10000 ? 10000 - centesimos : 0;
    std::array<char, 12> digitos{};
    intoAsk(static_cast<std::uint32_t>(usado), digitos, 10);
    LeftPad(view(digitos), valor, 6);
  }
  copy_out(Valor, view(valor), valor.size());
  ORB_LOG("Calcular_Percentual_MFD_Utilizada%s - fim com ret=%d Valor=%s \n", ret, valor.data());
  return ret;
}

std::uint16_t Calcular_Qtde_Reducoes_Restantes(char* Valor) {
  std::array<char, 5> valor{};
  ORB_LOG("Calcular_Qtde_Reducoes_Restantes%s - inicio \n");
  std::array<char, 50> feitas{};
  const std::uint16_t ret = E4ValAtu(4, feitas.data());
  if (ret == 0) {
    const long long n = valor_texto(feitas.data());
    const long long restantes = n >= kReducoesMF ? 0 : diferenca_limitada(kReducoesMF, n);
    std::array<char, 12> digitos{};
    intoAsk(static_cast<std::uint32_t>(restantes), digitos, 10);
    LeftPad(view(digitos), valor, 4);
  }
  copy_out(Valor, view(valor), valor.size());
  ORB_LOG("Calcular_Qtde_Reducoes_Restantes%s - fim com ret=%d Valor=%s \n", ret, valor.data());
  return ret;
}

std::uint16_t ConsultaNumeroSerieMFD(char* Serie) {
  std::array<char, 15> serie{};
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("ConsultaNumeroSerieMFD%s - inicio  \n");
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<30> r;
    ret = executa(231, 1, in, r);
    if (ret == 0) {
      for (std::size_t i = 0; i < 14; ++i) serie[i] = static_cast<char>(r[i]);
    }
  }
  if (Serie != nullptr) std::memcpy(Serie, serie.data(), serie.size());
  ret = TrataRetorno(ret);
  ORB_LOG("ConsultaNumeroSerieMFD%s - fim com ret=%d Retorno=%s \n", ret, serie.data());
  return ret;
}

}  // namespace orbelan

using namespace orbelan;

extern "C" {

ORBELAN_API unsigned short E4LMF(unsigned char Tipo, unsigned char Opc, const char* Inicio,
                                 const char* Final) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4LMF%s - inicio - Tipo=%d Opc=%d Inicio=%s Final=%s\n", Tipo, Opc, nz(Inicio), nz(Final));
  std::array<char, 21> operador{};
  if (ret == 0) ret = Ler_Operador(operador.data());
  if (ret == 0) {
    Input in;
    in.seq();
    int cmd = 0;
    if (Tipo == 1) {
      cmd = Opc != 0 ? 168 : 166;
      std::array<std::uint8_t, 2> inicio{}, fim{};
      compacta_limite(in_text(Inicio), inicio, 4);
      compacta_limite(in_text(Final), fim, 4);
      in.raw(inicio.data(), inicio.size()).raw(fim.data(), fim.size());
      in.raw(view(operador));  // no terminator; nothing when there is no operator
      in.zeros(2);
    } else {
      cmd = 194;
      const auto bloco = bloco_por_data(Inicio, Final, Opc, 'I', view(operador));
      in.raw(bloco.data(), bloco.size());
    }
    Reply<30> r;
    ret = executa(cmd, 0, in, r);
    // The reading stands once printed: a failed cut does not turn it into a
    // failure the application might answer by printing it again.
    if (ret == 0 && FLAGCORTE != 0) CortedePapel();
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4LMF%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4LMFSerial(unsigned char Tipo, unsigned char Opc, const char* Inicio,
                                       const char* Final, const char* Arquivo) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  const char* const arquivo = nz(Arquivo);
  ORB_LOG("E4LMFSerial%s - inicio - Tipo=%d Opc=%d Inicio=%s Final=%s Arquivo=%s\n", Tipo, Opc, nz(Inicio),
          nz(Final), arquivo);
  if (ret == 0) ret = cria_destino(arquivo);
  if (ret == 0) {
    if (Tipo != 0) {
      // By reduction number: start, end, "S"/"C", "T", 0.
      std::array<std::uint8_t, 7> bloco{};
      compacta_limite(in_text(Inicio), std::span{bloco}.subspan(0, 2), 4);
      compacta_limite(in_text(Final), std::span{bloco}.subspan(2, 2), 4);
      bloco[4] = Opc != 0 ? 'S' : 'C';
      bloco[5] = 'T';
      ret = transfere_mf(206, bloco, arquivo);
    } else {
      const auto bloco = bloco_por_data(Inicio, Final, Opc, 'T', {});
      ret = transfere_mf(194, bloco, arquivo);
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4LMFSerial%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4LeMFD(unsigned char Tipo, const char* Inicio, const char* Final,
                                   const char* arqDestino) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  const char* const arquivo = nz(arqDestino);
  const char* inicio = nz(Inicio);
  const char* fim = nz(Final);
  ORB_LOG("E4LeMFD%s - inicio -  Tipo=%d Inicio=%s Final=%s arqDestino=%s\n", Tipo, inicio, fim, arquivo);
  if (ret == 0) ret = cria_destino(arquivo);

  int tipo = Tipo;
  std::array<char, 7> cooi{}, coof{};
  if (ret == 0 && tipo == 0) {
    ORB_LOG("E4LeMFD%s - Tratamento especial para geracao de MFD por data\n");
    if (pegaCOOEntreDatas(inicio, fim, cooi.data(), coof.data()) != 0) {
      ORB_LOG("E4LeMFD%s - Tratamento especial nao eh necessario\n");
    } else {
      inicio = cooi.data();
      fim = coof.data();
      tipo = 1;
      ORB_LOG("E4LeMFD%s - Tratamento especial datas convertidas para COOI=%s e COOF=%s\n", inicio, fim);
    }
  }

  if (ret == 0) {
    int cmd = 0;
    std::array<std::uint8_t, 17> bloco{};
    std::size_t tam = 0;
    switch (tipo) {
      case 0:  // by date
      case 3:  // the type-3 range, laid out as a date range
        cmd = tipo == 0 ? 195 : 200;
        copia_data(std::span{bloco}.subspan(0, 8), inicio);
        copia_data(std::span{bloco}.subspan(8, 8), fim);
        bloco[16] = 'T';
        tam = 17;
        break;
      case 1:  // by COO
        cmd = 199;
        compacta_limite(inicio, std::span{bloco}.subspan(0, 3), 6);
        compacta_limite(fim, std::span{bloco}.subspan(3, 3), 6);
        bloco[6] = 'T';
        tam = 7;
        break;
      case 2:  // by reduction number
        cmd = 216;
        compacta_reducao_mfd(inicio, std::span{bloco}.subspan(0, 2));
        compacta_reducao_mfd(fim, std::span{bloco}.subspan(2, 2));
        bloco[4] = 'T';
        tam = 5;
        break;
      default:  // no such reading: command 0 and no block, which the printer refuses
        break;
    }
    const std::span<const std::uint8_t> dados{bloco.data(), tam};

    std::int32_t ultimo = 0;  // reply length of the last data packet
    bool acabou = false;
    for (std::uint32_t contador = 0; ret == 0 && !acabou; ++contador) {
      if (contador > kUltimoPacote) {
        ORB_LOG("E4LeMFD%s - transferencia interrompida apos %d pacotes\n", static_cast<int>(contador));
        Input vazio;
        Reply<10> r7;
        executa(7, 0, vazio, r7);
        ret = kErroPacote;
        break;
      }
      Pacote r;
      bool falhou = envia_pacote(cmd, contador, dados, r) != 0;
      if (!falhou) {
        if (fim_dos_dados(r)) {
          confirma_fim(cmd, contador + 1);  // its answer changes nothing
          acabou = true;
        } else if (r.len <= 2) {
          // Neither data nor the end mark: asking again would only repeat it.
          falhou = true;
        } else {
          ret = anexa_pacote(arquivo, r);
          ultimo = r.len;
        }
      }
      if (falhou) {
        if (ultimo != kPacoteCheio) {
          // The data ended without the mark: close the interrupted transfer.
          Input vazio;
          Reply<10> r7;
          executa(7, 0, vazio, r7);
          acabou = true;
        } else {
          ret = kErroPacote;
        }
      }
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("E4LeMFD%s - fim com ret=%d \n", ret);
  return ret;
}

ORBELAN_API unsigned short E4LeMFDEsp(int Usuario, unsigned char Tipo, const char* Inicio,
                                      const char* Final, const char* arqDestino) {
  ORB_LOCK();
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("E4LeMFDEsp%s - inicio - Usuario=%d Tipo=%d Inicio=%s Final=%s arqDestino=%s\n", Usuario, Tipo,
          nz(Inicio), nz(Final), nz(arqDestino));
  if (ret == 0) ret = E4LeMFD(Tipo, Inicio, Final, arqDestino);
  ret = TrataRetorno(ret);
  ORB_LOG("E4LeMFDEsp%s - fim com ret=%d \n", ret);
  return ret;
}

}  // extern "C"
