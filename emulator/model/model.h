// The fiscal state model of the virtual printer: one small model of what a
// fiscal printer keeps (documents, counters, registers, clock, paper), and the
// command handlers that answer driver commands over it, in files by topic:
//   model.cpp      the model itself, its state file, the paper tape, helpers
//   status.cpp     identity, clock, status and configuration commands
//   coupon.cpp     the fiscal coupon, payments (shared with the non-fiscal
//                  coupon), cancellations
//   documents.cpp  non-fiscal coupon, vouchers, reports, free text, paper
//   registers.cpp  partial registers, their list, details, creation, values
//   readings.cpp   X reading, Z reduction, fiscal memory and journal transfers
//
// Each topic file keeps its handlers in one table and registers it with a
// namespace-scope `const Registration` object; the driver asks find_handler()
// (driver.cpp) only when no scripted reply exists for the command. The state
// is read from the state file at the first command of a process and written
// after each command whose handler called touch().
//
// Money is kept in cents (std::int64_t); quantities in thousandths.
//
// Register values. The day's money totals live in Model::day and the open
// document's in Document::totals, both keyed by register number (partial
// registers by their printer number, the others by the numbers below); the
// document handlers keep both up to date as each operation is accepted, so a
// register read mid-coupon sees the coupon in it, as on a printer:
//   20..34, 36..39  net sales per tax rate (item values, increases, less
//                   discounts and cancellations)
//   11, 12, 13      net sales substitution (F1), exempt (I1), non-incidence (N1)
//   7 / 114         cancellations, goods / services
//   8 / 134         discounts, goods / services
//   9 / 135         increases, goods / services
//   16              non-fiscal operations (sum of 40..54)
//   17, 18, 19      non-fiscal cancellations, discounts, increases
//   40..54          per non-fiscal totaliser
//   60..78          per payment method (the change is taken from cash, 60,
//                   when the coupon was paid with it, else from the last
//                   payment's method)
//   79              change given
// So that sum(20..39, 11..13) == (gt - gt_start) - (7 + 114) - (8 + 134).
#pragma once

#include <array>
#include <cstdint>
#include <ctime>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "../printer.h"

