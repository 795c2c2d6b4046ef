// SPDX-License-Identifier: MIT

#ifndef VT63X_BENCH_REGISTER_STACK_H
#define VT63X_BENCH_REGISTER_STACK_H

#include <string>

#include "frontend/register_control.h"
#include "serial/port_control.h"
#include "serial/serial_bus.h"

namespace vt63x {

// The stack as the program builds it, on COM1:.
class RegisterStack {
 public:
  explicit RegisterStack(const std::string& device) {
    bus_.Init(SerialBusOpen);
    registers_.Init(RegisterControlOpen, &bus_);
    state_.component_ptrs.serial_bus = &bus_;
    state_.component_ptrs.register_control = &registers_;
    action_.app_state = &state_;
    SetEnvironmentVariableA("VT63X_COM1", device.c_str());
    OpenPort(&action_);
  }
  ~RegisterStack() { ClosePort(&action_); }

  bool Read() {
    getreg_param param{0x37, 0, nullptr};
    return registers_.GetRegister(&param) == HFL_SUCCESS && param.data == 0x91;
  }
  bool Write() {
    setreg_param param{0x2B, 0xA6, nullptr};
    return registers_.SetRegister(&param) == HFL_SUCCESS;
  }

 private:
  AppState state_;
  action_param action_{};
  SerialBusWrapper bus_;
  RegisterControlWrapper registers_;
};

}  // namespace vt63x

#endif
