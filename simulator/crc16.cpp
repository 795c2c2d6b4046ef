// SPDX-License-Identifier: MIT

#include "simulator/crc16.h"

namespace vt63x {
namespace {

std::uint16_t StepLowestFirst(std::uint16_t crc, std::uint8_t byte) {
  constexpr unsigned kReversedPolynomial = 0x8408;
  unsigned shifted = crc ^ unsigned { byte };
  for (int bit = 0; bit < 8; ++bit) {
    shifted = (shifted & 1) != 0 ? (shifted >> 1) ^ kReversedPolynomial : shifted >> 1;
  }
  return static_cast<std::uint16_t>(shifted);
}

std::uint16_t StepHighestFirst(std::uint16_t crc, std::uint8_t byte) {
  constexpr unsigned kPolynomial = 0x1021;
  unsigned shifted = crc ^ (unsigned{byte} << 8);
  for (int bit = 0; bit < 8; ++bit) {
    shifted = (shifted & 0x8000) != 0 ? (shifted << 1) ^ kPolynomial : shifted << 1;
  }
  return static_cast<std::uint16_t>(shifted);
}

}  // namespace

std::uint16_t Crc16(std::span<const std::uint8_t> data, std::uint16_t preset, BitOrder order) {
  std::uint16_t crc = preset;
  for (const std::uint8_t byte : data) {
    crc =
        order == BitOrder::kLowestFirst ? StepLowestFirst(crc, byte) : StepHighestFirst(crc, byte);
  }
  return crc;
}

}  // namespace vt63x
