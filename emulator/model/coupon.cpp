// The fiscal coupon in the printer model: opening, items and their
// adjustments, totalling, payments, change, closing and cancellation; the
// payment machinery is shared with the non-fiscal coupon.
#include <algorithm>
#include <string>

#include "documents.h"

namespace vprinter::model {
namespace {

bool blank(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c == ' '; });
}

// Tax registers an item may be sold under: substitution, exempt and
// non-incidence (11..13) always, the tax rates when programmed.
bool sellable(int reg) {
  if (reg >= 11 && reg <= 13) return true;
  if ((reg >= 20 && reg <= 34) || (reg >= 36 && reg <= 39)) return !partial_name(reg).empty();
  return false;
}

Item* find_item(Document& d, std::uint16_t number) {
  if (number == 0xffff) number = static_cast<std::uint16_t>(d.items.size());
  if (number == 0 || number > d.items.size()) return nullptr;
  return &d.items[number - 1u];
}

std::string three(int n) {
  std::string s = std::to_string(n);
  return std::string(s.size() < 3 ? 3 - s.size() : 0, '0') + s;
}

// Opens a fiscal coupon: new COO and CCF, the header.
void open_coupon(std::string_view name, std::string_view number, std::string_view address) {
  auto& m = model();
  begin_document();
  open_day();
  m.doc = Document{};
  m.doc.coo = next_coo();
  ++m.ccf;
  m.doc.state = 2;
  m.last_item = 0;
  m.last_kind = 'F';
  print_header("CUPOM FISCAL", "CCF:" + counter6(m.ccf));
  if (!blank(name) || !blank(number) || !blank(address)) {
    m.doc.consumer = std::string(number);
    print_consumer(name, number, address);
  }
  print("ITEM CODIGO DESCRICAO");
  print_lr("QTD. UN. VL.UNIT(R$)", "ST VL.ITEM(R$)");
  print_rule();
  touch();
}

// 141: open a fiscal coupon with the consumer identification.
bool open_fiscal(const vp_call& call, Reply& out) {
  if (int why = cannot_open()) return answer(out, refuse(why));
  Args a(call);
  const std::string name = a.text(), number = a.text(), address = a.text();
  open_coupon(name, number, address);
  return answer(out, ok());
}

// 193: sell an item; the first item opens the coupon when none is open.
bool sell_item(const vp_call& call, Reply& out) {
  auto& m = model();
  if (m.cover_open) return answer(out, refuse(kCoverOpen));
  if (m.doc.state != 0 && m.doc.state != 2) return answer(out, refuse(kWrongState));
  if (m.doc.state == 2 && m.doc.adjustment != 0) return answer(out, refuse(kWrongState));
  Args a(call);
  const int reg = a.byte();
  Item item;
  item.code = a.text();
  item.description = a.text();
  a.byte();  // one or two print lines: the tape always shows two
  const std::string qty = a.text(), unit = a.text(), price = a.text();
  const char iat = static_cast<char>(a.byte());
  if (!sellable(reg)) return answer(out, refuse(kNoRegister));
  if (!parse_decimal(qty, m.qty_decimals, 3, item.quantity) ||
      !parse_decimal(price, m.price_decimals, 3, item.price) || item.quantity <= 0 ||
      item.price <= 0)
    return answer(out, refuse(kInvalid));
  if (m.doc.state == 0) {
    if (int why = cannot_open()) return answer(out, refuse(why));
    open_coupon("", "", "");
  }
  item.tax_register = reg;
  item.tax = tax_label(reg);
  item.value = item_value(item.quantity, item.price, iat == 'A' || iat == 'T' ? iat : m.iat);
  item.number = static_cast<int>(m.doc.items.size()) + 1;
  m.doc.items.push_back(item);
  m.doc.gross += item.value;
  m.last_item = item.number;
  m.gt += item.value;
  add(reg, item.value);
  print(three(item.number) + " " + item.code + " " + item.description);
  print_lr("    " + quantity(item.quantity, m.qty_decimals) + " " + unit + " X " +
               quantity(item.price, m.price_decimals),
           item.tax + "  " + money(item.value));
  return answer(out, ok());
}

