// SPDX-License-Identifier: MIT

#include "platform/kernel/last_error.h"

namespace {

thread_local DWORD last_error = ERROR_SUCCESS;

}  // namespace

DWORD WINAPI GetLastError() { return last_error; }

void WINAPI SetLastError(DWORD error) { last_error = error; }
