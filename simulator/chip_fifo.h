// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_CHIP_FIFO_H
#define VT63X_SIMULATOR_CHIP_FIFO_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "simulator/fixed_queue.h"

namespace vt63x {

// The chip's FIFO: bytes to be sent and bytes received share it.
class ChipFifo {
 public:
  static constexpr std::size_t kSize = 64;

  std::uint8_t level() const { return static_cast<std::uint8_t>(kSize - queue_.room()); }

  // False when it is full; the byte is lost.
  bool Push(std::uint8_t byte) { return queue_.Push(byte); }
  // 0 when it is empty.
  std::uint8_t Pop() {
    if (queue_.empty()) return 0;
    const std::uint8_t byte = queue_.Front();
    queue_.Pop();
    return byte;
  }
  // Everything, in the order of arrival.
  std::vector<std::uint8_t> TakeAll() {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(level());
    while (!queue_.empty()) bytes.push_back(Pop());
    return bytes;
  }
  void Clear() { queue_.Clear(); }

 private:
  FixedQueue<std::uint8_t, kSize> queue_;
};

}  // namespace vt63x

#endif
