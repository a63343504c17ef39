// The fiscal state model: its storage and state file, the paper tape, the
// value and clock helpers the command handlers share, and the control calls
// of vprinter.h that drive the model.
#include "model.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sstream>
#include <type_traits>

namespace vprinter::model {
namespace {

struct Store {
  Model model;
  bool loaded = false;
  bool enabled = true;
  bool dirty = false;
  std::string state_file = "vprinter.state";
  std::string tape_file = "vprinter.tape";
  std::vector<std::span<const HandlerEntry>> tables;
};

Store& store() {
  static Store s;
  return s;
}

// ---- state file ---------------------------------------------------------------
// A sequence of "name value" tokens, one field per line, read back in the same
// order by the same io() functions, so the writer and the reader cannot drift
// apart. Texts are written as '"' followed by the text with blanks, '%' and
// bytes outside 0x21..0x7e escaped as %XX.

constexpr std::string_view kMagic = "vprinter-state";
constexpr int kVersion = 1;

class Writer {
 public:
  template <class T>
  void operator()(const char* name, const T& value) {
    out_ += '\n';
    out_.append(static_cast<std::size_t>(depth_) * 2, ' ');
    out_ += name;
    put(value);
  }
  std::string& text() { return out_; }

 private:
  template <class T>
  void put(const T& v) {
    if constexpr (std::is_same_v<T, std::string>) {
      out_ += " \"";
      for (unsigned char c : v) {
        if (c > 0x20 && c < 0x7f && c != '%') {
          out_ += static_cast<char>(c);
        } else {
          char hex[4];
          std::snprintf(hex, sizeof hex, "%%%02X", c);
          out_ += hex;
        }
      }
    } else if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, char>) {
      out_ += ' ' + std::to_string(static_cast<int>(v));
    } else if constexpr (std::is_integral_v<T>) {
      out_ += ' ' + std::to_string(v);
    } else if constexpr (requires { v.begin(); v.size(); typename T::key_type; }) {
      out_ += ' ' + std::to_string(v.size());
      for (const auto& [k, e] : v) {
        put(k);
        put(e);
      }
    } else if constexpr (requires { v.begin(); v.size(); }) {
      out_ += ' ' + std::to_string(v.size());
      for (const auto& e : v) put(e);
    } else {
      ++depth_;
      io(*this, const_cast<T&>(v));
      --depth_;
    }
  }
  std::string out_;
  int depth_ = 0;
};

class Reader {
 public:
  explicit Reader(std::string text) : in_(std::move(text)) {}
  template <class T>
  void operator()(const char* name, T& value) {
    if (token() != name) bad_ = true;
    get(value);
  }
  bool good() const { return !bad_; }
  std::string_view token() {
    while (pos_ < in_.size() && std::isspace(static_cast<unsigned char>(in_[pos_]))) ++pos_;
    const std::size_t start = pos_;
    while (pos_ < in_.size() && !std::isspace(static_cast<unsigned char>(in_[pos_]))) ++pos_;
    if (start == pos_) bad_ = true;
    return std::string_view(in_).substr(start, pos_ - start);
  }

 private:
  std::int64_t number() {
    const auto t = token();
    std::int64_t v = 0;
    if (std::from_chars(t.data(), t.data() + t.size(), v).ec != std::errc{}) bad_ = true;
    return v;
  }
  template <class T>
  void get(T& v) {
    if (bad_) return;
    if constexpr (std::is_same_v<T, std::string>) {
      const auto t = token();
      v.clear();
      if (t.empty() || t[0] != '"') {
        bad_ = true;
        return;
      }
      for (std::size_t i = 1; i < t.size(); ++i) {
        if (t[i] == '%' && i + 2 < t.size()) {
          unsigned byte = 0;
          std::from_chars(t.data() + i + 1, t.data() + i + 3, byte, 16);
          v += static_cast<char>(byte);
          i += 2;
        } else {
          v += t[i];
        }
      }
    } else if constexpr (std::is_same_v<T, bool>) {
      v = number() != 0;
    } else if constexpr (std::is_integral_v<T>) {
      v = static_cast<T>(number());
    } else if constexpr (requires { typename T::key_type; typename T::mapped_type; }) {
      v.clear();
      for (auto n = count(); n > 0 && !bad_; --n) {
        typename T::key_type k{};
        typename T::mapped_type e{};
        get(k);
        get(e);
        v.emplace(std::move(k), std::move(e));
      }
    } else if constexpr (requires { v.push_back(typename T::value_type{}); }) {
      v.clear();
      for (auto n = count(); n > 0 && !bad_; --n) get(v.emplace_back());
    } else if constexpr (requires { std::tuple_size<T>::value; }) {
      if (count() != v.size()) bad_ = true;
      for (auto& e : v) get(e);
    } else {
      io(*this, v);
    }
  }
  std::size_t count() {
    const auto n = number();
    if (n < 0 || n > 1'000'000) bad_ = true;
    return bad_ ? 0 : static_cast<std::size_t>(n);
  }
  std::string in_;
  std::size_t pos_ = 0;
  bool bad_ = false;
};

}  // namespace

