// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_LINE_PACE_H
#define VT63X_SIMULATOR_LINE_PACE_H

// When the bytes of a line are through. A byte is ten bits long and each direction carries one
// byte at a time, so a byte waits for the one before it. Pure arithmetic: times are nanoseconds on
// the monotonic clock, rates bits per second, and every time follows from the planned ones, never
// from how late somebody woke up, so that errors do not add up.

#include <algorithm>
#include <cstdint>

namespace vt63x {

class LinePace {
 public:
  // Without pace bytes take no time, and only delays count.
  explicit LinePace(bool paced) : paced_(paced) {}

  // When a byte that the host handed over at `arrival` has reached the chip.
  std::int64_t CompleteAt(std::int64_t arrival, std::uint32_t rate) {
    in_free_ = std::max(arrival, in_free_) + ByteTime(rate);
    return in_free_;
  }

  // When the host has a byte that the chip had ready at `ready`, sent `delay_ms` late.
  std::int64_t DeliverAt(std::int64_t ready, std::uint32_t rate, std::uint32_t delay_ms) {
    const std::int64_t start = ready + std::int64_t{delay_ms} * 1'000'000;
    out_free_ = std::max(start, out_free_) + ByteTime(rate);
    return out_free_;
  }

 private:
  std::int64_t ByteTime(std::uint32_t rate) const {
    constexpr std::int64_t kTenSeconds = 10'000'000'000;
    return paced_ && rate != 0 ? kTenSeconds / rate : 0;
  }

  bool paced_;
  std::int64_t in_free_ = 0;   // when the host's last byte ends
  std::int64_t out_free_ = 0;  // when the chip's last byte ends
};

}  // namespace vt63x

#endif
