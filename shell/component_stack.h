// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_COMPONENT_STACK_H
#define VT63X_SHELL_COMPONENT_STACK_H

#include <array>
#include <cstdint>

#include "contactless/card_memory.h"
#include "contactless/exchange.h"
#include "contactless/iso14443a.h"
#include "contactless/operation_control.h"
#include "frontend/register_control.h"
#include "serial/serial_bus.h"
#include "shell/state/app_state.h"

namespace vt63x {

// The component stack of a program, built bottom-up when it starts and alive until it ends.
class ComponentStack {
 public:
  // Over the serial bus, or over `bus` when a simulated chip takes its place; `bus` is the
  // caller's. Stores the wrappers in `state`.
  explicit ComponentStack(AppState& state, SerialBusInterface* bus = nullptr);

 private:
  std::array<std::uint8_t, 255> trxbuffer_{};
  SerialBusWrapper serial_bus_;
  RegisterControlWrapper register_control_;
  ExchangeWrapper exchange_;
  OperationControlWrapper operation_control_;
  Iso14443AWrapper iso14443a_;
  CardMemoryWrapper card_memory_;
};

}  // namespace vt63x

#endif
