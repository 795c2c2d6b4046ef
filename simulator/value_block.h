// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_VALUE_BLOCK_H
#define VT63X_SIMULATOR_VALUE_BLOCK_H

// A block that holds a number, so often that a torn one shows: the value, its inverse and the value
// again in 4 bytes each, lowest byte first, and an address byte, its inverse, and both again. Pure
// functions.

#include <array>
#include <cstdint>
#include <optional>

#include "simulator/access_conditions.h"

namespace vt63x {

struct ValueBlock {
  std::int32_t value = 0;
  std::uint8_t address = 0;

  bool operator==(const ValueBlock&) const = default;
};

// Nothing when the copies disagree: this is no value block.
std::optional<ValueBlock> UnpackValue(BlockView block);
std::array<std::uint8_t, kBlockSize> PackValue(const ValueBlock& value);

// The value with `amount`, 4 bytes lowest byte first and never negative, added or taken away;
// nothing when that does not fit 32 bits with a sign.
std::optional<std::int32_t> AddAmount(std::int32_t value, std::span<const std::uint8_t, 4> amount);
std::optional<std::int32_t> TakeAmount(std::int32_t value, std::span<const std::uint8_t, 4> amount);

}  // namespace vt63x

#endif
