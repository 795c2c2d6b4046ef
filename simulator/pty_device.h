// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_PTY_DEVICE_H
#define VT63X_SIMULATOR_PTY_DEVICE_H

// The pseudo terminal under a simulated line: what the client opens as its serial port.
//
// The server keeps the client's side open as well, for two jobs that only that side can do when a
// client has closed: to take back exclusive use, which the kernel lets stick until somebody on
// that side gives it up, so that the next client would find the device busy; and to throw away the
// answers that the client left unread, which the next one would take for its own. It never reads
// from that side or writes to it. Openings and closings show as events on the device's path. A
// client that opens the device within the moment this takes may still be refused, unless the one
// before it gave up exclusive use itself.
//
// One thread at a time.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "simulator/line_device.h"
#include "simulator/unique_fd.h"

namespace vt63x {

class PtyDevice final : public LineDevice {
 public:
  // Makes the device, raw and at 9600 bps before anybody can know its path. False and a line for
  // the user in `error` on failure.
  bool Open(std::string& error);

  const std::string& path() const override { return path_; }
  int client_fd() const override { return master_.get(); }
  int change_fd() const override { return watch_.get(); }
  Change TakeChange() override;

  // True while some program holds the device's advisory lock, as those do that share a serial port
  // with nobody: whoever closed the device then was refused it, and the client is still there.
  bool IsLocked() const override;
  void DropUnreadAnswers() override;
  void EndExclusiveUse() override;
  std::uint32_t HostRate() const override;
  std::size_t Read(std::span<std::uint8_t> buffer) override;
  std::size_t Write(std::span<const std::uint8_t> bytes) override;
  void HangUp() override;

 private:
  UniqueFd master_;
  UniqueFd client_side_;
  UniqueFd watch_;
  std::string path_;
};

}  // namespace vt63x

#endif
