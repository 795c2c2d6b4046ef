// SPDX-License-Identifier: MIT

#include "cli/error_text.h"

#include <system_error>

namespace vt63x {

std::string PortErrorText(DWORD error) {
  struct Row {
    DWORD error;
    const char* text;
  };
  static constexpr Row kRows[] = {
      {ERROR_FILE_NOT_FOUND, "there is no such port"},
      {ERROR_ACCESS_DENIED, "it is in use by another program, which has to end first"},
      {ERROR_PRIVILEGE_NOT_HELD,
       "you have no right to it; where it belongs to the group dialout, "
       "`sudo usermod -aG dialout $USER` gives it from the next login on"},
      {ERROR_INVALID_PARAMETER,
       "it is no serial port and no rfc2217://host:port with a port of 1 to 65535"},
      {ERROR_NOT_SUPPORTED, "what answers there does not speak RFC 2217"},
      {ERROR_BAD_NETPATH, "there is no such host"},
      {ERROR_SEM_TIMEOUT, "nothing answers in time"},
      {ERROR_CONNECTION_REFUSED, "the host has no server on this port"},
      {ERROR_HOST_UNREACHABLE, "there is no way to the host"},
      {ERROR_DEVICE_NOT_CONNECTED, "the device is not connected"},
  };
  const std::string number = " (error " + std::to_string(error) + ")";
  for (const Row& row : kRows) {
    if (row.error == error) return row.text + number;
  }
  return "the system refuses" + number;
}

std::string FileErrorText(int error) { return std::generic_category().message(error); }

}  // namespace vt63x
