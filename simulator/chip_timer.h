// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_CHIP_TIMER_H
#define VT63X_SIMULATOR_CHIP_TIMER_H

#include <cstdint>

namespace vt63x {

// The chip's timer: counts from its reload value down to 0 and expires one step later. A step is
// 2 * prescaler + 1 periods of 13.56 MHz. Settings are those of the moment of the start. Times are
// nanoseconds on the chip's clock; no time falls.
class ChipTimer {
 public:
  struct Settings {
    std::uint16_t prescaler = 0;  // 0 to 0x0FFF
    std::uint16_t reload = 0;
    bool restarts = false;  // on expiry, by itself
  };

  void Start(const Settings& settings, std::int64_t now);
  // The counter stays as it is.
  void Stop(std::int64_t now);

  // Whether the timer has expired since it was started or this was last asked.
  bool TakeExpiry(std::int64_t now);
  bool running() const { return running_; }
  // 0 after an expiry without restart.
  std::uint16_t Counter(std::int64_t now) const;

 private:
  Settings settings_;
  bool running_ = false;
  std::int64_t start_ = 0;
  std::uint16_t stopped_at_ = 0;  // the counter while the timer does not run
};

}  // namespace vt63x

#endif
