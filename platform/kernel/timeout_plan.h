// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_TIMEOUT_PLAN_H
#define VT63X_PLATFORM_KERNEL_TIMEOUT_PLAN_H

// What a port's time-outs mean for one operation: how many bytes end it, and how long it may take
// from the call that begins it.

#include <windows.h>

#include <chrono>
#include <optional>

namespace vt63x::kernel {

struct TransferPlan {
  DWORD wanted = 0;                                // bytes that complete the operation
  std::optional<std::chrono::milliseconds> limit;  // none: no limit
};

// A write to a line that takes nothing ends after this time when no time-out was set.
inline constexpr std::chrono::milliseconds kDefaultWriteLimit{5000};

// Limits end here (49.7 days), far beyond any use and far below the end of the clock.
inline constexpr std::chrono::milliseconds kLongestLimit{MAXDWORD};

// Whether the read time-outs are one of the three forms that SetCommTimeouts takes.
bool IsSupported(const COMMTIMEOUTS& timeouts);

// For supported time-outs. A read of 0 bytes wants 0 bytes.
TransferPlan PlanRead(const COMMTIMEOUTS& timeouts, DWORD length);
TransferPlan PlanWrite(const COMMTIMEOUTS& timeouts, DWORD length);

}  // namespace vt63x::kernel

#endif
