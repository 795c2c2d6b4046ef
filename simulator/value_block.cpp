// SPDX-License-Identifier: MIT

#include "simulator/value_block.h"

#include <limits>

namespace vt63x {
namespace {

std::uint32_t LowestByteFirst(std::span<const std::uint8_t, 4> bytes) {
  return bytes[0] | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
         std::uint32_t{bytes[3]} << 24;
}

std::optional<std::int32_t> Fitting(std::int64_t value) {
  if (value < std::numeric_limits<std::int32_t>::min() ||
      value > std::numeric_limits<std::int32_t>::max()) {
    return std::nullopt;
  }
  return static_cast<std::int32_t>(value);
}

}  // namespace

std::optional<ValueBlock> UnpackValue(BlockView block) {
  const std::uint32_t value = LowestByteFirst(block.subspan<0, 4>());
  const std::uint8_t address = block[12];
  const std::uint8_t inverse = static_cast<std::uint8_t>(~address);
  const bool valid = LowestByteFirst(block.subspan<4, 4>()) == ~value &&
                     LowestByteFirst(block.subspan<8, 4>()) == value && block[13] == inverse &&
                     block[14] == address && block[15] == inverse;
  if (!valid) return std::nullopt;
  return ValueBlock{static_cast<std::int32_t>(value), address};
}

std::array<std::uint8_t, kBlockSize> PackValue(const ValueBlock& value) {
  std::array<std::uint8_t, kBlockSize> block{};
  const auto bits = static_cast<std::uint32_t>(value.value);
  for (unsigned index = 0; index < 4; ++index) {
    const auto byte = static_cast<std::uint8_t>(bits >> (8 * index));
    block[index] = block[8 + index] = byte;
    block[4 + index] = static_cast<std::uint8_t>(~byte);
  }
  block[12] = block[14] = value.address;
  block[13] = block[15] = static_cast<std::uint8_t>(~value.address);
  return block;
}

std::optional<std::int32_t> AddAmount(std::int32_t value, std::span<const std::uint8_t, 4> amount) {
  return Fitting(std::int64_t{value} + LowestByteFirst(amount));
}

std::optional<std::int32_t> TakeAmount(std::int32_t value,
                                       std::span<const std::uint8_t, 4> amount) {
  return Fitting(std::int64_t{value} - LowestByteFirst(amount));
}

}  // namespace vt63x
