// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_THREAD_H
#define VT63X_PLATFORM_KERNEL_THREAD_H

#include <windows.h>

#include <condition_variable>
#include <mutex>

#include "platform/kernel/kernel_object.h"

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
  std::mutex mutex_;
  std::condition_variable changed_;
  bool ended_ = false;
  DWORD exit_code_ = STILL_ACTIVE;
};

}  // namespace vt63x::kernel

#endif
