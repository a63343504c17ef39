// The other documents of the printer model: the non-fiscal coupon, credit/
// debit vouchers and their reversal, management reports; free text and paper.
#include <string>

#include "documents.h"

namespace vprinter::model {
namespace {

// Cash supplies and withdrawals need no payment: their coupon closes once
// totalled (state 20 -> 21); any other operation is paid (22 -> 23..25).
bool cash_movement(int reg) {
  const std::string name = partial_name(reg);
  return name == "SANGRIA" || name == "SUPRIMENTO";
}

void open_nonfiscal(std::string_view name, std::string_view number, std::string_view address,
                    std::string_view info) {
  auto& m = model();
  begin_document();
  open_day();
  m.doc = Document{};
  m.doc.coo = next_coo();
  m.doc.state = 19;
  m.doc.consumer = std::string(number);
  ++m.gnf;
  m.last_kind = 'N';
  print_header("COMPROVANTE NAO-FISCAL", "GNF:" + counter6(m.gnf));
  print_consumer(name, number, address);
  if (!info.empty()) print_message(info);
  print_rule();
  touch();
}

// 157: opens a non-fiscal coupon.
bool open_nf(const vp_call& call, Reply& out) {
  if (int why = cannot_open()) return answer(out, refuse(why));
  Args a(call);
  a.byte();
  const std::string name = a.text(), number = a.text(), address = a.text(), info = a.text();
  open_nonfiscal(name, number, address, info);
  return answer(out, ok());
}

// 159: a non-fiscal operation; the first one opens the coupon when none is open.
bool operation(const vp_call& call, Reply& out) {
  auto& m = model();
  auto& d = m.doc;
  if (m.cover_open) return answer(out, refuse(kCoverOpen));
  if (d.state != 0 && d.state != 19 && d.state != 20 && d.state != 22)
    return answer(out, refuse(kWrongState));
  Args a(call);
  const int reg = a.byte();
  a.byte();
  std::int64_t value = 0;
  if (reg < 40 || reg > 54 || partial_name(reg).empty()) return answer(out, refuse(kNoRegister));
  if (!parse_money(a.text(), value) || value <= 0) return answer(out, refuse(kInvalid));
  if (d.state == 0) {
    if (int why = cannot_open()) return answer(out, refuse(why));
    open_nonfiscal("", "", "", "");
  }
  Item item;
  item.number = static_cast<int>(d.items.size()) + 1;
  item.description = partial_name(reg);
  item.tax_register = reg;
  item.quantity = 1000;
  item.price = value * 10;
  item.value = value;
  d.items.push_back(item);
  d.gross += value;
  add(reg, value);
  add(16, value);
  d.state = d.state == 22 || !cash_movement(reg) ? 22 : 20;
  print_lr(item.description, money(value));
  return answer(out, ok());
}

// 158: closes the non-fiscal coupon once totalled (and paid when it must be).
bool close_nf(const vp_call& call, Reply& out) {
  auto& m = model();
  auto& d = m.doc;
  if (d.state == 0) return answer(out, refuse(kNothingToDo));
  if (!nonfiscal_state(d.state)) return answer(out, refuse(kWrongState));
  if (d.state != 21 && d.state != 24 && d.state != 25) return answer(out, refuse(kNotClosable));
  Args a(call);
  a.byte();
  const std::string operator_name = a.text();
  give_change();
  print_footer(operator_name);
  m.last_nonfiscal = LastDocument{d, d.coo, true};
  m.last_nonfiscal.doc.state = 0;
  m.vouchers.clear();
  d = Document{};
  touch();
  return answer(out, ok());
}

// Prints a voucher line and keeps it for the second copy.
void voucher_line(std::string_view line) {
  print(line);
  model().last_voucher_lines.emplace_back(line);
}

std::uint32_t packed_coo(Args& a) {
  const std::string packed = a.raw(3);
  return unpack_bcd(reinterpret_cast<const std::uint8_t*>(packed.data()), packed.size());
}

// 218: opens the voucher of one payment (by its ordinal) of the last coupon,
// given by its COO; the method must admit vouchers, one per payment.
bool open_voucher(const vp_call& call, Reply& out) {
  auto& m = model();
  if (int why = cannot_open()) return answer(out, refuse(why));
  Args a(call);
  const std::uint32_t coo = packed_coo(a);
  const int ordinal = a.byte();
  const LastDocument* coupon = nullptr;
  for (const LastDocument* last : {&m.last_fiscal, &m.last_nonfiscal})
    if (last->cancellable && last->coo == coo) coupon = last;
  if (coupon == nullptr || ordinal < 1 || ordinal > static_cast<int>(coupon->doc.payments.size()))
    return answer(out, refuse(kNoVoucher));
  const Payment& p = coupon->doc.payments[static_cast<std::size_t>(ordinal - 1)];
  const auto method = m.partials.find(p.reg);
  if (method == m.partials.end() || method->second.flag != '1') return answer(out, refuse(kNoVoucher));
  for (const auto& v : m.vouchers)
    if (v.coupon_coo == coo && v.ordinal == ordinal && !v.reversed) return answer(out, refuse(kNoVoucher));
  m.doc = Document{};
  m.doc.coo = next_coo();
  m.doc.state = 17;
  m.doc.payment_reg = p.reg;
  m.doc.voucher_value = p.value;
  ++m.cdc;
  m.last_kind = 'V';
  m.vouchers.push_back(Voucher{m.doc.coo, coo, ordinal, p.reg, p.value, false});
  m.last_voucher_lines.clear();
  print_header("COMPROVANTE CREDITO OU DEBITO", "CDC:" + counter6(m.cdc));
  voucher_line("COO DO DOCUMENTO VINCULADO: " + counter6(coo));
  print_lr(method->second.name, money(p.value));
  m.last_voucher_lines.push_back(m.journal.back());
  print_rule();
  touch();
  return answer(out, ok());
}

// 219: opens the reversal of a voucher, given by its COO.
bool open_reversal(const vp_call& call, Reply& out) {
  auto& m = model();
  if (int why = cannot_open()) return answer(out, refuse(why));
  Args a(call);
  const std::uint32_t coo = packed_coo(a);
  Voucher* voucher = nullptr;
  for (auto& v : m.vouchers)
    if (v.coo == coo && !v.reversed) voucher = &v;
  if (voucher == nullptr) return answer(out, refuse(kNoVoucher));
  voucher->reversed = true;
  m.doc = Document{};
  m.doc.coo = next_coo();
  m.doc.state = 27;
  m.doc.payment_reg = voucher->reg;
  m.doc.voucher_value = voucher->value;
  m.last_kind = 'E';
  print_header("ESTORNO DE COMPROVANTE CREDITO OU DEBITO");
  print("COO DO COMPROVANTE ESTORNADO: " + counter6(coo));
  print_lr(partial_name(voucher->reg), money(voucher->value));
  touch();
  return answer(out, ok());
}

// 225: the second copy of the last voucher, right after it.
bool second_copy(const vp_call&, Reply& out) {
  auto& m = model();
  if (int why = cannot_open(); why == kCoverOpen || why == kDocumentOpen) return answer(out, refuse(why));
  if (m.last_kind != 'V' || m.last_voucher_lines.empty()) return answer(out, refuse(kNothingToDo));
  print_center("SEGUNDA VIA");
  for (const auto& line : m.last_voucher_lines) print(line);
  print_rule('=');
  m.last_kind = 'S';
  touch();
  return answer(out, ok());
}

// 220: opens a management report of a programmed type ('t' + type).
bool open_report(const vp_call& call, Reply& out) {
  auto& m = model();
  const int type = static_cast<std::uint8_t>(Args(call).byte() - 't');
  const std::string name = type <= 16 ? partial_name(116 + type) : std::string();
  if (name.empty()) return answer(out, refuse(kNoRegister));
  if (int why = cannot_open()) return answer(out, refuse(why));
  begin_document();
  open_day();
  m.doc = Document{};
  m.doc.coo = next_coo();
  m.doc.state = 26;
  ++m.grg;
  m.last_kind = 'R';
  print_header("RELATORIO GERENCIAL", "GRG:" + counter6(m.grg));
  print_center(name);
  print_rule();
  touch();
  return answer(out, ok());
}

// Closings of the voucher (228), the reversal (229) and the report (221).
bool close_document(const vp_call& call, Reply& out) {
  auto& m = model();
  auto& d = m.doc;
  const bool fits = (call.cmd == 228 && (d.state == 17 || d.state == 18)) ||
                    (call.cmd == 229 && d.state == 27) || (call.cmd == 221 && d.state == 26);
  if (!fits) return answer(out, refuse(d.state == 0 ? kNothingToDo : kWrongState));
  Args a(call);
  a.byte();
  print_footer(a.text());
  d = Document{};
  touch();
  return answer(out, ok());
}

// 130: free text, where a document takes it: the closing area of a coupon
// being paid, a voucher, a report, a reversal.
bool message(const vp_call& call, Reply& out) {
  auto& m = model();
  auto& d = m.doc;
  const int s = d.state;
  const bool takes_text = (s >= 14 && s <= 18) || s == 21 || (s >= 23 && s <= 27);
  if (!takes_text) return answer(out, refuse(s == 0 ? kNothingToDo : kWrongState));
  if (m.cover_open) return answer(out, refuse(kCoverOpen));
  const std::string text = Args(call).text();
  const std::size_t before = m.journal.size();
  print_message(text);
  if (s == 17 || s == 18) {
    for (std::size_t i = before; i < m.journal.size(); ++i) m.last_voucher_lines.push_back(m.journal[i]);
    d.state = 18;
  }
  return answer(out, ok());
}

// 223: paper advance by a number of lines.
bool advance(const vp_call& call, Reply& out) {
  if (model().cover_open) return answer(out, refuse(kCoverOpen));
  for (int n = Args(call).byte(); n > 0; --n) print("");
  return answer(out, ok());
}

// 224: paper cut.
bool cut(const vp_call&, Reply& out) {
  if (model().cover_open) return answer(out, refuse(kCoverOpen));
  std::string line(kTapeWidth, ' ');
  for (std::size_t i = 0; i < line.size(); i += 2) line[i] = '-';
  const std::string_view mark = " (corte) ";
  line.replace((line.size() - mark.size()) / 2, mark.size(), mark);
  print(line);
  return answer(out, ok());
}

constexpr HandlerEntry kDocuments[] = {
    {157, open_nf},        {159, operation},     {158, close_nf},       {218, open_voucher},
    {228, close_document}, {219, open_reversal}, {229, close_document}, {225, second_copy},
    {220, open_report},    {221, close_document}, {130, message},       {223, advance},
    {224, cut},
};

const Registration kRegistered{kDocuments};

}  // namespace
}  // namespace vprinter::model
