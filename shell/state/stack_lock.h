#ifndef VT63X_SHELL_STATE_STACK_LOCK_H
#define VT63X_SHELL_STATE_STACK_LOCK_H

#include <atomic>
#include <cstdint>

namespace vt63x {

// A lock that is given out in the order in which it was asked for. A command file gives the
// component stack back after each access and asks for it again at once; with a lock that favours
// whoever is running, an access from the register dialog could wait for the end of the file.
// Any thread; serves std::lock_guard.
class StackLock {
 public:
  void lock() {
    const std::uint32_t ticket = next_.fetch_add(1, std::memory_order_relaxed);
    for (std::uint32_t served = served_.load(std::memory_order_acquire); served != ticket;
         served = served_.load(std::memory_order_acquire)) {
      served_.wait(served, std::memory_order_acquire);
    }
  }

  void unlock() {
    served_.fetch_add(1, std::memory_order_release);
    served_.notify_all();
  }

 private:
  std::atomic<std::uint32_t> next_ = 0;    // the ticket that the next to ask gets
  std::atomic<std::uint32_t> served_ = 0;  // whose turn it is
};

}  // namespace vt63x

#endif
