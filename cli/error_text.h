// SPDX-License-Identifier: MIT

#ifndef VT63X_CLI_ERROR_TEXT_H
#define VT63X_CLI_ERROR_TEXT_H

#include <windows.h>

#include <string>

namespace vt63x {

// Words and number of a Win32 error with which a port refused to open.
std::string PortErrorText(DWORD error);

// Words of an errno value.
std::string FileErrorText(int error);

}  // namespace vt63x

#endif