template <class A>
void io(A& a, Partial& p) {
  a("number", p.number);
  a("name", p.name);
  a("flag", p.flag);
}

template <class A>
void io(A& a, Item& i) {
  a("number", i.number);
  a("code", i.code);
  a("description", i.description);
  a("tax", i.tax);
  a("tax_register", i.tax_register);
  a("quantity", i.quantity);
  a("price", i.price);
  a("value", i.value);
  a("adjustment", i.adjustment);
  a("cancelled", i.cancelled);
}

template <class A>
void io(A& a, Payment& p) {
  a("reg", p.reg);
  a("value", p.value);
  a("text", p.text);
}

template <class A>
void io(A& a, Document& d) {
  a("state", d.state);
  a("coo", d.coo);
  a("items", d.items);
  a("payments", d.payments);
  a("gross", d.gross);
  a("adjustment", d.adjustment);
  a("paid", d.paid);
  a("payment_reg", d.payment_reg);
  a("voucher_value", d.voucher_value);
  a("consumer", d.consumer);
  a("totals", d.totals);
  a("split", d.split);
}

template <class A>
void io(A& a, Voucher& v) {
  a("coo", v.coo);
  a("coupon_coo", v.coupon_coo);
  a("ordinal", v.ordinal);
  a("reg", v.reg);
  a("value", v.value);
  a("reversed", v.reversed);
}

template <class A>
void io(A& a, LastDocument& l) {
  a("doc", l.doc);
  a("coo", l.coo);
  a("cancellable", l.cancellable);
}

template <class A>
void io(A& a, Reduction& r) {
  a("crz", r.crz);
  a("coo", r.coo);
  a("cro", r.cro);
  a("date", r.date);
  a("stamp", r.stamp);
  a("gt", r.gt);
  a("gross", r.gross);
  a("totals", r.totals);
}

template <class A>
void io(A& a, Model& m) {
  a("serial", m.serial);
  a("firmware", m.firmware);
  a("printer_type", m.printer_type);
  a("make", m.make);
  a("model_name", m.model_name);
  a("cnpj", m.cnpj);
  a("ie", m.ie);
  a("im", m.im);
  a("owner_name", m.owner_name);
  a("cliche", m.cliche);
  a("owner_index", m.owner_index);
  a("ecf_number", m.ecf_number);
  a("store", m.store);
  a("mfd_serial", m.mfd_serial);
  a("iat", m.iat);
  a("qty_decimals", m.qty_decimals);
  a("price_decimals", m.price_decimals);
  a("station", m.station);
  a("spacing", m.spacing);
  a("partials", m.partials);
  a("clock_set", m.clock_set);
  a("clock_real", m.clock_real);
  a("summer_time", m.summer_time);
  a("business_date", m.business_date);
  a("reduced_on", m.reduced_on);
  a("paper_low", m.paper_low);
  a("cover_open", m.cover_open);
  a("drawer_open", m.drawer_open);
  a("document_in", m.document_in);
  a("coo", m.coo);
  a("ccf", m.ccf);
  a("gnf", m.gnf);
  a("grg", m.grg);
  a("cdc", m.cdc);
  a("cro", m.cro);
  a("crz", m.crz);
  a("cfc", m.cfc);
  a("nfc", m.nfc);
  a("gt", m.gt);
  a("gt_start", m.gt_start);
  a("last_item", m.last_item);
  a("last_error", m.last_error);
  a("day", m.day);
  a("day_first_coo", m.day_first_coo);
  a("doc", m.doc);
  a("last_fiscal", m.last_fiscal);
  a("last_nonfiscal", m.last_nonfiscal);
  a("last_kind", m.last_kind);
  a("vouchers", m.vouchers);
  a("last_voucher_lines", m.last_voucher_lines);
  a("fiscal_memory", m.fiscal_memory);
  a("journal", m.journal);
  a("extra", m.extra);
}

