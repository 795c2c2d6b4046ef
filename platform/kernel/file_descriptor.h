// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_FILE_DESCRIPTOR_H
#define VT63X_PLATFORM_KERNEL_FILE_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace vt63x::kernel {

// Owns one descriptor; -1 is none.
class FileDescriptor {
 public:
  explicit FileDescriptor(int number = -1) : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~FileDescriptor() {
    if (number_ >= 0) close(number_);
  }

  int get() const { return number_; }
  bool valid() const { return number_ >= 0; }

 private:
  int number_;
};

}  // namespace vt63x::kernel

#endif
