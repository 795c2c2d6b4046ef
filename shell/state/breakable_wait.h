// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_STATE_BREAKABLE_WAIT_H
#define VT63X_SHELL_STATE_BREAKABLE_WAIT_H

#include <algorithm>
#include <chrono>

#include "shell/state/app_state.h"

namespace vt63x {

// A script line's wait, in steps between which the view may end it:
//
//   BreakableWait wait(action, timeout_ms);
//   while (wait.GoesOn()) Sleep(wait.StepMs());
//
// One thread.
class BreakableWait {
 public:
  static constexpr DWORD kLongestStepMs = 50;

  BreakableWait(const action_param* action, DWORD timeout_ms)
      : view_(action->app_state->view),
        end_(Clock::now() + std::chrono::milliseconds(timeout_ms)),
        step_ms_(timeout_ms) {}

  // True the first time unless the view breaks off, and then until the time-out has passed.
  bool GoesOn() {
    if (view_ != nullptr && view_->BreaksOff()) return false;
    if (!begun_) return begun_ = true;
    const Clock::duration left = end_ - Clock::now();
    if (left <= Clock::duration::zero()) return false;
    step_ms_ = static_cast<DWORD>(std::chrono::ceil<std::chrono::milliseconds>(left).count());
    return true;
  }

  // What is left, as far as it may be waited for in one go.
  DWORD StepMs() const { return std::min(step_ms_, kLongestStepMs); }

 private:
  using Clock = std::chrono::steady_clock;

  MainView* const view_;
  const Clock::time_point end_;
  DWORD step_ms_;
  bool begun_ = false;
};

}  // namespace vt63x

#endif
