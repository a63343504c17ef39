// Calls the library makes that a test process takes over: the fixed waits are
// recorded and return at once, and dlopen can be told to fail for a name or is
// redirected from the agent plug-in's absolute path to the test double.
#include <dlfcn.h>
#include <unistd.h>

#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "support/fixture.h"

namespace {

std::mutex& lock() {
  static std::mutex m;
  return m;
}
std::vector<orbtest::Wait>& wait_log() {
  static std::vector<orbtest::Wait> w;
  return w;
}
std::vector<std::string>& failing() {
  static std::vector<std::string> f;
  return f;
}

using DlopenFn = void* (*)(const char*, int);

DlopenFn real_dlopen() {
  static DlopenFn fn = reinterpret_cast<DlopenFn>(dlsym(RTLD_NEXT, "dlopen"));
  return fn;
}

}  // namespace

namespace orbtest {

std::vector<Wait> waits() {
  std::lock_guard g(lock());
  return wait_log();
}

void clear_waits() {
  std::lock_guard g(lock());
  wait_log().clear();
}

void fail_dlopen(const std::string& name) {
  std::lock_guard g(lock());
  failing().push_back(name);
}

const char* const kAgentPluginPath = "/usr/share/OVAgented/libOAPlugin.so";

}  // namespace orbtest

extern "C" {

unsigned int sleep(unsigned int seconds) {
  std::lock_guard g(lock());
  wait_log().push_back({false, seconds});
  return 0;
}

int usleep(useconds_t usec) {
  std::lock_guard g(lock());
  wait_log().push_back({true, static_cast<unsigned>(usec)});
  return 0;
}

void* dlopen(const char* file, int mode) {
  if (file != nullptr) {
    {
      std::lock_guard g(lock());
      for (const auto& name : failing())
        if (name == file) return nullptr;
    }
    if (std::strcmp(file, orbtest::kAgentPluginPath) == 0) file = ORBELAN_TEST_PLUGIN;
  }
  return real_dlopen()(file, mode);
}

}  // extern "C"
