// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_KERNEL_OBJECT_H
#define VT63X_PLATFORM_KERNEL_KERNEL_OBJECT_H

// What a handle stands for. The handle table holds one shared reference; a call in progress holds
// another, so an object outlives the closing of its handle by at most the calls that are inside it.

#include <windows.h>

#include "platform/kernel/deadline.h"

namespace vt63x::kernel {

enum class ObjectKind { kEvent, kThread, kPort };

class KernelObject {
 public:
  explicit KernelObject(ObjectKind kind) : kind_(kind) {}
  virtual ~KernelObject() = default;
  KernelObject(const KernelObject&) = delete;
  KernelObject& operator=(const KernelObject&) = delete;

  ObjectKind kind() const { return kind_; }

  // ERROR_SUCCESS once the object is signalled, ERROR_SEM_TIMEOUT when the deadline came first,
  // ERROR_INVALID_HANDLE for a kind that cannot be waited for.
  virtual DWORD Wait(Deadline) { return ERROR_INVALID_HANDLE; }

  // The handle is gone: called once, on the thread that closed it.
  virtual void Close() {}

 private:
  const ObjectKind kind_;
};

}  // namespace vt63x::kernel

#endif
