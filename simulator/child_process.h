// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_CHILD_PROCESS_H
#define VT63X_SIMULATOR_CHILD_PROCESS_H

#include <signal.h>
#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace vt63x {

// One command that runs while this process does: the system kills it should this process die
// first. For that the thread that starts it must stay, and it must start no thread before it.
class ChildProcess {
 public:
  static constexpr int kExitNotFound = 127;
  static constexpr int kExitNotRun = 126;

  // A child still there is killed and waited for.
  ~ChildProcess();

  // Looks `command` up as a shell does and runs it with the signal mask `mask`. On failure gives
  // kExitNotFound or kExitNotRun and a line for the user in `error`; 0 when the command runs.
  int Start(const std::vector<std::string>& command, const sigset_t& mask, std::string& error);

  void Signal(int number) const;

  // The command's exit code once it has ended, 128 plus the signal when one ended it. Does not
  // wait.
  std::optional<int> ExitCode();

 private:
  pid_t pid_ = -1;  // -1: none, or ended and waited for
};

}  // namespace vt63x

#endif
