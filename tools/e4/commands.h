// e4: the subcommands for the common tasks, and the help.
#pragma once

#include <cstdio>
#include <span>
#include <string_view>

#include "context.h"

namespace e4 {

struct Command {
  std::string_view name;
  std::string_view alias;  // a second name (may be empty)
  std::string_view usage;  // the arguments, as shown by the help
  std::string_view help;   // what it does, one or more lines
  int (*run)(Context& ctx, std::span<char* const> args);
};

std::span<const Command> commands();
const Command* find_command(std::string_view name);

// The whole usage text (e4 --help).
void print_usage(std::FILE* out);
// e4 help [name]: the usage, or the help of one command or function.
int help(std::span<char* const> args);

}  // namespace e4
