// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_STATE_PORT_HANDLE_H
#define VT63X_SHELL_STATE_PORT_HANDLE_H

#include <windows.h>

#include <atomic>
#include <cstdint>

namespace vt63x {

// The handle of the open port, assigned and read like a HANDLE; null while the port is closed. Any
// thread.
//
// Transfers and settings hold AppState::stack_lock. A wait for the ring indicator, which may take a
// minute, holds a PortUse instead. Who closes the port assigns null, lets the waits end and then
// closes the handle: from there on its value may stand for another port.
class PortHandle {
 public:
  PortHandle() = default;
  PortHandle(const PortHandle&) = delete;
  PortHandle& operator=(const PortHandle&) = delete;

  PortHandle& operator=(HANDLE handle) {
    handle_ = handle;
    ++changes_;  // after the handle: who finds this count has that handle or a later one
    return *this;
  }
  operator HANDLE() const { return handle_; }

  bool in_use() const { return users_ != 0; }

 private:
  friend class PortUse;

  std::atomic<HANDLE> handle_ = nullptr;
  std::atomic<std::uint32_t> changes_ = 0;
  std::atomic<int> users_ = 0;
};

// The port as one wait finds it. Its handle is not closed while the PortUse lives, unless that
// takes longer than who closes the port has patience (serial/port_control.h).
class PortUse {
 public:
  explicit PortUse(PortHandle& port) : port_(port) {
    ++port.users_;  // before the handle is looked at: who takes it away then waits
    changes_ = port.changes_;
    handle_ = port.handle_;
  }
  ~PortUse() { --port_.users_; }
  PortUse(const PortUse&) = delete;
  PortUse& operator=(const PortUse&) = delete;

  HANDLE handle() const { return handle_; }

  // False once the port has been closed or another one opened.
  bool current() const { return port_.changes_ == changes_; }

 private:
  PortHandle& port_;
  std::uint32_t changes_ = 0;
  HANDLE handle_ = nullptr;
};

}  // namespace vt63x

#endif
