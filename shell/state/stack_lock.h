// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_STATE_STACK_LOCK_H
#define VT63X_SHELL_STATE_STACK_LOCK_H

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace vt63x {

// A lock that is given out in the order in which it was asked for. A command file gives the
// component stack back after each access and asks for it again at once; with a lock that favours
// whoever is running, an access from the register dialog could wait for the end of the file.
// Any thread; serves std::lock_guard.
class StackLock {
 public:
  void lock() {
    std::unique_lock guard(mutex_);
    const std::uint32_t ticket = next_++;
    turn_.wait(guard, [&] { return served_ == ticket; });
  }

  void unlock() {
    {
      const std::lock_guard guard(mutex_);
      ++served_;
    }
    turn_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable turn_;
  std::uint32_t next_ = 0;    // the ticket that the next to ask gets
  std::uint32_t served_ = 0;  // whose turn it is
};

}  // namespace vt63x

#endif
