// Value and text encodings: number and digit fields, packed decimal digits,
// amounts with two decimals, character masking and the code page 850 mapping.
#include "frame/encodings.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "frame/command.h"
#include "frame/dumplog.h"
#include "frame/result.h"
#include "frame/session.h"
#include "frame/text.h"

namespace orbelan {

// Two rows are not the plain code page: 0xAD (soft hyphen) prints as the
// horizontal line 0xC4, and 0xFE goes to 0xE8. ConversaoASCII's results rest
// on this exact table.
const std::uint8_t TabelaConv[191] = {
    0xA0, 0xFF, 0xA1, 0xAD, 0xA2, 0xBD, 0xA3, 0x9C, 0xA5, 0xBE, 0xA6, 0xDD, 0xA7, 0xF5, 0xA8, 0xF9,
    0xA9, 0xB8, 0xAA, 0xA6, 0xAB, 0xAE, 0xAC, 0xAA, 0xAD, 0xC4, 0xAE, 0xA9, 0xAF, 0xEE, 0xB0, 0xF8,
    0xB1, 0xF1, 0xB2, 0xFD, 0xB3, 0xFC, 0xB4, 0xEF, 0xB5, 0xE6, 0xB6, 0xF4, 0xB7, 0xFA, 0xB8, 0xF7,
    0xB9, 0xFB, 0xBA, 0xA7, 0xBB, 0xAF, 0xBC, 0xAC, 0xBD, 0xAB, 0xBE, 0xF3, 0xBF, 0xA8, 0xC0, 0xB7,
    0xC1, 0xB5, 0xC2, 0xB6, 0xC3, 0xC7, 0xC4, 0x8E, 0xC5, 0x8F, 0xC6, 0x92, 0xC7, 0x80, 0xC8, 0xD4,
    0xC9, 0x90, 0xCA, 0xD2, 0xCB, 0xD3, 0xCC, 0xDE, 0xCD, 0xD6, 0xCE, 0xD7, 0xCF, 0xD8, 0xD0, 0xD1,
    0xD1, 0xA5, 0xD2, 0xE3, 0xD3, 0xE0, 0xD4, 0xE2, 0xD5, 0xE5, 0xD6, 0x99, 0xD7, 0x9E, 0xD8, 0x9D,
    0xD9, 0xEB, 0xDA, 0xE9, 0xDB, 0xEA, 0xDC, 0x9A, 0xDD, 0xED, 0xDE, 0xE8, 0xDF, 0xE1, 0xE0, 0x85,
    0xE1, 0xA0, 0xE2, 0x83, 0xE3, 0xC6, 0xE4, 0x84, 0xE5, 0x86, 0xE6, 0x91, 0xE7, 0x87, 0xE8, 0x8A,
    0xE9, 0x82, 0xEA, 0x88, 0xEB, 0x89, 0xEC, 0x8D, 0xED, 0xA1, 0xEE, 0x8C, 0xEF, 0x8B, 0xF0, 0xD0,
    0xF1, 0xA4, 0xF2, 0x95, 0xF3, 0xA2, 0xF4, 0x93, 0xF5, 0xE4, 0xF6, 0x94, 0xF7, 0xF6, 0xF8, 0x9B,
    0xF9, 0x97, 0xFA, 0xA3, 0xFB, 0x96, 0xFC, 0x81, 0xFD, 0xEC, 0xFE, 0xE8, 0xFF, 0x98,
    0x00};

namespace {

constexpr int kLinhasTabela = 95;

// Length of the text held in `s`: up to its NUL or the span's end.
std::size_t text_len(std::span<const char> s) { return s.empty() ? 0 : strnlen(s.data(), s.size()); }

// The text of a view, up to an embedded NUL if there is one.
std::string_view upto_nul(std::string_view s) { return s.substr(0, std::min(s.find('\0'), s.size())); }

// Copies `src` into `dst` (they may overlap), cut to the span, NUL-terminated.
void put_text(std::span<char> dst, std::string_view src) {
  if (dst.empty()) return;
  const std::size_t n = std::min(src.size(), dst.size() - 1);
  if (n != 0) std::memmove(dst.data(), src.data(), n);
  dst[n] = '\0';
}

// A NUL-terminated copy of a text for a trace line (long texts are cut).
struct Shown {
  std::array<char, 256> b{};
  explicit Shown(std::string_view s) { copy_text(b, s); }
  explicit Shown(std::span<const char> s) : Shown(std::string_view{s.data(), text_len(s)}) {}
  const char* c_str() const { return b.data(); }
};

// Appends characters to an output of at most `limit` bytes (terminator
// included); characters beyond the room are dropped.
class Writer {
 public:
  explicit Writer(std::span<char> out, std::size_t limit = SIZE_MAX)
      : out_(out.first(std::min(out.size(), limit))) {}
  void put(char c) {
    if (n_ + 1 < out_.size()) out_[n_++] = c;
  }
  void put(std::string_view s) {
    for (char c : s) put(c);
  }
  // Writes the terminator; returns the length of the text written.
  int finish() {
    if (!out_.empty()) out_[n_] = '\0';
    return static_cast<int>(n_);
  }

