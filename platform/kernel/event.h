// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_EVENT_H
#define VT63X_PLATFORM_KERNEL_EVENT_H

// A manual-reset event, switched on by the completion of the operation it is attached to.
//
// Operations have no thread of their own. Whoever waits for the event makes the operation's owner,
// the port, do the work meanwhile. Locks are taken in the order port, event; an event calls its
// owner with no lock held.

#include <windows.h>

#include <cstdint>
#include <memory>

#include "platform/kernel/kernel_object.h"
#include "threading/mutex.h"

namespace vt63x::kernel {

enum class OperationKind { kRead, kWrite, kCommEvent };

// Names one operation of a port; a serial number is never used twice.
struct OperationId {
  OperationKind kind = OperationKind::kRead;
  std::uint64_t serial = 0;
};

class OperationOwner {
 public:
  // Works on the operation on the calling thread until it is complete or the deadline has passed,
  // and at least tries once. Returns at once when there is no such operation.
  virtual void Drive(OperationId id, Deadline until) = 0;

  // Forgets the operation: its record and buffer are not touched again.
  virtual void Abandon(OperationId id) = 0;

 protected:
  OperationOwner() = default;
  ~OperationOwner() = default;
  OperationOwner(const OperationOwner&) = delete;
  OperationOwner& operator=(const OperationOwner&) = delete;
};

class Event final : public KernelObject {
 public:
  static constexpr ObjectKind kKind = ObjectKind::kEvent;

  Event() : KernelObject(kKind) {}

  DWORD Wait(Deadline deadline) override;

  // Ends every wait with ERROR_INVALID_HANDLE and abandons the operation, if there is one.
  void Close() override;

  // Switches the event off for an operation about to begin. False when one is attached already.
  bool Reset();

  // The operation that was begun is pending.
  void Attach(std::shared_ptr<OperationOwner> owner, OperationId id);

  // The operation is complete: detaches it and switches the event on.
  void Signal();

 private:
  Mutex mutex_;
  Condition changed_;
  std::shared_ptr<OperationOwner> owner_ GUARDED_BY(mutex_);  // null: no operation pending
  OperationId id_ GUARDED_BY(mutex_);
  bool on_ GUARDED_BY(mutex_) = false;
  bool closed_ GUARDED_BY(mutex_) = false;
};

}  // namespace vt63x::kernel

#endif
