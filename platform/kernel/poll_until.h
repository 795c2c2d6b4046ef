// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_POLL_UNTIL_H
#define VT63X_PLATFORM_KERNEL_POLL_UNTIL_H

#include <poll.h>

#include <cstddef>

#include "platform/kernel/deadline.h"

namespace vt63x::kernel {

// poll with a deadline, to the nanosecond. May return early, with 0 or with an error number.
template <std::size_t count>
int PollUntil(pollfd (&waited)[count], Deadline deadline) {
  if (deadline.IsNever()) return ppoll(waited, count, nullptr, nullptr);
  const Clock::duration left = deadline.Remaining(Clock::now());
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  const auto rest = std::chrono::duration_cast<std::chrono::nanoseconds>(left - seconds);
  const timespec remaining{seconds.count(), rest.count()};
  return ppoll(waited, count, &remaining, nullptr);
}

}  // namespace vt63x::kernel

#endif
