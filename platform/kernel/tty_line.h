// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_TTY_LINE_H
#define VT63X_PLATFORM_KERNEL_TTY_LINE_H

// A serial device of this machine: a UART, a USB adapter or a pseudo terminal.
//
// The device is opened twice, because blocking and non-blocking reading are a property of the
// opening and not of the call: TimedRead blocks in the driver, everything else never does.
//
// The line's settings are everybody's: another program that opens it, which root always may, can
// change them at any time. The wait of a TimedRead is therefore bounded twice, by the driver and by
// a ReadLimit; when the latter had to end one, the line is made raw again. Its bit rate is not
// touched.

#include <windows.h>

#include <memory>
#include <optional>
#include <string>

#include "platform/kernel/file_descriptor.h"
#include "platform/kernel/line_source.h"
#include "platform/kernel/read_limit.h"

namespace vt63x::kernel {

class TtyLine final : public LineSource {
 public:
  // Opens a device exclusively, in raw mode, with stale input thrown away. ERROR_FILE_NOT_FOUND,
  // ERROR_ACCESS_DENIED (in use), ERROR_PRIVILEGE_NOT_HELD or ERROR_INVALID_PARAMETER (not a serial
  // line; the master side of a pseudo terminal is none).
  static DWORD Open(const std::string& path, std::unique_ptr<LineSource>* line);

  ~TtyLine() override;

  DWORD Configure(DWORD bit_rate) override;
  Transfer Read(void* buffer, std::size_t size) override;
  Transfer Write(const void* data, std::size_t size) override;
  std::chrono::milliseconds TimedReadSpan() const override;
  Transfer TimedRead(void* buffer, std::size_t size) override;
  LineHealth WaitReadable(Deadline deadline) override;
  LineHealth WaitWritable(Deadline deadline) override;
  void Interrupt() override;
  DWORD PurgeInput() override;
  DWORD PurgeOutput() override;
  DWORD ModemStatus(DWORD* status) override;
  DWORD Ring(RingState* state) override;

 private:
  TtyLine() = default;

  DWORD OpenBoth(const std::string& path);
  DWORD Claim();
  DWORD SetUp();
  bool MakeLineRaw();
  bool HungUp() const;
  Transfer ReadFrom(const FileDescriptor& descriptor, void* buffer, std::size_t size);
  LineHealth WaitFor(short events, Deadline deadline);

  FileDescriptor io_;     // non-blocking; carries the lock
  FileDescriptor timed_;  // blocking
  FileDescriptor wake_;   // becomes readable for good with Interrupt
  bool claimed_ = false;  // marked exclusive
  std::optional<ReadLimit> read_limit_;
};

}  // namespace vt63x::kernel

#endif
