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
std::vector<std::pair<std::string, std::string>>& redirects() {
  static std::vector<std::pair<std::string, std::string>> r{
      {orbtest::kAgentPluginPath, ORBELAN_TEST_DOUBLES_DIR "/libOAPlugin.so"}};
  return r;
}

using DlopenFn = void* (*)(const char*, int);

DlopenFn real_dlopen() {
  static DlopenFn fn = reinterpret_cast<DlopenFn>(dlsym(RTLD_NEXT, "dlopen"));
  return fn;
}

}  // namespace

namespace orbtest {
const char* const kAgentPluginPath = "/usr/share/OVAgented/libOAPlugin.so";
}

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

void redirect_dlopen(const std::string& name, const std::string& path) {
  std::lock_guard g(lock());
  redirects().insert(redirects().begin(), {name, path});
}

std::string double_path(const std::string& name) {
  return std::string(ORBELAN_TEST_DOUBLES_DIR) + "/lib" + name + ".so";
}

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
  std::string target;
  if (file != nullptr) {
    std::lock_guard g(lock());
    for (const auto& name : failing())
      if (name == file) return nullptr;
    for (const auto& [name, path] : redirects())
      if (name == file) {
        target = path;
        break;
      }
  }
  return real_dlopen()(target.empty() ? file : target.c_str(), mode);
}

}  // extern "C"
