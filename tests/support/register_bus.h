// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_SUPPORT_REGISTER_BUS_H
#define VT63X_TESTS_SUPPORT_REGISTER_BUS_H

#include <deque>
#include <functional>

#include "frontend/serial_bus_interface.h"

namespace vt63x {

// The least that answers like a chip: 128 registers behind the serial register protocol.
class RegisterBus final : public SerialBusInterface {
 public:
  HFLSTATUS WriteByte(bus_byte_param* param) override {
    if (on_transfer) on_transfer();
    if (refuse_writes) return HFL_LINK_FAILED;
    if (address_ >= 0) {
      registers[address_] = param->data;
      answers_.push_back(static_cast<std::uint8_t>(address_));
      address_ = -1;
    } else if ((param->data & 0x80) != 0) {
      answers_.push_back(registers[param->data & 0x7F]);
    } else {
      address_ = param->data;
    }
    return HFL_SUCCESS;
  }
  HFLSTATUS ReadByte(bus_byte_param* param) override {
    if (on_transfer) on_transfer();
    if (silent) answers_.clear();
    if (answers_.empty()) return HFL_LINK_FAILED;
    param->data = answers_.front();
    answers_.pop_front();
    return HFL_SUCCESS;
  }

  std::uint8_t registers[128] = {};
  bool silent = false;
  bool refuse_writes = false;
  std::function<void()> on_transfer;

 private:
  int address_ = -1;  // of a write whose data byte is still to come
  std::deque<std::uint8_t> answers_;
};

}  // namespace vt63x

#endif
