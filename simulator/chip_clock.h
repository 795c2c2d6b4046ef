// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_CHIP_CLOCK_H
#define VT63X_SIMULATOR_CHIP_CLOCK_H

#include <chrono>
#include <cstdint>

namespace vt63x {

// What time it is for a chip, which has no thread of its own and looks at its timer whenever one
// of its registers is accessed.
class ChipClock {
 public:
  // The time at the end of an access that takes `access_ns` on the line; nanoseconds since any
  // moment, never falling.
  virtual std::int64_t AfterAccess(std::int64_t access_ns) = 0;

 protected:
  ChipClock() = default;
  ~ChipClock() = default;
  ChipClock(const ChipClock&) = delete;
  ChipClock& operator=(const ChipClock&) = delete;
};

// Time that passes through accesses alone, each of which takes what it would on a real line:
// nobody waits, and every run is like the one before.
class LineTimeClock final : public ChipClock {
 public:
  std::int64_t AfterAccess(std::int64_t access_ns) override { return now_ns_ += access_ns; }

 private:
  std::int64_t now_ns_ = 0;
};

// The system's monotonic clock, for a chip on a line that a program talks to in its own time.
class RealClock final : public ChipClock {
 public:
  std::int64_t AfterAccess(std::int64_t) override {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
  }
};

}  // namespace vt63x

#endif