namespace {

Model factory() {
  Model m;
  if (default_programming != nullptr) default_programming(m);
  return m;
}

// Reads the state file into `m`; false (and `m` untouched) when it is absent
// or unreadable, in which case the printer starts from its factory state.
bool read_state(Model& m) {
  std::ifstream f(store().state_file, std::ios::binary);
  if (!f) return false;
  std::stringstream ss;
  ss << f.rdbuf();
  Reader r(ss.str());
  if (r.token() != kMagic || r.token() != std::to_string(kVersion)) return false;
  Model loaded;
  io(r, loaded);
  if (!r.good()) return false;
  m = std::move(loaded);
  return true;
}

void load() {
  auto& s = store();
  s.model = factory();
  read_state(s.model);
  s.loaded = true;
  s.dirty = false;
}

std::string pad_right(std::string_view text, std::size_t width) {
  std::string out(text.substr(0, width));
  out.resize(width, ' ');
  return out;
}

void append_tape(std::string_view line) {
  if (std::FILE* f = std::fopen(store().tape_file.c_str(), "a"); f != nullptr) {
    std::fwrite(line.data(), 1, line.size(), f);
    std::fputc('\n', f);
    std::fclose(f);
  }
}

std::int64_t pow10(int n) {
  std::int64_t p = 1;
  while (n-- > 0) p *= 10;
  return p;
}

// Seconds of the host's local time read as if it were UTC, the scale on which
// the printer's clock is kept.
std::int64_t host_seconds() {
  const std::time_t t = std::time(nullptr);
  std::tm local{};
  localtime_r(&t, &local);
  return static_cast<std::int64_t>(timegm(&local));
}

}  // namespace

// ---- the model -------------------------------------------------------------------

Model& model() {
  if (!store().loaded) load();
  return store().model;
}

void save() {
  auto& s = store();
  Writer w;
  w.text() = std::string(kMagic) + ' ' + std::to_string(kVersion);
  io(w, s.model);
  w.text() += '\n';
  const std::string tmp = s.state_file + ".tmp";
  if (std::FILE* f = std::fopen(tmp.c_str(), "wb"); f != nullptr) {
    const bool ok = std::fwrite(w.text().data(), 1, w.text().size(), f) == w.text().size();
    if (std::fclose(f) == 0 && ok) std::rename(tmp.c_str(), s.state_file.c_str());
  }
  s.dirty = false;
}

void touch() { store().dirty = true; }

void reload() { load(); }

void factory_reset() {
  auto& s = store();
  std::remove(s.state_file.c_str());
  std::remove(s.tape_file.c_str());
  s.model = factory();
  s.loaded = true;
  s.dirty = false;
}

bool enabled() { return store().enabled; }
void set_enabled(bool on) { store().enabled = on; }

std::string state_path() { return store().state_file; }
std::string tape_path() { return store().tape_file; }
void set_paths(std::string_view state, std::string_view tape) {
  if (!state.empty()) store().state_file = state;
  if (!tape.empty()) store().tape_file = tape;
  store().loaded = false;  // the next command reads the state found there
}

// ---- printing ---------------------------------------------------------------------

void print(std::string_view line) {
  auto& m = model();
  do {
    const auto part = line.substr(0, kTapeWidth);
    append_tape(part);
    m.journal.emplace_back(part);
    line.remove_prefix(part.size());
  } while (!line.empty());
  touch();
}

void print_lr(std::string_view left, std::string_view right) {
  const std::size_t room = kTapeWidth > right.size() ? kTapeWidth - right.size() : 0;
  if (left.size() >= room) {
    print(left);
    print(std::string(kTapeWidth - std::min<std::size_t>(right.size(), kTapeWidth), ' ') +
          std::string(right));
    return;
  }
  print(pad_right(left, room) + std::string(right));
}

void print_center(std::string_view text) {
  if (text.size() >= static_cast<std::size_t>(kTapeWidth)) return print(text);
  print(std::string((kTapeWidth - text.size()) / 2, ' ') + std::string(text));
}

