// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_SIMULATED_BUS_H
#define VT63X_SIMULATOR_SIMULATED_BUS_H

// A simulated chip right below register control, in the same process and without a line: the bus
// that stands in for the serial port. It never waits. Time is counted instead: a read that would
// have run into the port's time-out of 500 ms returns HFL_LINK_FAILED at once and moves the bus's
// own clock on by 500 ms; everything else takes no time.

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "frontend/serial_bus_interface.h"
#include "simulator/serial_port.h"

namespace vt63x {

// A byte as it left (to_chip) or as it was heard by the host.
struct RecordedByte {
  bool to_chip;
  std::uint8_t byte;

  bool operator==(const RecordedByte&) const = default;
};

// One thread at a time, as any bus.
class SimulatedBus final : public SerialBusInterface {
 public:
  static constexpr std::uint32_t kReadTimeoutMs = 500;
  // Answers beyond this many unread bytes are lost, as in a serial driver's buffer.
  static constexpr std::size_t kBufferSize = 4096;

  // `chip` is the caller's and outlives the bus.
  explicit SimulatedBus(Chip& chip, std::vector<Fault> faults = {});

  // HFL_LINK_FAILED once the line has hung up, else 0: sending succeeds whether or not the chip
  // makes anything of the byte.
  HFLSTATUS WriteByte(bus_byte_param* param) override;
  // 0 and the next byte heard; HFL_LINK_FAILED, `data` untouched, when none comes in time or the
  // line has hung up. An answer later than the time-out is there for a later read.
  HFLSTATUS ReadByte(bus_byte_param* param) override;

  // Bit rate of the host's end, bits per second; 9600 at the start. Bytes that cross between two
  // rates arrive changed or not at all. Answers are heard at the rate of the moment when the chip
  // was asked.
  void SetHostRate(std::uint32_t bits_per_second) { host_rate_ = bits_per_second; }

  // Throws away what has arrived and was not read. An answer that is late is still to come, as
  // it would be from a real line.
  void Purge();

  bool hung_up() const { return hung_up_; }
  // Register accesses that the chip carried out.
  std::uint64_t reads() const { return port_.reads(); }
  std::uint64_t writes() const { return port_.writes(); }

  // From now on keeps the bytes sent and read, up to `limit` of them; further ones are not kept.
  void StartRecording(std::size_t limit);
  const std::vector<RecordedByte>& recording() const { return recording_; }

 private:
  struct PendingByte {
    std::uint8_t byte;
    std::uint64_t due_ms;
  };

  void Queue(const LineAnswer& answer);
  void Record(bool to_chip, std::uint8_t byte);

  ChipSerialPort port_;
  std::uint32_t host_rate_ = 9600;
  std::uint64_t now_ms_ = 0;
  bool hung_up_ = false;
  std::deque<PendingByte> pending_;  // in the order of arrival; due times never fall
  std::size_t recording_limit_ = 0;
  std::vector<RecordedByte> recording_;
};

}  // namespace vt63x

#endif
