#include "functions.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstring>
#include <type_traits>
#include <utility>

#include "orbelan.h"

namespace e4 {

// Room for every text a function writes (E4DadosReducao's record is the
// largest, 2249 bytes); zeroed before each call.
constexpr std::size_t kTextSize = 4096;
constexpr std::size_t kMaxParams = 8;

// One argument of a call, whatever its kind.
struct Slot {
  const char* text = "";
  long long number = 0;
  std::array<char, kTextSize> buffer{};
  unsigned char byte = 0;
  unsigned int word = 0;
};

namespace {

// ---- the kinds, checked against the C signatures -------------------------------

template <typename T>
consteval bool fits(char kind) {
  if constexpr (std::is_same_v<T, unsigned char>)
    return kind == 'b';
  else if constexpr (std::is_same_v<T, unsigned short>)
    return kind == 'w';
  else if constexpr (std::is_same_v<T, int>)
    return kind == 'i';
  else if constexpr (std::is_same_v<T, char>)
    return kind == 'c';
  else if constexpr (std::is_same_v<T, const char*>)
    return kind == 't';
  else if constexpr (std::is_same_v<T, char*>)
    return kind == 'o' || kind == 'r' || kind == 'm';
  else if constexpr (std::is_same_v<T, unsigned char*>)
    return kind == 'B' || kind == 'M' || kind == 'P';
  else if constexpr (std::is_same_v<T, unsigned int*>)
    return kind == 'U';
  else
    return false;
}

template <typename... A>
consteval bool matches(unsigned short (*)(A...), std::string_view params) {
  std::array<char, kMaxParams> kinds{};
  std::size_t n = 0;
  for (std::size_t i = 0; i < params.size();) {
    if (n == kinds.size() || i + 2 >= params.size() || params[i + 1] != ':') return false;
    kinds[n++] = params[i];
    i = params.find(' ', i);
    if (i == std::string_view::npos) break;
    ++i;
  }
  if (n != sizeof...(A)) return false;
  std::size_t k = 0;
  return (fits<A>(kinds[k++]) && ...);
}

template <typename T>
T pass(Slot& s) {
  if constexpr (std::is_same_v<T, const char*>)
    return s.text;
  else if constexpr (std::is_same_v<T, char*>)
    return s.buffer.data();
  else if constexpr (std::is_same_v<T, unsigned char*>)
    return &s.byte;
  else if constexpr (std::is_same_v<T, unsigned int*>)
    return &s.word;
  else
    return static_cast<T>(s.number);
}

template <auto F, typename... A>
unsigned short call_as(unsigned short (*)(A...), Slot* s) {
  const auto call = [s]<std::size_t... I>(std::index_sequence<I...>) {
    return F(pass<A>(s[I])...);
  };
  return call(std::index_sequence_for<A...>{});
}

// clang-format off
#define E4_FN(fn, params, help)                                                   \
  Function{#fn, params, help, [](Slot* s) -> unsigned short {                     \
    static_assert(matches(&fn, params), #fn ": parameter kinds do not match");   \
    return call_as<&fn>(&fn, s);                                                  \
  }}
// clang-format on

// ---- the table ---------------------------------------------------------------------

constexpr Function kFunctions[] = {
    // session and frame
    E4_FN(E4Open, "b:a b:b",
          "Open the session: driver, printer start, identity (arguments ignored)"),
    E4_FN(E4OpenEsp, "P:pa b:b", "E4Open, result translated once more"),
    E4_FN(E4Close, "", "Close the session and unload the driver"),
    E4_FN(E4GetError, "U:err", "The printer's own code of its last error"),
    E4_FN(E4PutError, "i:code", "Report a code to the monitoring agent"),
    // identity, clock and status
    E4_FN(E4InfECF, "o:Serie o:CGC o:IE o:IM o:Cliche o:Firm o:Seq B:Modelo",
          "Identity: serial, owner tax numbers, header, firmware, sequence number, model"),
    E4_FN(E4InfEspECF, "i:Opc r:Retorno",
          "One identity item: 0 model, 1 firmware, 2 header, 3 serial, 4 tax numbers, "
          "5 sequence, 6 brand, 7 model text, 8 full firmware, 9 owner index, 10 owner date"),
    E4_FN(E4Status, "o:Status", "Printer status flags (14 positions of 0/1; 4 = paper low)"),
    E4_FN(E4StaECF, "M:Opc B:Resposta",
          "Document state into Opc (left as given when the state is not one it reports)"),
    E4_FN(E4RdData, "o:Data o:Hora B:Verao o:Movimento B:Reducao",
          "Date, time, daylight saving, business date, Z reduction made today"),
    E4_FN(E4Verao, "b:Opc", "Enter (1) or leave (0) daylight-saving time"),
    // fiscal coupon
    E4_FN(E4IniCP, "b:Opc t:Param",
          "Open a document: 2 coupon, 4 X reading, 5 Z reduction, 17/18/22 voucher (Param: "
          "payment register), 19 non-fiscal coupon, 20 management report (Param: kind), "
          "21 voucher copy"),
    E4_FN(E4IniCup, "b:Opc", "E4IniCP with an empty Param"),
    E4_FN(E4Cons, "t:Nome t:Numero t:Endereco", "Consumer identification for the next coupon"),
    E4_FN(E4IteCF, "b:RP t:Codigo t:Descricao t:Quantidade t:Valor",
          "Sell an item under tax register RP"),
    E4_FN(E4IteCFEsp, "b:RP t:Codigo t:Descricao t:Quantidade t:Valor t:Unidade",
          "Sell an item with its unit"),
    E4_FN(E4IteCFEsp2, "b:RP t:Codigo t:Descricao t:Quantidade t:Valor t:Unidade b:IAT",
          "Sell an item with its unit and rounding flag"),
    E4_FN(E4ImpItem, "i:mode", "Items on one line (0) or two (1)"),
    E4_FN(E4CanIt, "b:RP w:SeqItem", "Cancel item number SeqItem"),
    E4_FN(E4DesIt, "b:Opc b:RP w:SeqItem t:Valor t:Descricao", "Discount on an item"),
    E4_FN(E4AcrIt, "b:Opc b:RP w:SeqItem m:Valor t:Descricao",
          "Increase on an item (Opc 2: percentage; the amount comes back in Valor)"),
    E4_FN(E4DesCup, "b:Opc t:Valor", "Discount on the coupon"),
    E4_FN(E4AcrCup, "b:Opc t:Valor", "Increase on the coupon"),
    E4_FN(E4RegPag, "b:RP t:Valor", "Register a payment (the first one totals the coupon)"),
    E4_FN(E4RegPagEsp, "b:RP t:Valor t:Mensagem", "Register a payment with a message"),
    E4_FN(E4FimCP, "i:first t:Prox", "Close the open document with a message"),
    E4_FN(E4FimCup, "", "Close the open document"),
    E4_FN(E4CorteImp, "i:Corte", "Cut the paper after each document (1) or not (0)"),
    E4_FN(E4AvancaPapel, "b:Estado i:qtdeAvanco", "Advance the paper (Estado 0)"),
    E4_FN(E4CortaPapel, "", "Cut the paper"),
    E4_FN(E4CanCup, "", "Cancel the open or the last document"),
    E4_FN(E4CanCupEsp, "", "Cancel the open or the last document (variant)"),
    // non-fiscal documents, vouchers, management reports
    E4_FN(E4OpeCNF, "b:Reg t:Sinal t:Descricao t:Valor", "Non-fiscal operation on totaliser Reg"),
    E4_FN(E4CancelaCCD, "t:nrCoo", "Reverse the credit/debit voucher of a COO"),
    E4_FN(E4CancelaCCDEsp, "t:nCoo", "Reverse a credit/debit voucher (variant)"),
    E4_FN(E4Print, "t:strLinha", "Print a line in the open document"),
    E4_FN(E4ImpVinc, "t:path t:QtdeLinhas", "Print the lines of a file in the open document"),
    E4_FN(E4FimDoc, "", "Close a reversal"),
    E4_FN(E4ProgOp, "t:nome", "Store the operator's name"),
    E4_FN(E4ConImp, "c:Dispositivo i:Margem i:EspVertical", "Printer configuration (only logged)"),
    E4_FN(E4ExpDoc, "", "Eject the document"),
    // registers and readings
    E4_FN(E4RPPrim, "b:Cat",
          "Start a register walk: 1 non-fiscal, 2 goods tax, 4 services tax, 5 payment, "
          "6 report types"),
    E4_FN(E4RPLe, "b:Cat o:Compl o:Sinal B:RP", "Next register of the walk"),
    E4_FN(E4RPProx, "b:Cat o:Compl o:Sinal B:RP", "Next register of the walk (same as E4RPLe)"),
    E4_FN(E4VerRP, "i:RP o:Descricao o:Sinal", "Description of one register"),
    E4_FN(E4RPCria, "b:Cat t:Nome t:Param M:Reg", "Program register Reg of a category"),
    E4_FN(E4ValAtu, "b:Reg o:Valor", "Current value of a general register"),
    E4_FN(E4ValRed, "b:Reg o:Valor", "Value of a register at the last Z reduction"),
    E4_FN(E4ValImp, "b:Reg o:Valor", "Tax accumulated on a tax register"),
    E4_FN(E4InfCup, "w:Reg o:Valor", "A value of the coupon in progress"),
    E4_FN(E4RegMemFisc, "w:nRedZ o:Valor", "Data of a Z reduction from fiscal memory"),
    E4_FN(E4DadosReducao, "r:Buffer", "The day's totals as the reduction record"),
    E4_FN(E4LMF, "b:Tipo b:Opc t:Inicio t:Final",
          "Print the fiscal memory (Tipo 1 by reduction, else by date; Opc 1 simplified)"),
    E4_FN(E4LMFSerial, "b:Tipo b:Opc t:Inicio t:Final t:Arquivo",
          "Fiscal memory to a file (Tipo 0 by date, else by reduction; Opc 1 simplified)"),
    E4_FN(E4LeMFD, "b:Tipo t:Inicio t:Final t:arqDestino",
          "Journal to a file (Tipo 0 date, 1 COO, 2 reduction, 3 date range)"),
    E4_FN(E4LeMFDEsp, "i:Usuario b:Tipo t:Inicio t:Final t:arqDestino", "E4LeMFD (variant)"),
    // peripherals and monitoring agent
    E4_FN(E4ImpChq, "w:Banco t:Nome t:Cidade t:Data t:Valor t:LinAdic1 t:LinAdic2",
          "Print a cheque"),
    E4_FN(E4Aut, "m:Texto", "Authenticate a document with a text"),
    E4_FN(E4AutEsp, "m:Texto i:Tipo", "Authenticate (1, 2 horizontal, 3 vertical)"),
    E4_FN(E4LeCMC7, "o:Valor", "Read a cheque's CMC7 line"),
    E4_FN(E4OpenGv, "", "Open the cash drawer"),
    E4_FN(E4StatGv, "B:Status", "Cash drawer status"),
    E4_FN(E4ImpCodB, "i:Tipo i:PosicaoHRI i:Altura i:Fonte t:CodBarra", "Print a bar code"),
    E4_FN(E4infOvitraM, "t:codInf t:tipoInf t:descr t:extra", "Send an event to the agent"),
    // the _JP family
    E4_FN(E4IniCP_JP, "b:Opc t:Param", "E4IniCP (variant)"),
    E4_FN(E4RegPag_JP, "b:RP t:Valor", "E4RegPag (variant; RP 0: the payment named OUTROS)"),
    E4_FN(E4RegPagEsp_JP, "b:RP t:Valor t:Mensagem", "E4RegPagEsp (variant)"),
    E4_FN(E4EstornaPgto_JP, "b:RPO b:RPD t:Valor", "Move an amount between payment methods"),
    E4_FN(E4CanCP_JP, "b:Avanca i:Linhas", "Cancel, advancing the paper"),
    E4_FN(E4CanCPEsp_JP, "b:Avanca i:Linhas", "Cancel, advancing the paper (variant)"),
    E4_FN(E4CanCupEsp_JP, "", "E4CanCupEsp (variant)"),
    E4_FN(E4FimCPEsp_JP, "b:Avanca i:Linhas t:Prox", "Close, advancing the paper"),
    E4_FN(E4FimDoc_JP, "", "E4FimDoc (variant)"),
    E4_FN(E4RPCria_JP, "b:Cat t:Nome t:Param M:Reg",
          "E4RPCria; Reg 0 takes the first free register"),
    E4_FN(E4RPLe_JP, "b:Cat o:Compl o:Sinal B:RP", "E4RPLe, restarting after the last"),
    E4_FN(E4RPProx_JP, "b:Cat o:Compl o:Sinal B:RP", "E4RPProx (variant)"),
    E4_FN(E4ValAtu_JP, "b:Reg o:Valor", "E4ValAtu (variant register numbering)"),
    E4_FN(E4ValAtuEsp_JP, "b:Reg o:Valor", "Partial totals: 8 discounts, 9 increases"),
};

#undef E4_FN

// ---- parameters at run time ------------------------------------------------------------

struct Param {
  char kind;
  std::string_view name;
};

struct Params {
  std::array<Param, kMaxParams> at{};
  std::size_t count = 0;
};

Params parameters(const Function& fn) {
  Params p;
  std::string_view rest = fn.params;
  while (!rest.empty() && p.count < kMaxParams) {
    const std::size_t end = rest.find(' ');
    const std::string_view token = rest.substr(0, end);
    p.at[p.count++] = Param{token[0], token.substr(2)};
    rest = end == std::string_view::npos ? std::string_view{} : rest.substr(end + 1);
  }
  return p;
}

bool is_input(char kind) { return kind != 'o' && kind != 'r' && kind != 'B' && kind != 'U'; }
bool is_output(char kind) {
  return !is_input(kind) || kind == 'm' || kind == 'M';
}

std::string_view kind_text(char kind) {
  switch (kind) {
    case 'b':
    case 'M':
    case 'P':
      return "0-255";
    case 'w':
      return "0-65535";
    case 'i':
      return "integer";
    case 'c':
      return "character";
    default:
      return "text";
  }
}

bool same_name(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(a[i])) !=
        std::tolower(static_cast<unsigned char>(b[i])))
      return false;
  return true;
}

