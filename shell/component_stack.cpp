// SPDX-License-Identifier: MIT

#include "shell/component_stack.h"

namespace vt63x {

ComponentStack::ComponentStack(AppState& state, SerialBusInterface* bus) {
  constexpr std::uint8_t kReady = 1;
  serial_bus_.Init(SerialBusOpen);
  register_control_.Init(RegisterControlOpen, bus != nullptr ? bus : &serial_bus_);
  exchange_.Init(ExchangeOpen, &register_control_, kReady);
  operation_control_.Init(OperationControlOpen, &register_control_);
  iso14443a_.Init(Iso14443AOpen, &register_control_, kReady);
  card_memory_.Init(&exchange_, trxbuffer_.data());
  const LockGuard lock(state.stack_lock);
  state.component_ptrs = {&card_memory_, &iso14443a_,        &operation_control_,
                          &exchange_,    &register_control_, &serial_bus_};
}

}  // namespace vt63x
