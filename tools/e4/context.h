// e4: what every command shares: the options of the run, the session with the
// printer, and the way results and outputs are printed.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace e4 {

// Exit codes of the tool.
constexpr int kExitOk = 0;      // every call returned 0
constexpr int kExitFailed = 1;  // the library returned an error (or the driver could not be had)
constexpr int kExitUsage = 2;   // the command line was wrong; nothing was sent

class Context {
 public:
  bool english = true;   // language of the result descriptions
  bool no_open = false;  // --no-open: run the command without opening a session
  std::string driver;    // --virtual: the virtual printer to load first (empty: the real driver)

  // Loads the virtual printer when asked for and opens the session (E4Open),
  // unless --no-open was given or `call_open` is false (the command opens the
  // session itself). Reports a failure and returns false.
  bool start(bool call_open = true);
  // Closes the session if start() ran. Returns the exit code `code` combined
  // with the result of the close (a close that finds no session is no error).
  int finish(int code);

  // Prints "<name> ret=<code> (<description>)" and returns the code.
  unsigned short report(std::string_view name, unsigned short code) const;

 private:
  bool started_ = false;
};

// Prints "<name>=<value>" with the bytes of `value` made readable on one line:
// a NUL inside the value shows as a blank, CR, LF, TAB and the backslash as
// \r, \n, \t and \\, any other control or non-ASCII byte as \xNN.
void print_field(std::string_view name, std::string_view value);
std::string escape(std::string_view bytes);

// A number given on the command line: decimal or 0x-prefixed hexadecimal,
// within [lo, hi]. False (and `out` untouched) when it is not.
bool parse_number(std::string_view text, long long lo, long long hi, long long& out);

// "e4: <message>" on the standard error, returning kExitUsage.
int usage_error(const std::string& message);

}  // namespace e4