// Fills the slot of one input argument; false when the text does not fit its kind.
bool fill(Slot& slot, char kind, const char* arg) {
  const std::string_view text = arg;
  switch (kind) {
    case 'b':
      return parse_number(text, 0, UCHAR_MAX, slot.number);
    case 'w':
      return parse_number(text, 0, USHRT_MAX, slot.number);
    case 'i':
      return parse_number(text, INT_MIN, INT_MAX, slot.number);
    case 'c':
      if (text.size() > 1) return false;
      slot.number = text.empty() ? 0 : text[0];
      return true;
    case 'M':
    case 'P': {
      long long v = 0;
      if (!parse_number(text, 0, UCHAR_MAX, v)) return false;
      slot.byte = static_cast<unsigned char>(v);
      return true;
    }
    case 'm':
      // Room is left behind the text: E4Aut appends a character to it.
      text.copy(slot.buffer.data(), std::min(text.size(), kTextSize - 2));
      return true;
    default:
      slot.text = arg;
      return true;
  }
}

void print_output(const Slot& slot, const Param& param) {
  char number[16];
  switch (param.kind) {
    case 'B':
    case 'M':
      std::snprintf(number, sizeof number, "%u", slot.byte);
      print_field(param.name, number);
      break;
    case 'U':
      std::snprintf(number, sizeof number, "%u", slot.word);
      print_field(param.name, number);
      break;
    case 'r': {
      // Several texts, or fixed-width fields padded with NULs: up to the last
      // byte written.
      std::size_t n = slot.buffer.size();
      while (n > 0 && slot.buffer[n - 1] == '\0') --n;
      print_field(param.name, std::string_view(slot.buffer.data(), n));
      break;
    }
    default:
      // A text ends at its NUL; what lies behind it is not part of it.
      print_field(param.name, slot.buffer.data());
  }
}

}  // namespace

