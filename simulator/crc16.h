// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_CRC16_H
#define VT63X_SIMULATOR_CRC16_H

// The 16-bit check sums of the chip and of the cards, all with the polynomial x^16 + x^12 + x^5
// + 1. Pure functions.

#include <cstdint>
#include <span>

namespace vt63x {

enum class BitOrder { kLowestFirst, kHighestFirst };

// Of `data` with `preset` in the shift register at the start. With kLowestFirst every byte goes in
// lowest bit first and the register is read with the bits in that order, as on the air; with
// kHighestFirst both are the other way round.
std::uint16_t Crc16(std::span<const std::uint8_t> data, std::uint16_t preset, BitOrder order);

// CRC_A of ISO/IEC 14443-3; on the air its low byte goes first.
inline std::uint16_t CrcA(std::span<const std::uint8_t> data) {
  return Crc16(data, 0x6363, BitOrder::kLowestFirst);
}

}  // namespace vt63x

#endif
