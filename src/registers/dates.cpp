// Date helpers of the journal readings and the conversion of a date range into
// a COO range through a fiscal-memory reading by date.
#include "registers/dates.h"

#include <array>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/file.h"
#include "frame/text.h"
#include "orbelan.h"
#include "state/payment_records.h"

namespace orbelan {

namespace {

constexpr std::uint16_t kErroArquivo = 2902;
constexpr int kSemConversao = 2;

// The temporary files of the conversion, removed once it is over.
constexpr const char* kArqEspelho = "espelho.log";
constexpr const char* kArqDatas = "datas.log";

// The reductions listed by a fiscal-memory reading: number, counter, COO, date
// and time, with one or two blanks before the date.
constexpr const char* kLinhaReducao = "NNNN NNN NNNNNN NN/NN/NNNN NN:NN:NN";
constexpr const char* kLinhaReducao2 = "NNNN NNN NNNNNN  NN/NN/NNNN NN:NN:NN";

// How far back the reading starts, in days: from 10 up to 1800 in steps of 10.
constexpr int kPassoDias = 10;
constexpr int kMaxDias = 1800;

// The leading digits of `n` characters from `pos` (as atoi reads them).
int numero(std::string_view s, std::size_t pos, std::size_t n) {
  int v = 0;
  for (std::size_t i = pos; i < pos + n && i < s.size(); ++i) {
    const char c = s[i];
    if (c < '0' || c > '9') break;
    v = v * 10 + (c - '0');
  }
  return v;
}

// Whole days are counted on the civil calendar: no clock time is involved, so
// neither the time zone nor its daylight-saving changes can move a date by a
// day. Out-of-range days and months carry over as a calendar would.
std::chrono::sys_days dia_civil(int dia, int mes, int ano) {
  using namespace std::chrono;
  const year_month ym = year{ano} / January + months{mes - 1};
  return sys_days{ym / 1} + days{dia - 1};
}

// A date text, DD/MM/YYYY or DDMMYYYY, taken as the day after it (as the
// readings count their ranges).
std::chrono::sys_days dia_seguinte(const char* texto) {
  const std::string_view s = in_text(texto);
  if (comparaComMascara(texto, "NN/NN/NNNN") != 0) {
    return dia_civil(numero(s, 0, 2) + 1, numero(s, 3, 2), numero(s, 6, 4));
  }
  return dia_civil(numero(s, 0, 2) + 1, numero(s, 2, 2), numero(s, 4, 4));
}

bool eh_linha_reducao(const char* linha) {
  return comparaComMascara(linha, kLinhaReducao) != 0 || comparaComMascara(linha, kLinhaReducao2) != 0;
}

// Second pass: the first reduction made before DataIni; the COO after its own
// is where the range starts. True when found.
bool procura_coo_inicial(std::FILE* datas, const char* DataIni, std::array<char, 7>& cooi) {
  std::array<char, 200> linha{};
  for (;;) {
    linha.fill('\0');
    const int n = le_linha(datas, linha);
    if (n <= 0) return false;
    const std::string_view l = view(linha);
    const std::size_t pos = l.find('V') != std::string_view::npos ? 16 : 17;
    std::array<char, 11> data{};
    if (pos < l.size()) copy_text(data, l.substr(pos, 10));
    if (timeCompare(data.data(), DataIni) == 2) {
      // Six digits read plus one fit in seven characters and the terminator.
      std::array<char, 12> texto{};
      std::snprintf(texto.data(), texto.size(), "%06d", numero(l, 9, 6) + 1);
      copy_text(cooi, view(texto));
      return true;
    }
  }
}

// One attempt: the fiscal memory from `Dias` days before DataIni up to DataFim.
// Returns 0 (`achou` telling whether COOI was found) or the result that ends
// the search.
int tentativa(const char* DataIni, const char* DataFim, int Dias, std::array<char, 7>& cooi, bool& achou) {
  achou = false;
  std::array<char, 9> inicio{};
  timeMinusPlus(DataIni, Dias, 1, inicio);
  const int r = E4LMFSerial(0, 0, inicio.data(), DataFim, kArqEspelho);
  if (r != 0) return r;
  File espelho(kArqEspelho, "r+");
  File datas(kArqDatas, "w+b");
  if (!espelho || !datas) return kErroArquivo;

  // First pass: keep the reduction lines, up to the blank line that ends the list.
  std::array<char, 200> linha{};
  int lido = 0;
  for (;;) {
    linha.fill('\0');
    lido = le_linha(espelho.get(), linha);
    if (lido <= 0) break;
    if (eh_linha_reducao(linha.data())) {
      if (std::fputs(linha.data(), datas.get()) == EOF || std::fputs("\r\n", datas.get()) == EOF) break;
    }
  }
  std::fflush(datas.get());
  std::rewind(datas.get());
  // A list not closed by a blank line (or a write that failed) ends the search.
  if (lido != 0) return lido;
  achou = procura_coo_inicial(datas.get(), DataIni, cooi);
  return 0;
}

}  // namespace

int comparaComMascara(const char* Texto, const char* Mascara) {
  const std::string_view t = in_text(Texto);
  const std::string_view m = in_text(Mascara);
  if (t.size() < m.size()) return 0;
  for (std::size_t i = 0; i < m.size(); ++i) {
    const int c = static_cast<unsigned char>(t[i]);
    bool ok = true;
    switch (m[i]) {
      case 'N': ok = std::isdigit(c) != 0; break;
      case ' ': ok = std::isspace(c) != 0; break;
      case '/':
      case ':': ok = std::ispunct(c) != 0; break;
      default: break;
    }
    if (!ok) return 0;
  }
  return 1;
}

void timeMinusPlus(const char* Data, int Dias, int Subtrai, std::span<char> Resultado) {
  if (Resultado.empty()) return;
  // Far beyond any reading range; keeps the day count from overflowing.
  constexpr int kLimiteDias = 3'000'000;
  Dias = Dias < -kLimiteDias ? -kLimiteDias : (Dias > kLimiteDias ? kLimiteDias : Dias);
  const std::string_view s = in_text(Data);
  std::chrono::sys_days d = dia_civil(numero(s, 0, 2) + 1, numero(s, 2, 2), numero(s, 4, 4));
  d += std::chrono::days{Subtrai != 0 ? -Dias : Dias};
  const std::chrono::year_month_day ymd{d};
  std::snprintf(Resultado.data(), Resultado.size(), "%02u%02u%d", static_cast<unsigned>(ymd.day()),
                static_cast<unsigned>(ymd.month()), static_cast<int>(ymd.year()));
}

int timeCompare(const char* A, const char* B) {
  const auto a = dia_seguinte(A);
  const auto b = dia_seguinte(B);
  if (a == b) return 0;
  return a > b ? 1 : 2;
}

int pegaCOOEntreDatas(const char* DataIni, const char* DataFim, char* COOI, char* COOF) {
  ORB_LOG("pegaCOOEntreDatas%s - inicio \n");
  int ret = 0;

  // The printer's data: a flag that forbids the conversion and a date.
  Input in10;
  Reply<60> r10;
  const std::uint16_t ret10 = executa(10, 1, in10, r10);
  std::array<char, 9> dataImpressora{};
  copy_text(dataImpressora, r10.field(25, 8));

  // The current COO ends the range.
  Input in133;
  in133.seq().byte(3);
  Reply<30> r133;
  const std::uint16_t ret133 = executa(133, 1, in133, r133);
  std::array<char, 7> coof{};
  copy_text(coof, r133.text(1));

  if (ret10 != 0 || ret133 != 0 || r10[24] != 0) ret = kSemConversao;
  if (ret == 0) {
    const int c = timeCompare(DataFim, dataImpressora.data());
    if (c != 0 && c != 1) ret = kSemConversao;
  }

  std::array<char, 7> cooi{};
  if (ret == 0) {
    ret = kSemConversao;  // unless found
    for (int dias = kPassoDias; dias <= kMaxDias; dias += kPassoDias) {
      bool achou = false;
      const int r = tentativa(DataIni, DataFim, dias, cooi, achou);
      if (r == 0 && !achou) continue;
      ret = r;
      break;
    }
    std::remove(kArqEspelho);
    std::remove(kArqDatas);
  }

  if (ret == 0) {
    copy_out(COOI, view(cooi), cooi.size());
    copy_out(COOF, view(coof), coof.size());
  }
  ORB_LOG("pegaCOOEntreDatas%s - fim com ret=%d COOI=%s COOF=%s \n", ret, view(cooi).data(),
          ret == 0 ? coof.data() : "");
  return ret;
}

}  // namespace orbelan