void print_rule(char c) { print(std::string(kTapeWidth, c)); }

void print_header(std::string_view title, std::string_view counter) {
  const auto& m = model();
  print_center(m.owner_name);
  for (const auto& line : m.cliche)
    if (!line.empty()) print_center(line);
  print("CNPJ:" + m.cnpj);
  print_lr("IE:" + m.ie, "IM:" + m.im);
  print_rule();
  std::string counters(counter);
  if (!counters.empty()) counters += ' ';
  counters += "COO:" + counter6(m.coo);
  print_lr(date_shown(now()), counters);
  print_center(title);
}

void print_footer(std::string_view operator_name) {
  const auto& m = model();
  print_rule();
  if (!operator_name.empty()) print("OPERADOR: " + std::string(operator_name));
  print_lr(m.make + " " + m.model_name, "ECF:" + m.ecf_number + " LJ:" + m.store);
  print_lr("FAB:" + m.serial, date_shown(now()));
  print_rule('=');
  print("");
}

// ---- values -------------------------------------------------------------------------

std::string money(std::int64_t cents) {
  const bool negative = cents < 0;
  std::uint64_t v = negative ? 0 - static_cast<std::uint64_t>(cents) : static_cast<std::uint64_t>(cents);
  std::string units = std::to_string(v / 100);
  for (int i = static_cast<int>(units.size()) - 3; i > 0; i -= 3) units.insert(static_cast<std::size_t>(i), ".");
  char dec[4];
  std::snprintf(dec, sizeof dec, "%02u", static_cast<unsigned>(v % 100));
  return (negative ? "-" : "") + units + "," + dec;
}

std::string quantity(std::int64_t thousandths, int decimals) {
  decimals = std::clamp(decimals, 0, 3);
  const std::int64_t unit = pow10(decimals);
  const std::int64_t v = thousandths / pow10(3 - decimals);
  std::string out = std::to_string(v / unit);
  if (decimals > 0) {
    std::string frac = std::to_string(v % unit);
    out += "," + std::string(static_cast<std::size_t>(decimals) - frac.size(), '0') + frac;
  }
  return out;
}

bool parse_decimal(std::string_view text, int decimals, int scale, std::int64_t& out) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  if (text.empty() || text.size() > 18) return false;
  // A comma is the separator (points before it group thousands); without a
  // comma a single point is; without either the text holds implied decimals.
  std::size_t sep = text.find(',');
  bool grouping = sep != std::string_view::npos;
  if (!grouping) {
    sep = text.find('.');
    if (sep != std::string_view::npos && text.find('.', sep + 1) != std::string_view::npos) return false;
  }
  std::int64_t whole = 0, frac = 0;
  int frac_digits = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (i == sep) continue;
    if (c == '.' && grouping && i < sep) continue;
    if (c < '0' || c > '9') return false;
    if (sep == std::string_view::npos || i < sep) {
      whole = whole * 10 + (c - '0');
    } else if (frac_digits < scale) {
      frac = frac * 10 + (c - '0');
      ++frac_digits;
    }
  }
  if (sep != std::string_view::npos) {
    out = whole * pow10(scale) + frac * pow10(scale - frac_digits);
  } else {
    decimals = std::clamp(decimals, 0, 6);
    out = decimals <= scale ? whole * pow10(scale - decimals) : whole / pow10(decimals - scale);
  }
  return true;
}

std::int64_t item_value(std::int64_t quantity, std::int64_t price, char iat) {
  // thousandths x thousandths = millionths of the currency; cents are 10^4 of them
  const std::int64_t product = quantity * price;
  return iat == 'T' ? product / 10000 : (product + 5000) / 10000;
}

std::string counter6(std::uint32_t n) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%06u", n % 1000000u);
  return buf;
}

std::uint32_t unpack_bcd(const std::uint8_t* p, std::size_t bytes) {
  std::uint32_t v = 0;
  for (std::size_t i = 0; i < bytes; ++i) v = v * 100 + (p[i] >> 4) * 10 + (p[i] & 0x0f);
  return v;
}

// ---- clock --------------------------------------------------------------------------

std::tm now() {
  const auto& m = model();
  const std::int64_t s = m.clock_real == 0 ? host_seconds()
                                           : m.clock_set + (static_cast<std::int64_t>(std::time(nullptr)) - m.clock_real);
  const std::time_t t = static_cast<std::time_t>(s);
  std::tm r{};
  gmtime_r(&t, &r);
  return r;
}

