// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_STATE_STACK_LOCK_H
#define VT63X_SHELL_STATE_STACK_LOCK_H

#include <cstdint>

#include "threading/mutex.h"

namespace vt63x {

// A lock that is given out in the order in which it was asked for. A command file gives the
// component stack back after each access and asks for it again at once; with a lock that favours
// whoever is running, an access from the register dialog could wait for the end of the file.
// Any thread.
class CAPABILITY("mutex") StackLock {
 public:
  void lock() ACQUIRE() {
    const LockGuard guard(mutex_);
    const std::uint32_t ticket = next_++;
    while (served_ != ticket) turn_.Wait(mutex_);
  }

  void unlock() RELEASE() {
    {
      const LockGuard guard(mutex_);
      ++served_;
    }
    turn_.NotifyAll();
  }

 private:
  Mutex mutex_;
  Condition turn_;
  std::uint32_t next_ GUARDED_BY(mutex_) = 0;    // the ticket that the next to ask gets
  std::uint32_t served_ GUARDED_BY(mutex_) = 0;  // whose turn it is
};

}  // namespace vt63x

#endif