namespace vprinter::model {

// ---- refusal codes ---------------------------------------------------------
// The printer's own error codes the model answers when a command does not fit
// its state. Each is one the library translates into the result a POS
// application expects (the translation is the library's; the library result is
// noted). One table; vprinter.h summarises it.
enum Refusal : int {
  kWrongState = 1,       // -> 2561  command not allowed in the current document state
  kInvalid = 2,          // -> 2049  invalid parameter (number, item, value)
  kNothingToDo = 21,     // -> 2561  no document or item to act on
  kNoRegister = 22,      // -> 2582  register not programmed or out of its range
  kCoverOpen = 44,       // -> 2871  printing refused: cover open
  kNoDocument = 45,      // -> 2871  no document in the document station
  kNotClosable = 74,     // -> 2634  non-fiscal coupon cannot be closed in this state
  kDocumentOpen = 132,   // -> 2561  another document is open
  kNotPaid = 145,        // -> 2561  closing a coupon whose payments do not cover its total
  kDayClosed = 151,      // -> 2561  a Z reduction was already made today
  kZPending = 153,       // -> 2561  the business day is over: Z reduction first
  kNoVoucher = 154,      // -> 2561  voucher refused: no such coupon/payment, method
                         //          without vouchers, or payment already used
};

// ---- the model -------------------------------------------------------------

// One programmed partial register (printer numbering).
struct Partial {
  int number = 0;           // 20..34, 36..39 tax rates, 40..54 non-fiscal, 60..78 payment, 116..132 reports
  std::string name;         // description; for tax rates the rate digits ("1800" = 18,00 %)
  char flag = ' ';          // '+'/'-' non-fiscal totaliser, '1'/'0' payment admitting a voucher
};

// One item of the open fiscal coupon.
struct Item {
  int number = 0;           // 1, 2, ... in the coupon
  std::string code, description, tax;  // tax: the tax-rate text as sent (e.g. "T18,00" or "F1")
  int tax_register = 0;     // printer number of the tax register the value goes to (0: none)
  std::int64_t quantity = 0;  // thousandths
  std::int64_t price = 0;     // unit price, thousandths of the currency (holds 2 or 3 decimals)
  std::int64_t value = 0;     // quantity x price after rounding/truncation, cents
  std::int64_t adjustment = 0;  // item increase (+) or discount (-), cents
  bool cancelled = false;
};

// One payment of the open document.
struct Payment {
  int reg = 0;              // payment register (60..78)
  std::int64_t value = 0;   // cents
  std::string text;         // free text printed with it
};

// The document in the printer. State numbers are the fiscal state byte of
// command 6:
//   0 none
//   2 fiscal coupon selling items; totalled (153) -> 14
//   14 / 15 / 16 fiscal coupon paid less than / more than (change due) / its
//     total; the change (189) moves 15 -> 16; closing (142) in 15 or 16
//   17 voucher open, 18 once it has text
//   19 non-fiscal coupon opened; 20 with cash supplies or withdrawals only,
//     totalled -> 21 ready to close; 22 with operations to be paid, totalled
//     -> 23 / 24 / 25 as 14 / 15 / 16; closing (158) in 21, 24 or 25
//   26 management report, 27 reversal of a voucher
struct Document {
  int state = 0;
  std::uint32_t coo = 0;            // COO the document was opened with
  std::vector<Item> items;
  std::vector<Payment> payments;
  std::int64_t gross = 0;           // sum of item values and item adjustments
  std::int64_t adjustment = 0;      // coupon discount (-) or increase (+)
  std::int64_t paid = 0;            // sum of payments
  int payment_reg = 0;              // voucher: payment register it refers to
  std::int64_t voucher_value = 0;   // voucher: its value
  std::string consumer;             // consumer identification printed at the closing
  std::map<int, std::int64_t> totals;  // coupon-level register values (see above)
  std::map<int, std::int64_t> split;   // coupon discount/increase spread per tax register
  std::int64_t total() const { return gross + adjustment; }
};

// A credit/debit voucher issued for a payment of the last coupon.
struct Voucher {
  std::uint32_t coo = 0;         // the voucher's own COO
  std::uint32_t coupon_coo = 0;  // COO of the coupon it belongs to
  int ordinal = 0;               // payment ordinal in that coupon (1, 2, ...)
  int reg = 0;                   // payment register
  std::int64_t value = 0;
  bool reversed = false;
};

// What is remembered of the last closed coupons, for the cancellation of the
// previous one, the vouchers and the second copy.
struct LastDocument {
  Document doc;                  // content as closed (state 0 when none)
  std::uint32_t coo = 0;
  bool cancellable = false;      // still the last document (only vouchers and
                                 // reversals after it) and not cancelled
};

// One record of the fiscal memory, written by each Z reduction.
struct Reduction {
  std::uint32_t crz = 0;     // reduction counter after it
  std::uint32_t coo = 0;     // COO of the reduction document
  std::uint32_t cro = 0;     // restart counter
  std::string date;          // business date DDMMYYYY
  std::string stamp;         // date and time it was made, DDMMYYYYhhmmss
  std::int64_t gt = 0;       // grand total after it
  std::int64_t gross = 0;    // day's gross sales
  std::map<int, std::int64_t> totals;  // register (general or partial number) -> value
};

struct Model {
  // identity
  std::string serial = "ZD010203040506070809";
  std::string firmware = "V01.05.02";
  int printer_type = 6;
  std::string make = "ZANDOR";
  std::string model_name = "MZ-5600 FI";
  std::string cnpj = "12.345.678/0001-90";
  std::string ie = "123.456.789.110";
  std::string im = "4455667";
  std::string owner_name = "LOJA MODELO LTDA";
  std::array<std::string, 3> cliche{"RUA DAS FLORES, 100", "CENTRO - SAO PAULO - SP", ""};
  int owner_index = 2;
  std::string ecf_number = "001";
  std::string store = "0001";
  std::string mfd_serial = "MF010203040506070809";

  // programming
  char iat = 'A';            // 'A' rounds, 'T' truncates
  int qty_decimals = 3;
  int price_decimals = 2;
  int station = '2';         // selected printing station: '2' receipt, '4' documents
  int spacing = 0;           // line spacing of documents
  std::map<int, Partial> partials;  // by printer number

