// SPDX-License-Identifier: MIT

#ifndef VT63X_CLI_EXIT_CODE_H
#define VT63X_CLI_EXIT_CODE_H

#include <algorithm>

namespace vt63x {

// What wcf reports to its caller; where several apply, the highest counts.
enum ExitCode {
  EXIT_ALL_DONE = 0,       // every line did its work
  EXIT_FAILED = 1,         // a difference was found, or an access or card operation failed
  EXIT_USAGE = 2,          // the call itself was wrong
  EXIT_FILE_OR_PORT = 3,   // a file or the port could not be opened, a file not be written
  EXIT_BAD_LINES = 4,      // lines that are no commands
  EXIT_LINE_LOST = 5,      // the line went away during the run
  EXIT_HUNG_UP = 129,      // broken off: the terminal was closed (SIGHUP)
  EXIT_INTERRUPTED = 130,  // broken off with Ctrl-C
  EXIT_TERMINATED = 143,   // broken off: told to end (SIGTERM)
};

inline void Raise(ExitCode& code, ExitCode other) { code = std::max(code, other); }

}  // namespace vt63x

#endif