// 180: cancel an item.
bool cancel_item(const vp_call& call, Reply& out) {
  auto& m = model();
  if (m.doc.state != 2 || m.doc.adjustment != 0)
    return answer(out, refuse(m.doc.state == 0 ? kNothingToDo : kWrongState));
  Item* item = find_item(m.doc, Args(call).u16());
  if (item == nullptr) return answer(out, refuse(kInvalid));
  if (item->cancelled) return answer(out, refuse(kNothingToDo));
  const std::int64_t net = item->value + item->adjustment;
  item->cancelled = true;
  m.doc.gross -= net;
  add(item->tax_register, -net);
  add(cancel_register(item->tax_register), net);
  print_lr("CANCELAMENTO ITEM " + three(item->number), "-" + money(net));
  return answer(out, ok());
}

// Amount of a percentage (hundredths of a percent) of a value, rounded.
std::int64_t percent_of(std::int64_t value, std::int64_t hundredths) {
  return (value * hundredths + 5000) / 10000;
}

// 207: discount or increase on an item (modes 0..3), or its cancellation (4).
bool adjust_item(const vp_call& call, Reply& out) {
  auto& m = model();
  if (m.doc.state != 2 || m.doc.adjustment != 0)
    return answer(out, refuse(m.doc.state == 0 ? kNothingToDo : kWrongState));
  Args a(call);
  Item* item = find_item(m.doc, a.u16());
  const int mode = a.byte();
  const std::string text = a.text();
  if (item == nullptr || item->cancelled || mode > 4) return answer(out, refuse(kInvalid));
  const int reg = item->tax_register;
  const std::string label = three(item->number);
  if (mode == 4) {
    if (item->adjustment == 0) return answer(out, refuse(kNothingToDo));
    const std::int64_t adj = item->adjustment;
    item->adjustment = 0;
    m.doc.gross -= adj;
    add(reg, -adj);
    // a discount taken back leaves the discounts; an increase taken back is a
    // cancellation, as the grand total already holds it
    if (adj < 0) add(discount_register(reg), adj);
    else add(cancel_register(reg), adj);
    print_lr("CANCELAMENTO ACRESC/DESC ITEM " + label, (adj < 0 ? "+" : "-") + money(adj < 0 ? -adj : adj));
    return answer(out, ok());
  }
  if (item->adjustment != 0) return answer(out, refuse(kWrongState));
  std::int64_t amount = 0;
  if (!parse_money(text, amount)) return answer(out, refuse(kInvalid));
  if (mode >= 2) amount = percent_of(item->value, amount);
  const bool discount = mode == 1 || mode == 3;
  if (amount <= 0 || (discount && amount >= item->value)) return answer(out, refuse(kInvalid));
  item->adjustment = discount ? -amount : amount;
  m.doc.gross += item->adjustment;
  add(reg, item->adjustment);
  if (discount) {
    add(discount_register(reg), amount);
  } else {
    add(increase_register(reg), amount);
    m.gt += amount;
  }
  print_lr((discount ? "DESCONTO ITEM " : "ACRESCIMO ITEM ") + label,
           (discount ? "-" : "+") + money(amount));
  return answer(out, ok());
}

