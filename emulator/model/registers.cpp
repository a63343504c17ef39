// Partial registers of the printer model (their default programming, list,
// details and creation) and the value commands over the general registers,
// the coupon in progress, the last reduction and the tax rates.
#include "registers.h"

#include <algorithm>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace vprinter::model {

namespace {

constexpr int kAccepted = 0;  // no refusal

// ---- numbering ---------------------------------------------------------------

struct Range {
  int lo;
  int hi;
  bool has(int n) const { return n >= lo && n <= hi; }
};

constexpr Range kGoods{20, 34};
constexpr Range kServices{36, 39};
constexpr Range kMoreServices{100, 110};
constexpr Range kNonFiscal{40, 54};
constexpr Range kPayments{60, 78};
constexpr Range kReports{116, 132};

constexpr std::size_t kNameWidth = 15;  // longest register name the printer keeps
constexpr int kMaxRate = 9999;          // 99,99 %

// Registers that count documents or operations rather than money.
bool is_counter(int reg) {
  switch (reg) {
    case 1: case 2: case 3: case 4: case 5: case 6: case 10: case 14: case 15: case 80: case 137:
      return true;
    default:
      return kReports.has(reg);
  }
}

std::int64_t day(const Model& m, int reg) {
  const auto it = m.day.find(reg);
  return it == m.day.end() ? 0 : it->second;
}

std::int64_t sum_day(const Model& m, Range r) {
  std::int64_t s = 0;
  for (int reg = r.lo; reg <= r.hi; ++reg) s += day(m, reg);
  return s;
}

std::int64_t value_in(const Document& d, int reg) {
  const auto it = d.totals.find(reg);
  return it == d.totals.end() ? 0 : it->second;
}

std::string digits(std::int64_t v, int width) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%0*lld", width, static_cast<long long>(std::max<std::int64_t>(v, 0)));
  return buf;
}

// ---- replies -------------------------------------------------------------------

// The register number echoed at byte 0, the text from byte 1, a terminator.
Reply echoed(int reg, std::string_view text) {
  std::vector<std::uint8_t> b;
  b.reserve(text.size() + 2);
  b.push_back(static_cast<std::uint8_t>(reg));
  b.insert(b.end(), text.begin(), text.end());
  b.push_back(0);
  return ok(std::move(b));
}

// The register number a query names: its one parameter byte.
bool register_arg(const vp_call& call, int& reg) {
  Args a(call);
  if (a.left() < 1) return false;
  reg = a.byte();
  return true;
}

// ---- programming -----------------------------------------------------------------

void define(Model& m, int number, std::string name, char flag = ' ') {
  Partial p;
  p.number = number;
  p.name = std::move(name);
  p.flag = flag;
  m.partials[number] = std::move(p);
}

// Programs one register, or gives the refusal. Programming a register again
// with the same name and flag is accepted and changes nothing, so that an
// application that programs its registers at every start keeps working; a
// different name on a programmed number, or a name another register of the
// category already carries, is refused, and so is any programming while a
// document is open.
int program(Model& m, Range range, int number, std::string name, char flag) {
  if (m.doc.state != 0) return kDocumentOpen;
  if (!range.has(number)) return kNoRegister;
  if (name.size() > kNameWidth) name.resize(kNameWidth);
  if (name.empty()) return kInvalid;
  if (const auto it = m.partials.find(number); it != m.partials.end())
    return it->second.name == name && it->second.flag == flag ? kAccepted : kInvalid;
  for (const Partial* p : partials_in(range.lo, range.hi))
    if (p->name == name) return kInvalid;
  define(m, number, std::move(name), flag);
  touch();
  return kAccepted;
}

bool answer_program(Reply& out, int refusal) { return answer(out, refusal == kAccepted ? ok() : refuse(refusal)); }

// ---- handlers: list and details ------------------------------------------------

// 38: every programmed register, one number per byte, ascending.
bool list_all(const vp_call&, Reply& out) {
  std::vector<std::uint8_t> b;
  for (const auto& [number, p] : model().partials) b.push_back(static_cast<std::uint8_t>(number));
  return answer(out, ok(std::move(b)));
}