  // clock: the printer's time is `clock_set` plus the real seconds elapsed
  // since `clock_real`; a fresh printer runs on the host's clock.
  std::int64_t clock_set = 0;   // seconds (local broken-down time via timegm)
  std::int64_t clock_real = 0;  // host time() when it was set; 0: host clock
  bool summer_time = false;
  std::string business_date;    // DDMMYYYY of the open day; empty until the first
                                // document after a Z reduction (or the factory)
  std::string reduced_on;       // DDMMYYYY of the last Z reduction (see reduced_today())

  // conditions
  bool paper_low = false;
  bool cover_open = false;
  bool drawer_open = false;
  bool document_in = false;  // a document (cheque, slip) in the document station

  // counters
  std::uint32_t coo = 0;     // document counter
  std::uint32_t ccf = 0;     // fiscal coupon counter
  std::uint32_t gnf = 0;     // non-fiscal operation counter
  std::uint32_t grg = 0;     // management report counter
  std::uint32_t cdc = 0;     // credit/debit voucher counter
  std::uint32_t cro = 1;     // restart counter
  std::uint32_t crz = 0;     // reduction counter
  std::uint32_t cfc = 0;     // cancelled fiscal coupons
  std::uint32_t nfc = 0;     // cancelled non-fiscal documents
  std::int64_t gt = 0;       // grand total
  std::int64_t gt_start = 0; // grand total at the start of the day
  int last_item = 0;         // number of the last item sold
  int last_error = 0;        // last refusal (command 3)

  // the day (since the last Z reduction): register values, see the top
  std::map<int, std::int64_t> day;
  std::uint32_t day_first_coo = 0;  // first COO of the day

  Document doc;                  // the open document (state 0: none)
  LastDocument last_fiscal;      // last fiscal coupon closed
  LastDocument last_nonfiscal;   // last non-fiscal coupon closed
  char last_kind = 0;            // kind of the last document printed: 'F' fiscal,
                                 // 'N' non-fiscal, 'V' voucher, 'E' reversal,
                                 // 'R' report, 'X' X reading, 'Z' reduction
  std::vector<Voucher> vouchers; // vouchers of the last coupon (and their reversals)
  std::vector<std::string> last_voucher_lines;  // for the second copy
  std::vector<Reduction> fiscal_memory;
  std::vector<std::string> journal;  // every printed line since the factory (MFD)

