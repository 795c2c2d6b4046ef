// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_LINE_ANSWER_H
#define VT63X_SIMULATOR_LINE_ANSWER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace vt63x {

// One register access, complete.
struct Access {
  std::uint64_t number = 0;  // counted from 1
  bool is_write = false;
  std::uint8_t address = 0;  // 0x00 to 0x7F
  std::uint8_t value = 0;    // what was written, or what was read
};

// What the chip puts on the line after a byte from the host.
struct LineAnswer {
  static constexpr std::size_t kMaxBytes = 4;

  std::array<std::uint8_t, kMaxBytes> bytes{};
  std::size_t count = 0;
  std::uint32_t rate = 0;      // of these bytes, bits per second
  std::uint32_t delay_ms = 0;  // how late they are
  bool hang_up = false;        // the line goes away now; `count` is 0
  // The access that the byte completed; nothing after the first byte of a write.
  std::optional<Access> access;
};

}  // namespace vt63x

#endif
