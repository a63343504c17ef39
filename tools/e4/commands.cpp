#include "commands.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "functions.h"
#include "orbelan.h"

namespace e4 {
namespace {

using Args = std::span<char* const>;

// Folds one call's result into the exit code of a command.
int fold(int code, unsigned short ret) { return ret == 0 ? code : kExitFailed; }

int no_arguments(std::string_view name, Args args) {
  return args.empty() ? kExitOk : usage_error(std::string(name) + " takes no arguments");
}

// ---- status and identity -----------------------------------------------------------

// The document states as E4StaECF reports them.
std::string_view document_state(unsigned state) {
  switch (state) {
    case 0:
      return "no document open";
    case 2:
      return "fiscal coupon, before totalling";
    case 13:
      return "management report open";
    case 14:
      return "fiscal coupon, in payment";
    case 16:
      return "fiscal coupon, ready to close";
    case 18:
      return "credit/debit voucher open";
    case 19:
      return "non-fiscal coupon";
    case 20:
    case 22:
      return "non-fiscal coupon, to be totalled";
    case 23:
      return "non-fiscal coupon, in payment";
    case 25:
      return "non-fiscal coupon, ready to close";
    default:
      return "another state (see the trace log)";
  }
}

void print_number(std::string_view name, unsigned value, std::string_view note = {}) {
  std::string text = std::to_string(value);
  if (!note.empty()) text += " (" + std::string(note) + ")";
  print_field(name, text);
}

int status(Context& ctx, Args args) {
  if (int rc = no_arguments("status", args)) return rc;
  if (!ctx.start()) return kExitFailed;
  int code = kExitOk;

  std::array<char, 32> flags{};
  code = fold(code, ctx.report("E4Status", E4Status(flags.data())));
  print_field("Status", flags.data());

  // A state E4StaECF does not report leaves Opc as it was: 255 marks that.
  unsigned char opc = 255, resposta = 0;
  code = fold(code, ctx.report("E4StaECF", E4StaECF(&opc, &resposta)));
  print_number("Opc", opc, document_state(opc));
  print_number("Resposta", resposta);

  std::array<char, 16> data{}, hora{}, movimento{};
  unsigned char verao = 0, reducao = 0;
  code = fold(code, ctx.report("E4RdData", E4RdData(data.data(), hora.data(), &verao,
                                                    movimento.data(), &reducao)));
  print_field("Data", data.data());
  print_field("Hora", hora.data());
  print_number("Verao", verao);
  print_field("Movimento", movimento.data());
  print_number("Reducao", reducao, reducao != 0 ? "Z reduction made today" : "");
  return code;
}

int identity(Context& ctx, Args args) {
  if (int rc = no_arguments("identity", args)) return rc;
  if (!ctx.start()) return kExitFailed;
  int code = kExitOk;

  std::array<char, 32> serie{}, cgc{}, ie{}, im{}, firm{}, seq{};
  std::array<char, 1024> cliche{};
  unsigned char modelo = 0;
  code =
      fold(code, ctx.report("E4InfECF", E4InfECF(serie.data(), cgc.data(), ie.data(), im.data(),
                                                 cliche.data(), firm.data(), seq.data(), &modelo)));
  print_field("Serie", serie.data());
  print_field("CGC", cgc.data());
  print_field("IE", ie.data());
  print_field("IM", im.data());
  print_field("Cliche", cliche.data());
  print_field("Firm", firm.data());
  print_field("Seq", seq.data());
  print_number("Modelo", modelo);

  // The texts E4InfECF leaves out, each asked of the printer again.
  static constexpr struct {
    int option;
    std::string_view name;
  } kMore[] = {{6, "Marca"}, {7, "DescricaoModelo"}, {8, "FirmwareCompleto"}};
  for (const auto& item : kMore) {
    std::array<char, 256> text{};
    code = fold(code, ctx.report("E4InfEspECF " + std::to_string(item.option),
                                 E4InfEspECF(item.option, text.data())));
    print_field(item.name, text.data());
  }
  return code;
}

// ---- registers ---------------------------------------------------------------------------

std::string_view category_name(unsigned cat) {
  switch (cat) {
    case 1:
      return "non-fiscal totalisers";
    case 2:
      return "tax rates on goods";
    case 4:
      return "tax rates on services";
    case 5:
      return "payment methods";
    case 6:
      return "management report types";
    default:
      return "not a category";
  }
}

int registers(Context& ctx, Args args) {
  std::array<unsigned char, 8> cats{1, 2, 4, 5, 6};
  std::size_t ncats = 5;
  if (!args.empty()) {
    if (args.size() > cats.size()) return usage_error("registers: too many categories");
    for (std::size_t i = 0; i < args.size(); ++i) {
      long long v = 0;
      if (!parse_number(args[i], 0, UCHAR_MAX, v))
        return usage_error("registers: a category is a number (1, 2, 4, 5 or 6)");
      cats[i] = static_cast<unsigned char>(v);
    }
    ncats = args.size();
  }
  if (!ctx.start()) return kExitFailed;

  int code = kExitOk;
  for (std::size_t c = 0; c < ncats; ++c) {
    const unsigned char cat = cats[c];
    std::printf("Cat=%u (%.*s)\n", cat, static_cast<int>(category_name(cat).size()),
                category_name(cat).data());
    if (const unsigned short ret = E4RPPrim(cat); ret != 0) {
      code = fold(code, ctx.report("E4RPPrim", ret));
      continue;
    }
    // A category holds at most 19 registers; the bound only guards against a
    // printer that never ends the walk.
    int count = 0;
    for (; count < 256; ++count) {
      std::array<char, 256> compl_{};
      std::array<char, 8> sinal{};
      unsigned char rp = 0;
      const unsigned short ret = E4RPLe(cat, compl_.data(), sinal.data(), &rp);
      if (ret == E4_ERR_WALK_END) break;
      if (ret != 0) {
        code = fold(code, ctx.report("E4RPLe", ret));
        break;
      }
      const std::string shown = escape(compl_.data());
      std::printf("  RP=%u Sinal=%c Compl=%s\n", rp, sinal[0] != '\0' ? sinal[0] : ' ',
                  shown.c_str());
    }
    std::printf("  (%d register%s)\n", count, count == 1 ? "" : "s");
  }
  return code;
}

// ---- readings and documents --------------------------------------------------------------

int call_inicp(Context& ctx, Args args, std::string_view name, unsigned char opc) {
  if (int rc = no_arguments(name, args)) return rc;
  if (!ctx.start()) return kExitFailed;
  return fold(kExitOk, ctx.report("E4IniCP " + std::to_string(opc), E4IniCP(opc, "")));
}

int reading_x(Context& ctx, Args args) { return call_inicp(ctx, args, "x", 4); }
int reduction_z(Context& ctx, Args args) { return call_inicp(ctx, args, "z", 5); }

int cancel(Context& ctx, Args args) {
  if (int rc = no_arguments("cancel", args)) return rc;
  if (!ctx.start()) return kExitFailed;
  return fold(kExitOk, ctx.report("E4CanCup", E4CanCup()));
}

void print_file_size(const char* path) {
  std::error_code ec;
  const auto size = std::filesystem::file_size(path, ec);
  std::printf("Arquivo=%s (%llu bytes)\n", path, ec ? 0ULL : static_cast<unsigned long long>(size));
}

// journal <file> date|coo|z <from> <to>
int journal(Context& ctx, Args args) {
  if (args.size() != 4)
    return usage_error("journal takes 4 arguments: <file> date|coo|z <from> <to>");
  const std::string_view by = args[1];
  const unsigned char tipo = by == "date" ? 0 : by == "coo" ? 1 : by == "z" ? 2 : 255;
  if (tipo == 255) return usage_error("journal: the range is by date, coo or z");
  if (!ctx.start()) return kExitFailed;
  const unsigned short ret = ctx.report("E4LeMFD", E4LeMFD(tipo, args[2], args[3], args[0]));
  if (ret == 0) print_file_size(args[0]);
  return fold(kExitOk, ret);
}

// memory <file> date|z <from> <to> [complete|simplified]
int memory(Context& ctx, Args args) {
  if (args.size() != 4 && args.size() != 5)
    return usage_error(
        "memory takes 4 or 5 arguments: <file> date|z <from> <to> [complete|simplified]");
  const std::string_view by = args[1];
  if (by != "date" && by != "z") return usage_error("memory: the range is by date or z");
  const std::string_view kind = args.size() == 5 ? std::string_view(args[4]) : "complete";
  if (kind != "complete" && kind != "simplified")
    return usage_error("memory: the reading is complete or simplified");
  if (!ctx.start()) return kExitFailed;
  const unsigned char tipo = by == "date" ? 0 : 1;
  const unsigned char opc = kind == "simplified" ? 1 : 0;
  const unsigned short ret =
      ctx.report("E4LMFSerial", E4LMFSerial(tipo, opc, args[2], args[3], args[0]));
  if (ret == 0) print_file_size(args[0]);
  return fold(kExitOk, ret);
}

// ---- the trace control file --------------------------------------------------------------

constexpr const char* kTraceFile = "Orbelan.cfg";
constexpr long kDefaultSize = 5000000;

std::string read_trace_file() {
  std::ifstream in(kTraceFile, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The size limit written in the control file, or the library's default.
long trace_size(const std::string& cfg) {
  const std::size_t at = cfg.find("Tamanho=");
  if (at == std::string::npos) return kDefaultSize;
  const long size = std::strtol(cfg.c_str() + at + 8, nullptr, 10);
  return size > 0 ? size : kDefaultSize;
}

// trace [level [size]]: shows or writes "Orbelan.cfg"; the library reads it at
// the next session open. No session is needed.
int trace(Context&, Args args) {
  if (args.size() > 2) return usage_error("trace takes at most 2 arguments: [level [size]]");
  const std::string cfg = read_trace_file();
  if (args.empty()) {
    if (cfg.empty()) {
      std::printf("%s missing: the trace is off (the library creates it at the next open)\n",
                  kTraceFile);
      return kExitOk;
    }
    const std::string shown = escape(cfg.substr(0, 50));
    std::printf("%s: %s\n", kTraceFile, shown.c_str());
    return kExitOk;
  }
  long long level = 0, size = trace_size(cfg);
  if (!parse_number(args[0], 0, 9, level))
    return usage_error("trace: the level is a digit, 0 to 9");
  if (args.size() == 2 && !parse_number(args[1], 1, INT_MAX, size))
    return usage_error("trace: the size is a number of bytes, at least 1");
  std::FILE* f = std::fopen(kTraceFile, "w");
  if (f == nullptr) {
    std::fprintf(stderr, "e4: cannot write %s: %s\n", kTraceFile, std::strerror(errno));
    return kExitFailed;
  }
  // The library's own layout: no line end after the size.
  std::fprintf(f, "Trace=%lld\nTamanho=%lld", level, size);
  const bool ok = std::fclose(f) == 0;
  if (!ok) {
    std::fprintf(stderr, "e4: cannot write %s\n", kTraceFile);
    return kExitFailed;
  }
  std::printf("Trace=%lld Tamanho=%lld\n", level, size);
  return kExitOk;
}

int list_functions(Context&, Args args) {
  if (int rc = no_arguments("functions", args)) return rc;
  for (const Function& fn : functions()) std::printf("%s\n", synopsis(fn).c_str());
  return kExitOk;
}

int help_command(Context&, Args args) { return help(args); }

constexpr Command kCommands[] = {
    {"status", "", "",
     "Printer status flags (E4Status; position 4 is paper low), document state\n"
     "(E4StaECF) and date, time and business date (E4RdData).",
     status},
    {"identity", "id", "",
     "Serial number, owner tax numbers, header, firmware, sequence number and\n"
     "model (E4InfECF), brand, model text and full firmware (E4InfEspECF).",
     identity},
    {"registers", "rp", "[category...]",
     "List the programmed partial registers of each category (all by default):\n"
     "1 non-fiscal totalisers, 2 tax rates on goods, 4 tax rates on services,\n"
     "5 payment methods (Sinal 1: admits a credit/debit voucher), 6 report types.",
     registers},
    {"x", "leitura-x", "", "Print an X reading (E4IniCP 4).", reading_x},
    {"z", "reducao-z", "", "Make the Z reduction that closes the fiscal day (E4IniCP 5).",
     reduction_z},
    {"journal", "mfd", "<file> date|coo|z <from> <to>",
     "Download the electronic journal into <file> (E4LeMFD): dates as DDMMYYYY,\n"
     "COO or reduction numbers as digits.",
     journal},
    {"memory", "lmf", "<file> date|z <from> <to> [complete|simplified]",
     "Download the fiscal memory into <file> (E4LMFSerial): dates as DDMMYYYY,\n"
     "reduction numbers as digits.",
     memory},
    {"cancel", "", "", "Cancel the open document, or the last one (E4CanCup).", cancel},
    {"trace", "", "[level [size]]",
     "Show the trace control file Orbelan.cfg, or write it: level 0 (off) to 9\n"
     "(1 logs the most), size limit of the log Orbelan.txt in bytes (kept when not\n"
     "given). Taken at the next session open; needs no printer.",
     trace},
    {"functions", "", "", "List every exported function with its arguments.", list_functions},
    {"help", "", "[command|function]", "Show the usage, or the help of a command or function.",
     help_command},
};

void print_command(std::FILE* out, const Command& c) {
  std::fprintf(out, "e4 %.*s%s%.*s\n", static_cast<int>(c.name.size()), c.name.data(),
               c.usage.empty() ? "" : " ", static_cast<int>(c.usage.size()), c.usage.data());
  std::string text(c.help);
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    std::fprintf(out, "    %s\n", text.substr(at, end - at).c_str());
    at = end + 1;
  }
  if (!c.alias.empty())
    std::fprintf(out, "    (also: e4 %.*s)\n", static_cast<int>(c.alias.size()), c.alias.data());
}

}  // namespace

std::span<const Command> commands() { return kCommands; }

const Command* find_command(std::string_view name) {
  for (const Command& c : kCommands)
    if (c.name == name || (!c.alias.empty() && c.alias == name)) return &c;
  return nullptr;
}

void print_usage(std::FILE* out) {
  std::fprintf(out,
               "usage: e4 [options] <command> [arguments]\n"
               "       e4 [options] <E4Function> [arguments]\n"
               "\n"
               "Drives the fiscal printer through libOrbelan from the shell. Each run opens\n"
               "the session (E4Open), runs the command and closes it (E4Close); the library's\n"
               "files (trace log, state files) are those of the current directory.\n"
               "\n"
               "options:\n"
               "  --virtual[=PATH]  use the virtual printer instead of the real driver\n"
               "  --no-open         do not open a session around the command\n"
               "  --lang=pt|en      language of the result descriptions (default: from LANG)\n"
               "  -h, --help        this text\n"
               "\n"
               "commands:\n");
  for (const Command& c : kCommands) print_command(out, c);
  std::fprintf(out,
               "\n"
               "Any exported function is called by its name, with its input arguments in\n"
               "order (numbers in decimal or 0x hexadecimal, texts as they are, \"\" for an\n"
               "empty text), e.g.  e4 E4IniCP 2 \"\"  ; \"e4 functions\" lists them.\n"
               "Each call prints \"<name> ret=<code> (<description>)\" and then one\n"
               "\"<output>=<value>\" line per output (NUL bytes inside a value show as\n"
               "blanks, other unprintable bytes as \\xNN).\n"
               "\n"
               "exit status: 0 when every call returned 0, 1 when the library returned an\n"
               "error, 2 for a wrong command line.\n");
}

int help(std::span<char* const> args) {
  if (args.empty()) {
    print_usage(stdout);
    return kExitOk;
  }
  if (args.size() > 1) return usage_error("help takes at most one name");
  if (const Command* c = find_command(args[0])) {
    print_command(stdout, *c);
    return kExitOk;
  }
  if (const Function* fn = find_function(args[0])) {
    std::printf("e4 %s\n    %.*s\n", synopsis(*fn).c_str(), static_cast<int>(fn->help.size()),
                fn->help.data());
    return kExitOk;
  }
  return usage_error(std::string("no command or function named ") + args[0]);
}

}  // namespace e4
