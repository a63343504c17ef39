// e4: the library's exported functions and common printer tasks from the shell,
// for developers and field technicians. See "e4 --help".
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "commands.h"
#include "context.h"
#include "functions.h"

#ifndef E4_VIRTUAL_DRIVER
#define E4_VIRTUAL_DRIVER ""
#endif

namespace {

// Portuguese descriptions when the locale asks for Portuguese.
bool english_by_default() {
  for (const char* var : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(var);
    if (value != nullptr && *value != '\0') return std::strncmp(value, "pt", 2) != 0;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  e4::Context ctx;
  ctx.english = english_by_default();

  // Options come before the command, so that arguments such as "-1" are never
  // taken for one.
  int i = 1;
  for (; i < argc && argv[i][0] == '-'; ++i) {
    const std::string_view opt = argv[i];
    if (opt == "-h" || opt == "--help") {
      e4::print_usage(stdout);
      return e4::kExitOk;
    }
    if (opt == "--virtual") {
      ctx.driver = E4_VIRTUAL_DRIVER;
      if (ctx.driver.empty())
        return e4::usage_error("this e4 was built without the virtual printer");
    } else if (opt.starts_with("--virtual=")) {
      ctx.driver = std::string(opt.substr(10));
      if (ctx.driver.empty())
        return e4::usage_error("--virtual= needs the path of the virtual printer");
    } else if (opt == "--no-open") {
      ctx.no_open = true;
    } else if (opt == "--lang=pt" || opt == "--lang=en") {
      ctx.english = opt == "--lang=en";
    } else {
      return e4::usage_error("unknown option " + std::string(opt) + " (see e4 --help)");
    }
  }
  if (i == argc) {
    e4::print_usage(stderr);
    return e4::kExitUsage;
  }

  const std::string_view name = argv[i];
  const std::span<char* const> args(argv + i + 1, static_cast<std::size_t>(argc - i - 1));
  int code;
  if (const e4::Command* cmd = e4::find_command(name)) {
    code = cmd->run(ctx, args);
  } else if (const e4::Function* fn = e4::find_function(name)) {
    code = e4::run_function(ctx, *fn, args);
  } else {
    return e4::usage_error("no command or function named " + std::string(name) +
                           " (see e4 --help, e4 functions)");
  }
  return ctx.finish(code);
}
