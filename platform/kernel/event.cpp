// SPDX-License-Identifier: MIT

#include "platform/kernel/event.h"

#include <utility>

#include "platform/kernel/handle_table.h"
#include "platform/kernel/last_error.h"

namespace vt63x::kernel {

DWORD Event::Wait(Deadline deadline) {
  const LockGuard lock(mutex_);
  bool tried = false;
  for (;;) {
    if (on_) return ERROR_SUCCESS;
    if (closed_) return ERROR_INVALID_HANDLE;
    if (deadline.Passed() && (tried || owner_ == nullptr)) return ERROR_SEM_TIMEOUT;
    if (owner_ == nullptr) {
      WaitUntil(changed_, mutex_, deadline);
      continue;
    }
    const std::shared_ptr<OperationOwner> owner = owner_;
    const OperationId id = id_;
    mutex_.unlock();
    owner->Drive(id, deadline);
    tried = true;
    mutex_.lock();
  }
}

void Event::Close() {
  std::shared_ptr<OperationOwner> owner;
  OperationId id;
  {
    const LockGuard lock(mutex_);
    closed_ = true;
    owner = std::exchange(owner_, nullptr);
    id = id_;
    changed_.NotifyAll();
  }
  if (owner != nullptr) owner->Abandon(id);
}

bool Event::Reset() {
  const LockGuard lock(mutex_);
  if (owner_ != nullptr) return false;
  on_ = false;
  return true;
}

void Event::Attach(std::shared_ptr<OperationOwner> owner, OperationId id) {
  const LockGuard lock(mutex_);
  owner_ = std::move(owner);
  id_ = id;
  changed_.NotifyAll();  // a thread that waits already takes the work over
}

void Event::Signal() {
  const LockGuard lock(mutex_);
  owner_ = nullptr;
  on_ = true;
  changed_.NotifyAll();
}

}  // namespace vt63x::kernel

namespace kernel = vt63x::kernel;

HANDLE WINAPI CreateEventA(LPSECURITY_ATTRIBUTES security, BOOL manual_reset, BOOL initial_state,
                           LPCSTR name) {
  if (security != nullptr || manual_reset != TRUE || initial_state != FALSE || name != nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  HANDLE handle = nullptr;
  try {
    handle = kernel::Handles().Add(std::make_shared<kernel::Event>());
  } catch (const std::bad_alloc&) {
    // No exception leaves a Win32 call.
  }
  if (handle == nullptr) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return handle;
}