// 37: the programmed registers of one category: the category echoed, the
// numbers, a terminator.
bool list_category(const vp_call& call, Reply& out) {
  int cat = 0;
  if (!register_arg(call, cat)) return answer(out, refuse(kInvalid));
  std::vector<Range> ranges;
  switch (cat) {
    case 1: ranges = {kNonFiscal}; break;
    case 2: ranges = {kGoods}; break;
    case 4: ranges = {kServices, kMoreServices}; break;
    case 5: ranges = {kPayments}; break;
    case 6: ranges = {kReports}; break;
    default: return answer(out, refuse(kInvalid));
  }
  std::vector<std::uint8_t> b{static_cast<std::uint8_t>(cat)};
  for (const Range& r : ranges)
    for (const Partial* p : partials_in(r.lo, r.hi)) b.push_back(static_cast<std::uint8_t>(p->number));
  b.push_back(0);
  return answer(out, ok(std::move(b)));
}

const Partial* programmed(int reg) {
  const auto& parts = model().partials;
  const auto it = parts.find(reg);
  return it == parts.end() ? nullptr : &it->second;
}

// 33: a non-fiscal totaliser or a payment method: number, sign or voucher
// flag (1 admits vouchers), a byte not used, the name.
bool detail_flagged(const vp_call& call, Reply& out) {
  int reg = 0;
  if (!register_arg(call, reg)) return answer(out, refuse(kInvalid));
  const Partial* p = programmed(reg);
  if (p == nullptr || !(kNonFiscal.has(reg) || kPayments.has(reg))) return answer(out, refuse(kNoRegister));
  std::vector<std::uint8_t> b{static_cast<std::uint8_t>(reg)};
  b.push_back(kPayments.has(reg) ? (p->flag == '1' ? 1 : 0) : static_cast<std::uint8_t>(p->flag));
  b.push_back(0);
  b.insert(b.end(), p->name.begin(), p->name.end());
  return answer(out, ok(std::move(b)));
}

// 36: a tax rate: number, then the rate as "18,00".
bool detail_tax(const vp_call& call, Reply& out) {
  int reg = 0;
  if (!register_arg(call, reg)) return answer(out, refuse(kInvalid));
  if (!is_tax_register(reg) || programmed(reg) == nullptr) return answer(out, refuse(kNoRegister));
  const std::string text = rate_text(tax_rate(model(), reg));
  std::vector<std::uint8_t> b{static_cast<std::uint8_t>(reg)};
  b.insert(b.end(), text.begin(), text.end());
  return answer(out, ok(std::move(b)));
}

// 238: a management report type: number, then the name.
bool detail_report(const vp_call& call, Reply& out) {
  int reg = 0;
  if (!register_arg(call, reg)) return answer(out, refuse(kInvalid));
  const Partial* p = programmed(reg);
  if (p == nullptr || !kReports.has(reg)) return answer(out, refuse(kNoRegister));
  std::vector<std::uint8_t> b{static_cast<std::uint8_t>(reg)};
  b.insert(b.end(), p->name.begin(), p->name.end());
  return answer(out, ok(std::move(b)));
}

// ---- handlers: creation ------------------------------------------------------------

// 32: number, sign, a zero byte, name.
bool create_nonfiscal(const vp_call& call, Reply& out) {
  Args a(call);
  const int reg = a.byte();
  const char sign = static_cast<char>(a.byte());
  a.byte();
  std::string name = a.text();
  if (sign != '+' && sign != '-') return answer(out, refuse(kInvalid));
  return answer_program(out, program(model(), kNonFiscal, reg, std::move(name), sign));
}

// 34 (goods) and 58 (services): number, the rate as digits with two implied
// decimals.
bool create_tax(const vp_call& call, Reply& out, std::initializer_list<Range> ranges) {
  Args a(call);
  const int reg = a.byte();
  const std::string text = a.text();
  int rate = 0;
  bool number = !text.empty() && text.size() <= 6;
  for (char c : text) {
    if (c < '0' || c > '9') number = false;
    if (number) rate = rate * 10 + (c - '0');
  }
  if (!number || rate > kMaxRate) return answer(out, refuse(kInvalid));
  for (const Range& r : ranges)
    if (r.has(reg)) return answer_program(out, program(model(), r, reg, digits(rate, 4), ' '));
  return answer(out, refuse(kNoRegister));
}

