// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_DEADLINE_H
#define VT63X_PLATFORM_KERNEL_DEADLINE_H

// A point on the monotonic clock, computed once from a time-out and then used for every wait of a
// call, so that a wait that is woken early and resumed does not grow.

#include <windows.h>

#include <chrono>
#include <compare>

#include "threading/mutex.h"

namespace vt63x::kernel {

using Clock = std::chrono::steady_clock;

class Deadline {
 public:
  static Deadline Never() { return Deadline(Clock::time_point::max()); }
  static Deadline After(std::chrono::milliseconds span) { return Deadline(Clock::now() + span); }
  static Deadline At(Clock::time_point point) { return Deadline(point); }

  // A Win32 time-out in milliseconds; INFINITE never passes.
  static Deadline FromTimeout(DWORD timeout_ms) {
    return timeout_ms == INFINITE ? Never() : After(std::chrono::milliseconds(timeout_ms));
  }

  bool IsNever() const { return point_ == Clock::time_point::max(); }
  bool Passed(Clock::time_point now) const { return now >= point_; }
  bool Passed() const { return !IsNever() && Passed(Clock::now()); }
  Clock::time_point point() const { return point_; }

  // Zero when passed; not to be asked of Never().
  Clock::duration Remaining(Clock::time_point now) const {
    return Passed(now) ? Clock::duration::zero() : point_ - now;
  }

  auto operator<=>(const Deadline&) const = default;

 private:
  explicit Deadline(Clock::time_point point) : point_(point) {}

  Clock::time_point point_;
};

// Waits for a notification or the deadline. May return early; the caller looks again.
inline void WaitUntil(Condition& condition, Mutex& mutex, Deadline deadline) REQUIRES(mutex) {
  if (deadline.IsNever()) {
    condition.Wait(mutex);
  } else {
    condition.WaitUntil(mutex, deadline.point());
  }
}

}  // namespace vt63x::kernel

#endif
