// SPDX-License-Identifier: MIT

#ifndef VT63X_SCRIPT_SCRIPT_LOG_H
#define VT63X_SCRIPT_SCRIPT_LOG_H

#include <cstdio>

#include "script/line_parser.h"
#include "shell/state/log.h"

namespace vt63x {

// Formats a log line into parser.msg, where it stays for whoever reports it, and logs it.
template <typename... Arguments>
void LogLine(LineParser& parser, const char* format, Arguments... arguments) {
  std::snprintf(parser.msg, sizeof parser.msg, format, arguments...);
  log_append(parser.action, parser.msg, 1);
}

}  // namespace vt63x

#endif