bool create_goods_tax(const vp_call& call, Reply& out) { return create_tax(call, out, {kGoods}); }
bool create_service_tax(const vp_call& call, Reply& out) {
  return create_tax(call, out, {kServices, kMoreServices});
}

// 59: number, a zero byte, 1 when the method admits vouchers, name.
bool create_payment(const vp_call& call, Reply& out) {
  Args a(call);
  const int reg = a.byte();
  a.byte();
  const char ccd = a.byte() != 0 ? '1' : '0';
  return answer_program(out, program(model(), kPayments, reg, a.text(), ccd));
}

// 213: printer number (116..132), name.
bool create_report(const vp_call& call, Reply& out) {
  Args a(call);
  const int reg = a.byte();
  return answer_program(out, program(model(), kReports, reg, a.text(), ' '));
}

// ---- handlers: values ----------------------------------------------------------------

// 133: the current value of a general register.
bool current_value(const vp_call& call, Reply& out) {
  int reg = 0;
  if (!register_arg(call, reg)) return answer(out, refuse(kInvalid));
  const auto v = general_value(model(), reg);
  if (!v) return answer(out, refuse(kNoRegister));
  return answer(out, echoed(reg, register_text(reg, *v)));
}

// 134 and 137: a register's value in the coupon in progress (or the last
// one). A payment method holds what was received with it, the change not
// taken off (that is register 79).
std::int64_t coupon_register(const Document& d, int reg) {
  if (!kPayments.has(reg)) return value_in(d, reg);
  std::int64_t received = 0;
  for (const Payment& p : d.payments)
    if (p.reg == reg) received += p.value;
  return received;
}

bool coupon_value(const vp_call& call, Reply& out) {
  int reg = 0;
  if (!register_arg(call, reg)) return answer(out, refuse(kInvalid));
  if (reg > kLastGeneralRegister) return answer(out, refuse(kNoRegister));
  return answer(out, echoed(reg, digits(coupon_register(coupon_document(model()), reg), 18)));
}

// 182 (discounts) and 183 (increases): the adjustment on the subtotal of the
// coupon in progress (or the last one): 1, then fourteen digits.
bool subtotal_adjustment(const vp_call& call, Reply& out) {
  const std::int64_t adj = coupon_document(model()).adjustment;
  const std::int64_t v = call.cmd == 182 ? -adj : adj;
  std::vector<std::uint8_t> b{1};
  const std::string text = digits(v, 14);
  b.insert(b.end(), text.begin(), text.end());
  b.push_back(0);
  return answer(out, ok(std::move(b)));
}

// 241: the discount indicator: 1, the printer keeps the discounts on services
// apart (register 134).
bool discount_indicator(const vp_call&, Reply& out) { return answer(out, ok({1})); }

// 135: a general register as the last reduction left it (zero before the
// first reduction).
bool reduction_value(const vp_call& call, Reply& out) {
  int reg = 0;
  if (!register_arg(call, reg)) return answer(out, refuse(kInvalid));
  if (reg > kLastGeneralRegister) return answer(out, refuse(kNoRegister));
  std::int64_t v = 0;
  if (const auto& fm = model().fiscal_memory; !fm.empty()) {
    const auto it = fm.back().totals.find(reg);
    if (it != fm.back().totals.end()) v = it->second;
  }
  return answer(out, echoed(reg, register_text(reg, v)));
}

// 136: the tax on the day's sales of a tax register, sixteen digits.
bool tax_value(const vp_call& call, Reply& out) {
  int reg = 0;
  if (!register_arg(call, reg)) return answer(out, refuse(kInvalid));
  const Model& m = model();
  if (!is_tax_register(reg) || programmed(reg) == nullptr) return answer(out, refuse(kNoRegister));
  return answer(out, echoed(reg, digits(tax_on(day_money(m, reg), tax_rate(m, reg)), 16)));
}

