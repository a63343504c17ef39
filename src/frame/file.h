// A scoped C stream: every local file is opened, used and closed within one call.
#pragma once

#include <cstdio>

namespace orbelan {

class File {
 public:
  File() = default;
  File(const char* path, const char* mode) : f_(std::fopen(path, mode)) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  File(File&& o) noexcept : f_(o.f_) { o.f_ = nullptr; }
  File& operator=(File&& o) noexcept {
    if (this != &o) {
      close();
      f_ = o.f_;
      o.f_ = nullptr;
    }
    return *this;
  }
  ~File() { close(); }

  explicit operator bool() const { return f_ != nullptr; }
  std::FILE* get() const { return f_; }
  void close() {
    if (f_ != nullptr) std::fclose(f_);
    f_ = nullptr;
  }

 private:
  std::FILE* f_ = nullptr;
};

}  // namespace orbelan
