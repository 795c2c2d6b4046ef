// SPDX-License-Identifier: MIT

#include "cli/output.h"

#include <windows.h>

#include <cerrno>

namespace vt63x {

void MakeUnbuffered(std::FILE* stream) { std::setvbuf(stream, nullptr, _IONBF, 0); }

int WriteAll(std::FILE* stream, std::string_view text) {
  while (!text.empty()) {
    errno = 0;
    text.remove_prefix(std::fwrite(text.data(), 1, text.size(), stream));
    if (text.empty()) break;
    const int error = errno;
    const bool full = error == EAGAIN || error == EWOULDBLOCK;
    if (!full && error != EINTR) return error != 0 ? error : EIO;
    std::clearerr(stream);
    if (full) Sleep(1);
  }
  return 0;
}

void PrintMessage(const std::string& message) { WriteAll(stderr, "wcf: " + message + "\n"); }

}  // namespace vt63x
