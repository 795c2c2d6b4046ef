// SPDX-License-Identifier: MIT

#include "simulator/control_input.h"

#include <limits.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "simulator/field_command.h"

namespace vt63x {

void ControlInput::OnReadable() {
  char text[512];
  const ssize_t count = ::read(fd_, text, sizeof text);
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return;
  if (count <= 0) {
    if (!line_.empty()) Take('\n');
    fd_ = -1;
    return;
  }
  std::for_each(text, text + count, [this](char character) { Take(character); });
}

void ControlInput::Take(char character) {
  if (character != '\n') {
    too_long_ = too_long_ || line_.size() == kMaxLine;
    if (!too_long_) line_ += character;
    return;
  }
  Reply(too_long_ ? "error: the line is too long\n" : Run());
  line_.clear();
  too_long_ = false;
}

std::string ControlInput::Run() {
  return IsRingCommand(line_) ? RunRingCommand(ring_, line_) : RunFieldCommand(field_, line_);
}

// A pipe that is ready takes PIPE_BUF bytes without waiting.
void ControlInput::Reply(std::string_view text) {
  while (!text.empty()) {
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    if (::poll(&output, 1, 0) != 1 || (output.revents & POLLOUT) == 0) return;
    const ssize_t count =
        ::write(STDOUT_FILENO, text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
    if (count <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace vt63x
