// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_UART_H
#define VT63X_SIMULATOR_UART_H

// What a receiver makes of a byte that was sent at a bit rate which need not be its own.

#include <cstdint>
#include <optional>

#include "simulator/serial_speed.h"

namespace vt63x {

// The byte as a receiver at `receiver_rate` hears it, or nothing when its start bit is gone by the
// middle of the receiver's start bit or its stop bit is low (a framing error). On the line are a
// start bit (low), eight data bits with the lowest first, a stop bit (high) and idle line after it.
// The receiver samples each of its bits once, in the middle, counted from the falling edge of the
// start bit. It takes one byte sent for one byte at most: after a framing error it waits for the
// line to be idle. Rates are in bits per second; with a rate of 0 nothing is heard.
constexpr std::optional<std::uint8_t> HearByte(std::uint8_t sent, std::uint32_t sender_rate,
                                               std::uint32_t receiver_rate) {
  if (sender_rate == 0 || receiver_rate == 0) return std::nullopt;
  if (RatesMatch(sender_rate, receiver_rate)) return sent;  // what sampling would give, quicker

  constexpr unsigned kStopBit = 9;
  const unsigned frame = (1U << kStopBit) | (unsigned{sent} << 1);
  const auto sample = [&](unsigned receiver_bit) {
    const std::uint64_t half_bits = 2 * receiver_bit + 1;
    const std::uint64_t sender_bit = half_bits * sender_rate / (2ULL * receiver_rate);
    return sender_bit > kStopBit ? 1U : (frame >> sender_bit) & 1U;
  };
  if (sample(0) != 0 || sample(kStopBit) == 0) return std::nullopt;
  unsigned heard = 0;
  for (unsigned bit = 0; bit < 8; ++bit) heard |= sample(bit + 1) << bit;
  return static_cast<std::uint8_t>(heard);
}

}  // namespace vt63x

#endif
