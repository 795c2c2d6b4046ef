// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_FIXED_QUEUE_H
#define VT63X_SIMULATOR_FIXED_QUEUE_H

#include <array>
#include <cstddef>

namespace vt63x {

// First in, first out, with room for Size items and no allocation. One thread at a time.
template <typename Item, std::size_t Size>
class FixedQueue {
 public:
  bool empty() const { return count_ == 0; }
  std::size_t room() const { return Size - count_; }

  // False, and the item is not taken, when the queue is full.
  bool Push(const Item& item) {
    if (count_ == Size) return false;
    items_[(first_ + count_) % Size] = item;
    ++count_;
    return true;
  }

  // Both only while the queue is not empty.
  const Item& Front() const { return items_[first_]; }
  void Pop() {
    first_ = (first_ + 1) % Size;
    --count_;
  }

  void Clear() { count_ = 0; }

 private:
  std::array<Item, Size> items_{};
  std::size_t first_ = 0;
  std::size_t count_ = 0;
};

}  // namespace vt63x

#endif
