// Item increases of the current fiscal coupon, the day's list of coupon
// totals of item increases, and the day's list of cancelled fiscal coupons.
// The day is the printer's business date, not the computer's.
#include "state/increases.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/encodings.h"
#include "frame/file.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"
#include "state/payment_records.h"

namespace orbelan {

char NOME_ARQ_ACRESITENSCF[20] = "EcfAcresItens.cpf";
char NOME_ARQ_TOTALACRESCITENSCF[24] = "EcfTotalAcrescItens.cpf";
char NOME_ARQ_CFCANCELADOS[20] = "EcfCancelados.cpf";
char NOME_ARQ_VALORITEMCF[20] = "EcfValorItem.cpf";

namespace {

constexpr std::uint16_t kErroArquivo = 2902;

using Linha = std::array<char, 200>;

// `n` characters of `linha` from column `de` (fewer where the line is shorter).
std::string_view coluna(const Linha& linha, std::size_t de, std::size_t n) {
  const std::string_view l = view(linha);
  return de < l.size() ? l.substr(de, n) : std::string_view{};
}

// A column as a terminated text, for the trace and for atof.
template <std::size_t N>
std::array<char, N> texto(std::string_view s) {
  std::array<char, N> t{};
  copy_text(t, s);
  return t;
}

// Calls `cada(linha)` for every line of an open file up to the first empty
// one; `cada` returns false to stop.
template <typename F>
void percorre(std::FILE* f, F cada) {
  Linha linha{};
  for (;;) {
    linha.fill('\0');
    if (le_linha(f, linha) <= 0) return;
    if (!cada(linha)) return;
  }
}

// `t` as a fixed field of `largura` characters at `pos`: cut, or filled with
// blanks, so that the columns of the line hold. Returns the position after it.
std::size_t poe_campo(std::span<char> dst, std::size_t pos, std::string_view t, std::size_t largura) {
  for (std::size_t i = 0; i < largura && pos < dst.size() - 1; ++i, ++pos) dst[pos] = i < t.size() ? t[i] : ' ';
  return pos;
}

// Appends `n` bytes to `nome`.
std::uint16_t acrescenta(const char* nome, const char* dados, std::size_t n) {
  File f(nome, "a+");
  if (!f) return kErroArquivo;
  // One read or write of the whole: no stream buffer (whose set-up asks for the
  // file's block size) is needed.
  std::setvbuf(f.get(), nullptr, _IONBF, 0);
  if (n != 0) std::fwrite(dados, 1, n, f.get());
  return 0;
}

// The first 8 characters of the first line of `nome` (the business date the
// day file belongs to). `Data` holds 9 bytes.
std::uint16_t data_da_primeira_linha(const char* nome, std::array<char, 9>& data) {
  data.fill('\0');
  File f(nome, "r+");
  if (!f) return kErroArquivo;
  Linha linha{};
  le_linha(f.get(), linha);
  copy_text(data, coluna(linha, 0, 8));
  return 0;
}

}  // namespace

std::uint16_t Limpar_AcrescItens() {
  File f(NOME_ARQ_ACRESITENSCF, "w+");
  return 0;
}

std::uint16_t Incluir_Dados_AcresItens(const char* CCF, int Item, const char* Valor) {
  std::array<char, 12> origem{};
  copy_text(origem, in_text(Valor));
  std::array<char, 12> valor{};
  FormatacomPonto(origem, valor);
  std::array<char, 48> reg{};
  std::size_t pos = poe_campo(reg, 0, in_text(CCF, 6), 6);
  pos += static_cast<std::size_t>(std::snprintf(reg.data() + pos, reg.size() - pos, " %03d%s%s", Item,
                                                valor.data(), FINAL_LINHA));
  const std::size_t n = strnlen(reg.data(), reg.size());
  dumpBytes(reg.data(), static_cast<int>(n));
  return acrescenta(NOME_ARQ_ACRESITENSCF, reg.data(), n);
}

std::uint16_t Incluir_Cancelamento_Item_ou_AcresItem(const char* CCF, int Item) {
  std::array<char, 32> reg{};
  const std::size_t pos = poe_campo(reg, 0, in_text(CCF, 6), 6);
  std::snprintf(reg.data() + pos, reg.size() - pos, "C%03d%s", Item, FINAL_LINHA);
  return acrescenta(NOME_ARQ_ACRESITENSCF, reg.data(), strnlen(reg.data(), reg.size()));
}

std::uint16_t Ler_ValorAcrescimoItem(const char* CCF, const char* Item, char* Valor) {
  const char* ccf = CCF != nullptr ? CCF : "";
  const char* item = Item != nullptr ? Item : "";
  ORB_LOG("Ler_ValorAcrescimoItem%s - inicio - CCF=%s NumItem=%s \n", ccf, item);
  std::array<char, 12> valor{};
  std::uint16_t ret = 0;
  if (Valor != nullptr) Valor[0] = '\0';
  if (File f(NOME_ARQ_ACRESITENSCF, "r+"); !f) {
    ret = kErroArquivo;
  } else {
    percorre(f.get(), [&](const Linha& linha) {
      const auto ccf_linha = texto<7>(coluna(linha, 0, 6));
      ORB_LOG("Ler_ValorAcrescimoItem%s - CCF=%s \n", ccf_linha.data());
      if (view(ccf_linha) != ccf) return true;
      const auto item_linha = texto<4>(coluna(linha, 7, 3));
      ORB_LOG("Ler_ValorAcrescimoItem%s - Item=%s \n", item_linha.data());
      if (view(item_linha) != item || coluna(linha, 6, 1) == "C") return true;
      copy_text(valor, coluna(linha, 10, 11));
      return false;
    });
    copy_out(Valor, view(valor), valor.size());
  }
  ORB_LOG("Ler_ValorAcrescimoItem%s - fim com ret=%d - ValorAcrescItem=%s\n", ret, valor.data());
  return ret;
}

std::uint16_t Ler_ItemouAcrescItemCancelado(const char* CCF, const char* Item, std::uint8_t* Cancelado) {
  const char* ccf = CCF != nullptr ? CCF : "";
  const char* item = Item != nullptr ? Item : "";
  ORB_LOG("Ler_ItemouAcrescItemCancelado%s - inicio - CCF=%s NumItem=%s \n", ccf, item);
  std::uint8_t cancelado = 0;
  if (Cancelado != nullptr) *Cancelado = 0;
  std::uint16_t ret = 0;
  if (File f(NOME_ARQ_ACRESITENSCF, "r+"); !f) {
    ret = kErroArquivo;
  } else {
    percorre(f.get(), [&](const Linha& linha) {
      const auto ccf_linha = texto<7>(coluna(linha, 0, 6));
      ORB_LOG("Ler_ItemouAcrescItemCancelado%s - CCF=%s \n", ccf_linha.data());
      if (view(ccf_linha) != ccf) return true;
      const auto item_linha = texto<4>(coluna(linha, 7, 3));
      ORB_LOG("Ler_ItemouAcrescItemCancelado%s - Item=%s \n", item_linha.data());
      if (view(item_linha) != item || coluna(linha, 6, 1) != "C") return true;
      cancelado = 1;
      return false;
    });
    if (Cancelado != nullptr) *Cancelado = cancelado;
  }
  ORB_LOG("Ler_ItemouAcrescItemCancelado%s - fim com ret=%d - ItemCancelado=%d\n", ret, cancelado);
  return ret;
}

std::uint16_t Get_TotalAcrescItensCF(char* Total, char* CCF) {
  if (Total != nullptr) Total[0] = '\0';
  ORB_LOG("Get_TotalAcrescItensCF%s - inicio\n");
  std::array<char, 20> total{};
  std::array<char, 7> ccf{};
  std::uint16_t ret = Ler_CCF_Ultimo_Cupom(ccf.data());
  if (ret == 0) {
    copy_out(CCF, view(ccf), ccf.size());
    if (File f(NOME_ARQ_ACRESITENSCF, "r+"); !f) {
      ret = kErroArquivo;
    } else {
      // Kept in single precision; only the formatting rounds.
      float soma = 0.0F;
      percorre(f.get(), [&](const Linha& linha) {
        const auto ccf_linha = texto<7>(coluna(linha, 0, 6));
        if (view(ccf_linha) != view(ccf)) return true;
        ORB_LOG("Get_TotalAcrescItensCF%s - CCF=%s \n", ccf_linha.data());
        const auto item = texto<4>(coluna(linha, 7, 3));
        ORB_LOG("Get_TotalAcrescItensCF%s - Item=%s \n", item.data());
        // A "C" line is skipped too: its own item reads as cancelled.
        std::uint8_t cancelado = 0;
        Ler_ItemouAcrescItemCancelado(ccf.data(), item.data(), &cancelado);
        if (cancelado != 0) return true;
        const double acrescimo = std::atof(texto<12>(coluna(linha, 10, 11)).data());
        ORB_LOG("Get_TotalAcrescItensCF%s - AcrescItem=%f \n", acrescimo);
        soma += static_cast<float>(acrescimo);
        ORB_LOG("Get_TotalAcrescItensCF%s - TotalAcrescItemCF=%f \n", static_cast<double>(soma));
        std::snprintf(total.data(), total.size(), "%.2f", static_cast<double>(soma));
        ORB_LOG("Get_TotalAcrescItensCF%s - sTotalAcrescItensCF=%s \n", total.data());
        return true;
      });
      copy_out(Total, view(total), total.size());
    }
  }
  ORB_LOG("Get_TotalAcrescItensCF%s - fim com ret=%d - Total Acrescimos em Itens=%s CCF=%s\n", ret, total.data(),
          ccf.data());
  return ret;
}

std::uint16_t Limpar_TotalAcresItensCF() {
  File f(NOME_ARQ_TOTALACRESCITENSCF, "w+");
  return 0;
}

std::uint16_t Ler_DataMovimentoTotalAcrescItens(char* Data) {
  ORB_LOG("Ler_DataMovimentoTotalAcrescItens%s - inicio\n");
  std::array<char, 9> data{};
  const std::uint16_t ret = data_da_primeira_linha(NOME_ARQ_TOTALACRESCITENSCF, data);
  copy_out(Data, view(data), data.size());
  ORB_LOG("Ler_DataMovimentoTotalAcrescItens%s - fim com ret=%d - Data Movimento=%s\n", ret, data.data());
  return ret;
}

std::uint16_t Incluir_TotalAcrescItensCF() {
  ORB_LOG("Incluir_TotalAcrescItensCF%s - inicio \n");
  std::array<char, 20> total{};
  std::array<char, 7> ccf{};
  std::uint16_t ret = Get_TotalAcrescItensCF(total.data(), ccf.data());
  if (ret == 0 && std::atof(total.data()) > 0) {
    if (File f(NOME_ARQ_TOTALACRESCITENSCF, "a+"); !f) {
      ret = kErroArquivo;
    } else {
      f.close();
      std::array<char, 9> data_arquivo{};
      std::array<char, 9> data_atual{};
      Ler_DataMovimentoTotalAcrescItens(data_arquivo.data());
      ret = LeDataMovimentoAtual(data_atual.data());
      // Without the business date the line could not be placed in a day: it
      // is not written.
      if (ret == 0) {
        // A new business day starts a new list.
        if (view(data_arquivo) != view(data_atual)) Limpar_TotalAcresItensCF();
        std::array<char, 48> reg{};
        std::size_t pos = poe_campo(reg, 0, view(data_atual), 8);
        pos = poe_campo(reg, pos, view(ccf), 6);
        std::snprintf(reg.data() + pos, reg.size() - pos, "%s%s", total.data(), FINAL_LINHA);
        const std::size_t n = strnlen(reg.data(), reg.size());
        dumpBytes(reg.data(), static_cast<int>(n));
        ret = acrescenta(NOME_ARQ_TOTALACRESCITENSCF, reg.data(), n);
      }
    }
  }
  ORB_LOG("Incluir_TotalAcrescItensCF%s - fim com ret=%d\n", ret);
  return ret;
}

std::uint16_t Limpar_CuponsCFCancelados() {
  File f(NOME_ARQ_CFCANCELADOS, "w+");
  return 0;
}

std::uint16_t Incluir_CuponsCancelados(const char* Data, const char* CCF) {
  std::array<char, 20> reg{};
  std::size_t pos = poe_campo(reg, 0, in_text(Data, 8), 8);
  pos = poe_campo(reg, pos, in_text(CCF, 6), 6);
  reg[pos++] = FINAL_LINHA[0];
  reg[pos++] = FINAL_LINHA[1];
  return acrescenta(NOME_ARQ_CFCANCELADOS, reg.data(), pos);
}

std::uint16_t Ler_DataMovimentoCFCancelado(char* Data) {
  ORB_LOG("Ler_DataMovimentoCFCancelado%s - inicio\n");
  std::array<char, 9> data{};
  const std::uint16_t ret = data_da_primeira_linha(NOME_ARQ_CFCANCELADOS, data);
  copy_out(Data, view(data), data.size());
  ORB_LOG("Ler_DataMovimentoCFCancelado%s - fim com ret=%d - Data Movimento=%s\n", ret, data.data());
  return ret;
}

std::uint16_t Ler_CupomFiscalCancelado(const char* Data, const char* CCF, std::uint8_t* Cancelado) {
  const char* data = Data != nullptr ? Data : "";
  const char* ccf = CCF != nullptr ? CCF : "";
  if (Cancelado != nullptr) *Cancelado = 0;
  ORB_LOG("Ler_CupomFiscalCancelado%s - inicio - sDataMovimento= %s sCCF=%s\n", data, ccf);
  std::uint8_t cancelado = 0;
  std::uint16_t ret = 0;
  if (File f(NOME_ARQ_CFCANCELADOS, "r+"); !f) {
    ret = kErroArquivo;
  } else {
    percorre(f.get(), [&](const Linha& linha) {
      const auto data_linha = texto<9>(coluna(linha, 0, 8));
      ORB_LOG("Ler_CupomFiscalCancelado%s - DataMovimento=%s \n", data_linha.data());
      if (view(data_linha) != data) return true;
      const auto ccf_linha = texto<7>(coluna(linha, 8, 6));
      ORB_LOG("Ler_CupomFiscalCancelado%s - CCF=%s \n", ccf_linha.data());
      if (view(ccf_linha) == ccf) cancelado = 1;
      return true;
    });
    if (Cancelado != nullptr) *Cancelado = cancelado;
  }
  ORB_LOG("Ler_CupomFiscalCancelado%s - fim com ret=%d - Data Movimento=%s COO=%s CupomCancelado=%d\n", ret, data,
          ccf, cancelado);
  return ret;
}

std::uint16_t LeDataMovimentoAtual(char* Data) {
  if (Data != nullptr) Data[0] = '\0';
  std::uint16_t ret = OPENOK == 0 ? kNaoAberto : 0;
  ORB_LOG("LeDataMovimentoAtual%s - inicio \n");
  std::array<char, 9> data{};
  if (ret == 0) {
    Input in;
    in.seq();
    Reply<10> r;
    ret = executa(139, 1, in, r);
    if (ret == 0) {
      copy_text(data, r.field(1, 8));
      copy_out(Data, view(data), data.size());
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("LeDataMovimentoAtual%s - fim com ret=%d Data Movimento=%s\n", ret, data.data());
  return ret;
}

std::uint16_t IncluiDadosCFCancelado_Arquivo() {
  std::array<char, 9> data_arquivo{};
  std::array<char, 9> data_atual{};
  std::uint16_t ret = 0;
  if (Ler_DataMovimentoCFCancelado(data_arquivo.data()) == 0) {
    ORB_LOG("IncluiDadosCFCancelado_Arquivo%s - Data Movimento=%s\n", data_arquivo.data());
    ret = LeDataMovimentoAtual(data_atual.data());
    ORB_LOG("IncluiDadosCFCancelado_Arquivo%s - Data Movimento Atual=%s\n", data_atual.data());
    // A new business day starts a new list.
    if (ret == 0 && view(data_arquivo) != view(data_atual)) Limpar_CuponsCFCancelados();
  } else {
    ORB_LOG("IncluiDadosCFCancelado_Arquivo%s - Arquivo nao existe\n");
    ret = LeDataMovimentoAtual(data_atual.data());
    ORB_LOG("IncluiDadosCFCancelado_Arquivo%s - Data Movimento Atual=%s\n", data_atual.data());
  }
  // Without the business date the coupon could not be placed in a day: it
  // is not recorded.
  if (ret == 0) {
    std::array<char, 7> ccf{};
    ret = Ler_CCF_Ultimo_Cupom(ccf.data());
    ORB_LOG("IncluiDadosCFCancelado_Arquivo%s - Data Movimento=%s CCF=%s\n", data_atual.data(), ccf.data());
    if (ret == 0) ret = Incluir_CuponsCancelados(data_atual.data(), ccf.data());
  }
  return ret;
}

std::uint16_t CalcularTotalAcrescItensDia(char* out) {
  ORB_LOG("CalcularTotalAcrescItensDia%s - inicio\n");
  if (out != nullptr) out[0] = '\0';
  std::array<char, 9> data_arquivo{};
  std::array<char, 9> data_atual{};
  std::uint16_t ret = Ler_DataMovimentoTotalAcrescItens(data_arquivo.data());
  if (ret == 0) ret = LeDataMovimentoAtual(data_atual.data());
  float total = 0.0F;
  if (ret == 0 && view(data_arquivo) == view(data_atual)) {
    if (File f(NOME_ARQ_TOTALACRESCITENSCF, "r+"); !f) {
      ret = kErroArquivo;
    } else {
      percorre(f.get(), [&](const Linha& linha) {
        const auto ccf = texto<7>(coluna(linha, 8, 6));
        std::uint8_t cancelado = 0;
        Ler_CupomFiscalCancelado(data_atual.data(), ccf.data(), &cancelado);
        if (cancelado == 0) {
          total += static_cast<float>(std::atof(texto<12>(coluna(linha, 14, 11)).data()));
          dumpLog("CalcularTotalAcrescItensDia - TotalAcrescimosemItensDia =%f\n", static_cast<double>(total));
        }
        return true;
      });
    }
  }
  // A day file that does not exist yet holds no increases.
  if (ret == kErroArquivo) ret = 0;
  std::array<char, 18> valor{};
  std::snprintf(valor.data(), valor.size(), "%.2f", static_cast<double>(total));
  dumpLog("CalcularTotalAcrescItensDia - sTotalAcrescimosemItensDia =%s\n", valor.data());
  FormataValor2(valor, 17);
  copy_out(out, view(valor), valor.size());
  ORB_LOG("CalcularTotalAcrescItensDia%s - fim com ret=%d - Total Acrescimos em Itens no Dia=%s\n", ret,
          valor.data());
  return ret;
}

}  // namespace orbelan
