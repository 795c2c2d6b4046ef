// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_SERIAL_SPEED_H
#define VT63X_SIMULATOR_SERIAL_SPEED_H

// The bit rate of the chip's serial host interface, made from its 27.12 MHz clock by the value of
// its serial speed register: with T0 = bits 7 to 5 and T1 = bits 4 to 0,
//
//   T0 = 0   clock / (T1 + 1)
//   else     clock / ((T1 + 33) * 2^(T0 - 1))
//
// Pure functions; rates are in bits per second.

#include <cstdint>

namespace vt63x {

inline constexpr std::uint8_t kSerialSpeedAtPowerUp = 0xEB;  // 9600 bps, nominally

// Rounded to the nearest integer; never 0.
constexpr std::uint32_t BitRateOf(std::uint8_t speed) {
  constexpr std::uint32_t kClockHz = 27'120'000;
  const std::uint32_t t0 = speed >> 5;
  const std::uint32_t t1 = speed & 0x1FU;
  const std::uint32_t divisor = t0 == 0 ? t1 + 1 : (t1 + 33) << (t0 - 1);
  return (kClockHz + divisor / 2) / divisor;
}

// Whether two rates are near enough for every byte to get across: at most 3 % of the lower one
// apart. A rate of 0 (a line that is switched off) matches nothing.
constexpr bool RatesMatch(std::uint32_t one, std::uint32_t other) {
  const std::uint64_t low = one < other ? one : other;
  const std::uint64_t high = one < other ? other : one;
  return low != 0 && (high - low) * 100 <= low * 3;
}

}  // namespace vt63x

#endif
