// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_SLOW_CALL_H
#define VT63X_PLATFORM_KERNEL_SLOW_CALL_H

#include <functional>

namespace vt63x::kernel {

// Runs the part of a port function that may take seconds and returns when it is over. A thread that
// has windows has them drawn meanwhile, and may run `call` on another thread for that.
void RunSlowCall(const std::function<void()>& call);

// How RunSlowCall does it from now on; at first it just calls. Any thread will come by.
using SlowCallRunner = void (*)(const std::function<void()>& call);
void SetSlowCallRunner(SlowCallRunner runner);

}  // namespace vt63x::kernel

#endif