std::string date_text(const std::tm& t) {
  char buf[48];
  std::snprintf(buf, sizeof buf, "%02d%02d%04d", t.tm_mday, t.tm_mon + 1, t.tm_year + 1900);
  return buf;
}

std::string time_text(const std::tm& t) {
  char buf[48];
  std::snprintf(buf, sizeof buf, "%02d%02d%02d", t.tm_hour, t.tm_min, t.tm_sec);
  return buf;
}

std::string date_shown(const std::tm& t) {
  char buf[80];
  std::snprintf(buf, sizeof buf, "%02d/%02d/%04d %02d:%02d:%02d", t.tm_mday, t.tm_mon + 1,
                t.tm_year + 1900, t.tm_hour, t.tm_min, t.tm_sec);
  return buf;
}

void set_clock(int year, int month, int day, int hour, int min, int sec) {
  std::tm t{};
  t.tm_year = year - 1900;
  t.tm_mon = month - 1;
  t.tm_mday = day;
  t.tm_hour = hour;
  t.tm_min = min;
  t.tm_sec = sec;
  auto& m = model();
  m.clock_set = static_cast<std::int64_t>(timegm(&t));
  m.clock_real = static_cast<std::int64_t>(std::time(nullptr));
  touch();
}

// ---- command input and replies ---------------------------------------------------------

Args::Args(const vp_call& call, std::size_t start)
    : p_(call.in),
      n_(static_cast<std::size_t>(std::clamp(call.inlen, 0, VP_MAX_INPUT))),
      pos_(std::min(start, n_)) {}

std::uint8_t Args::byte() { return pos_ < n_ ? p_[pos_++] : 0; }

std::uint16_t Args::u16() {
  const std::uint16_t lo = byte();
  return static_cast<std::uint16_t>(lo | (byte() << 8));
}

std::string Args::text() {
  std::string out;
  while (pos_ < n_ && p_[pos_] != 0) out += static_cast<char>(p_[pos_++]);
  if (pos_ < n_) ++pos_;  // the terminator
  return out;
}

std::string Args::raw(std::size_t n) {
  n = std::min(n, n_ - pos_);
  std::string out(reinterpret_cast<const char*>(p_ + pos_), n);
  pos_ += n;
  return out;
}

std::size_t Args::left() const { return n_ - pos_; }

Reply ok(std::vector<std::uint8_t> data) {
  Reply r;
  r.reported = static_cast<int>(data.size());
  r.data = std::move(data);
  return r;
}

Reply ok_sized(std::size_t size) { return ok(std::vector<std::uint8_t>(size, 0)); }

void put(Reply& r, std::size_t at, std::string_view text) {
  if (at + text.size() > r.data.size()) r.data.resize(at + text.size(), 0);
  std::memcpy(r.data.data() + at, text.data(), text.size());
  r.reported = std::max(r.reported, static_cast<int>(r.data.size()));
}

void put_byte(Reply& r, std::size_t at, std::uint8_t b) {
  put(r, at, std::string_view(reinterpret_cast<const char*>(&b), 1));
}

Reply refuse(int code) {
  auto& m = model();
  if (m.last_error != code) {
    m.last_error = code;
    touch();
  }
  Reply r;
  r.result = code;
  return r;
}

// ---- handler registration -------------------------------------------------------------

Registration::Registration(std::span<const HandlerEntry> table) { store().tables.push_back(table); }

Handler lookup(int cmd) {
  for (const auto& table : store().tables)
    for (const auto& h : table)
      if (h.cmd == cmd && h.handle != nullptr) return h.handle;
  return nullptr;
}

bool dispatch(const vp_call& call, Reply& out) {
  const Handler h = lookup(call.cmd);
  if (h == nullptr) return false;
  model();
  store().dirty = false;
  const bool answered = h(call, out);
  if (store().dirty) save();
  return answered;
}

// ---- shared by the topic files ------------------------------------------------------------

std::vector<const Partial*> partials_in(int lo, int hi) {
  std::vector<const Partial*> out;
  for (const auto& [number, p] : model().partials)
    if (number >= lo && number <= hi) out.push_back(&p);
  return out;
}

void open_day() {
  auto& m = model();
  if (!m.business_date.empty()) return;
  m.business_date = date_text(now());
  m.day_first_coo = m.coo + 1;
  m.gt_start = m.gt;
  touch();
}

