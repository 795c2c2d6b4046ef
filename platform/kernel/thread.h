// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_THREAD_H
#define VT63X_PLATFORM_KERNEL_THREAD_H

#include <windows.h>

#include "platform/kernel/kernel_object.h"
#include "threading/mutex.h"

namespace vt63x::kernel {

// The state of a thread that its handles show. The thread itself holds a reference while it runs,
// and is signalled after the destructors on its stack have run.
class Thread final : public KernelObject {
 public:
  static constexpr ObjectKind kKind = ObjectKind::kThread;

  Thread() : KernelObject(kKind) {}

  DWORD Wait(Deadline deadline) override;

  // STILL_ACTIVE until the end.
  DWORD ExitCode();

  void End(DWORD exit_code);

 private:
  Mutex mutex_;
  Condition changed_;
  bool ended_ GUARDED_BY(mutex_) = false;
  DWORD exit_code_ GUARDED_BY(mutex_) = STILL_ACTIVE;
};

}  // namespace vt63x::kernel

#endif
