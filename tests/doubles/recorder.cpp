#include "recorder.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace {

struct State {
  std::mutex m;
  std::vector<dbl_call> calls;
  std::map<std::string, std::deque<long>> queued;
  std::map<std::string, long> sticky;
  std::map<std::string, std::string> texts;
};

State& st() {
  static State s;
  return s;
}

}  // namespace

extern "C" {

void dbl_reset(void) {
  std::lock_guard g(st().m);
  st().calls.clear();
  st().queued.clear();
  st().sticky.clear();
  st().texts.clear();
}

void dbl_record(const char* lib, const char* fn, const char* args_format, ...) {
  dbl_call c{};
  std::snprintf(c.lib, sizeof c.lib, "%s", lib != nullptr ? lib : "");
  std::snprintf(c.fn, sizeof c.fn, "%s", fn != nullptr ? fn : "");
  if (args_format != nullptr) {
    va_list ap;
    va_start(ap, args_format);
    std::vsnprintf(c.args, sizeof c.args, args_format, ap);
    va_end(ap);
  }
  std::lock_guard g(st().m);
  st().calls.push_back(c);
}

int dbl_count(void) {
  std::lock_guard g(st().m);
  return static_cast<int>(st().calls.size());
}

const dbl_call* dbl_get(int index) {
  std::lock_guard g(st().m);
  if (index < 0 || index >= static_cast<int>(st().calls.size())) return nullptr;
  return &st().calls[static_cast<std::size_t>(index)];
}

void dbl_push_result(const char* fn, long value) {
  std::lock_guard g(st().m);
  st().queued[fn].push_back(value);
}

void dbl_set_result(const char* fn, long value) {
  std::lock_guard g(st().m);
  st().sticky[fn] = value;
}

long dbl_result(const char* fn, long fallback) {
  std::lock_guard g(st().m);
  if (auto q = st().queued.find(fn); q != st().queued.end() && !q->second.empty()) {
    const long v = q->second.front();
    q->second.pop_front();
    return v;
  }
  if (auto s = st().sticky.find(fn); s != st().sticky.end()) return s->second;
  return fallback;
}

void dbl_set_text(const char* fn, const char* text) {
  std::lock_guard g(st().m);
  st().texts[fn] = text != nullptr ? text : "";
}

const char* dbl_text(const char* fn) {
  std::lock_guard g(st().m);
  auto t = st().texts.find(fn);
  return t == st().texts.end() ? "" : t->second.c_str();
}

}  // extern "C"