// 147..152: discount (147 amount, 148 percentage, 149 cancel) or increase
// (150, 151, 152) on the subtotal, spread over the tax registers in proportion
// to what each holds in the coupon.
bool adjust_coupon(const vp_call& call, Reply& out) {
  auto& m = model();
  auto& d = m.doc;
  if (d.state != 2) return answer(out, refuse(d.state == 0 ? kNothingToDo : kWrongState));
  const bool discount = call.cmd <= 149;
  const int op = (call.cmd - 147) % 3;  // 0 amount, 1 percentage, 2 cancel
  if (op == 2) {
    if (discount ? d.adjustment >= 0 : d.adjustment <= 0) return answer(out, refuse(kNothingToDo));
    for (const auto& [reg, share] : std::map<int, std::int64_t>(d.split)) {
      add(reg, discount ? share : -share);
      if (discount) add(discount_register(reg), -share);
      else add(cancel_register(reg), share);
    }
    print_lr(discount ? "CANCELAMENTO DESCONTO SUBTOTAL" : "CANCELAMENTO ACRESCIMO SUBTOTAL",
             (discount ? "+" : "-") + money(discount ? -d.adjustment : d.adjustment));
    d.adjustment = 0;
    d.split.clear();
    return answer(out, ok());
  }
  if (d.adjustment != 0) return answer(out, refuse(kWrongState));
  std::map<int, std::int64_t> base;
  for (const auto& item : d.items)
    if (!item.cancelled) base[item.tax_register] += item.value + item.adjustment;
  if (d.gross <= 0) return answer(out, refuse(kNothingToDo));
  std::int64_t amount = 0;
  if (!parse_money(Args(call).text(), amount)) return answer(out, refuse(kInvalid));
  if (op == 1) amount = percent_of(d.gross, amount);
  if (amount <= 0 || (discount && amount >= d.gross)) return answer(out, refuse(kInvalid));
  // proportional shares; the rounding remainder goes to the largest register
  std::int64_t spread = 0;
  int largest = base.begin()->first;
  for (const auto& [reg, value] : base) {
    d.split[reg] = amount * value / d.gross;
    spread += d.split[reg];
    if (value > base[largest]) largest = reg;
  }
  d.split[largest] += amount - spread;
  for (const auto& [reg, share] : d.split) {
    add(reg, discount ? -share : share);
    add(discount ? discount_register(reg) : increase_register(reg), share);
  }
  if (!discount) m.gt += amount;
  d.adjustment = discount ? -amount : amount;
  print_lr("SUBTOTAL R$", money(d.gross));
  print_lr(discount ? "DESCONTO R$" : "ACRESCIMO R$", (discount ? "-" : "+") + money(amount));
  return answer(out, ok());
}

// 153: totals the open coupon.
bool total(const vp_call&, Reply& out) {
  auto& d = model().doc;
  switch (d.state) {
    case 2:
      if (d.total() <= 0) return answer(out, refuse(kNothingToDo));
      d.state = 14;
      break;
    case 20: d.state = 21; break;
    case 22: d.state = 23; break;
    case 0:
    case 19: return answer(out, refuse(kNothingToDo));
    default: return answer(out, refuse(kWrongState));
  }
  print_rule();
  print_lr("TOTAL R$", money(d.total()));
  touch();
  return answer(out, ok());
}

// 185 / 209: a payment, with a message line for 209.
bool payment(const vp_call& call, Reply& out) {
  Args a(call);
  const int reg = a.byte();
  const std::string value = a.text();
  const std::string message = call.cmd == 209 ? a.text() : std::string();
  if (int why = pay(reg, value, message)) return answer(out, refuse(why));
  return answer(out, ok());
}

// 188: the amount received, in a coupon being paid.
bool amount_received(const vp_call&, Reply& out) {
  const auto& d = model().doc;
  if (d.state < 14 || d.state > 25 || (d.state > 16 && d.state < 23))
    return answer(out, refuse(d.state == 0 ? kNothingToDo : kWrongState));
  print_lr("VALOR RECEBIDO R$", money(d.paid));
  return answer(out, ok());
}

// 189: the change, in a coupon paid beyond its total.
bool change(const vp_call&, Reply& out) {
  auto& d = model().doc;
  if (d.state != 15 && d.state != 24) return answer(out, refuse(d.state == 0 ? kNothingToDo : kWrongState));
  give_change();
  return answer(out, ok());
}

// 142: closes the fiscal coupon, paid in full.
bool close_fiscal(const vp_call& call, Reply& out) {
  auto& m = model();
  auto& d = m.doc;
  if (d.state == 0) return answer(out, refuse(kNothingToDo));
  if (d.state == 14) return answer(out, refuse(kNotPaid));
  if (d.state != 15 && d.state != 16) return answer(out, refuse(kWrongState));
  Args a(call);
  a.byte();
  const std::string operator_name = a.text();
  const std::string name = a.text(), number = a.text(), address = a.text();
  give_change();
  if (d.consumer.empty() && (!blank(name) || !blank(number) || !blank(address))) {
    print_rule();
    print_consumer(name, number, address);
  }
  print_footer(operator_name);
  m.last_fiscal = LastDocument{d, d.coo, true};
  m.last_fiscal.doc.state = 0;
  m.vouchers.clear();
  d = Document{};
  touch();
  return answer(out, ok());
}

