// SPDX-License-Identifier: MIT

#include "platform/kernel/slow_call.h"

#include <atomic>

namespace vt63x::kernel {
namespace {

std::atomic<SlowCallRunner> slow_call_runner = nullptr;

}  // namespace

void RunSlowCall(const std::function<void()>& call) {
  const SlowCallRunner runner = slow_call_runner;
  if (runner == nullptr) {
    call();
  } else {
    runner(call);
  }
}

void SetSlowCallRunner(SlowCallRunner runner) { slow_call_runner = runner; }

}  // namespace vt63x::kernel