 private:
  std::span<char> out_;
  std::size_t n_ = 0;
};

int number_text(std::uint32_t value, std::span<char> buf, int base, bool zero_is_digit) {
  std::array<char, 32> digits{};  // base 2 needs at most 32
  std::size_t n = 0;
  // A base outside 2..36 has no digits to offer: the text stays empty.
  if (base >= 2 && base <= 36) {
    // The value is divided as a signed number, as the callers' counters are.
    auto v = static_cast<std::int32_t>(value);
    if (v == 0 && zero_is_digit) digits[n++] = '0';
    while (v != 0 && n < digits.size()) {
      const int d = v % base;
      digits[n++] = static_cast<char>(d > 9 ? d + 55 : d + '0');
      v /= base;
    }
  }
  Writer w(buf);
  while (n > 0) w.put(digits[--n]);
  return w.finish();
}

// The digits of an amount text, right-aligned in `end` positions of `str`.
// With `decimals`, a comma starts the decimals, which end after two and are
// filled up to two with "0".
int amount_field(std::span<char> str, int end, bool decimals) {
  if (str.empty()) return 0;
  const std::size_t field = std::min(static_cast<std::size_t>(std::max(end, 0)), str.size() - 1);

  // The last digits read, in a ring: a field keeps only its rightmost digits.
  // No amount field comes near this size; wider fields get "0" in front.
  constexpr std::size_t kMaxDigits = 64;
  std::array<char, kMaxDigits> ring{};
  std::size_t count = 0;
  auto push = [&](char c) { ring[count++ % kMaxDigits] = c; };

  bool comma = false;
  int places = 0;
  const std::size_t len = text_len(str);
  for (std::size_t i = 0; i < len; ++i) {
    const char c = str[i];
    if (decimals && c == ',') {
      comma = true;
    } else if (c >= '0' && c <= '9') {
      push(c);
      if (comma && ++places == 2) break;
    }
  }
  if (decimals) {
    for (; places < 2; ++places) push('0');
  }

  const std::size_t keep = std::min({count, field, kMaxDigits});
  const std::size_t pad = field - keep;
  std::memset(str.data(), '0', pad);
  for (std::size_t j = 0; j < keep; ++j) str[pad + j] = ring[(count - keep + j) % kMaxDigits];
  str[field] = '\0';
  return count > keep ? 1 : 0;
}

// Binary search of one column of the table (0 source, 1 target) for `c`; the
// row found, or -1. The search runs over rows 0..95, and the terminator row
// 95 reads as (0, 0). Over the target column, which is not in order, most
// bytes are not found.
int busca_tabela(std::uint8_t c, int col) {
  int low = 0;
  int high = kLinhasTabela;
  while (low <= high) {
    const int mid = (low + high) / 2;
    const std::uint8_t v = mid < kLinhasTabela ? TabelaConv[mid * 2 + col] : 0;
    if (v == c) return mid < kLinhasTabela ? mid : -1;
    if (c >= v) {
      low = mid + 1;
    } else {
      high = mid - 1;
    }
  }
  return -1;
}

}  // namespace

int LongtoAsk(std::uint32_t value, std::span<char> buf, int base) {
  return number_text(value, buf, base, false);
}

int intoAsk(std::uint32_t value, std::span<char> buf, int base) { return number_text(value, buf, base, true); }

// Characters missing from `src` read as digit 0, as its terminator would.
void Compacta(std::string_view src, std::span<std::uint8_t> dst, int n) {
  auto nibble = [&](int i) -> std::uint8_t {
    return static_cast<std::size_t>(i) < src.size() ? static_cast<std::uint8_t>(src[i] & 0x0F) : 0;
  };
  std::size_t o = 0;
  int i = 0;
  if (n > 0 && n % 2 == 1) {
    if (o < dst.size()) dst[o] = nibble(0);
    ++o;
    i = 1;
  }
  for (; i < n && o < dst.size(); i += 2, ++o) {
    dst[o] = static_cast<std::uint8_t>(nibble(i) << 4 | nibble(i + 1));
  }
}

// Bytes missing from `src` read as 0.
void Expande(std::span<const std::uint8_t> src, std::span<char> dst, int n) {
  const std::size_t want = std::min(static_cast<std::size_t>(std::max(n, 0)), dst.size());
  std::size_t o = 0;
  std::size_t k = 0;
  auto byte = [&](std::size_t at) -> std::uint8_t { return at < src.size() ? src[at] : 0; };
  auto put = [&](unsigned v) {
    if (o < want) dst[o++] = static_cast<char>(v | 0x30);
  };
  if (n % 2 == 1) put(byte(k++) & 0x0F);
  while (o < want) {
    put(byte(k) >> 4);
    put(byte(k++) & 0x0F);
  }
}

int FormataValor(std::span<char> str, int end) { return amount_field(str, end, true); }

int FormataValor2(std::span<char> str, int end) { return amount_field(str, end, false); }

// The result is held to `width` characters: when it would be longer, the
// whole part is cut so that the separator and two decimals stay.
void FormataValorDuasCasas(std::string_view str, std::span<char> out, int width) {
  str = upto_nul(str);
  const std::size_t w = static_cast<std::size_t>(std::max(width, 0));
  const std::size_t whole = w >= 3 ? w - 3 : 0;
  Writer o(out, w + 1);

  std::size_t sep = str.find(',');
  if (sep == std::string_view::npos) sep = str.find('.');
  if (sep == std::string_view::npos) {
    o.put(str.substr(0, whole));
    o.put(",00");
  } else {
    if (sep == 0) {
      o.put("0,");
    } else {
      o.put(str.substr(0, std::min(sep, whole)));
      o.put(str[sep]);
    }
    const std::string_view dec = str.substr(sep + 1);
    if (dec.empty()) {
      o.put("00");
    } else {
      o.put(dec[0]);
      o.put(dec.size() > 1 ? dec[1] : '0');
    }
  }
  o.finish();
}

void FormatacomPonto(std::span<char> str, std::span<char> out) {
  ORB_LOG("FormatacomPonto%s - inicio \n");
  const std::size_t len = text_len(str);
  const std::string_view text{str.data(), len};
  const std::size_t comma = text.find(',');
  if (comma != std::string_view::npos) {
    ORB_LOG("FormatacomPonto%s - Tem virgula posicao=%d \n", static_cast<int>(comma + 1));
    str[comma] = '.';
  }
  put_text(out, text);
  ORB_LOG("FormatacomPonto%s - fim - Valor Formatado=%s \n", Shown(std::span<const char>{out}).c_str());
}

void AcrescentaPonto(std::string_view str, std::span<char> out) {
  str = upto_nul(str);
  ORB_LOG("AcrescentaPonto%s - inicio - ValorOrigem=%s \n", Shown(str).c_str());
  ORB_LOG("AcrescentaPonto%s - tamanho valor origem=%d \n", static_cast<int>(str.size()));
  if (!str.empty()) {
    Writer o(out);
    if (str.size() == 1) {
      // One digit is hundredths: "5" -> "0.05".
      o.put("0.0");
      o.put(str);
    } else if (str.size() == 2) {
      o.put("0.");
      o.put(str);
    } else {
      o.put(str.substr(0, str.size() - 2));
      o.put('.');
      o.put(str.substr(str.size() - 2));
    }
    o.finish();
  }
  ORB_LOG("AcrescentaPonto%s - fim - ValorFormatado=%s \n", Shown(std::span<const char>{out}).c_str());
}

int ProcuraPosicaoVirgulaouPonto(std::string_view str, std::int32_t& pos) {
  ORB_LOG("ProcuraPosicaoVirgulaouPonto%s - inicio \n");
  str = upto_nul(str);
  int ret = 1;
  if (const std::size_t comma = str.find(','); comma != std::string_view::npos) {
    pos = static_cast<std::int32_t>(comma + 1);
    ORB_LOG("ProcuraPosicaoVirgulaouPonto%s - Tem virgula posicao=%d \n", pos);
    ret = 0;
  } else if (const std::size_t point = str.find('.'); point != std::string_view::npos) {
    pos = static_cast<std::int32_t>(point + 1);
    ORB_LOG("ProcuraPosicaoVirgulaouPonto%s - Tem ponto posicao=%d \n", pos);
    ret = 0;
  }
  ORB_LOG("ProcuraPosicaoVirgulaouPonto%s - fim com ret=%d Pos=%d\n", ret, pos);
  return ret;
}

// `src` may be the text already in `dst`: it is moved before the fill.
void LeftPad(std::string_view src, std::span<char> dst, int width) {
  if (dst.empty()) return;
  src = upto_nul(src);
  const std::size_t w = static_cast<std::size_t>(std::max(width, 0));
  if (src.size() > w) src = src.substr(src.size() - w);  // a longer text keeps its last digits
  const std::size_t room = std::min(w, dst.size() - 1);   // characters that fit before the NUL
  const std::size_t pad = w - src.size();
  if (pad < room) std::memmove(dst.data() + pad, src.data(), std::min(src.size(), room - pad));
  std::memset(dst.data(), '0', std::min(pad, room));
  dst[room] = '\0';
}

// A result filling the whole span is cut by one character to keep its NUL.
void EliminaCaracter(std::span<char> str, int len, char c) {
  if (str.empty()) return;
  const std::size_t n = std::min(static_cast<std::size_t>(std::max(len, 0)), str.size());
  std::size_t j = 0;
  for (std::size_t i = 0; i < n; ++i) {
    if (str[i] != c) str[j++] = str[i];
  }
  str[std::min(j, str.size() - 1)] = '\0';
}

std::uint16_t LeCasasDecimais(std::uint8_t out[2]) {
  if (out != nullptr) out[0] = out[1] = 0;
  if (OPENOK == 0) return kNaoAberto;
  ORB_LOG("LeCasasDecimais%s - inicio \n");

  Input in;
  in.seq();
  Reply<10> r;
  std::uint16_t ret = executa(232, 1, in, r);
  if (ret == 0) {
    dumpBytes(r.b.data(), 2);
    if (out != nullptr) {
      out[0] = r.b[0];
      out[1] = r.b[1];
    }
  }
  ret = TrataRetorno(ret);
  ORB_LOG("LeCasasDecimais%s - fim com ret=%d Casas Decimais Qtd=%d, Casas Decimais Item=%d\n", ret,
          out != nullptr ? out[0] : 0, out != nullptr ? out[1] : 0);
  return ret;
}

int MascaraCaracter(std::span<char> src, std::span<char> dst) {
  const std::size_t len = text_len(src);
  for (std::size_t i = 0; i < len; ++i) {
    if (src[i] == 0x1B) {
      src[i] = ' ';
    } else if (src[i] == '"') {
      src[i] = '\'';
    } else if (src[i] == '\\') {
      src[i] = '/';
    }
  }
  put_text(dst, {src.data(), len});
  return 0;
}

// Every byte from 0x80 up is below 32 as a signed char and so becomes a blank
// too: accented letters never reach the printer through this mask.
int MascaraCaracterEsp(std::span<char> src, std::span<char> dst) {
  const std::size_t len = text_len(src);
  ORB_LOG("MascaraCaracterEsp%s Tamanho=%d Buffer=", static_cast<int>(len));
  dumpBytes(len != 0 ? src.data() : "", static_cast<int>(len));
  for (std::size_t i = 0; i < len; ++i) {
    if (static_cast<signed char>(src[i]) < 32) {
      ORB_LOG("MascaraCaracterEsp%s trocando caractere=%02x\n", static_cast<unsigned char>(src[i]));
      src[i] = ' ';
    }
  }
  put_text(dst, {src.data(), len});
  return 0;
}

int ConversaoCP850(std::span<char> str, std::span<char> dst) {
  const std::size_t len = text_len(str);
  for (std::size_t i = 0; i < len; ++i) {
    const auto c = static_cast<std::uint8_t>(str[i]);
    const int row = busca_tabela(c, 0);
    if (row < 0) continue;
    const std::uint8_t to = TabelaConv[row * 2 + 1];
    ORB_LOG1("ConversaoCP850%s De ASC[0x%02X] para CP850[0x%02X]\n", c, to);
    str[i] = static_cast<char>(to);
  }
  put_text(dst, {str.data(), len});
  return 0;
}

int ConversaoASCII(std::span<char> str) {
  const std::size_t len = text_len(str);
  for (std::size_t i = 0; i < len; ++i) {
    const auto c = static_cast<std::uint8_t>(str[i]);
    const int row = busca_tabela(c, 1);
    if (row < 0) continue;
    const std::uint8_t to = TabelaConv[row * 2];
    ORB_LOG1("ConversaoASCII%s De CP850[0x%02X] para ASCII[0x%02X]\n", c, to);
    str[i] = static_cast<char>(to);
  }
  return static_cast<int>(len);
}

}  // namespace orbelan