// 154: cancels the open fiscal or non-fiscal coupon.
bool cancel_open(const vp_call& call, Reply& out) {
  auto& m = model();
  auto& d = m.doc;
  const bool fiscal = fiscal_state(d.state);
  if (!fiscal && !nonfiscal_state(d.state))
    return answer(out, refuse(d.state == 0 ? kNothingToDo : kWrongState));
  if (m.cover_open) return answer(out, refuse(kCoverOpen));
  Args a(call);
  a.byte();
  const std::string operator_name = a.text();
  reverse_coupon(std::map<int, std::int64_t>(d.totals), fiscal);
  print_rule();
  print_center(fiscal ? "CUPOM FISCAL CANCELADO" : "COMPROVANTE NAO-FISCAL CANCELADO");
  print_lr("VALOR CANCELADO R$", money(d.total()));
  print_footer(operator_name);
  ++(fiscal ? m.cfc : m.nfc);
  m.last_fiscal.cancellable = false;
  m.last_nonfiscal.cancellable = false;
  m.vouchers.clear();
  m.last_kind = 'C';
  d = Document{};
  touch();
  return answer(out, ok());
}

// 155 / 217: cancels the last fiscal / non-fiscal coupon, already closed,
// while it is still the last document (vouchers and their reversals aside)
// and its vouchers are all reversed.
bool cancel_previous(const vp_call& call, Reply& out) {
  auto& m = model();
  const bool fiscal = call.cmd == 155;
  LastDocument& last = fiscal ? m.last_fiscal : m.last_nonfiscal;
  if (int why = cannot_open(); why == kCoverOpen || why == kDocumentOpen) return answer(out, refuse(why));
  if (!last.cancellable) return answer(out, refuse(kNothingToDo));
  for (const auto& v : m.vouchers)
    if (v.coupon_coo == last.coo && !v.reversed) return answer(out, refuse(kWrongState));
  Args a(call);
  a.byte();
  const std::string operator_name = a.text();
  reverse_coupon(last.doc.totals, fiscal);
  next_coo();
  print_header(fiscal ? "CUPOM FISCAL CANCELADO" : "COMPROVANTE NAO-FISCAL CANCELADO");
  print("COO DO DOCUMENTO CANCELADO: " + counter6(last.coo));
  print_lr("VALOR CANCELADO R$", money(last.doc.total()));
  print_footer(operator_name);
  ++(fiscal ? m.cfc : m.nfc);
  last.cancellable = false;
  m.last_kind = 'C';
  touch();
  return answer(out, ok());
}

// 138: the subtotal of the open coupon, in cents, as text.
bool subtotal(const vp_call&, Reply& out) {
  const auto& d = model().doc;
  Reply r = ok();
  put(r, 0, std::to_string(d.state == 0 ? 0 : d.total()));
  put_byte(r, r.data.size(), 0);
  return answer(out, std::move(r));
}

// 190: the total paid so far, validity byte 1 first.
bool total_paid(const vp_call&, Reply& out) {
  const auto& d = model().doc;
  Reply r = ok_sized(1);
  put_byte(r, 0, 1);
  put(r, 1, std::to_string(d.state == 0 ? 0 : d.paid));
  put_byte(r, r.data.size(), 0);
  return answer(out, std::move(r));
}

// 201: an additional copy of the last fiscal coupon's totals.
bool additional_coupon(const vp_call&, Reply& out) {
  const auto& m = model();
  if (m.doc.state != 0) return answer(out, refuse(kDocumentOpen));
  if (m.last_fiscal.coo == 0) return answer(out, refuse(kNothingToDo));
  if (m.cover_open) return answer(out, refuse(kCoverOpen));
  print_center("CUPOM ADICIONAL");
  print("COO: " + counter6(m.last_fiscal.coo));
  print_lr("TOTAL R$", money(m.last_fiscal.doc.total()));
  print_rule('=');
  return answer(out, ok());
}

// 242: moves an amount of the last coupon from one payment method to another.
bool move_payment(const vp_call& call, Reply& out) {
  auto& m = model();
  if (m.doc.state != 0) return answer(out, refuse(kDocumentOpen));
  Args a(call);
  const std::string packed = a.raw(3);
  const std::uint32_t coo = unpack_bcd(reinterpret_cast<const std::uint8_t*>(packed.data()), packed.size());
  const int from = a.byte(), to = a.byte();
  const std::string text = a.text();
  LastDocument& last = m.last_fiscal;
  if (last.coo == 0 || coo != last.coo || !last.cancellable) return answer(out, refuse(kNothingToDo));
  if (from < 60 || from > 78 || to < 60 || to > 78 || partial_name(from).empty() ||
      partial_name(to).empty())
    return answer(out, refuse(kNoRegister));
  std::int64_t value = 0;
  if (!parse_money(text, value) || value <= 0 || value > last.doc.totals[from])
    return answer(out, refuse(kInvalid));
  add(from, -value);
  add(to, value);
  last.doc.totals[from] -= value;
  last.doc.totals[to] += value;
  print_center("ESTORNO DE MEIO DE PAGAMENTO");
  print("COO: " + counter6(coo));
  print_lr(partial_name(from), "-" + money(value));
  print_lr(partial_name(to), "+" + money(value));
  print_rule('=');
  return answer(out, ok());
}

