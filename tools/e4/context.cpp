#include "context.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "orbelan.h"

namespace e4 {

bool Context::start(bool call_open) {
  if (started_) return true;
  if (!driver.empty()) {
    // Loaded globally under its own SONAME, so that the library's dlopen of the
    // bare driver name is handed this instance instead of searching the path.
    // The handle is kept to the end of the process.
    if (dlopen(driver.c_str(), RTLD_NOW | RTLD_GLOBAL) == nullptr) {
      const char* why = dlerror();
      std::fprintf(stderr, "e4: cannot load the virtual printer %s: %s\n", driver.c_str(),
                   why != nullptr ? why : "unknown error");
      return false;
    }
  }
  started_ = true;
  if (call_open && !no_open) {
    const unsigned short ret = E4Open(0, 0);
    if (ret != 0) {
      report("E4Open", ret);
      return false;
    }
  }
  return true;
}

int Context::finish(int code) {
  if (!started_) return code;
  started_ = false;
  const unsigned short ret = E4Close();
  if (ret == 0 || ret == E4_ERR_NOT_OPEN) return code;
  report("E4Close", ret);
  return code == kExitOk ? kExitFailed : code;
}

unsigned short Context::report(std::string_view name, unsigned short code) const {
  std::printf("%.*s ret=%u (%s)\n", static_cast<int>(name.size()), name.data(), code,
              E4DescricaoRetorno(code, english ? 1 : 0));
  return code;
}

std::string escape(std::string_view bytes) {
  static constexpr char kHex[] = "0123456789abcdef";
  std::string out;
  out.reserve(bytes.size());
  for (const char ch : bytes) {
    const auto b = static_cast<unsigned char>(ch);
    switch (b) {
      case 0:
        out += ' ';
        break;
      case '\r':
        out += "\\r";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\t':
        out += "\\t";
        break;
      case '\\':
        out += "\\\\";
        break;
      default:
        if (b < 0x20 || b >= 0x7f) {
          out += "\\x";
          out += kHex[b >> 4];
          out += kHex[b & 0x0f];
        } else {
          out += ch;
        }
    }
  }
  return out;
}

void print_field(std::string_view name, std::string_view value) {
  const std::string shown = escape(value);
  std::printf("%.*s=%s\n", static_cast<int>(name.size()), name.data(), shown.c_str());
}

bool parse_number(std::string_view text, long long lo, long long hi, long long& out) {
  if (text.empty() || text.size() > 24) return false;
  char buf[32] = {};
  text.copy(buf, text.size());
  char* end = nullptr;
  errno = 0;
  // Decimal unless 0x-prefixed: a leading zero does not make it octal.
  const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  const long long v = std::strtoll(buf, &end, hex ? 16 : 10);
  if (errno != 0 || end == buf || *end != '\0' || v < lo || v > hi) return false;
  out = v;
  return true;
}

int usage_error(const std::string& message) {
  std::fprintf(stderr, "e4: %s\n", message.c_str());
  return kExitUsage;
}

}  // namespace e4
