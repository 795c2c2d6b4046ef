// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_LAST_ERROR_H
#define VT63X_PLATFORM_KERNEL_LAST_ERROR_H

#include <windows.h>

namespace vt63x::kernel {

// The end of a BOOL function: FALSE with the last error set, or TRUE for ERROR_SUCCESS, which
// leaves the last error as it was.
inline BOOL Finish(DWORD error) {
  if (error == ERROR_SUCCESS) return TRUE;
  SetLastError(error);
  return FALSE;
}

}  // namespace vt63x::kernel

#endif