  // Free keyed state a topic may keep without changing this struct; saved and
  // loaded with the rest (values must not contain line breaks).
  std::map<std::string, std::string> extra;
};

// The model, loaded from the state file at the first use in the process.
Model& model();
// Writes the state file; called by handlers after a state-changing command.
void save();
// Drops the in-memory state and reads the state file again (factory state
// when it is absent).
void reload();
// Back to factory state: default programming, empty day, COO 0; deletes the
// state file and the paper tape.
void factory_reset();
// The default programming of a factory-fresh printer (partial registers),
// defined with the register handlers (registers.cpp); weak so that the model
// works, unprogrammed, without it.
[[gnu::weak]] void default_programming(Model& m);

// Runs the model's handler of call.cmd (there must be one) and saves the
// state file when the handler changed the model (touch()).
bool dispatch(const vp_call& call, Reply& out);
// Marks the model changed: the state file is written after the command.
void touch();

// Whether the model answers commands (on by default).
bool enabled();
void set_enabled(bool on);

// File names; relative names resolve in the current working directory.
std::string state_path();
std::string tape_path();
void set_paths(std::string_view state, std::string_view tape);

// ---- printing ----------------------------------------------------------------
constexpr int kTapeWidth = 48;
// Appends one printed line to the paper tape and the journal.
void print(std::string_view line);
// A line with `left` and `right` at both ends of the tape width.
void print_lr(std::string_view left, std::string_view right);
void print_center(std::string_view text);
void print_rule(char c = '-');
// The common header of every document: owner, address, tax identifiers, the
// date and time, `counter` (e.g. "CCF:000001") and the current COO, a title.
void print_header(std::string_view title, std::string_view counter = {});
// The common footer: operator (may be empty), serial number, date and time.
void print_footer(std::string_view operator_name);

// ---- values ------------------------------------------------------------------
// "1.234,56" from cents.
std::string money(std::int64_t cents);
// A quantity in thousandths as text with `decimals` decimals ("1,000").
std::string quantity(std::int64_t thousandths, int decimals);
// Parses decimal text in the printer's input form: digits only with `decimals`
// implied decimals ("000000001000" with 2 = 10,00), or with a comma or point as
// separator. Returns the value scaled to `scale` decimals (2 for cents, 3 for
// thousandths); false on a text that is not a number.
bool parse_decimal(std::string_view text, int decimals, int scale, std::int64_t& out);
// quantity x unit price (both in thousandths) in cents, rounded ('A') or
// truncated ('T') per `iat`.
std::int64_t item_value(std::int64_t quantity, std::int64_t price, char iat);
// Six-digit counter text ("000042").
std::string counter6(std::uint32_t n);
// BCD packing of a decimal text, two digits per byte (as the library's COO).
std::uint32_t unpack_bcd(const std::uint8_t* p, std::size_t bytes);

// ---- clock -------------------------------------------------------------------
// The printer's current time.
std::tm now();
std::string date_text(const std::tm& t);  // DDMMYYYY
std::string time_text(const std::tm& t);  // hhmmss
std::string date_shown(const std::tm& t); // DD/MM/YYYY hh:mm:ss
void set_clock(int year, int month, int day, int hour, int min, int sec);

// ---- command input and replies ------------------------------------------------
// Reads a command's parameters after the two sequence bytes.
class Args {
 public:
  explicit Args(const vp_call& call, std::size_t start = 2);
  std::uint8_t byte();
  std::uint16_t u16();  // low byte first
  // A NUL-terminated text (or the rest of the input when no NUL follows).
  std::string text();
  // `n` bytes as they are.
  std::string raw(std::size_t n);
  std::size_t left() const;
  std::size_t pos() const { return pos_; }

 private:
  const unsigned char* p_;
  std::size_t n_;
  std::size_t pos_;
};

// A successful reply with `data` (reported length = size).
Reply ok(std::vector<std::uint8_t> data = {});
// A reply of `size` zero bytes into which `put` writes texts.
Reply ok_sized(std::size_t size);
void put(Reply& r, std::size_t at, std::string_view text);
void put_byte(Reply& r, std::size_t at, std::uint8_t b);
// A refusal: the printer's error code, remembered for command 3.
Reply refuse(int code);
// Stores `r` into `out` and returns true: `return answer(out, ok(...));`
inline bool answer(Reply& out, Reply r) {
  out = std::move(r);
  return true;
}

// ---- handler registration ---------------------------------------------------
struct Registration {
  explicit Registration(std::span<const HandlerEntry> table);
};
// The model's handler for `cmd` among the registered tables, or nullptr.
Handler lookup(int cmd);

// ---- shared by the topic files -------------------------------------------------
// The partial registers of one range, ascending.
std::vector<const Partial*> partials_in(int lo, int hi);
// The open day starts on the first document after a reduction (or the factory):
// records the business date, the first COO and the grand total at the start.
void open_day();
// Whether a Z reduction was made for the printer's current date.
bool reduced_today();
// Why a new document cannot be opened now (cover open, a document open, the
// day closed by a reduction or waiting for one), or 0.
int cannot_open();
// Ends the fiscal day after a Z reduction has been recorded: empties the day's
// registers, forgets the business date, marks the date reduced, and the last
// coupons can no longer be cancelled or get vouchers.
void close_day();
// Next COO (advanced and returned).
std::uint32_t next_coo();
// Adds `v` to register `reg` of the day and of the open document.
void add(int reg, std::int64_t v);
// The day's value of a register (0 when never moved).
std::int64_t day_value(int reg);
// Tax-rate text of a tax register as printed ("T18,00%", "S05,00%", "F1", "I1", "N1").
std::string tax_label(int reg);
// Name of a programmed partial register, or "" when it is not programmed.
std::string partial_name(int reg);

}  // namespace vprinter::model
