// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_HANDLE_TABLE_H
#define VT63X_PLATFORM_KERNEL_HANDLE_TABLE_H

// Handles of kernel objects. A handle is a slot number (low 16 bits, never 0) and the generation of
// that slot (the bits above): a slot is used again, but with the next generation, so that no value
// is given out twice and a stale handle finds nothing. An event lives for one transferred byte, so
// adding and removing cost no system call: the table grows to the most handles ever open at a time
// and stays there.
//
// Any thread may call any function.

#include <windows.h>

#include <memory>
#include <vector>

#include "platform/kernel/kernel_object.h"
#include "threading/mutex.h"

namespace vt63x::kernel {

class HandleTable {
 public:
  // The largest number of handles open at a time.
  static constexpr std::size_t kCapacity = 0xFFFF;

  // Null when the table is full.
  HANDLE Add(std::shared_ptr<KernelObject> object);

  // Null when the handle was closed or never given out.
  std::shared_ptr<KernelObject> Find(HANDLE handle);

  // Takes the object out: of several threads that close a handle, one gets it.
  std::shared_ptr<KernelObject> Remove(HANDLE handle);

 private:
  struct Slot {
    std::shared_ptr<KernelObject> object;
    std::uint64_t generation = 1;
  };

  Slot* SlotOf(HANDLE handle) REQUIRES(mutex_);

  Mutex mutex_;
  std::vector<Slot> slots_ GUARDED_BY(mutex_);        // slot number n is at n - 1
  std::vector<std::size_t> free_ GUARDED_BY(mutex_);  // indices into slots_
};

// The one table of the process. It is never destroyed: threads may still run when main returns.
HandleTable& Handles();

// The object of a handle, or null when the handle is invalid or of another kind.
template <typename Object>
std::shared_ptr<Object> FindObject(HANDLE handle) {
  std::shared_ptr<KernelObject> object = Handles().Find(handle);
  if (object == nullptr || object->kind() != Object::kKind) return nullptr;
  return std::static_pointer_cast<Object>(std::move(object));
}

}  // namespace vt63x::kernel

#endif
