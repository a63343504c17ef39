// Internals of the virtual printer shared by its source files.
#pragma once

#include <cstdint>
#include <vector>

#include "vprinter.h"

namespace vprinter {

struct Reply {
  int result = 0;
  std::vector<std::uint8_t> data;
  int reported = 0;  // reply length reported to the caller
};

// Builds a Reply from a script call.
Reply make_reply(int result, const void* data, int len, int reported);

// A command handler of the printer model: fills `out` and returns true when it
// answers the command, false to fall through to the default empty success.
using Handler = bool (*)(const vp_call& call, Reply& out);

struct HandlerEntry {
  int cmd;
  Handler handle;
};

// The model's handler for `cmd`, or nullptr.
Handler find_handler(int cmd);

// Takes the scripted reply for `cmd` (queued first, then sticky) into `out`.
bool take_scripted(int cmd, Reply& out);

// Scripted results of the lifecycle entry points.
int init_result();
int fini_result();
int printer_id();

// Appends a call to the record and returns it.
vp_call& record(int kind, int cmd, int flag, int mode, int inlen, const unsigned char* in);

}  // namespace vprinter
