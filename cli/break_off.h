// SPDX-License-Identifier: MIT

#ifndef VT63X_CLI_BREAK_OFF_H
#define VT63X_CLI_BREAK_OFF_H

// The end of the program from outside: Ctrl-C, the request of the system to end (SIGTERM), the
// terminal that is closed (SIGHUP).
//
// Whatever runs is told, and ends by itself between two accesses to the chip, so that no register
// write stays half sent: the chip would take the next program's first byte for its data. What does
// not end by itself within 0.7 s, which a silent chip's access does, waits for something that may
// never come (the reader of a FIFO, a line that takes nothing, a host's answer); then the program
// is ended where it stands, with its last words.

#include <string>

#include "cli/exit_code.h"

namespace vt63x {

// What is to be ended. Its functions are called on a thread of their own.
class BreakTarget {
 public:
  // Must not wait.
  virtual void BreakOff() = 0;
  // What standard error says when the end comes by force.
  virtual std::string LastWords() = 0;

 protected:
  BreakTarget() = default;
  ~BreakTarget() = default;
  BreakTarget(const BreakTarget&) = delete;
  BreakTarget& operator=(const BreakTarget&) = delete;
};

// Once, before the program makes a thread. As long as there is no target the program ends at once.
void WatchForBreak();

// `target` is the caller's; null before it goes. Does not return any more when the program is being
// ended by force.
void SetBreakTarget(BreakTarget* target);

// The caller says the last words itself from here on. Does not return when they are being said.
void ClaimLastWords();

// EXIT_ALL_DONE, or the code for what the program was ended by first. Any thread.
ExitCode BrokenOff();

}  // namespace vt63x

#endif