bool reduced_today() {
  const auto& m = model();
  return !m.reduced_on.empty() && m.reduced_on == date_text(now());
}

int cannot_open() {
  const auto& m = model();
  if (m.cover_open) return kCoverOpen;
  if (m.doc.state != 0) return kDocumentOpen;
  if (reduced_today()) return kDayClosed;
  if (!m.business_date.empty() && m.business_date != date_text(now())) return kZPending;
  return 0;
}

void close_day() {
  auto& m = model();
  m.day.clear();
  m.business_date.clear();
  m.reduced_on = date_text(now());
  m.gt_start = m.gt;
  m.day_first_coo = 0;
  m.last_fiscal.cancellable = false;
  m.last_nonfiscal.cancellable = false;
  m.vouchers.clear();
  touch();
}

std::uint32_t next_coo() {
  auto& m = model();
  m.coo = m.coo >= 999999u ? 1u : m.coo + 1;
  touch();
  return m.coo;
}

void add(int reg, std::int64_t v) {
  if (v == 0) return;
  auto& m = model();
  m.day[reg] += v;
  if (m.doc.state != 0) m.doc.totals[reg] += v;
  touch();
}

std::int64_t day_value(int reg) {
  const auto& day = model().day;
  const auto it = day.find(reg);
  return it == day.end() ? 0 : it->second;
}

std::string partial_name(int reg) {
  const auto& partials = model().partials;
  const auto it = partials.find(reg);
  return it == partials.end() ? std::string() : it->second.name;
}

std::string tax_label(int reg) {
  switch (reg) {
    case 11: return "F1";
    case 12: return "I1";
    case 13: return "N1";
    default: break;
  }
  std::string digits;
  for (char c : partial_name(reg))
    if (c >= '0' && c <= '9') digits += c;
  if (digits.size() < 4) digits.insert(0, 4 - digits.size(), '0');
  digits = digits.substr(digits.size() - 4);
  return (reg >= 36 && reg <= 39 ? "S" : "T") + digits.substr(0, 2) + "," + digits.substr(2) + "%";
}

}  // namespace vprinter::model

// ---- control interface (vprinter.h) ----------------------------------------------------------

namespace model = vprinter::model;

extern "C" {

__attribute__((visibility("default"))) void vp_use_model(int on) { model::set_enabled(on != 0); }

__attribute__((visibility("default"))) int vp_model_enabled(void) { return model::enabled() ? 1 : 0; }

__attribute__((visibility("default"))) void vp_model_reset(void) { model::factory_reset(); }

__attribute__((visibility("default"))) void vp_model_reload(void) { model::reload(); }

__attribute__((visibility("default"))) void vp_model_files(const char* state, const char* tape) {
  model::set_paths(state != nullptr ? state : "", tape != nullptr ? tape : "");
}

__attribute__((visibility("default"))) const char* vp_state_path(void) {
  static std::string path;
  path = model::state_path();
  return path.c_str();
}

__attribute__((visibility("default"))) const char* vp_tape_path(void) {
  static std::string path;
  path = model::tape_path();
  return path.c_str();
}

__attribute__((visibility("default"))) void vp_set_clock(int year, int month, int day, int hour,
                                                         int min, int sec) {
  model::set_clock(year, month, day, hour, min, sec);
  model::save();
}

__attribute__((visibility("default"))) void vp_set_condition(int condition, int on) {
  auto& m = model::model();
  switch (condition) {
    case VP_COND_PAPER_LOW: m.paper_low = on != 0; break;
    case VP_COND_COVER_OPEN: m.cover_open = on != 0; break;
    case VP_COND_DRAWER_OPEN: m.drawer_open = on != 0; break;
    case VP_COND_DOCUMENT_IN: m.document_in = on != 0; break;
    default: return;
  }
  model::save();
}

__attribute__((visibility("default"))) int vp_doc_state(void) { return model::model().doc.state; }

__attribute__((visibility("default"))) int vp_coo(void) { return static_cast<int>(model::model().coo); }

__attribute__((visibility("default"))) int vp_ccf(void) { return static_cast<int>(model::model().ccf); }

__attribute__((visibility("default"))) long long vp_register_value(int reg) {
  return static_cast<long long>(model::day_value(reg));
}

}  // extern "C"
