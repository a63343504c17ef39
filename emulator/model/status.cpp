// Identity, clock, status and configuration commands of the printer model.
#include <string>

#include "model.h"

namespace vprinter::model {
namespace {

void put_le16(Reply& r, std::size_t at, int v) {
  put_byte(r, at, static_cast<std::uint8_t>(v & 0xff));
  put_byte(r, at + 1, static_cast<std::uint8_t>((v >> 8) & 0xff));
}

// 3: the last error, low byte first in bytes 1 and 2.
bool last_error(const vp_call&, Reply& out) {
  Reply r = ok_sized(15);
  put_le16(r, 1, model().last_error);
  return answer(out, std::move(r));
}

// 5: status bytes. 1 and 3 are the document station's sensors, 4 the drawer,
// 5 paper low, 6 the cover, 8 the mechanism ready (the library reports its
// absence).
bool status(const vp_call&, Reply& out) {
  const auto& m = model();
  Reply r = ok_sized(20);
  put_byte(r, 1, m.document_in ? 1 : 0);
  put_byte(r, 3, m.document_in ? 1 : 0);
  put_byte(r, 4, m.drawer_open ? 1 : 0);
  put_byte(r, 5, m.paper_low ? 1 : 0);
  put_byte(r, 6, m.cover_open ? 1 : 0);
  put_byte(r, 8, 1);
  return answer(out, std::move(r));
}

// 6: the document state.
bool document_state(const vp_call&, Reply& out) {
  Reply r = ok_sized(2);
  put_byte(r, 0, static_cast<std::uint8_t>(model().doc.state));
  return answer(out, std::move(r));
}

std::string business_date() {
  const auto& m = model();
  return m.business_date.empty() ? date_text(now()) : m.business_date;
}

// 10: date, time, summer time, whether today is reduced, the business date.
bool date_state(const vp_call&, Reply& out) {
  const auto t = now();
  Reply r = ok_sized(33);
  put_byte(r, 11, model().summer_time ? 1 : 0);
  put(r, 12, date_text(t));
  put(r, 20, time_text(t).substr(0, 4));
  put_byte(r, 24, reduced_today() ? 1 : 0);
  put(r, 25, business_date());
  return answer(out, std::move(r));
}

// 63 (and 172): date and time with seconds from byte 1.
bool clock_seconds(const vp_call&, Reply& out) {
  const auto t = now();
  Reply r = ok_sized(15);
  put(r, 1, date_text(t) + time_text(t));
  return answer(out, std::move(r));
}

// 139: the business date from byte 1.
bool business_day(const vp_call&, Reply& out) {
  Reply r = ok_sized(10);
  put(r, 1, business_date());
  return answer(out, std::move(r));
}

// 15: number of the last item sold, bytes 2 and 3.
bool last_item(const vp_call&, Reply& out) {
  Reply r = ok_sized(10);
  put_le16(r, 2, model().last_item);
  return answer(out, std::move(r));
}

bool summer_on(const vp_call&, Reply& out) {
  model().summer_time = true;
  touch();
  return answer(out, ok());
}

bool summer_off(const vp_call&, Reply& out) {
  model().summer_time = false;
  touch();
  return answer(out, ok());
}

// 21: serial number, validity byte 1 first.
bool serial(const vp_call&, Reply& out) {
  Reply r = ok_sized(1);
  put_byte(r, 0, 1);
  put(r, 1, model().serial);
  put_byte(r, r.data.size(), 0);
  return answer(out, std::move(r));
}

// 86: printer type, then the firmware text.
bool firmware(const vp_call&, Reply& out) {
  const auto& m = model();
  Reply r = ok_sized(10);
  put_byte(r, 0, static_cast<std::uint8_t>(m.printer_type));
  put(r, 1, m.firmware.substr(0, 9));
  return answer(out, std::move(r));
}

// 236: make and model texts, each ended by a NUL.
bool make_model(const vp_call&, Reply& out) {
  const auto& m = model();
  Reply r = ok();
  put(r, 0, m.make);
  put_byte(r, m.make.size(), 0);
  put(r, m.make.size() + 1, m.model_name);
  return answer(out, std::move(r));
}

// 27: owner index.
bool owner_index(const vp_call&, Reply& out) {
  Reply r = ok_sized(2);
  put_byte(r, 0, static_cast<std::uint8_t>(model().owner_index));
  return answer(out, std::move(r));
}

// 28: owner data: marker 2, the owner's registration date and time, then the
// CNPJ, IE and IM texts from byte 14.
bool owner(const vp_call&, Reply& out) {
  const auto& m = model();
  Reply r = ok_sized(14);
  put_byte(r, 1, 2);
  put(r, 2, "150120260900");
  std::size_t at = 14;
  for (const std::string* text : {&m.cnpj, &m.ie, &m.im}) {
    put(r, at, *text);
    at += text->size();
    put_byte(r, at++, 0);
  }
  return answer(out, std::move(r));
}

// 30: validity byte, then header (owner), tax identifiers, address.
bool cliche(const vp_call&, Reply& out) {
  const auto& m = model();
  std::string address;
  for (const auto& line : m.cliche) {
    if (line.empty()) continue;
    if (!address.empty()) address += " - ";
    address += line;
  }
  Reply r = ok_sized(1);
  put_byte(r, 0, 1);
  std::size_t at = 1;
  for (const std::string& text : {m.owner_name, "CNPJ:" + m.cnpj, address}) {
    put(r, at, text);
    at += text.size();
    put_byte(r, at++, 0);
  }
  return answer(out, std::move(r));
}

// 53: rounding (0) or truncation (1).
bool iat(const vp_call&, Reply& out) {
  Reply r = ok_sized(1);
  put_byte(r, 0, model().iat == 'T' ? 1 : 0);
  return answer(out, std::move(r));
}

// 232: decimals of quantities and of prices.
bool decimals(const vp_call&, Reply& out) {
  const auto& m = model();
  Reply r = ok_sized(2);
  put_byte(r, 0, static_cast<std::uint8_t>(m.qty_decimals));
  put_byte(r, 1, static_cast<std::uint8_t>(m.price_decimals));
  return answer(out, std::move(r));
}

// 61: the printer's number in the shop.
bool ecf_number(const vp_call&, Reply& out) {
  Reply r = ok();
  put(r, 0, model().ecf_number);
  put_byte(r, r.data.size(), 0);
  return answer(out, std::move(r));
}

// 246: the store number, four digits.
bool store_number(const vp_call&, Reply& out) {
  Reply r = ok_sized(5);
  put(r, 0, model().store.substr(0, 4));
  return answer(out, std::move(r));
}

// 245: programs the store number.
bool set_store(const vp_call& call, Reply& out) {
  std::string number = Args(call).text().substr(0, 4);
  if (number.empty()) return answer(out, refuse(kInvalid));
  for (char c : number)
    if (c < '0' || c > '9') return answer(out, refuse(kInvalid));
  model().store = number;
  touch();
  return answer(out, ok());
}

// 79 / 80: the selected printing station.
bool select_station(const vp_call& call, Reply& out) {
  model().station = Args(call).byte();
  touch();
  return answer(out, ok());
}

bool read_station(const vp_call&, Reply& out) {
  Reply r = ok_sized(2);
  put_byte(r, 0, static_cast<std::uint8_t>(model().station));
  return answer(out, std::move(r));
}

// 215 / 237: document line spacing; 237 byte 0 is the line spacing in the
// printer's unit (25 = 3 lines per inch).
bool set_spacing(const vp_call& call, Reply& out) {
  model().spacing = Args(call).byte();
  touch();
  return answer(out, ok());
}

bool read_spacing(const vp_call&, Reply& out) {
  Reply r = ok_sized(2);
  put_byte(r, 0, 25);
  put_byte(r, 1, static_cast<std::uint8_t>(model().spacing));
  return answer(out, std::move(r));
}

// 95 / 96: the cash drawer opens on command and is closed by hand (the control
// interface); 96 byte 0 is 0 while it is open.
bool open_drawer(const vp_call&, Reply& out) {
  model().drawer_open = true;
  touch();
  return answer(out, ok());
}

bool drawer_status(const vp_call&, Reply& out) {
  Reply r = ok_sized(2);
  put_byte(r, 0, model().drawer_open ? 0 : 1);
  return answer(out, std::move(r));
}

// 222: the CMC7 line of the cheque in the station.
bool cmc7(const vp_call&, Reply& out) {
  Reply r = ok();
  put(r, 0, "<00100012<0180000015>123456789012:");
  return answer(out, std::move(r));
}

// 255: a bar code, shown on the tape by its content.
bool bar_code(const vp_call& call, Reply& out) {
  if (model().cover_open) return answer(out, refuse(kCoverOpen));
  Args a(call);
  a.raw(5);  // height, 3, font, HRI position, symbology
  const std::string code = a.text();
  if (code.empty()) return answer(out, refuse(kInvalid));
  print_center("||||| " + code + " |||||");
  return answer(out, ok());
}

// 101: authentication, printed on the document in the station.
bool authenticate(const vp_call& call, Reply& out) {
  const auto& m = model();
  if (m.cover_open) return answer(out, refuse(kCoverOpen));
  if (!m.document_in) return answer(out, refuse(kNoDocument));
  print("[DOCUMENTO] AUTENTICACAO " + Args(call).text() + " " + date_shown(now()));
  return answer(out, ok());
}

// 104: fills the cheque in the station (amount, city, date, payee and two
// further lines from byte 31 on), then gives it back.
bool fill_cheque(const vp_call& call, Reply& out) {
  auto& m = model();
  if (m.cover_open) return answer(out, refuse(kCoverOpen));
  if (!m.document_in) return answer(out, refuse(kNoDocument));
  Args a(call, 31);
  const std::string value = a.text(), city = a.text(), date = a.text(), payee = a.text();
  print("[CHEQUE] " + value + " " + payee + " " + city + " " + date);
  m.document_in = false;
  touch();
  return answer(out, ok());
}

bool accept(const vp_call&, Reply& out) { return answer(out, ok()); }

constexpr HandlerEntry kStatus[] = {
    {71, accept},          {101, authenticate},  {104, fill_cheque},
    {3, last_error},       {5, status},          {6, document_state},  {10, date_state},
    {15, last_item},       {21, serial},         {24, summer_on},      {25, summer_off},
    {27, owner_index},     {28, owner},          {30, cliche},         {53, iat},
    {61, ecf_number},      {63, clock_seconds},  {79, select_station}, {80, read_station},
    {86, firmware},        {95, open_drawer},    {96, drawer_status},  {139, business_day},
    {172, clock_seconds},  {215, set_spacing},   {222, cmc7},          {232, decimals},
    {236, make_model},     {237, read_spacing},  {245, set_store},     {246, store_number},
    {255, bar_code},
};

const Registration kRegistered{kStatus};

}  // namespace
}  // namespace vprinter::model
