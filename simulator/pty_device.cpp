// SPDX-License-Identifier: MIT

#include "simulator/pty_device.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <system_error>

#include "simulator/line_rate.h"

namespace vt63x {
namespace {

constexpr std::uint32_t kRateAtStart = 9600;

bool Fail(std::string& error, const char* what) {
  error = std::string(what) + ": " + std::generic_category().message(errno);
  return false;
}

}  // namespace

bool PtyDevice::Open(std::string& error) {
  master_.Reset(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  if (!master_) return Fail(error, "no pseudo terminal to be had");
  if (!MakeLineRaw(master_.get(), kRateAtStart)) return Fail(error, "line settings refused");
  char path[64];
  if (::grantpt(master_.get()) != 0 || ::unlockpt(master_.get()) != 0 ||
      ::ptsname_r(master_.get(), path, sizeof path) != 0) {
    return Fail(error, "pseudo terminal without a device");
  }
  client_side_.Reset(::open(path, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  if (!client_side_) return Fail(error, path);
  watch_.Reset(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  if (!watch_ || ::inotify_add_watch(watch_.get(), path, IN_OPEN | IN_CLOSE) < 0) {
    return Fail(error, "cannot watch the device for clients");
  }
  path_ = path;
  return true;
}

PtyDevice::Change PtyDevice::TakeChange() {
  alignas(inotify_event) char events[1024];
  bool closed = false, open_at_end = false;
  for (ssize_t size; (size = ::read(watch_.get(), events, sizeof events)) > 0;) {
    for (ssize_t at = 0; at < size;) {
      const auto* const event = reinterpret_cast<const inotify_event*>(events + at);
      open_at_end = (event->mask & IN_OPEN) != 0;
      closed = closed || !open_at_end;
      at += static_cast<ssize_t>(sizeof *event + event->len);
    }
  }
  if (closed) return open_at_end ? Change::kReplaced : Change::kClosed;
  return open_at_end ? Change::kOpened : Change::kNone;
}

// The system's list of locks tells without taking the lock, which a client might want just then.
// A line of it: "1: FLOCK  ADVISORY  WRITE 1234 00:18:5 0 EOF", the file as device and inode.
bool PtyDevice::IsLocked() const {
  struct stat device {};
  if (::fstat(client_side_.get(), &device) != 0) return false;
  char file[64];
  std::snprintf(file, sizeof file, " %02x:%02x:%ju ", major(device.st_dev), minor(device.st_dev),
                static_cast<std::uintmax_t>(device.st_ino));
  std::ifstream locks("/proc/locks");
  for (std::string line; std::getline(locks, line);) {
    const bool waits = line.find("->") != std::string::npos;
    if (!waits && line.find(" FLOCK ") != std::string::npos &&
        line.find(file) != std::string::npos) {
      return true;
    }
  }
  return false;
}

void PtyDevice::DropUnreadAnswers() { ::tcflush(client_side_.get(), TCIFLUSH); }

void PtyDevice::EndExclusiveUse() { ::ioctl(client_side_.get(), TIOCNXCL); }

std::uint32_t PtyDevice::HostRate() const { return LineRate(master_.get()); }

std::size_t PtyDevice::Read(std::span<std::uint8_t> buffer) {
  const ssize_t count = ::read(master_.get(), buffer.data(), buffer.size());
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

std::size_t PtyDevice::Write(std::span<const std::uint8_t> bytes) {
  const ssize_t count = ::write(master_.get(), bytes.data(), bytes.size());
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

void PtyDevice::HangUp() {
  watch_.Reset();
  client_side_.Reset();
  master_.Reset();
}

}  // namespace vt63x
