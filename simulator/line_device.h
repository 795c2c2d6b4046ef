// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_LINE_DEVICE_H
#define VT63X_SIMULATOR_LINE_DEVICE_H

// What a client opens as its serial port, from the side of whoever serves the line. One thread at a
// time; nothing waits.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>

namespace vt63x {

class LineDevice {
 public:
  // kReplaced: closed, and another one is there already.
  enum class Change { kNone, kOpened, kClosed, kReplaced };

  static constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();

  virtual ~LineDevice() = default;
  LineDevice(const LineDevice&) = delete;
  LineDevice& operator=(const LineDevice&) = delete;

  // What a client calls the device; constant once it is open.
  virtual const std::string& path() const = 0;

  // Readable when bytes from the client have come; -1 when there is none to come from.
  virtual int client_fd() const = 0;
  // Readable when a client has come or gone; then call TakeChange.
  virtual int change_fd() const = 0;
  // A change that change_fd does not show.
  virtual bool HasChange() const { return false; }
  // What has become of the client since the last call.
  virtual Change TakeChange() = 0;
  // client_fd shows an error. False when the device is gone with it.
  virtual bool SurvivesError() { return false; }

  // True while some client is sure to be there, whatever TakeChange says.
  virtual bool IsLocked() const { return false; }
  // Throws away the answers in the device that nobody has read.
  virtual void DropUnreadAnswers() {}
  // Lets the next client open the device though the last one wanted it for itself.
  virtual void EndExclusiveUse() {}

  // Bit rate that the client has set, bits per second; 0 when the line is switched off.
  virtual std::uint32_t HostRate() const = 0;

  // Read: how many bytes came, perhaps none. Write: how many went to the client; the rest found its
  // buffer full.
  virtual std::size_t Read(std::span<std::uint8_t> buffer) = 0;
  virtual std::size_t Write(std::span<const std::uint8_t> bytes) = 0;
  // Whether something is left to be sent when client_fd is ready for it, and the sending.
  virtual bool HasUnsent() const { return false; }
  virtual void SendRest() {}

  // Time on the monotonic clock, nanoseconds, at which OnTime is to be called.
  virtual std::int64_t due() const { return kNever; }
  virtual void OnTime() {}

  // Takes the line away: the client's reads and writes fail from now on, and the path is gone.
  virtual void HangUp() = 0;

 protected:
  LineDevice() = default;
};

}  // namespace vt63x

#endif
