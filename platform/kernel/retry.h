// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_RETRY_H
#define VT63X_PLATFORM_KERNEL_RETRY_H

#include <cerrno>

namespace vt63x::kernel {

// The result of a system call that is made again for as long as signals break it off.
template <typename Call>
int Retry(const Call& call) {
  int result = 0;
  do {
    result = call();
  } while (result == -1 && errno == EINTR);
  return result;
}

}  // namespace vt63x::kernel

#endif
