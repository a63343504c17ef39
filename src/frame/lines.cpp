#include "frame/lines.h"

#include <unistd.h>

#include <algorithm>

namespace orbelan {

Fd::~Fd() {
  if (fd_ >= 0) ::close(fd_);
}

int ler_linha(int fd, std::span<char> buf, int limit) {
  if (buf.empty()) return -1;
  const int cabe = std::clamp(limit, 0, static_cast<int>(buf.size()) - 1);
  int n = 0;
  bool fim_de_linha = false;
  char c = 0;
  while (::read(fd, &c, 1) == 1) {
    if (c == '\n') {
      fim_de_linha = true;
      break;
    }
    if (c == '\r') continue;
    if (n < cabe) buf[static_cast<std::size_t>(n++)] = c;
  }
  buf[static_cast<std::size_t>(n)] = '\0';
  return (fim_de_linha || n > 0) ? n : -1;
}

}  // namespace orbelan
