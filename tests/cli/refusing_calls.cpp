// SPDX-License-Identifier: MIT

// Calls on devices that go wrong, for a program that is started with this library in LD_PRELOAD.
// The environment variable REFUSE says how: "interrupt", every other call is broken off by a
// signal, or a bit rate that the driver does not know.

#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

std::string_view Refused() {
  const char* const what = getenv("REFUSE");
  return what != nullptr ? what : "";
}

bool Interrupted() {
  static std::atomic<unsigned> calls = 0;
  if (Refused() != "interrupt" || ++calls % 2 == 0) return false;
  errno = EINTR;
  return true;
}

bool IsRefusedRate(unsigned long request, const void* argument) {
  static std::atomic<unsigned> settings = 0;
  if (request != TCSETS2 || ++settings == 1) return false;
  const auto rate = static_cast<const termios2*>(argument)->c_ospeed;
  if (Refused() != std::to_string(rate)) return false;
  errno = EINVAL;
  return true;
}

}  // namespace

extern "C" int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = (flags & O_CREAT) != 0 ? va_arg(arguments, unsigned) : 0U;
  va_end(arguments);
  if (Interrupted()) return -1;
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (Interrupted() || IsRefusedRate(request, argument)) return -1;
  return static_cast<int>(syscall(SYS_ioctl, descriptor, request, argument));
}

extern "C" int flock(int descriptor, int operation) noexcept {
  return Interrupted() ? -1 : static_cast<int>(syscall(SYS_flock, descriptor, operation));
}
