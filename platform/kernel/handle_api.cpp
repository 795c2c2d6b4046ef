// SPDX-License-Identifier: MIT

#include <windows.h>

#include "platform/kernel/handle_table.h"
#include "platform/kernel/last_error.h"

namespace kernel = vt63x::kernel;

BOOL WINAPI CloseHandle(HANDLE object) {
  const std::shared_ptr<kernel::KernelObject> closed = kernel::Handles().Remove(object);
  if (closed == nullptr) return kernel::Finish(ERROR_INVALID_HANDLE);
  closed->Close();
  return TRUE;
}

DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD timeout_ms) {
  const std::shared_ptr<kernel::KernelObject> awaited = kernel::Handles().Find(object);
  const DWORD error = awaited == nullptr ? ERROR_INVALID_HANDLE
                                         : awaited->Wait(kernel::Deadline::FromTimeout(timeout_ms));
  if (error == ERROR_SUCCESS) return WAIT_OBJECT_0;
  if (error == ERROR_SEM_TIMEOUT) return WAIT_TIMEOUT;
  SetLastError(error);
  return WAIT_FAILED;
}
