// SPDX-License-Identifier: MIT

#ifndef VT63X_CLI_BREAK_GATE_H
#define VT63X_CLI_BREAK_GATE_H

#include "cli/break_off.h"
#include "frontend/serial_bus_interface.h"

namespace vt63x {

// Over the bus of a chip: once the program is to end, a register access that has begun is finished
// and no other begins, so that operations of many accesses (a dump, a card's) end soon and leave
// the chip's byte protocol in step. The accesses refused give HFL_LINK_FAILED. One thread.
class BreakGate final : public SerialBusInterface {
 public:
  explicit BreakGate(SerialBusInterface& lower) : lower_(lower) {}

  HFLSTATUS WriteByte(bus_byte_param* param) override {
    if (!write_begun_ && BrokenOff() != EXIT_ALL_DONE) return HFL_LINK_FAILED;
    constexpr std::uint8_t kReadFlag = 0x80;
    const bool is_address = !write_begun_ && (param->data & kReadFlag) == 0;
    const HFLSTATUS status = lower_.WriteByte(param);
    write_begun_ = is_address && status == HFL_SUCCESS;
    return status;
  }
  HFLSTATUS ReadByte(bus_byte_param* param) override { return lower_.ReadByte(param); }

 private:
  SerialBusInterface& lower_;
  bool write_begun_ = false;  // its address is out, its data is not
};

}  // namespace vt63x

#endif
