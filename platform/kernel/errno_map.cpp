// SPDX-License-Identifier: MIT

#include "platform/kernel/errno_map.h"

#include <cerrno>

namespace vt63x::kernel {
namespace {

struct ErrnoRow {
  int error_number;
  DWORD opening;
  DWORD in_use;
};

constexpr ErrnoRow kRows[] = {
    {EACCES, ERROR_PRIVILEGE_NOT_HELD, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_PRIVILEGE_NOT_HELD, ERROR_ACCESS_DENIED},
    {EBUSY, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED},
    {EWOULDBLOCK, ERROR_ACCESS_DENIED, ERROR_GEN_FAILURE},  // the lock is held by someone else
    {ENOENT, ERROR_FILE_NOT_FOUND, ERROR_FILE_NOT_FOUND},
    {ENOTDIR, ERROR_FILE_NOT_FOUND, ERROR_FILE_NOT_FOUND},
    {ENXIO, ERROR_FILE_NOT_FOUND, ERROR_DEVICE_NOT_CONNECTED},
    {ENODEV, ERROR_FILE_NOT_FOUND, ERROR_DEVICE_NOT_CONNECTED},
    // A UART that the system has a name but no hardware for opens, then refuses every request.
    {EIO, ERROR_FILE_NOT_FOUND, ERROR_DEVICE_NOT_CONNECTED},
    {ENOTTY, ERROR_INVALID_PARAMETER, ERROR_INVALID_PARAMETER},
    {EISDIR, ERROR_INVALID_PARAMETER, ERROR_INVALID_PARAMETER},
    {EINVAL, ERROR_INVALID_PARAMETER, ERROR_INVALID_PARAMETER},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY, ERROR_NOT_ENOUGH_MEMORY},
    {EMFILE, ERROR_NOT_ENOUGH_MEMORY, ERROR_NOT_ENOUGH_MEMORY},
    {ENFILE, ERROR_NOT_ENOUGH_MEMORY, ERROR_NOT_ENOUGH_MEMORY},
};

const ErrnoRow* Find(int error_number) {
  for (const ErrnoRow& row : kRows) {
    if (row.error_number == error_number) return &row;
  }
  return nullptr;
}

}  // namespace

DWORD OpenError(int error_number) {
  const ErrnoRow* const row = Find(error_number);
  return row == nullptr ? ERROR_GEN_FAILURE : row->opening;
}

DWORD UseError(int error_number) {
  const ErrnoRow* const row = Find(error_number);
  return row == nullptr ? ERROR_GEN_FAILURE : row->in_use;
}

}  // namespace vt63x::kernel
