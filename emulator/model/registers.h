// Register values of the printer model, shared by the register commands
// (registers.cpp) and the readings (readings.cpp).
//
// General registers (command 133; the last reduction's copy through 135):
//   0 grand total            1 first COO of the day   2 CRO            3 COO
//   4 CRZ (reductions)       5 GNF                    6 CDC (vouchers) 7 cancellations
//   8 discounts              9 increases              10 GRG (reports) 11, 12, 13 F1, I1, N1
//   14 cancelled coupons     15 cancelled non-fiscal documents         16 non-fiscal operations
//   17, 18, 19 non-fiscal cancellations, discounts, increases
//   20..34, 36..39, 100..110 net sales per tax rate   40..54 non-fiscal totalisers
//   60..78 payment methods   79 change given          80 documents of the day
//   111, 112, 113 FS1, IS1, NS1                       114 cancellations (services)
//   115 gross sales of the day                        116..132 uses of each report type
//   133 grand total at the start of the day           134, 135 discounts, increases (services)
//   136 net sales of the day 137 CCF                  138 payments of the day
// Numbers 0..138 not listed read as zero; higher numbers are not kept.
// Counters are six digits, money eighteen digits in cents.
//
// Once a reduction is made, and until the next movement begins with its first
// document, the day's registers read as the reduction recorded them (the
// counters and the grand total stay current), so that an application can read
// the day it has just closed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "model.h"

namespace vprinter::model {

constexpr int kLastGeneralRegister = 138;
// A reduction's record keeps the general registers under their numbers and
// the tax due on each tax register r under kTaxKey + r.
constexpr int kTaxKey = 1000;

// The value of general register `reg` (cents or a count), or nullopt for a
// number the printer does not keep.
std::optional<std::int64_t> general_value(const Model& m, int reg);
// The register's text as the value commands answer it: six digits for the
// counters, eighteen for money.
std::string register_text(int reg, std::int64_t value);
// Whether `reg` is a tax register number (goods 20..34, services 36..39 and
// 100..110).
bool is_tax_register(int reg);
// The rate of a programmed tax register in hundredths of a percent (1800 for
// 18,00 %), 0 when it is not programmed.
int tax_rate(const Model& m, int reg);
// The rate as the printer shows it: "18,00".
std::string rate_text(int rate);
// The tax due on `value` cents at `rate` hundredths of a percent, rounded.
std::int64_t tax_on(std::int64_t value, int rate);
// The reduction whose day the registers show, or nullptr while a movement is
// open (or before the first reduction).
const Reduction* reduced_day(const Model& m);
// The day's value of a money register as the application reads it.
std::int64_t day_money(const Model& m, int reg);
// The day's sales before cancellations and discounts, and after them.
std::int64_t gross_sales(const Model& m);
std::int64_t net_sales(const Model& m);
// The document whose values the coupon-level queries answer: the open one, or
// else the last coupon closed.
const Document& coupon_document(const Model& m);

}  // namespace vprinter::model
