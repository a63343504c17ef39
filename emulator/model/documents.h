// What the document handlers (coupon.cpp, documents.cpp) share: the state
// groups, the registers an item moves, payments and their change, closings.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "model.h"

namespace vprinter::model {

inline bool fiscal_state(int s) { return s == 2 || (s >= 14 && s <= 16); }
inline bool nonfiscal_state(int s) { return s >= 19 && s <= 25; }

// Registers that take the cancellations, discounts and increases of a tax
// register: the services' ones for 36..39, the goods' ones otherwise.
inline bool service_rate(int reg) { return reg >= 36 && reg <= 39; }
inline int cancel_register(int reg) { return service_rate(reg) ? 114 : 7; }
inline int discount_register(int reg) { return service_rate(reg) ? 134 : 8; }
inline int increase_register(int reg) { return service_rate(reg) ? 135 : 9; }

// A new document (not a voucher, reversal or second copy) ends the chance to
// cancel the previous coupon or to issue its vouchers.
void begin_document();

// Parses a money text (two decimals implied when there is no separator).
bool parse_money(std::string_view text, std::int64_t& cents);

// Registers a payment on the open coupon (fiscal in 14, non-fiscal in 23) and
// moves it to its next state. Refusal code or 0.
int pay(int reg, std::string_view value, std::string_view message);
// Gives the change of the open coupon once (the register of cash, 60, when it
// was paid with it, else the last payment's) and prints it.
void give_change();

// Reverses the register values of a coupon, cancelled (open or already
// closed): its sales go to the cancellation registers, its payments and change
// are taken back.
void reverse_coupon(const std::map<int, std::int64_t>& totals, bool fiscal);

// The consumer identification lines, when any field is more than blanks.
void print_consumer(std::string_view name, std::string_view number, std::string_view address);

// Prints a message given with command 130 (or a payment), line by line.
void print_message(std::string_view text);

}  // namespace vprinter::model
