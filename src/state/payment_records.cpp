// Payment records of the coupons: the current coupon's flat files and the
// day's line files, read and written one call at a time.
#include "state/payment_records.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include "frame/dumplog.h"
#include "frame/encodings.h"
#include "frame/file.h"
#include "frame/text.h"
#include "registers/values.h"

namespace orbelan {

char NOME_ARQ_PAGTO[20] = "EcfZandor.pgt";
char NOME_ARQ_INDPGTO[20] = "EcfZandor.ind";
char NOME_ARQ_PAGTOPORCOO[20] = "EcfZandorCoo.pgt";
char NOME_ARQ_INDPGTOPORCOO[20] = "EcfZandorCOO.ind";

namespace {

constexpr std::uint16_t kErroArquivo = 2902;

// The flat files are looked at through one read of at most 199 bytes; a
// payment beyond that window is never seen.
constexpr std::size_t kJanela = 199;
using Bloco = std::array<char, kJanela + 1>;

// Reads the window of `nome` into `bloco` (zeroed). False if it cannot be opened.
bool le_bloco(const char* nome, Bloco& bloco, std::size_t& lidos) {
  bloco.fill('\0');
  lidos = 0;
  File f(nome, "r+");
  if (!f) return false;
  // One read or write of the whole: no stream buffer (whose set-up asks for the
  // file's block size) is needed.
  std::setvbuf(f.get(), nullptr, _IONBF, 0);
  lidos = std::fread(bloco.data(), 1, kJanela, f.get());
  return true;
}

// The byte at `i` of a buffer, NUL past its end.
template <std::size_t N>
char em(const std::array<char, N>& a, std::size_t i) {
  return i < N ? a[i] : '\0';
}

// The number written by the `width` characters from `i` (atoi: digits up to
// the first other character).
template <std::size_t N>
int numero_em(const std::array<char, N>& a, std::size_t i, std::size_t width, std::array<char, 3>& aux) {
  aux.fill('\0');
  for (std::size_t k = 0; k < width && k < aux.size() - 1; ++k) aux[k] = em(a, i + k);
  return std::atoi(aux.data());
}

// Truncates or creates `nome`; a failure is not reported.
std::uint16_t limpa(const char* nome) {
  File f(nome, "w+");
  return 0;
}

// Appends `texto` to `nome`.
std::uint16_t acrescenta(const char* nome, std::string_view texto) {
  File f(nome, "a+");
  if (!f) return kErroArquivo;
  // One read or write of the whole: no stream buffer (whose set-up asks for the
  // file's block size) is needed.
  std::setvbuf(f.get(), nullptr, _IONBF, 0);
  if (!texto.empty()) std::fwrite(texto.data(), 1, texto.size(), f.get());
  return 0;
}

// Appends "$" and the decimal number to `nome`.
std::uint16_t acrescenta_item(const char* nome, unsigned valor) {
  std::array<char, 16> item{};
  item[0] = '$';
  intoAsk(valor, std::span<char>{item}.subspan(1), 10);
  return acrescenta(nome, view(item));
}

using Linha = std::array<char, 200>;

// Looks for the line of `coo` (characters 3-8) in the line file `nome`, tracing
// under the name of the function `quem`. Returns 2902 when the file cannot be
// opened; `achou` tells whether `linha` holds the line found.
std::uint16_t procura_linha_coo(const char* quem, const char* nome, std::string_view coo, Linha& linha,
                                int& tamanho, bool& achou) {
  achou = false;
  tamanho = 0;
  File f(nome, "r+");
  if (!f) return kErroArquivo;
  for (;;) {
    linha.fill('\0');
    tamanho = le_linha(f.get(), linha);
    if (tamanho <= 0) {
      // Records are separated by an empty line; two in a row end the file.
      linha.fill('\0');
      tamanho = le_linha(f.get(), linha);
      if (tamanho <= 0) {
        dumpLog("%s%s fim do arquivo.\n", quem, trace_version());
        return 0;
      }
    }
    std::array<char, 4> tipo{};
    std::array<char, 7> n_coo{};
    copy_text(tipo, view(linha).substr(0, 3));
    const std::string_view l = view(linha);
    if (l.size() > 3) copy_text(n_coo, l.substr(3, 6));
    dumpLog("%s%s - sCOO=%s \n", quem, trace_version(), tipo.data());
    dumpLog("%s%s - nCOO=%s\n", quem, trace_version(), n_coo.data());
    // A COO of other than six characters never matches a line.
    if (coo.size() == 6 && view(n_coo) == coo) {
      achou = true;
      return 0;
    }
  }
}

// How a walk over payment items goes on: std::nullopt to the next item, or the
// result to stop with.
using Passo = std::optional<std::uint16_t>;

// Hands each "$" item in the window of `nome` to `olha`, as the number written
// by the `digitos` characters behind the "$". Returns what `olha` stopped with,
// 0 at the end of the window, or 2902 when the file cannot be opened.
template <typename Olha>
std::uint16_t itens_da_janela(const char* nome, std::size_t digitos, Olha&& olha) {
  Bloco bloco;
  std::size_t lidos = 0;
  if (!le_bloco(nome, bloco, lidos)) return kErroArquivo;
  std::array<char, 3> aux{};
  for (std::size_t i = 0; i < lidos; ++i) {
    if (bloco[i] != '$') continue;
    if (const Passo fim = olha(numero_em(bloco, i + 1, digitos, aux))) return *fim;
  }
  return 0;
}

// Where the payment items of a record line start.
constexpr int kInicioItens = 9;

// Hands each item of the line of `coo` in the line file `nome` to `olha`, as
// for the window above, tracing every character looked at and every number
// read under the name of the function `quem`. Each item is taken as "$" and
// `digitos` digits. Returns what `olha` stopped with, else what the search for
// the line did.
template <typename Olha>
std::uint16_t itens_da_linha(const char* quem, const char* nome, std::string_view coo, std::size_t digitos,
                             Olha&& olha) {
  Linha linha;
  int tamanho = 0;
  bool achou = false;
  const std::uint16_t ret = procura_linha_coo(quem, nome, coo, linha, tamanho, achou);
  if (ret != 0 || !achou) return ret;
  std::array<char, 3> aux{};
  for (int i = kInicioItens; i < tamanho;) {
    const auto at = static_cast<std::size_t>(i);
    dumpLog("%s%s - linha[i]=%c\n", quem, trace_version(), linha[at]);
    if (linha[at] != '$') {
      ++i;
      continue;
    }
    const int valor = numero_em(linha, at + 1, digitos, aux);
    dumpLog("%s%s - bufAux=%s\n", quem, trace_version(), aux.data());
    if (const Passo fim = olha(valor)) return *fim;
    i += static_cast<int>(digitos) + 1;
  }
  return 0;
}

}  // namespace

int le_linha(std::FILE* f, std::span<char> linha) {
  if (f == nullptr || linha.empty()) return -1;
  std::size_t n = 0;
  int c = 0;
  while ((c = std::fgetc(f)) != EOF) {
    if (c == '\n') {
      linha[n] = '\0';
      return static_cast<int>(n);
    }
    if (c == '\r') continue;
    // A line longer than the buffer keeps what fits; the rest is skipped.
    if (n + 1 < linha.size()) linha[n++] = static_cast<char>(c);
  }
  linha[n] = '\0';
  return n > 0 ? static_cast<int>(n) : -1;
}

std::uint16_t Ler_COO_Ultimo_Cupom(char* sCOO) {
  ORB_LOG("Ler_COO_Ultimo_Cupom%s - inicio \n");
  if (sCOO != nullptr) sCOO[0] = '\0';
  std::array<char, kTamValorRegistrador + 1> valor{};
  const std::uint16_t ret = Ler_Valor_Atual_Reg_Fiscal(3, valor.data()) & 0xFF;
  if (ret == 0) copy_out(sCOO, view(valor), 10);
  ORB_LOG("Ler_COO_Ultimo_Cupom%s - fim com ret=%d - sCOO=%s \n", ret, sCOO != nullptr ? sCOO : "");
  return ret;
}

std::uint16_t Ler_CCF_Ultimo_Cupom(char* sCCF) {
  ORB_LOG("Ler_CCF_Ultimo_Cupom%s - inicio \n");
  if (sCCF != nullptr) sCCF[0] = '\0';
  std::array<char, 10> valor{};
  const std::uint16_t ret = Executa_Leitura_Registrador_Geral(133, 137, valor.data(), 0, valor.size()) & 0xFF;
  if (ret == 0) copy_out(sCCF, view(valor), 7);
  ORB_LOG("Ler_CCF_Ultimo_Cupom%s - fim com ret=%d - sCCF=%s \n", ret, sCCF != nullptr ? sCCF : "");
  return ret;
}

std::uint16_t Limpar_Pagamentos() { return limpa(NOME_ARQ_PAGTO); }
std::uint16_t Limpar_IndicesPagamentos() { return limpa(NOME_ARQ_INDPGTO); }
std::uint16_t Limpar_PagamentosCOO() { return limpa(NOME_ARQ_PAGTOPORCOO); }
std::uint16_t Limpar_IndicesPagamentosCOO() { return limpa(NOME_ARQ_INDPGTOPORCOO); }

std::uint16_t Incluir_COO_Pagamento(const char* sCOO) {
  // The COO and "#" share a 10-byte record: a longer COO keeps its first nine
  // characters, so the "#" that ends it is never lost.
  std::array<char, 11> reg{};
  const std::size_t n = copy_text(std::span<char>{reg.data(), 10}, in_text(sCOO, 9));
  reg[n] = '#';
  return acrescenta(NOME_ARQ_PAGTO, view(reg));
}

std::uint16_t Incluir_Indice_Pagamento(unsigned MeioPagto) { return acrescenta_item(NOME_ARQ_PAGTO, MeioPagto); }

std::uint16_t Incluir_Indice_Pagamento_EmissaoCCD(unsigned Indice) {
  return acrescenta_item(NOME_ARQ_INDPGTO, Indice);
}

std::uint16_t Incluir_Indice_PagamentoCOO(unsigned Indice, const char* NomeArquivo) {
  return acrescenta_item(NomeArquivo != nullptr ? NomeArquivo : "", Indice);
}

std::uint16_t Incluir_Indice_COO(const char* NomeArquivo, const char* sCOO, const char* Tipo) {
  const char* nome = NomeArquivo != nullptr ? NomeArquivo : "";
  ORB_LOG("Incluir_Indice_COO%s NomeArquivo=%s sCOO=%s\n", nome, sCOO != nullptr ? sCOO : "");
  std::array<char, 10> coo{};
  // "\r\n", "\n", the tag and a COO of up to nine characters.
  std::array<char, 16> escrita{};
  std::size_t pos = 0;
  std::uint16_t ret = 0;

  if (File f(nome, "a+"); !f) {
    ret = kErroArquivo;
  } else {
    std::rewind(f.get());
    std::array<char, 99> bloco{};
    std::size_t ultimo = 0;
    // The last three bytes of the file, oldest first (NUL where the file is
    // shorter).
    std::array<char, 3> cauda{};
    for (std::size_t lidos; (lidos = std::fread(bloco.data(), 1, bloco.size(), f.get())) > 0;) {
      ultimo = lidos;
      for (std::size_t i = 0; i < lidos; ++i) {
        cauda[0] = cauda[1];
        cauda[1] = cauda[2];
        cauda[2] = bloco[i];
      }
    }
    if (ultimo > 0) {
      dumpLog("Incluir_Indice_COO bufread:\n");
      dumpBytes(bloco.data(), static_cast<int>(ultimo));
      dumpLog("Incluir_Indice_COO fim bufread\n");
      // The two bytes before the file's last one; only a record that ends in
      // "\r\n" plus one byte goes without a new separator.
      if (cauda[0] != FINAL_LINHA[0] || cauda[1] != FINAL_LINHA[1]) {
        escrita[0] = FINAL_LINHA[0];
        escrita[1] = FINAL_LINHA[1];
        pos = 2;
      }
    }
  }

  bool existe = false;
  if (ret == 0) {
    if (std::string_view{nome} == NOME_ARQ_INDPGTOPORCOO && !in_text(sCOO).empty()) {
      copy_text(coo, in_text(sCOO, 9));
      std::uint8_t flag = 0;
      Verifica_ExisteCOO_ArqIndPgtoporCOO(coo.data(), &flag);
      existe = flag != 0;
    } else {
      // Every other file records the printer's COO, whatever was given.
      ret = Ler_COO_Ultimo_Cupom(coo.data());
    }
  }

  if (!existe) {
    if (File f(nome, "a+"); !f) {
      ret = kErroArquivo;
    } else if (ret == 0) {
      // A record whose COO could not be read is not started at all.
      escrita[pos] = '\n';
      const std::string_view tipo = Tipo != nullptr ? in_text(Tipo, 3) : std::string_view{"COO"};
      for (std::size_t i = 0; i < 3; ++i) escrita[pos + 1 + i] = i < tipo.size() ? tipo[i] : ' ';
      copy_text(std::span<char>{escrita}.subspan(pos + 4), view(coo));
      ORB_LOG("Incluir_Indice_COO%s bufwrite=%s \n", escrita.data());
      std::setvbuf(f.get(), nullptr, _IONBF, 0);  // one write, no stream buffer
      const std::string_view w = view(escrita);
      std::fwrite(w.data(), 1, w.size(), f.get());
    }
  }
  ORB_LOG("Incluir_Indice_COO%s -Fim - ret=%d\n", ret);
  return ret;
}

std::uint16_t Ler_COO_Pagamento(char* sCOO) {
  ORB_LOG("Ler_COO_Pagamento%s - inicio  \n");
  std::array<char, 10> coo{};
  if (sCOO != nullptr) sCOO[0] = '\0';
  Bloco bloco;
  std::size_t lidos = 0;
  const std::uint16_t ret = le_bloco(NOME_ARQ_PAGTO, bloco, lidos) ? 0 : kErroArquivo;
  if (ret == 0) {
    for (std::size_t i = 0; i < 6 && bloco[i] != '#'; ++i) coo[i] = bloco[i];
    copy_out(sCOO, view(coo), 7);
  }
  ORB_LOG("Ler_COO_Pagamento%s - fim com ret=%d - COO=%s \n", ret, coo.data());
  return ret;
}

std::uint16_t Ler_Qtde_Pagamentos(unsigned* Qtde) {
  ORB_LOG("Ler_Qtde_Pagamentos%s - inicio \n");
  unsigned qtde = 0;
  if (Qtde != nullptr) *Qtde = 0;
  const std::uint16_t ret = itens_da_janela(NOME_ARQ_PAGTO, 0, [&](int) -> Passo {
    ++qtde;
    return std::nullopt;
  });
  if (Qtde != nullptr) *Qtde = qtde;
  ORB_LOG("Ler_Qtde_Pagamentos%s - fim com ret=%d - Qtde=%d \n", ret, qtde);
  return ret;
}

std::uint16_t Ler_Indice_Pagamento(unsigned MeioPagto, std::uint8_t* Indice) {
  ORB_LOG("Ler_Indice_Pagamento%s - inicio - MeioPagto=%d \n", MeioPagto);
  std::uint8_t indice = 0;
  if (Indice != nullptr) *Indice = 0;
  std::uint8_t ordinal = 0;
  // Two characters are taken: "$7$" reads 7, "$12" reads 12.
  const std::uint16_t ret = itens_da_janela(NOME_ARQ_PAGTO, 2, [&](int valor) -> Passo {
    ++ordinal;
    if (valor != static_cast<int>(MeioPagto)) return std::nullopt;
    std::uint8_t uso = 0;
    const std::uint16_t r = Verificar_IndicePagto_EmissaoCCD(ordinal, &uso);
    ORB_LOG("Ler_Indice_Pagamento%s - Verificar_IndicePagto_EmissaoCCD-StatusUso=%d\n", uso);
    if (r == 0 && uso != 0) return std::nullopt;
    indice = ordinal;
    return r;
  });
  if (Indice != nullptr) *Indice = indice;
  ORB_LOG("Ler_Indice_Pagamento%s - fim com ret=%d - Indice=%d \n", ret, indice);
  return ret;
}

std::uint16_t Verificar_IndicePagto_EmissaoCCD(unsigned Indice, std::uint8_t* StatusUso) {
  ORB_LOG("Verificar_IndicePagto_EmissaoCCD%s - inicio - IndicePagto=%d \n", Indice);
  std::uint8_t uso = 0;
  if (StatusUso != nullptr) *StatusUso = 0;
  // Only the first digit of an ordinal is compared.
  const std::uint16_t ret = itens_da_janela(NOME_ARQ_INDPGTO, 1, [&](int valor) -> Passo {
    if (valor != static_cast<int>(Indice)) return std::nullopt;
    uso = 1;
    return 0;
  });
  if (StatusUso != nullptr) *StatusUso = uso;
  ORB_LOG("Verificar_IndicePagto_EmissaoCCD%s - fim com ret=%d - Status do Uso=%d \n", ret, uso);
  return ret;
}

std::uint16_t Ler_Indice_PagamentoCOO(const char* sCOO, unsigned MeioPagto, std::uint8_t* Indice) {
  const char* coo_txt = sCOO != nullptr ? sCOO : "";
  ORB_LOG("Ler_Indice_PagamentoCOO%s - inicio - COO=%s MeioPagto=%d \n", coo_txt, MeioPagto);
  std::uint8_t indice = 0;
  if (Indice != nullptr) *Indice = 0;
  std::uint8_t ordinal = 0;
  const std::uint16_t ret =
      itens_da_linha("Ler_Indice_PagamentoCOO", NOME_ARQ_PAGTOPORCOO, coo_txt, 2, [&](int valor) -> Passo {
        ++ordinal;
        if (valor != static_cast<int>(MeioPagto)) return std::nullopt;
        std::uint8_t uso = 0;
        const std::uint16_t r = Verificar_IndicePgtoCOO_EmissaoCCD(coo_txt, ordinal, &uso);
        ORB_LOG("Ler_Indice_PagamentoCOO%s - Verificar_IndicePgtoCOO_EmissaoCCD-StatusUso=%d\n", uso);
        if (r == 0 && uso != 0) return std::nullopt;
        indice = ordinal;
        return r;
      });
  if (Indice != nullptr) *Indice = indice;
  ORB_LOG("Ler_Indice_PagamentoCOO%s - fim com ret=%d - Indice=%d \n", ret, indice);
  return ret;
}

std::uint16_t Verificar_IndicePgtoCOO_EmissaoCCD(const char* sCOO, unsigned Indice, std::uint8_t* StatusUso) {
  const char* coo_txt = sCOO != nullptr ? sCOO : "";
  ORB_LOG("Verificar_IndicePgtoCOO_EmissaoCCD%s - inicio - COO=%s Indice=%d \n", coo_txt, Indice);
  std::uint8_t uso = 0;
  if (StatusUso != nullptr) *StatusUso = 0;
  // One digit per ordinal.
  const std::uint16_t ret =
      itens_da_linha("Verificar_IndicePgtoCOO_EmissaoCCD", NOME_ARQ_INDPGTOPORCOO, coo_txt, 1, [&](int valor) -> Passo {
        if (valor != static_cast<int>(Indice)) return std::nullopt;
        uso = 1;
        return 0;
      });
  if (StatusUso != nullptr) *StatusUso = uso;
  ORB_LOG("Verificar_IndicePgtoCOO_EmissaoCCD%s - fim com ret=%d - StatusUso=%d \n", ret, uso);
  return ret;
}

std::uint16_t Verifica_ExisteCOO_ArqIndPgtoporCOO(const char* sCOO, std::uint8_t* Existe) {
  const char* coo_txt = sCOO != nullptr ? sCOO : "";
  const std::string_view coo{coo_txt};
  ORB_LOG("Verifica_ExisteCOO_ArqIndPgtoporCOO%s - inicio - COO=%s\n", coo_txt);
  if (Existe != nullptr) *Existe = 0;
  Linha linha;
  int tamanho = 0;
  bool achou = false;
  const std::uint16_t ret = procura_linha_coo("Verifica_ExisteCOO_ArqIndPgtoporCOO", NOME_ARQ_INDPGTOPORCOO, coo,
                                              linha, tamanho, achou);
  const std::uint8_t existe = ret == 0 && achou ? 1 : 0;
  if (Existe != nullptr) *Existe = existe;
  ORB_LOG("Verifica_ExisteCOO_ArqIndPgtoporCOO%s - fim com ret=%d - ExisteCOO=%d \n", ret, existe);
  return ret;
}

}  // namespace orbelan
