// SPDX-License-Identifier: MIT

#ifndef VT63X_CLI_STATUS_TEXT_H
#define VT63X_CLI_STATUS_TEXT_H

#include <string>

#include "frontend/status.h"

namespace vt63x {

// "0x0104".
std::string StatusDigits(HFLSTATUS status);

// What a status says to a user, in a few words.
const char* StatusText(HFLSTATUS status);

}  // namespace vt63x

#endif
