// SPDX-License-Identifier: MIT

#include <unistd.h>
#include <windows.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "platform/kernel/errno_map.h"
#include "platform/kernel/last_error.h"

namespace kernel = vt63x::kernel;

DWORD WINAPI GetCurrentThreadId() { return static_cast<DWORD>(gettid()); }

void WINAPI ExitProcess(UINT exit_code) { _exit(static_cast<int>(exit_code)); }

DWORD WINAPI GetCurrentDirectoryA(DWORD size, LPSTR buffer) {
  char path[PATH_MAX];
  if (getcwd(path, sizeof path) == nullptr) {
    SetLastError(kernel::OpenError(errno));
    return 0;
  }
  const auto length = static_cast<DWORD>(std::strlen(path));
  if (buffer == nullptr || size <= length) return length + 1;
  std::memcpy(buffer, path, length + 1);
  return length;
}

BOOL WINAPI SetEnvironmentVariableA(LPCSTR name, LPCSTR value) {
  if (name == nullptr) return kernel::Finish(ERROR_INVALID_PARAMETER);
  const int result = value == nullptr ? unsetenv(name) : setenv(name, value, 1);
  return kernel::Finish(result == 0 ? ERROR_SUCCESS : kernel::UseError(errno));
}
