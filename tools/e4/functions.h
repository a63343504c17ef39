// e4: every exported function of the library, callable by name from the shell.
//
// One table describes each function: its name, its parameters with their kinds
// and a line of help. The kinds drive the parsing of the command line, the call
// and the printing of the outputs, and are checked against the function's C
// signature when the table is compiled:
//   b  unsigned char number       w  unsigned short number     i  int number
//   c  one character              t  input text                o  output text
//   r  output record: every byte up to the last one written counts (several
//      texts, or fields padded with NULs)
//   m  text, in and out           B  output byte (number)      M  byte, in and out
//   P  input byte passed by address                            U  output unsigned int
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "context.h"

namespace e4 {

struct Function {
  std::string_view name;
  std::string_view params;  // "b:Opc t:Param": kind, colon, name; blank-separated
  std::string_view help;
  unsigned short (*call)(struct Slot* slots);
};

std::span<const Function> functions();
// By exact name, then ignoring case; nullptr when there is none.
const Function* find_function(std::string_view name);

// "E4IniCP Opc(number 0-255) Param(text)": the arguments a user types; the
// outputs are listed after "->".
std::string synopsis(const Function& fn);

// Parses `args`, calls the function, prints its result and outputs.
int run_function(Context& ctx, const Function& fn, std::span<char* const> args);

}  // namespace e4