std::span<const Function> functions() { return kFunctions; }

const Function* find_function(std::string_view name) {
  for (const Function& fn : kFunctions)
    if (fn.name == name) return &fn;
  for (const Function& fn : kFunctions)
    if (same_name(fn.name, name)) return &fn;
  return nullptr;
}

std::string synopsis(const Function& fn) {
  const Params p = parameters(fn);
  std::string s(fn.name);
  std::string outs;
  for (std::size_t i = 0; i < p.count; ++i) {
    const Param& a = p.at[i];
    if (is_input(a.kind)) {
      s += " <";
      s += a.name;
      s += ':';
      s += kind_text(a.kind);
      s += '>';
    }
    if (is_output(a.kind)) {
      outs += ' ';
      outs += a.name;
    }
  }
  if (!outs.empty()) s += "  ->" + outs;
  return s;
}

int run_function(Context& ctx, const Function& fn, std::span<char* const> args) {
  const Params p = parameters(fn);
  std::size_t inputs = 0;
  for (std::size_t i = 0; i < p.count; ++i) inputs += is_input(p.at[i].kind) ? 1 : 0;
  if (args.size() != inputs)
    return usage_error(std::string(fn.name) + " takes " + std::to_string(inputs) +
                       " argument(s): " + synopsis(fn));

  std::array<Slot, kMaxParams> slots{};
  for (std::size_t i = 0, next = 0; i < p.count; ++i) {
    const Param& a = p.at[i];
    if (!is_input(a.kind)) continue;
    if (!fill(slots[i], a.kind, args[next++]))
      return usage_error(std::string(fn.name) + ": " + std::string(a.name) + " must be " +
                         std::string(a.kind == 'c'   ? "one character"
                                     : a.kind == 'i' ? "an integer"
                                     : a.kind == 'w' ? "a number from 0 to 65535"
                                                     : "a number from 0 to 255"));
  }

  // Called by name, the opening functions open the session themselves.
  const bool opens = fn.name == "E4Open" || fn.name == "E4OpenEsp";
  if (!ctx.start(!opens)) return kExitFailed;
  const unsigned short ret = ctx.report(fn.name, fn.call(slots.data()));
  for (std::size_t i = 0; i < p.count; ++i)
    if (is_output(p.at[i].kind)) print_output(slots[i], p.at[i]);
  return ret == 0 ? kExitOk : kExitFailed;
}

}  // namespace e4
