// SPDX-License-Identifier: MIT

#include "platform/kernel/tty_line.h"

#include <fcntl.h>
#include <linux/serial.h>
#include <linux/tty_flags.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cerrno>
#include <system_error>

#include "platform/kernel/errno_map.h"
#include "platform/kernel/poll_until.h"
#include "platform/kernel/retry.h"
#include "platform/kernel/tty_settings.h"

namespace vt63x::kernel {
namespace {

// Device numbers of pseudo terminals (Linux, Documentation/admin-guide/devices.txt).
constexpr unsigned kFirstPseudoMajor = 136;
constexpr unsigned kLastPseudoMajor = 143;

// What a timed read takes at most: the driver's own span, and some more for a busy machine. With it
// a read ends within 100 ms of its time-out.
constexpr std::chrono::milliseconds kReadLimit = kDriverReadSpan + std::chrono::milliseconds(30);

struct ModemLine {
  int line;
  DWORD status;
};

constexpr ModemLine kModemLines[] = {
    {TIOCM_CTS, MS_CTS_ON},
    {TIOCM_DSR, MS_DSR_ON},
    {TIOCM_RNG, MS_RING_ON},
    {TIOCM_CAR, MS_RLSD_ON},
};

// Non-blocking, because opening a line would else wait for its carrier and a FIFO for its peer.
FileDescriptor OpenDevice(const std::string& path) {
  return FileDescriptor(
      Retry([&] { return open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC); }));
}

bool IsPseudoTerminal(const struct stat& device) {
  const unsigned number = major(device.st_rdev);
  return number >= kFirstPseudoMajor && number <= kLastPseudoMajor;
}

template <typename Argument>
int Control(const FileDescriptor& device, unsigned long request, Argument argument) {
  return Retry([&] { return ioctl(device.get(), request, argument); });
}

// The side of a pseudo terminal that makes one rather than being one: its reads know no time-out.
bool IsMaster(const FileDescriptor& device) {
  unsigned number = 0;
  return Control(device, TIOCGPTN, &number) == 0;
}

bool LacksRequest(int error_number) { return error_number == ENOTTY || error_number == EINVAL; }

// USB adapters hand over what they received every 16 ms unless told not to wait; a byte would cost
// that much. Drivers that do not know the request lose nothing.
void AskForLowLatency(const FileDescriptor& device) {
  serial_struct serial{};
  if (Control(device, TIOCGSERIAL, &serial) != 0) return;
  if ((serial.flags & static_cast<int>(ASYNC_LOW_LATENCY)) != 0) return;
  serial.flags |= static_cast<int>(ASYNC_LOW_LATENCY);
  Control(device, TIOCSSERIAL, &serial);
}

}  // namespace

DWORD TtyLine::Open(const std::string& path, std::unique_ptr<LineSource>* line) {
  std::unique_ptr<TtyLine> opened(new TtyLine);
  DWORD error = opened->OpenBoth(path);
  if (error == ERROR_SUCCESS) error = opened->Claim();
  if (error == ERROR_SUCCESS) error = opened->SetUp();
  if (error == ERROR_SUCCESS) *line = std::move(opened);
  return error;
}

TtyLine::~TtyLine() {
  if (claimed_) Control(io_, TIOCNXCL, 0);
}

DWORD TtyLine::OpenBoth(const std::string& path) {
  io_ = OpenDevice(path);
  if (!io_.valid()) return OpenError(errno);
  termios2 settings{};
  if (Control(io_, TCGETS2, &settings) != 0) return OpenError(errno);
  if (IsMaster(io_)) return ERROR_INVALID_PARAMETER;
  // The lock comes before the second opening: of two programs that start at the same time, one
  // gets it and the other goes away without having touched the line.
  const int locked = Retry([&] { return flock(io_.get(), LOCK_EX | LOCK_NB); });
  if (locked != 0) return OpenError(errno);
  timed_ = OpenDevice(path);
  if (!timed_.valid()) return OpenError(errno);
  const int flags = fcntl(timed_.get(), F_GETFL);
  if (fcntl(timed_.get(), F_SETFL, flags & ~O_NONBLOCK) != 0) return OpenError(errno);
  wake_ = FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  return wake_.valid() ? ERROR_SUCCESS : OpenError(errno);
}

// The lock keeps out programs that ask for it, root's too; the exclusive mark keeps out all others
// but root's. A program that ignores the lock and opened the device before the mark was made stays
// in: nothing can tell. The mark must follow the second opening, which it would refuse.
//
// A pseudo terminal keeps the mark for as long as its other end lives, so that a program that
// crashes would lock out all that come after; the lock alone serves there.
DWORD TtyLine::Claim() {
  struct stat first {};
  struct stat second {};
  if (fstat(io_.get(), &first) != 0 || fstat(timed_.get(), &second) != 0) return OpenError(errno);
  // Another adapter may have taken the name between the two openings.
  if (first.st_rdev != second.st_rdev) return ERROR_FILE_NOT_FOUND;
  if (IsPseudoTerminal(first)) return ERROR_SUCCESS;
  if (Control(io_, TIOCEXCL, 0) != 0) return OpenError(errno);
  claimed_ = true;
  return ERROR_SUCCESS;
}

