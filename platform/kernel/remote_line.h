// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_REMOTE_LINE_H
#define VT63X_PLATFORM_KERNEL_REMOTE_LINE_H

// A serial port of another machine, behind an access server that speaks RFC 2217.
//
// What goes over the connection stays in order, so that a bit rate applies to the bytes behind it
// and a purge to those before it. Settings are confirmed by the server; a purge is not waited for,
// what arrives before its confirmation is thrown away. The server says when a modem line changes.
//
// The connection is the exclusive use of the port: a server serves one client.

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/kernel/file_descriptor.h"
#include "platform/kernel/line_source.h"
#include "rfc2217/telnet.h"

namespace vt63x::kernel {

class RemoteLine final : public LineSource, private rfc2217::Listener {
 public:
  // `name` is "rfc2217://host:port". Takes 5 s at most. Beside the errors of ConnectTcp:
  // ERROR_INVALID_PARAMETER (no such name), ERROR_ACCESS_DENIED (the server closes the connection:
  // its port is in use) and ERROR_NOT_SUPPORTED (it does not speak RFC 2217).
  static DWORD Open(const std::string& name, std::unique_ptr<LineSource>* line);

  // Waits up to 2 s for the server to confirm the rate.
  DWORD Configure(DWORD bit_rate) override;
  Transfer Read(void* buffer, std::size_t size) override;
  Transfer Write(const void* data, std::size_t size) override;
  std::chrono::milliseconds TimedReadSpan() const override { return {}; }
  Transfer TimedRead(void*, std::size_t) override { return {}; }
  LineHealth WaitReadable(Deadline deadline) override;
  LineHealth WaitWritable(Deadline deadline) override;
  void Interrupt() override;
  DWORD PurgeInput() override;
  DWORD PurgeOutput() override;
  DWORD ModemStatus(DWORD* status) override;
  DWORD Ring(RingState* state) override;

 private:
  RemoteLine() = default;

  DWORD Negotiate(Deadline deadline);
  // Takes in what has arrived, until `done` or the deadline; false when the deadline came first or
  // the line is gone.
  template <typename Done>
  bool TakeInUntil(const Done& done, Deadline deadline);
  void TakeIn();
  void Flush();
  LineHealth WaitFor(short events, Deadline deadline);
  bool Purging();

  void OnData(rfc2217::Bytes data) override;
  void OnNegotiation(rfc2217::Negotiation what, std::uint8_t option) override;
  void OnComPort(std::uint8_t command, rfc2217::Bytes value) override;
  void TakeModemState(std::uint8_t state);

  FileDescriptor socket_;
  FileDescriptor wake_;  // becomes readable for good with Interrupt
  rfc2217::Decoder decoder_;
  std::string outgoing_;            // what the socket has not taken yet
  std::vector<std::uint8_t> data_;  // received, from position next_ on
  std::size_t next_ = 0;
  std::atomic<bool> has_data_ = false;  // for the threads that wait
  std::atomic<bool> has_unsent_ = false;
  std::atomic<bool> lost_ = false;

  // What the server has said so far.
  bool accepted_ = false;
  bool refused_ = false;
  int rates_unconfirmed_ = 0;
  std::uint32_t confirmed_rate_ = 0;
  int purges_unconfirmed_ = 0;
  Deadline purge_limit_ = Deadline::Never();
  std::uint8_t modem_state_ = 0;
  std::uint32_t rings_ = 0;  // that have ended
};

}  // namespace vt63x::kernel

#endif
