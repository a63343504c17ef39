// The sequences of operations the fuzz targets (and the seed writer) run
// through the library: an application's roads through a day.
#pragma once

#include <cstdint>

namespace fuzz {

// Groups of operations after E4Open, each on its own bit of a selector.
void sale();                        // 0x01 a fiscal coupon, items, adjustments, payments, closing, paper
void vouchers_and_cancellation();   // 0x02 vouchers, cancellation, reversal
void register_walk();               // 0x04 walking, reading and creating partial registers
void values();                      // 0x08 register values, coupon data, fiscal memory records
void reduction_data();              // 0x10 E4DadosReducao
void transfers();                   // 0x20 fiscal memory and journal readings and transfers
void queries_and_readings();        // 0x40 identity, status, clock, X reading, Z reduction
void other_documents();             // 0x80 non-fiscal coupon, report, copies, operator, drawer

// Runs the groups whose bits are set in `groups`, in the order above.
void run_groups(std::uint8_t groups);

// Leaves the printer with a document in some state, for the operation that
// follows: 0 none; 1 a fiscal coupon with items; 2 the same, totalled and
// partly paid; 3 fully paid; 4 a non-fiscal coupon; 5 a management report;
// 6 a voucher after a card payment; other values as `kind` modulo 7.
void prepare(std::uint8_t kind);

}  // namespace fuzz
