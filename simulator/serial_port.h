// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_SERIAL_PORT_H
#define VT63X_SIMULATOR_SERIAL_PORT_H

// The chip's end of the serial line. Every access is
//
//   read    host: address | 0x80              chip: value
//   write   host: address & 0x7F, then data   chip: address & 0x7F
//
// and there is nothing else to hold on to: after the address of a write, whatever comes next and
// however late is the data, so a chip that lost a byte stays out of step until its echo shows it.

#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

#include "simulator/chip.h"
#include "simulator/faults.h"

namespace vt63x {

// One thread at a time; the counters alone may be read from any thread at any time.
class ChipSerialPort {
 public:
  // `chip` is the caller's and outlives the port.
  explicit ChipSerialPort(Chip& chip, std::vector<Fault> faults = {});

  // A byte has arrived intact. The echo of a write to the serial speed register still leaves at
  // the old rate; the port then listens at the new one.
  LineAnswer OnByte(std::uint8_t byte);

  // At which the port listens now, bits per second.
  std::uint32_t BitRate() const { return chip_.SerialRate(); }

  // Accesses carried out, whatever became of their answers.
  std::uint64_t reads() const { return reads_.load(std::memory_order_relaxed); }
  std::uint64_t writes() const { return writes_.load(std::memory_order_relaxed); }

 private:
  Access Carry(std::uint8_t byte);

  Chip& chip_;
  FaultPlan faults_;
  std::optional<std::uint8_t> write_address_;  // of a write whose data is still to come
  std::atomic<std::uint64_t> reads_{0};
  std::atomic<std::uint64_t> writes_{0};
};

}  // namespace vt63x

#endif
