// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_READ_LIMIT_H
#define VT63X_PLATFORM_KERNEL_READ_LIMIT_H

// Ends a blocking read that the driver does not end in time.
//
// How long a driver waits is a setting of the line, not of its opening: another program may change
// it (`stty min 1 time 0`, `stty cooked`), and a read of that program's own keeps all others out
// for as long as it waits. A thread looks after each read that lasts and interrupts it by a signal,
// which ends every wait in the kernel. A read that ends by itself costs no system call for it, and
// the thread sleeps while nobody reads.

#include <pthread.h>

#include <chrono>
#include <thread>

#include "platform/kernel/deadline.h"
#include "threading/mutex.h"

namespace vt63x::kernel {

class ReadLimit {
 public:
  // Throws std::system_error when there is no thread to be had.
  explicit ReadLimit(std::chrono::milliseconds limit);
  ~ReadLimit();  // while no read is in progress
  ReadLimit(const ReadLimit&) = delete;
  ReadLimit& operator=(const ReadLimit&) = delete;

  // On the reading thread, before and after the call; one read at a time.
  void Begin() EXCLUDES(mutex_);
  // True when the read was interrupted.
  bool End() EXCLUDES(mutex_);

 private:
  void Watch() EXCLUDES(mutex_);

  const std::chrono::milliseconds limit_;
  Mutex mutex_;
  Condition changed_;
  bool reading_ GUARDED_BY(mutex_) = false;
  bool interrupted_ GUARDED_BY(mutex_) = false;
  bool asleep_ GUARDED_BY(mutex_) = false;
  bool ending_ GUARDED_BY(mutex_) = false;
  pthread_t reader_ GUARDED_BY(mutex_){};
  Clock::time_point overdue_ GUARDED_BY(mutex_);
  std::thread watcher_;
};

}  // namespace vt63x::kernel

#endif