constexpr HandlerEntry kCoupon[] = {
    {141, open_fiscal},   {193, sell_item},       {180, cancel_item},      {207, adjust_item},
    {147, adjust_coupon}, {148, adjust_coupon},   {149, adjust_coupon},    {150, adjust_coupon},
    {151, adjust_coupon}, {152, adjust_coupon},   {153, total},            {185, payment},
    {209, payment},       {188, amount_received}, {189, change},           {142, close_fiscal},
    {154, cancel_open},   {155, cancel_previous}, {217, cancel_previous},  {138, subtotal},
    {190, total_paid},    {201, additional_coupon}, {242, move_payment},
};

const Registration kRegistered{kCoupon};

}  // namespace

// ---- shared with the other documents ----------------------------------------------

void begin_document() {
  auto& m = model();
  m.last_fiscal.cancellable = false;
  m.last_nonfiscal.cancellable = false;
  touch();
}

bool parse_money(std::string_view text, std::int64_t& cents) { return parse_decimal(text, 2, 2, cents); }

int pay(int reg, std::string_view value, std::string_view message) {
  auto& m = model();
  auto& d = m.doc;
  if (d.state == 0) return kNothingToDo;
  if (d.state != 14 && d.state != 23) return kWrongState;
  if (m.cover_open) return kCoverOpen;
  if (reg < 60 || reg > 78 || partial_name(reg).empty()) return kNoRegister;
  std::int64_t cents = 0;
  if (!parse_money(value, cents) || cents <= 0) return kInvalid;
  d.payments.push_back(Payment{reg, cents, std::string(message)});
  d.paid += cents;
  add(reg, cents);
  print_lr(partial_name(reg), money(cents));
  if (!message.empty()) print_message(message);
  const int base = d.state == 14 ? 14 : 23;
  d.state = d.paid < d.total() ? base : d.paid > d.total() ? base + 1 : base + 2;
  touch();
  return 0;
}

void give_change() {
  auto& d = model().doc;
  const std::int64_t due = d.paid - d.total();
  if (due <= 0 || d.payments.empty() || d.totals.count(79) != 0) return;
  int reg = d.payments.back().reg;
  for (const auto& p : d.payments)
    if (p.reg == 60) reg = 60;
  add(reg, -due);
  add(79, due);
  print_lr("TROCO R$", money(due));
  if (d.state == 15 || d.state == 24) ++d.state;
}

void reverse_coupon(const std::map<int, std::int64_t>& totals, bool fiscal) {
  for (const auto& [reg, value] : totals) {
    if (fiscal && ((reg >= 11 && reg <= 13) || (reg >= 20 && reg <= 39))) {
      add(reg, -value);
      add(cancel_register(reg), value);
    } else if (!fiscal && reg >= 40 && reg <= 54) {
      add(reg, -value);
      add(16, -value);
      add(17, value);
    } else if (reg >= 60 && reg <= 79) {
      add(reg, -value);
    }
  }
}

void print_consumer(std::string_view name, std::string_view number, std::string_view address) {
  if (!blank(number)) print("CPF/CNPJ CONSUMIDOR: " + std::string(number));
  if (!blank(name)) print("NOME: " + std::string(name));
  if (!blank(address)) print("ENDERECO: " + std::string(address));
}

void print_message(std::string_view text) {
  std::size_t start = 0;
  while (start < text.size()) {
    const auto end = text.find_first_of("\r\n", start);
    if (end == std::string_view::npos) {
      print(text.substr(start));
      break;
    }
    print(text.substr(start, end - start));
    start = end + (text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n' ? 2 : 1);
  }
}

}  // namespace vprinter::model
