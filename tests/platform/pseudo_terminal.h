// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_PLATFORM_PSEUDO_TERMINAL_H
#define VT63X_TESTS_PLATFORM_PSEUDO_TERMINAL_H

// A serial line whose far end the test holds. While it lives, COM7 is its near end.

#include <asm/termbits.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <windows.h>

#include <chrono>
#include <cstdlib>
#include <string>

namespace vt63x {

class PseudoTerminal {
 public:
  static constexpr const char* kPort = "COM7:";
  static constexpr const char* kVariable = "VT63X_COM7";

  PseudoTerminal() {
    far_end_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    EXPECT_EQ(grantpt(far_end_), 0);
    EXPECT_EQ(unlockpt(far_end_), 0);
    device_ = ptsname(far_end_);
    SetEnvironmentVariableA(kVariable, device_.c_str());
  }
  ~PseudoTerminal() {
    HangUp();
    SetEnvironmentVariableA(kVariable, nullptr);
  }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  const std::string& device() const { return device_; }

  void HangUp() {
    if (far_end_ >= 0) close(far_end_);
    far_end_ = -1;
  }

  void Send(const std::string& data) {
    EXPECT_EQ(write(far_end_, data.data(), data.size()), static_cast<ssize_t>(data.size()));
  }

  // The next `size` bytes, or fewer after 20 s without any.
  std::string Receive(std::size_t size) {
    std::string data;
    while (data.size() < size) {
      pollfd waited{far_end_, POLLIN, 0};
      char piece[4096];
      if (poll(&waited, 1, 20'000) <= 0) break;
      const ssize_t count = read(far_end_, piece, std::min(sizeof piece, size - data.size()));
      if (count <= 0) break;
      data.append(piece, static_cast<std::size_t>(count));
    }
    return data;
  }

  // What another program may do to the line while it is in use, `stty` for one.
  template <typename Change>
  void ChangeSettings(Change change) {
    termios2 settings = Settings();
    change(settings);
    EXPECT_EQ(ioctl(far_end_, TCSETS2, &settings), 0);
  }

  termios2 Settings() const {
    termios2 settings{};
    EXPECT_EQ(ioctl(far_end_, TCGETS2, &settings), 0);
    return settings;
  }

 private:
  int far_end_ = -1;
  std::string device_;
};

inline HANDLE OpenPort(const char* name = PseudoTerminal::kPort,
                       DWORD flags = FILE_FLAG_OVERLAPPED) {
  return CreateFileA(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, flags, nullptr);
}

class Stopwatch {
 public:
  std::int64_t ms() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 start_)
        .count();
  }

 private:
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace vt63x

#endif
