// Readings of the printer model: the X reading and the Z reduction, the
// fiscal memory (its records, its printed readings and its transfer to the
// host), the journal (its transfer, size and serial number) and the polls
// that follow a reduction.
#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "model.h"
#include "registers.h"

namespace vprinter::model {

namespace {

constexpr int kAccepted = 0;  // no refusal

// ---- texts ---------------------------------------------------------------------------

std::string pad(std::uint32_t n, int width) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%0*u", width, n);
  return buf;
}

// "DD/MM/YYYY" from DDMMYYYY.
std::string shown_date(std::string_view ddmmyyyy) {
  if (ddmmyyyy.size() < 8) return std::string(ddmmyyyy);
  return std::string(ddmmyyyy.substr(0, 2)) + "/" + std::string(ddmmyyyy.substr(2, 2)) + "/" +
         std::string(ddmmyyyy.substr(4, 4));
}

// A DDMMYYYY date as YYYYMMDD, comparable as a number; `otherwise` when the
// text is not eight digits.
int date_key(std::string_view ddmmyyyy, int otherwise) {
  if (ddmmyyyy.size() < 8) return otherwise;
  for (std::size_t i = 0; i < 8; ++i) {
    if (ddmmyyyy[i] < '0' || ddmmyyyy[i] > '9') return otherwise;
  }
  auto num = [&](std::size_t at, std::size_t n) {
    int v = 0;
    for (std::size_t i = at; i < at + n; ++i) v = v * 10 + (ddmmyyyy[i] - '0');
    return v;
  };
  return num(4, 4) * 10000 + num(2, 2) * 100 + num(0, 2);
}

constexpr int kNoStart = 0;
constexpr int kNoEnd = 99999999;

// ---- the day's totals, printed by the X reading and the Z reduction --------------

void print_money(std::string_view label, std::int64_t cents) { print_lr(label, money(cents)); }

void print_day(const Model& m) {
  print_center("TOTALIZADORES DO DIA");
  print_money("VENDA BRUTA DIARIA", gross_sales(m));
  print_money("CANCELAMENTOS ICMS", day_money(m, 7));
  print_money("DESCONTOS ICMS", day_money(m, 8));
  print_money("ACRESCIMOS ICMS", day_money(m, 9));
  print_money("CANCELAMENTOS ISSQN", day_money(m, 114));
  print_money("DESCONTOS ISSQN", day_money(m, 134));
  print_money("ACRESCIMOS ISSQN", day_money(m, 135));
  print_money("VENDA LIQUIDA", net_sales(m));
  print_rule();
  print_lr("ALIQUOTA", "VALOR ACUMULADO      IMPOSTO");
  for (const auto& [number, p] : m.partials) {
    if (!is_tax_register(number)) continue;
    const std::int64_t v = day_money(m, number);
    char line[64];
    std::snprintf(line, sizeof line, "%14s %12s", money(v).c_str(),
                  money(tax_on(v, tax_rate(m, number))).c_str());
    print_lr(tax_label(number), line);
  }
  for (int reg : {11, 12, 13}) print_money(tax_label(reg), day_money(m, reg));
  print_rule();
  print_center("TOTALIZADORES NAO FISCAIS");
  for (const Partial* p : partials_in(40, 54)) print_money(p->name, day_money(m, p->number));
  print_money("CANCELAMENTOS NAO FISCAIS", day_money(m, 17));
  print_money("DESCONTOS NAO FISCAIS", day_money(m, 18));
  print_money("ACRESCIMOS NAO FISCAIS", day_money(m, 19));
  print_rule();
  print_center("MEIOS DE PAGAMENTO");
  for (const Partial* p : partials_in(60, 78)) print_money(p->name, day_money(m, p->number));
  print_money("TROCO", day_money(m, 79));
  print_rule();
  print_center("CONTADORES");
  print_lr("COO INICIAL", counter6(static_cast<std::uint32_t>(general_value(m, 1).value_or(0))));
  print_lr("COO FINAL", counter6(m.coo));
  print_lr("CCF", counter6(m.ccf));
  print_lr("GNF", counter6(m.gnf));
  print_lr("GRG", counter6(m.grg));
  print_lr("CDC", counter6(m.cdc));
  print_lr("CRO", pad(m.cro, 4));
  print_lr("CRZ", pad(m.crz, 4));
  print_lr("CUPONS CANCELADOS", counter6(m.cfc));
  print_money("GRANDE TOTAL", m.gt);
}

// What a reading refuses to print over.
int cannot_read(const Model& m) {
  if (m.cover_open) return kCoverOpen;
  if (m.doc.state != 0) return kDocumentOpen;
  return kAccepted;
}

// A printed document ends the last coupons' time for cancellation.
void after_reading(Model& m) {
  m.last_fiscal.cancellable = false;
  m.last_nonfiscal.cancellable = false;
  m.last_kind = 'X';
  touch();
}

// The operator's name the reading commands carry: the text up to the two
// zero bytes (an empty name is left out, so the zeros come first).
std::string operator_of(const vp_call& call) {
  Args a(call);
  return a.text();
}

// ---- X reading and Z reduction ---------------------------------------------------------

// 160: the X reading. It is printed at any time no document is open. It opens
// the day's movement like any document, except after today's reduction: it is
// then printed over the day just reduced, since the store-number procedure of
// the payment methods closes with one and must not wait for the next day.
bool x_reading(const vp_call& call, Reply& out) {
  auto& m = model();
  if (const int refusal = cannot_read(m); refusal != kAccepted) return answer(out, refuse(refusal));
  if (!reduced_today()) open_day();
  next_coo();
  print_header("LEITURA X");
  print_day(m);
  print_footer(operator_of(call));
  after_reading(m);
  return answer(out, ok());
}

// 162: the Z reduction: a fiscal-memory record with the day's registers, the
// printed reduction, then the day closed. A second reduction the same date is
// refused. A day without documents is reduced as an empty movement of today.
bool z_reduction(const vp_call& call, Reply& out) {
  auto& m = model();
  if (const int refusal = cannot_read(m); refusal != kAccepted) return answer(out, refuse(refusal));
  if (reduced_today()) return answer(out, refuse(kDayClosed));

  open_day();
  next_coo();
  ++m.crz;
  const std::tm t = now();
  Reduction r;
  r.crz = m.crz;
  r.coo = m.coo;
  r.cro = m.cro;
  r.date = m.business_date;
  r.stamp = date_text(t) + time_text(t);
  r.gt = m.gt;
  r.gross = gross_sales(m);
  for (int reg = 0; reg <= kLastGeneralRegister; ++reg) {
    if (const auto v = general_value(m, reg); v && *v != 0) r.totals[reg] = *v;
  }
  for (const auto& [number, p] : m.partials) {
    if (is_tax_register(number)) r.totals[kTaxKey + number] = tax_on(day_money(m, number), tax_rate(m, number));
  }

  print_header("REDUCAO Z", "CRZ:" + pad(m.crz, 4));
  print_lr("MOVIMENTO DO DIA", shown_date(r.date));
  print_day(m);
  print_footer(operator_of(call));

  const std::string day = r.date;
  m.fiscal_memory.push_back(std::move(r));
  close_day();
  // The reduction of a day left open past its date (made the next morning)
  // does not close today: today's movement may begin after it.
  m.reduced_on = day;
  m.last_kind = 'Z';
  touch();
  return answer(out, ok());
}

// 1: the availability poll after a reduction: the model prints at once.
bool available(const vp_call&, Reply& out) { return answer(out, ok()); }

// 4: the state after a reduction: byte 1 is 1 once today's reduction is made.
bool after_reduction(const vp_call&, Reply& out) {
  return answer(out, ok({0, static_cast<std::uint8_t>(reduced_today() ? 1 : 0)}));
}

// ---- fiscal memory ------------------------------------------------------------------------

// Packs decimal digits two per byte.
void pack_bcd(std::string_view digits, std::vector<std::uint8_t>& out) {
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
    out.push_back(static_cast<std::uint8_t>(((digits[i] - '0') << 4) | (digits[i + 1] - '0')));
}

constexpr std::uint8_t kRecordReduction = 1;
constexpr std::uint8_t kRecordEnd = 7;

// 174: fiscal-memory record k (from 1): kind 1 (a reduction), the date of the
// day reduced and the time of the reduction as DDMMYYhhmm, the day's gross
// sales in 16 digits and the reduction number in 4, all packed; kind 7 past
// the last record.
bool fiscal_record(const vp_call& call, Reply& out) {
  Args a(call);
  if (a.left() < 2) return answer(out, refuse(kInvalid));
  const std::uint16_t k = a.u16();
  if (k == 0) return answer(out, refuse(kInvalid));
  const auto& fm = model().fiscal_memory;
  if (k > fm.size()) return answer(out, ok({kRecordEnd}));
  const Reduction& r = fm[k - 1];
  std::string date = r.date, stamp = r.stamp;
  date.resize(8, '0');
  stamp.resize(14, '0');
  char value[24];
  std::snprintf(value, sizeof value, "%016lld", static_cast<long long>(std::max<std::int64_t>(r.gross, 0)));
  std::vector<std::uint8_t> b{kRecordReduction};
  pack_bcd(date.substr(0, 4) + date.substr(6, 2) + stamp.substr(8, 4), b);
  pack_bcd(std::string_view(value).substr(std::string_view(value).size() - 16), b);
  pack_bcd(pad(r.crz % 10000, 4), b);
  return answer(out, ok(std::move(b)));
}

// The reductions of the fiscal memory as listed by its readings: one line per
// reduction (number, restart counter, COO, two blanks, date and time, gross
// sales), a blank line after the list, then the totals of the period. A
// complete reading adds the grand total after each line.
std::string fiscal_memory_text(const std::vector<const Reduction*>& list, bool complete, std::string_view period) {
  const Model& m = model();
  std::string s;
  auto line = [&s](std::string_view l) {
    s += l;
    s += '\n';
  };
  line("LEITURA DA MEMORIA FISCAL " + std::string(complete ? "COMPLETA" : "SIMPLIFICADA"));
  line(m.make + " " + m.model_name + " FAB:" + m.serial);
  line("CNPJ:" + m.cnpj + " IE:" + m.ie);
  line(period);
  line("CRZ  CRO COO     DATA       HORA     BRUTO");
  std::int64_t total = 0;
  for (const Reduction* r : list) {
    const std::string& st = r->stamp;
    const std::string hour = st.size() >= 14 ? st.substr(8, 2) + ":" + st.substr(10, 2) + ":" + st.substr(12, 2)
                                             : std::string("00:00:00");
    line(pad(r->crz % 10000, 4) + " " + pad(r->cro % 1000, 3) + " " + counter6(r->coo) + "  " +
         shown_date(r->date) + " " + hour + " " + money(r->gross));
    if (complete) line("     GT " + money(r->gt));
    total += r->gross;
  }
  line("");
  line("REDUCOES NO PERIODO: " + pad(static_cast<std::uint32_t>(list.size()), 4));
  line("BRUTO NO PERIODO: " + money(total));
  return s;
}

std::vector<const Reduction*> reductions_by_date(int from, int to) {
  std::vector<const Reduction*> out;
  for (const Reduction& r : model().fiscal_memory) {
    const int d = date_key(r.date, kNoStart);
    if (d >= from && d <= to) out.push_back(&r);
  }
  return out;
}

std::vector<const Reduction*> reductions_by_number(std::uint32_t from, std::uint32_t to) {
  std::vector<const Reduction*> out;
  for (const Reduction& r : model().fiscal_memory)
    if (r.crz >= from && r.crz <= to) out.push_back(&r);
  return out;
}

// Prints a fiscal-memory reading as a document of its own.
void print_fiscal_memory(const std::string& text, std::string_view operator_name) {
  next_coo();
  print_header("LEITURA DA MEMORIA FISCAL");
  std::size_t from = 0;
  while (from < text.size()) {
    const std::size_t end = text.find('\n', from);
    print(std::string_view(text).substr(from, end - from));
    if (end == std::string::npos) break;
    from = end + 1;
  }
  print_footer(operator_name);
  after_reading(model());
}

// 166 (complete) and 168 (simplified): printed, by reduction number: start
// and end packed in two bytes each, the operator's name, two zero bytes.
bool print_by_number(const vp_call& call, Reply& out) {
  auto& m = model();
  if (const int refusal = cannot_read(m); refusal != kAccepted) return answer(out, refuse(refusal));
  Args a(call);
  if (a.left() < 4) return answer(out, refuse(kInvalid));
  const std::string bounds = a.raw(4);
  const auto* p = reinterpret_cast<const std::uint8_t*>(bounds.data());
  const std::uint32_t from = unpack_bcd(p, 2), to = unpack_bcd(p + 2, 2);
  const std::string period = "REDUCOES: " + pad(from, 4) + " A " + pad(to, 4);
  print_fiscal_memory(fiscal_memory_text(reductions_by_number(from, to), call.cmd == 166, period), a.text());
  return answer(out, ok());
}

// ---- transfers to the host ---------------------------------------------------------------
// The first packet carries a 16-bit counter (0) and the request; every later
// one only its counter. Each reply echoes the counter and carries up to 253
// bytes of text; after the text, a packet with the end mark, which the host
// acknowledges with the next counter and the mark.

constexpr std::array<std::uint8_t, 4> kEndMark{0xCF, 0xDE, 0xB3, 0xD1};
constexpr std::size_t kPacketData = 253;

struct Transfer {
  int cmd = 0;
  bool active = false;
  std::string text;
  std::size_t sent = 0;
};

// One transfer at a time, held for this process only: a transfer does not
// survive a restart of the host, as the printer ends it when the host goes.
Transfer& transfer() {
  static Transfer t;
  return t;
}

Reply packet(Transfer& t, std::uint16_t counter) {
  std::vector<std::uint8_t> b{static_cast<std::uint8_t>(counter & 0xFF), static_cast<std::uint8_t>(counter >> 8)};
  if (t.sent < t.text.size()) {
    const std::size_t n = std::min(kPacketData, t.text.size() - t.sent);
    b.insert(b.end(), t.text.begin() + static_cast<std::ptrdiff_t>(t.sent),
             t.text.begin() + static_cast<std::ptrdiff_t>(t.sent + n));
    t.sent += n;
  } else {
    b.insert(b.end(), kEndMark.begin(), kEndMark.end());
  }
  return ok(std::move(b));
}

using Request = std::string (*)(Args& a);

bool transfer_step(const vp_call& call, Reply& out, Request request) {
  Args a(call, 0);
  if (a.left() < 2) return answer(out, refuse(kInvalid));
  const std::uint16_t counter = a.u16();
  Transfer& t = transfer();
  if (counter != 0 && a.left() == kEndMark.size()) {
    const std::string mark = a.raw(kEndMark.size());
    if (std::equal(kEndMark.begin(), kEndMark.end(), mark.begin(),
                   [](std::uint8_t x, char c) { return x == static_cast<std::uint8_t>(c); })) {
      t = Transfer{};
      return answer(out, ok());
    }
  }
  if (counter == 0) {
    t = Transfer{};
    t.cmd = call.cmd;
    t.active = true;
    t.text = request(a);
  } else if (!t.active || t.cmd != call.cmd) {
    return answer(out, refuse(kNothingToDo));
  }
  return answer(out, packet(t, counter));
}

// Fiscal memory by date: start and end dates, "S"/"C", "T" (a transfer) or
// "I" (printed), the operator's name for a printed reading.
struct DateBlock {
  std::string from, to;
  bool complete = true;
  std::string operator_name;
};

std::string cut_at_nul(std::string s) {
  s.resize(std::min(s.size(), s.find('\0')));
  return s;
}

DateBlock date_block(Args& a) {
  DateBlock b;
  b.from = a.raw(8);
  b.to = a.raw(8);
  b.complete = a.byte() != 'S';
  a.byte();  // "T" or "I"
  b.operator_name = cut_at_nul(a.raw(20));
  return b;
}

std::string mf_by_date(const DateBlock& b) {
  const int from = date_key(b.from, kNoStart), to = date_key(b.to, kNoEnd);
  const std::string period = "PERIODO: " + shown_date(cut_at_nul(b.from)) + " A " + shown_date(cut_at_nul(b.to));
  return fiscal_memory_text(reductions_by_date(from, to), b.complete, period);
}

// 194: the fiscal memory by date, transferred, or printed when the block asks
// for it (the printed reading carries the sequence field, not a counter).
bool fiscal_memory_by_date(const vp_call& call, Reply& out) {
  constexpr int kPrintedInput = 2 + 38;
  if (call.inlen >= kPrintedInput && call.in[2 + 17] == 'I') {
    auto& m = model();
    if (const int refusal = cannot_read(m); refusal != kAccepted) return answer(out, refuse(refusal));
    Args a(call);
    const DateBlock b = date_block(a);
    print_fiscal_memory(mf_by_date(b), b.operator_name);
    return answer(out, ok());
  }
  return transfer_step(call, out, [](Args& a) { return mf_by_date(date_block(a)); });
}

// 206: the fiscal memory by reduction number: start and end packed, "S"/"C".
bool fiscal_memory_by_number(const vp_call& call, Reply& out) {
  return transfer_step(call, out, [](Args& a) {
    const std::string bounds = a.raw(4);
    const bool complete = a.byte() != 'S';
    if (bounds.size() < 4) return fiscal_memory_text({}, complete, "REDUCOES:");
    const auto* p = reinterpret_cast<const std::uint8_t*>(bounds.data());
    const std::uint32_t from = unpack_bcd(p, 2), to = unpack_bcd(p + 2, 2);
    return fiscal_memory_text(reductions_by_number(from, to), complete,
                              "REDUCOES: " + pad(from, 4) + " A " + pad(to, 4));
  });
}

// ---- the journal -------------------------------------------------------------------------------
// The journal keeps every printed line. Its documents are told apart by their
// header line (date and time first, "COO:" and six digits last) and end with
// the footer's closing rule and what follows it on the paper (advance, cut).

struct JournalDocument {
  std::size_t first = 0, end = 0;  // lines [first, end)
  std::uint32_t coo = 0;
  int date = 0;                    // YYYYMMDD
};

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// The date and the COO of a header line, when `line` is one.
bool header_line(std::string_view line, int& date, std::uint32_t& coo) {
  if (line.size() < 19 || line[2] != '/' || line[5] != '/' || line[13] != ':') return false;
  const std::size_t at = line.rfind("COO:");
  if (at == std::string_view::npos || at + 10 > line.size()) return false;
  coo = 0;
  for (std::size_t i = at + 4; i < at + 10; ++i) {
    if (!is_digit(line[i])) return false;
    coo = coo * 10 + static_cast<std::uint32_t>(line[i] - '0');
  }
  std::string ddmmyyyy(line.substr(0, 2));
  ddmmyyyy.append(line.substr(3, 2)).append(line.substr(6, 4));
  date = date_key(ddmmyyyy, 0);
  return date != 0;
}

// What follows a document's closing rule on the paper and still belongs to
// it: blank lines of the paper advance and the cut.
bool trailer(std::string_view line) {
  return line.find("(corte)") != std::string_view::npos ||
         line.find_first_not_of(' ') == std::string_view::npos;
}

std::vector<JournalDocument> journal_documents() {
  const auto& j = model().journal;
  const std::string closing(static_cast<std::size_t>(kTapeWidth), '=');
  std::vector<JournalDocument> docs;
  JournalDocument cur;
  bool closed = false;
  for (std::size_t i = 0; i < j.size(); ++i) {
    if (closed && !trailer(j[i])) {
      cur.end = i;
      docs.push_back(cur);
      cur = JournalDocument{};
      cur.first = i;
      closed = false;
    }
    int date = 0;
    std::uint32_t coo = 0;
    if (cur.coo == 0 && header_line(j[i], date, coo)) {
      cur.coo = coo;
      cur.date = date;
    }
    if (j[i] == closing) closed = true;
  }
  if (cur.first < j.size()) {
    cur.end = j.size();
    docs.push_back(cur);
  }
  return docs;
}

// The reduction a document belongs to: the first whose COO is not below its own.
std::uint32_t reduction_of(std::uint32_t coo) {
  std::uint32_t n = 1;
  for (const Reduction& r : model().fiscal_memory) {
    if (r.coo >= coo) return r.crz;
    n = r.crz + 1;
  }
  return n;
}

template <class Keep>
std::string journal_text(Keep keep) {
  const auto& j = model().journal;
  std::string s;
  for (const JournalDocument& d : journal_documents()) {
    if (!keep(d)) continue;
    for (std::size_t i = d.first; i < d.end; ++i) {
      s += j[i];
      s += '\n';
    }
  }
  return s;
}

std::string journal_by_dates(Args& a) {
  const std::string from = a.raw(8), to = a.raw(8);
  const int lo = date_key(from, kNoStart), hi = date_key(to, kNoEnd);
  return journal_text([&](const JournalDocument& d) { return d.date >= lo && d.date <= hi; });
}

// 195 (by date) and 200 (by a second date range): start and end dates, "T".
bool journal_by_date(const vp_call& call, Reply& out) { return transfer_step(call, out, journal_by_dates); }

// 199: by COO: start and end, three packed bytes each, "T".
bool journal_by_coo(const vp_call& call, Reply& out) {
  return transfer_step(call, out, [](Args& a) {
    const std::string bounds = a.raw(6);
    if (bounds.size() < 6) return std::string();
    const auto* p = reinterpret_cast<const std::uint8_t*>(bounds.data());
    const std::uint32_t lo = unpack_bcd(p, 3), hi = unpack_bcd(p + 3, 3);
    return journal_text([&](const JournalDocument& d) { return d.coo >= lo && d.coo <= hi; });
  });
}

// 216: by reduction number: start and end, two packed bytes each, "T".
bool journal_by_reduction(const vp_call& call, Reply& out) {
  return transfer_step(call, out, [](Args& a) {
    const std::string bounds = a.raw(4);
    if (bounds.size() < 4) return std::string();
    const auto* p = reinterpret_cast<const std::uint8_t*>(bounds.data());
    const std::uint32_t lo = unpack_bcd(p, 2), hi = unpack_bcd(p + 2, 2);
    return journal_text([&](const JournalDocument& d) {
      const std::uint32_t n = reduction_of(d.coo);
      return d.coo != 0 && n >= lo && n <= hi;
    });
  });
}

// 7: the host ends a transfer it could not finish.
bool end_transfer(const vp_call&, Reply& out) {
  transfer() = Transfer{};
  return answer(out, ok());
}

// The journal's capacity (code 1: 256 MiB) and what its lines take of it.
constexpr std::uint8_t kJournalSizeCode = 1;
constexpr std::uint64_t kJournalBytes = 268435456;

// 14: bytes 0..7 the bytes used as digits, byte 8 the size code, bytes 9..12
// the free share in hundredths of a percent (at most 99,99).
bool journal_details(const vp_call&, Reply& out) {
  std::uint64_t used = 0;
  for (const auto& l : model().journal) used += l.size() + 1;
  used = std::min(used, kJournalBytes);
  const std::uint64_t free = std::min<std::uint64_t>((kJournalBytes - used) * 10000 / kJournalBytes, 9999);
  char text[16];
  std::snprintf(text, sizeof text, "%08llu", static_cast<unsigned long long>(std::min<std::uint64_t>(used, 99999999)));
  Reply r = ok_sized(13);
  put(r, 0, text);
  put_byte(r, 8, kJournalSizeCode);
  std::snprintf(text, sizeof text, "%04llu", static_cast<unsigned long long>(free));
  put(r, 9, text);
  return answer(out, std::move(r));
}

// 231: the journal's serial number.
bool journal_serial(const vp_call&, Reply& out) {
  const std::string& s = model().mfd_serial;
  return answer(out, ok(std::vector<std::uint8_t>(s.begin(), s.end())));
}

constexpr HandlerEntry kReadingHandlers[] = {
    {1, available},             {4, after_reduction},       {7, end_transfer},
    {14, journal_details},      {160, x_reading},           {162, z_reduction},
    {166, print_by_number},     {168, print_by_number},     {174, fiscal_record},
    {194, fiscal_memory_by_date}, {195, journal_by_date},   {199, journal_by_coo},
    {200, journal_by_date},     {206, fiscal_memory_by_number}, {216, journal_by_reduction},
    {231, journal_serial},
};

const Registration kRegistration{kReadingHandlers};

}  // namespace

}  // namespace vprinter::model
