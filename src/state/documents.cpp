// The last document type, the operator's name, and the owner and store facts
// read from the printer on demand.
#include "state/documents.h"

#include <array>
#include <cstring>

#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/encodings.h"
#include "frame/file.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"

namespace orbelan {

char NOME_ARQ_TIPO_CUPOM[20] = "EcfZandor.cpm";
char NOME_ARQ_OPERADOR[20] = "NomeOper.cfg";

namespace {

constexpr std::uint16_t kErroArquivo = 2902;

// Rewrites `nome` whole with `texto`.
std::uint16_t grava_arquivo(const char* nome, const char* texto) {
  File f(nome, "w+");
  if (!f) return kErroArquivo;
  // One read or write of the whole: no stream buffer (whose set-up asks for the
  // file's block size) is needed.
  std::setvbuf(f.get(), nullptr, _IONBF, 0);
  const std::string_view t = in_text(texto);
  if (!t.empty()) std::fwrite(t.data(), 1, t.size(), f.get());
  return 0;
}

}  // namespace

std::uint16_t Incluir_Tipo_Cupom(const char* Tipo) { return grava_arquivo(NOME_ARQ_TIPO_CUPOM, Tipo); }

std::uint16_t Ler_Tipo_Ultimo_Cupom(char* Tipo) {
  ORB_LOG("Ler_Tipo_Ultimo_Cupom%s - inicio  \n");
  std::array<char, 4> tipo{};
  std::uint16_t ret = 0;
  File f(NOME_ARQ_TIPO_CUPOM, "r+");
  if (!f) {
    ret = kErroArquivo;
  } else {
    std::array<char, 200> buf{};
    std::setvbuf(f.get(), nullptr, _IONBF, 0);  // one read, no stream buffer
    // A type needs its three characters; anything shorter reads as no type.
    if (std::fread(buf.data(), 1, 199, f.get()) > 2) std::memcpy(tipo.data(), buf.data(), 3);
    f.close();
  }
  if (Tipo != nullptr) std::memcpy(Tipo, tipo.data(), tipo.size());
  ORB_LOG("Ler_Tipo_Ultimo_Cupom%s - fim com ret=%d - TipoCupom=%s \n", ret, tipo.data());
  return ret;
}

std::uint16_t Incluir_Operador(const char* Nome) { return grava_arquivo(NOME_ARQ_OPERADOR, Nome); }

std::uint16_t Ler_Operador(char* Nome) {
  ORB_LOG("Ler_Operador%s - inicio  \n");
  std::array<char, 21> nome{};
  std::array<char, 200> buf{};
  // A missing operator file is not an error: the name is simply empty.
  if (File f(NOME_ARQ_OPERADOR, "r+"); f) {
    std::setvbuf(f.get(), nullptr, _IONBF, 0);  // one read, no stream buffer
    const std::size_t lidos = std::fread(buf.data(), 1, 199, f.get());
    // The name is cut to 20 characters here, not when it is stored.
    std::memcpy(nome.data(), buf.data(), lidos < 20 ? lidos : 20);
  }
  if (Nome != nullptr) std::memcpy(Nome, nome.data(), nome.size());
  ORB_LOG("Ler_Operador%s - fim com ret=%d - Operador=%s \n", 0, buf.data());
  return 0;
}

std::uint16_t Ler_Indice_Proprietario(std::uint8_t* out) {
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Ler_Indice_Proprietario%s - inicio \n");
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<10> r;
    ret = executa(27, 1, in, r);
    if (ret == 0 && out != nullptr) {
      out[0] = r[0];
      if (r[0] <= 10) {
        out[1] = static_cast<std::uint8_t>(10 - r[0]);
        ORB_LOG("Ler_Indice_Proprietario%s - QtdeCalculada=%d \n", out[1]);
      } else {
        out[1] = 0;
      }
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Ler_Indice_Proprietario%s - fim com ret=%d \n", ret);
  return ret;
}

std::int32_t Ler_DataHora_Proprietario_Atual(char* out) {
  ORB_LOG("Ler_DataHora_Proprietario_Atual%s - inicio \n");
  // No open-session test: this read goes to the driver in any case.
  Input in;
  in.seq().byte(0xFF);
  Reply<70> r;
  const std::uint16_t ret = executa(28, 1, in, r);
  if (ret == 0) copy_out(out, r.field(2, 12), 13);
  ORB_LOG("Ler_DataHora_Proprietario_Atual%s ret=%d Retorno=%s\n", ret,
          ret == 0 && out != nullptr ? out : "");
  return ret;
}

std::uint16_t Obter_Numero_da_Loja(char* out) {
  ORB_LOG("Obter_Numero_da_Loja%s - inicio\n");
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("Obter_Numero_da_Loja%s - inicio  \n");
  if (out != nullptr) out[0] = '\0';
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<5> r;
    ret = executa(246, 1, in, r);
    if (ret == 0) {
      std::array<char, 6> resposta{};
      std::memcpy(resposta.data(), r.b.data(), r.b.size());
      ORB_LOG("Obter_Numero_da_Loja%s - fim com ret=%d bufResp=%s\n", ret, resposta.data());
      std::array<char, 6> digitos{};
      std::size_t n = 0;
      for (const std::uint8_t c : r.b) {
        if (c >= '0' && c <= '9') digitos[n++] = static_cast<char>(c);
      }
      // More than four digits keep the last four (the number is four wide).
      std::array<char, 5> loja{};
      LeftPad(view(digitos), loja, 4);
      if (view(loja) == "9999") copy_text(loja, "0000");
      copy_out(out, view(loja), 5);
      ORB_LOG("Obter_Numero_da_Loja%s - fim com ret=%d Numero Loja=%s\n", ret, loja.data());
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("Obter_Numero_da_Loja%s - fim com ret=%d\n", ret);
  return ret;
}

}  // namespace orbelan
