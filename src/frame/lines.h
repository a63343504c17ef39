// Reading text files line by line.
#pragma once

#include <span>

namespace orbelan {

// A file descriptor closed when it goes out of scope.
class Fd {
 public:
  explicit Fd(int fd) : fd_(fd) {}
  Fd(const Fd&) = delete;
  Fd& operator=(const Fd&) = delete;
  ~Fd();
  explicit operator bool() const { return fd_ >= 0; }
  int get() const { return fd_; }

 private:
  int fd_;
};

// Reads one line from `fd` into `buf`: "\n" ends it, "\r" is dropped, at most
// `limit` characters are stored (the rest of a longer line is skipped) and the
// text is terminated. Returns the number of characters stored, or -1 at the
// end of the file with nothing read.
int ler_linha(int fd, std::span<char> buf, int limit);

}  // namespace orbelan
