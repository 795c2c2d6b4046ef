// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_ERRNO_MAP_H
#define VT63X_PLATFORM_KERNEL_ERRNO_MAP_H

#include <windows.h>

namespace vt63x::kernel {

// The one place where POSIX error numbers become Win32 errors. A device that does not answer was
// never there while it is being opened, and went away when it is in use. Unlisted numbers give
// ERROR_GEN_FAILURE.
DWORD OpenError(int error_number);
DWORD UseError(int error_number);

}  // namespace vt63x::kernel

#endif
