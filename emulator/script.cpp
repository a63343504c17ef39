// Scripted replies and the call record of the virtual printer.
#include <algorithm>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>

#include "printer.h"

namespace vprinter {
namespace {

struct Script {
  std::map<int, std::deque<Reply>> queued;
  std::map<int, Reply> sticky;
  std::vector<vp_call> calls;
  int init = 0;
  int fini = 0;
  int id = 1;
};

Script& script() {
  static Script s;
  return s;
}

// Tests may script replies from one thread while the library, on another,
// drives the printer: every access to the script and the record holds this.
std::mutex& guard() {
  static std::mutex m;
  return m;
}
using Lock = std::lock_guard<std::mutex>;

}  // namespace

Reply make_reply(int result, const void* data, int len, int reported) {
  Reply r;
  r.result = result;
  len = std::clamp(len, 0, VP_MAX_REPLY);
  if (data != nullptr && len > 0) {
    const auto* p = static_cast<const std::uint8_t*>(data);
    r.data.assign(p, p + len);
  }
  r.reported = reported;
  return r;
}

bool take_scripted(int cmd, Reply& out) {
  const Lock lock(guard());
  auto& s = script();
  if (auto q = s.queued.find(cmd); q != s.queued.end() && !q->second.empty()) {
    out = std::move(q->second.front());
    q->second.pop_front();
    return true;
  }
  if (auto st = s.sticky.find(cmd); st != s.sticky.end()) {
    out = st->second;
    return true;
  }
  return false;
}

int init_result() {
  const Lock lock(guard());
  return script().init;
}
int fini_result() {
  const Lock lock(guard());
  return script().fini;
}
int printer_id() {
  const Lock lock(guard());
  return script().id;
}

vp_call& record(int kind, int cmd, int flag, int mode, int inlen, const unsigned char* in) {
  vp_call c{};
  c.kind = kind;
  c.cmd = cmd;
  c.flag = flag;
  c.mode = mode;
  c.inlen = inlen;
  if (in != nullptr && inlen > 0) std::memcpy(c.in, in, std::min(inlen, VP_MAX_INPUT));
  const Lock lock(guard());
  script().calls.push_back(c);
  // The caller gets its own copy: the record may grow on another thread.
  thread_local vp_call last;
  last = c;
  return last;
}

}  // namespace vprinter

using vprinter::guard;
using vprinter::Lock;
using vprinter::script;

extern "C" {

__attribute__((visibility("default"))) void vp_reset(void) {
  const Lock lock(guard());
  script() = {};
}

__attribute__((visibility("default"))) void vp_push_reply_len(int cmd, int result, const void* data,
                                                              int len, int reported_len) {
  const Lock lock(guard());
  script().queued[cmd].push_back(vprinter::make_reply(result, data, len, reported_len));
}

__attribute__((visibility("default"))) void vp_push_reply(int cmd, int result, const void* data,
                                                          int len) {
  vp_push_reply_len(cmd, result, data, len, len);
}

__attribute__((visibility("default"))) void vp_set_reply_len(int cmd, int result, const void* data,
                                                             int len, int reported_len) {
  const Lock lock(guard());
  script().sticky[cmd] = vprinter::make_reply(result, data, len, reported_len);
}

__attribute__((visibility("default"))) void vp_set_reply(int cmd, int result, const void* data,
                                                         int len) {
  vp_set_reply_len(cmd, result, data, len, len);
}

__attribute__((visibility("default"))) void vp_clear_reply(int cmd) {
  const Lock lock(guard());
  script().queued.erase(cmd);
  script().sticky.erase(cmd);
}

__attribute__((visibility("default"))) int vp_pending(int cmd) {
  const Lock lock(guard());
  auto q = script().queued.find(cmd);
  return q == script().queued.end() ? 0 : static_cast<int>(q->second.size());
}

__attribute__((visibility("default"))) void vp_set_init_result(int result) {
  const Lock lock(guard());
  script().init = result;
}
__attribute__((visibility("default"))) void vp_set_fini_result(int result) {
  const Lock lock(guard());
  script().fini = result;
}
__attribute__((visibility("default"))) void vp_set_printer_id(int id) {
  const Lock lock(guard());
  script().id = id;
}

__attribute__((visibility("default"))) int vp_call_count(void) {
  const Lock lock(guard());
  return static_cast<int>(script().calls.size());
}

__attribute__((visibility("default"))) const vp_call* vp_get_call(int index) {
  // The pointer stays valid until the record next grows or is cleared.
  const Lock lock(guard());
  auto& calls = script().calls;
  if (index < 0 || index >= static_cast<int>(calls.size())) return nullptr;
  return &calls[static_cast<std::size_t>(index)];
}

__attribute__((visibility("default"))) int vp_count_cmd(int cmd) {
  const Lock lock(guard());
  const auto& calls = script().calls;
  return static_cast<int>(std::count_if(calls.begin(), calls.end(), [cmd](const vp_call& c) {
    return c.kind == VP_OPERACAO && c.cmd == cmd;
  }));
}

__attribute__((visibility("default"))) void vp_clear_calls(void) {
  const Lock lock(guard());
  script().calls.clear();
}

}  // extern "C"