// No modem line is moved here. The system itself raises DTR and RTS of a UART that nobody else has
// open; they go off with the first settings.
DWORD TtyLine::SetUp() try {
  if (!MakeLineRaw()) return OpenError(errno);
  AskForLowLatency(io_);
  read_limit_.emplace(kReadLimit);
  const DWORD error = PurgeInput();
  return error == ERROR_DEVICE_NOT_CONNECTED ? ERROR_FILE_NOT_FOUND : error;
} catch (const std::system_error&) {
  return ERROR_NOT_ENOUGH_MEMORY;  // no thread to be had
}

bool TtyLine::MakeLineRaw() {
  termios2 settings{};
  if (Control(io_, TCGETS2, &settings) != 0) return false;
  MakeRaw(&settings);
  return Control(io_, TCSETS2, &settings) == 0;
}

DWORD TtyLine::Configure(DWORD bit_rate) {
  termios2 before{};
  if (Control(io_, TCGETS2, &before) != 0) return UseError(errno);
  termios2 settings = before;
  SetBitRate(&settings, bit_rate);
  if (Control(io_, TCSETS2, &settings) != 0) return UseError(errno);
  // A driver does not refuse a rate it cannot do: it sets another one.
  termios2 after{};
  if (Control(io_, TCGETS2, &after) != 0) return UseError(errno);
  if (!IsCloseTo(after.c_ospeed, bit_rate)) {
    Control(io_, TCSETS2, &before);
    return ERROR_INVALID_PARAMETER;
  }
  const int off = TIOCM_DTR | TIOCM_RTS;
  if (Control(io_, TIOCMBIC, &off) != 0 && !LacksRequest(errno)) return UseError(errno);
  return ERROR_SUCCESS;
}

bool TtyLine::HungUp() const {
  pollfd line{io_.get(), POLLIN, 0};
  return poll(&line, 1, 0) > 0 && (line.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}

Transfer TtyLine::ReadFrom(const FileDescriptor& descriptor, void* buffer, std::size_t size) {
  const ssize_t count = read(descriptor.get(), buffer, size);
  if (count > 0) return {static_cast<std::size_t>(count), ERROR_SUCCESS};
  if (count < 0 && errno != EAGAIN && errno != EINTR) return {0, UseError(errno)};
  // A line that hung up reads as 0 bytes, just as the end of a timed read.
  if (count == 0 && HungUp()) return {0, ERROR_DEVICE_NOT_CONNECTED};
  return {};
}

Transfer TtyLine::Read(void* buffer, std::size_t size) { return ReadFrom(io_, buffer, size); }

std::chrono::milliseconds TtyLine::TimedReadSpan() const { return kDriverReadSpan; }

Transfer TtyLine::TimedRead(void* buffer, std::size_t size) {
  read_limit_->Begin();
  const Transfer transfer = ReadFrom(timed_, buffer, size);
  if (read_limit_->End()) MakeLineRaw();
  return transfer;
}

Transfer TtyLine::Write(const void* data, std::size_t size) {
  const ssize_t count = write(io_.get(), data, size);
  if (count >= 0) return {static_cast<std::size_t>(count), ERROR_SUCCESS};
  if (errno == EAGAIN || errno == EINTR) return {};
  return {0, UseError(errno)};
}

LineHealth TtyLine::WaitFor(short events, Deadline deadline) {
  pollfd waited[] = {{io_.get(), events, 0}, {wake_.get(), POLLIN, 0}};
  const int ready = PollUntil(waited, deadline);
  if (ready <= 0) return LineHealth::kUp;
  const bool gone = (waited[0].revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
  return gone ? LineHealth::kGone : LineHealth::kUp;
}

LineHealth TtyLine::WaitReadable(Deadline deadline) { return WaitFor(POLLIN, deadline); }

LineHealth TtyLine::WaitWritable(Deadline deadline) { return WaitFor(POLLOUT, deadline); }

void TtyLine::Interrupt() { eventfd_write(wake_.get(), 1); }

DWORD TtyLine::PurgeInput() {
  return Control(io_, TCFLSH, TCIFLUSH) == 0 ? ERROR_SUCCESS : UseError(errno);
}

DWORD TtyLine::PurgeOutput() {
  return Control(io_, TCFLSH, TCOFLUSH) == 0 ? ERROR_SUCCESS : UseError(errno);
}

DWORD TtyLine::ModemStatus(DWORD* status) {
  *status = 0;
  int lines = 0;
  if (Control(io_, TIOCMGET, &lines) != 0) {
    return LacksRequest(errno) ? ERROR_SUCCESS : UseError(errno);
  }
  for (const ModemLine& row : kModemLines) {
    if ((lines & row.line) != 0) *status |= row.status;
  }
  return ERROR_SUCCESS;
}

DWORD TtyLine::Ring(RingState* state) {
  serial_icounter_struct counters{};
  const bool counts = Control(io_, TIOCGICOUNT, &counters) == 0;
  if (!counts && !LacksRequest(errno)) return UseError(errno);
  *state = {static_cast<std::uint32_t>(counters.rng), false};
  if (state->rings != 0) return ERROR_SUCCESS;
  DWORD status = 0;
  const DWORD error = ModemStatus(&status);
  state->on = (status & MS_RING_ON) != 0;
  return error;
}

}  // namespace vt63x::kernel
