// SPDX-License-Identifier: MIT

#ifndef VT63X_THREADING_MUTEX_H
#define VT63X_THREADING_MUTEX_H

// The standard library's mutex, guard and condition under names that clang can follow: it proves
// while compiling that what a lock guards is touched with the lock held, and that a lock is given
// back on every path (scripts/thread-safety). Other compilers see the standard classes and nothing
// else.
//
//   GUARDED_BY(lock)      this field is read and written with the lock held
//   PT_GUARDED_BY(lock)   the same of what this pointer points to
//   REQUIRES(lock)        who calls this function holds the lock, before and after
//   EXCLUDES(lock)        who calls this function does not hold it
//   ACQUIRE, RELEASE      this function takes the lock, gives it back
//
// The analysis does not look into lambdas: conditions are waited for in a loop, not with a
// predicate.

#include <chrono>
#include <condition_variable>
#include <mutex>

#ifdef __clang__
#define VT63X_ANALYSED(attribute) __attribute__((attribute))
#else
#define VT63X_ANALYSED(attribute)
#endif

#define CAPABILITY(name) VT63X_ANALYSED(capability(name))
#define SCOPED_CAPABILITY VT63X_ANALYSED(scoped_lockable)
#define GUARDED_BY(lock) VT63X_ANALYSED(guarded_by(lock))
#define PT_GUARDED_BY(lock) VT63X_ANALYSED(pt_guarded_by(lock))
#define REQUIRES(...) VT63X_ANALYSED(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) VT63X_ANALYSED(locks_excluded(__VA_ARGS__))
#define ACQUIRE(...) VT63X_ANALYSED(acquire_capability(__VA_ARGS__))
#define RELEASE(...) VT63X_ANALYSED(release_capability(__VA_ARGS__))

namespace vt63x {

class CAPABILITY("mutex") Mutex {
 public:
  void lock() ACQUIRE() { mutex_.lock(); }
  void unlock() RELEASE() { mutex_.unlock(); }

 private:
  friend class Condition;
  std::mutex mutex_;
};

// Holds a lock for as long as it lives. A function that it calls may give the lock back for a
// while, if it takes it again.
template <typename Lockable>
class SCOPED_CAPABILITY LockGuard {
 public:
  explicit LockGuard(Lockable& lock) ACQUIRE(lock) : lock_(lock) { lock_.lock(); }
  ~LockGuard() RELEASE() { lock_.unlock(); }
  LockGuard(const LockGuard&) = delete;
  LockGuard& operator=(const LockGuard&) = delete;

 private:
  Lockable& lock_;
};

class Condition {
 public:
  // May return early; the caller looks again.
  void Wait(Mutex& mutex) REQUIRES(mutex) {
    std::unique_lock held(mutex.mutex_, std::adopt_lock);
    condition_.wait(held);
    static_cast<void>(held.release());  // the caller's still
  }
  void WaitUntil(Mutex& mutex, std::chrono::steady_clock::time_point end) REQUIRES(mutex) {
    std::unique_lock held(mutex.mutex_, std::adopt_lock);
    condition_.wait_until(held, end);
    static_cast<void>(held.release());
  }
  void NotifyAll() { condition_.notify_all(); }

 private:
  std::condition_variable condition_;
};

}  // namespace vt63x

#endif
