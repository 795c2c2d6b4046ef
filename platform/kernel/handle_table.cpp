// SPDX-License-Identifier: MIT

#include "platform/kernel/handle_table.h"

#include <utility>

namespace vt63x::kernel {
namespace {

constexpr unsigned kSlotBits = 16;
// A slot that has seen this many objects is not used again, so that the value of
// INVALID_HANDLE_VALUE is never reached and no value comes twice.
constexpr std::uint64_t kLastGeneration = (std::uint64_t{1} << 47) - 1;

HANDLE MakeHandle(std::size_t index, std::uint64_t generation) {
  // A handle is a number in the shape of a pointer. NOLINTNEXTLINE(performance-no-int-to-ptr)
  return reinterpret_cast<HANDLE>((generation << kSlotBits) | (index + 1));
}

}  // namespace

HANDLE HandleTable::Add(std::shared_ptr<KernelObject> object) {
  const LockGuard lock(mutex_);
  if (free_.empty()) {
    if (slots_.size() == kCapacity) return nullptr;
    slots_.emplace_back();
    free_.reserve(slots_.capacity());  // so that Remove needs no memory
    free_.push_back(slots_.size() - 1);
  }
  const std::size_t index = free_.back();
  free_.pop_back();
  slots_[index].object = std::move(object);
  return MakeHandle(index, slots_[index].generation);
}

HandleTable::Slot* HandleTable::SlotOf(HANDLE handle) {
  const auto value = reinterpret_cast<std::uintptr_t>(handle);
  const std::size_t number = value & kCapacity;
  if (number == 0 || number > slots_.size()) return nullptr;
  Slot& slot = slots_[number - 1];
  if (slot.object == nullptr || slot.generation != value >> kSlotBits) return nullptr;
  return &slot;
}

std::shared_ptr<KernelObject> HandleTable::Find(HANDLE handle) {
  const LockGuard lock(mutex_);
  const Slot* const slot = SlotOf(handle);
  return slot == nullptr ? nullptr : slot->object;
}

std::shared_ptr<KernelObject> HandleTable::Remove(HANDLE handle) {
  const LockGuard lock(mutex_);
  Slot* const slot = SlotOf(handle);
  if (slot == nullptr) return nullptr;
  if (++slot->generation <= kLastGeneration) {
    free_.push_back(static_cast<std::size_t>(slot - slots_.data()));
  }
  return std::exchange(slot->object, nullptr);
}

HandleTable& Handles() {
  static HandleTable& table = *new HandleTable;
  return table;
}

}  // namespace vt63x::kernel
