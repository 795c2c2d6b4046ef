// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_LINE_SOURCE_H
#define VT63X_PLATFORM_KERNEL_LINE_SOURCE_H

// The line behind a port: a serial device of this machine, or anything that behaves like one.
//
// Errors are Win32 codes. ERROR_DEVICE_NOT_CONNECTED says that the line is gone for good; its port
// asks nothing of it afterwards.
//
// Threads: the port makes TimedRead, WaitReadable and WaitWritable calls with none of its locks
// held, so that they may run at the same time as any other function, but not twice at the same
// time. All other calls come one at a time and must not wait, Configure excepted: a line that is
// far away may take 2 s to confirm its rate.

#include <windows.h>

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "platform/kernel/deadline.h"

namespace vt63x::kernel {

// Outcome of one attempt to move bytes: no bytes and no error when nothing can be moved just now.
struct Transfer {
  std::size_t bytes = 0;
  DWORD error = ERROR_SUCCESS;
};

// The ring indicator at one moment: the rings that the driver has counted, which misses no pulse,
// and the level for as long as it has counted none.
struct RingState {
  std::uint32_t rings = 0;  // wraps; 0 for a driver that does not count
  bool on = false;          // looked at while `rings` is 0
};

// Tells rings from states of the line.
//
// There are drivers that have a counter and never move it, so a counter at 0 proves nothing: until
// it has moved, each change of the level is a ring. A driver that does count does so when a ring
// ends; where its first one was reported when it began, its end is not reported again.
class RingWatch {
 public:
  void Start(const RingState& now) {
    last_ = now;
    begin_reported_ = false;
  }

  // Whether the line rang since Start, or since this said so last.
  bool Rang(const RingState& now) {
    const std::uint32_t counted = now.rings - last_.rings;
    const bool level_changed = now.rings == 0 && now.on != last_.on;
    if (counted == 0 && !level_changed) return false;
    const bool known = begin_reported_ && counted == 1;
    begin_reported_ = counted == 0 && now.on;
    last_ = now;
    return !known;
  }

 private:
  RingState last_;
  bool begin_reported_ = false;
};

enum class LineHealth { kUp, kGone };

class LineSource {
 public:
  LineSource() = default;
  virtual ~LineSource() = default;
  LineSource(const LineSource&) = delete;
  LineSource& operator=(const LineSource&) = delete;

  // The bit rate of settings that have been found valid; ERROR_INVALID_PARAMETER for a rate that
  // the line cannot do. DTR and RTS go off.
  virtual DWORD Configure(DWORD bit_rate) = 0;

  // Moves what can be moved without waiting. `size` is at least 1.
  virtual Transfer Read(void* buffer, std::size_t size) = 0;
  virtual Transfer Write(const void* data, std::size_t size) = 0;

  // How long TimedRead waits at most. Zero: the line has no such read.
  virtual std::chrono::milliseconds TimedReadSpan() const = 0;

  // Waits for the first byte in the driver itself and returns what is there: one system call where
  // waiting and reading would be two. May return with nothing early.
  virtual Transfer TimedRead(void* buffer, std::size_t size) = 0;

  // Wait until bytes can be moved, the line is gone, or the deadline; may return early.
  virtual LineHealth WaitReadable(Deadline deadline) = 0;
  virtual LineHealth WaitWritable(Deadline deadline) = 0;

  // The port is being closed: waits end now, and any later wait at once.
  virtual void Interrupt() = 0;

  // Throws away what was received but not read, or written but not sent.
  virtual DWORD PurgeInput() = 0;
  virtual DWORD PurgeOutput() = 0;

  // MS_*_ON bits; 0 for a line that has no modem lines.
  virtual DWORD ModemStatus(DWORD* status) = 0;
  virtual DWORD Ring(RingState* state) = 0;
};

}  // namespace vt63x::kernel

#endif