constexpr HandlerEntry kRegisterHandlers[] = {
    {32, create_nonfiscal},     {33, detail_flagged},       {34, create_goods_tax},
    {36, detail_tax},           {37, list_category},        {38, list_all},
    {58, create_service_tax},   {59, create_payment},       {133, current_value},
    {134, coupon_value},        {135, reduction_value},     {136, tax_value},
    {137, coupon_value},        {182, subtotal_adjustment}, {183, subtotal_adjustment},
    {213, create_report},       {238, detail_report},       {241, discount_indicator},
};

const Registration kRegistration{kRegisterHandlers};

}  // namespace

// ---- shared ----------------------------------------------------------------------------

void default_programming(Model& m) {
  m.partials.clear();
  define(m, 20, "1800");
  define(m, 21, "1200");
  define(m, 22, "0700");
  define(m, 36, "0500");
  define(m, 40, "SANGRIA", '-');
  define(m, 41, "SUPRIMENTO", '+');
  define(m, 60, "DINHEIRO", '0');
  define(m, 61, "CARTAO", '1');
  define(m, 62, "OUTROS", '0');
  define(m, 116, "GERAL");
  define(m, 117, "TEF");
}

bool is_tax_register(int reg) { return kGoods.has(reg) || kServices.has(reg) || kMoreServices.has(reg); }

int tax_rate(const Model& m, int reg) {
  const auto it = m.partials.find(reg);
  if (it == m.partials.end() || !is_tax_register(reg)) return 0;
  int rate = 0;
  for (char c : it->second.name)
    if (c >= '0' && c <= '9') rate = rate * 10 + (c - '0');
  return std::min(rate, kMaxRate);
}

std::string rate_text(int rate) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%02d,%02d", rate / 100 % 100, rate % 100);
  return buf;
}

std::int64_t tax_on(std::int64_t value, int rate) { return (value * rate + 5000) / 10000; }

const Reduction* reduced_day(const Model& m) {
  if (!m.business_date.empty() || m.fiscal_memory.empty()) return nullptr;
  return &m.fiscal_memory.back();
}

std::int64_t day_money(const Model& m, int reg) {
  if (const Reduction* r = reduced_day(m)) {
    const auto it = r->totals.find(reg);
    return it == r->totals.end() ? 0 : it->second;
  }
  return day(m, reg);
}

std::int64_t gross_sales(const Model& m) {
  if (const Reduction* r = reduced_day(m)) return r->gross;
  return m.gt - m.gt_start;
}

std::int64_t net_sales(const Model& m) {
  return gross_sales(m) - day_money(m, 7) - day_money(m, 114) - day_money(m, 8) - day_money(m, 134);
}

const Document& coupon_document(const Model& m) {
  if (m.doc.state != 0) return m.doc;
  return m.last_kind == 'N' ? m.last_nonfiscal.doc : m.last_fiscal.doc;
}

std::optional<std::int64_t> general_value(const Model& m, int reg) {
  if (reg < 0 || reg > kLastGeneralRegister) return std::nullopt;
  // The printer's counters and its grand total are always the current ones.
  switch (reg) {
    case 0: return m.gt;
    case 2: return m.cro;
    case 3: return m.coo;
    case 4: return m.crz;
    case 5: return m.gnf;
    case 6: return m.cdc;
    case 10: return m.grg;
    case 14: return m.cfc;
    case 15: return m.nfc;
    case 137: return m.ccf;
    default: break;
  }
  if (reduced_day(m) != nullptr) return day_money(m, reg);
  switch (reg) {
    case 1: return m.day_first_coo;
    case 80: return m.day_first_coo != 0 && m.coo >= m.day_first_coo ? m.coo - m.day_first_coo + 1 : 0;
    case 115: return gross_sales(m);
    case 133: return m.gt_start;
    case 136: return net_sales(m);
    case 138: return sum_day(m, kPayments);
    default: return day(m, reg);
  }
}

std::string register_text(int reg, std::int64_t value) { return digits(value, is_counter(reg) ? 6 : 18); }

}  // namespace vprinter::model
