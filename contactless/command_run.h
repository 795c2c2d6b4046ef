// SPDX-License-Identifier: MIT

#ifndef VT63X_CONTACTLESS_COMMAND_RUN_H
#define VT63X_CONTACTLESS_COMMAND_RUN_H

#include <chrono>

#include "contactless/chip_command.h"

namespace vt63x {

// The limits of the polling wait, explained in chip_command.h.
inline constexpr std::chrono::milliseconds kWaitLimit{2000};
inline constexpr std::chrono::milliseconds kUnreportedEndLimit{20};

// The clock of the wait, a parameter so that its limits can be tried without waiting.
using WaitClock = std::chrono::steady_clock::time_point (*)();

struct CommandResult {
  HFLSTATUS status;
  // The status is that of a register access that failed: the link to the chip is broken, and no
  // further access is worth its time-out. False for a status that the chip or the wait callback
  // gave.
  bool access_failed;
};

// ExecuteSingleCommand, telling also where the status comes from.
CommandResult RunSingleCommand(single_command_param* param,
                               WaitClock now = std::chrono::steady_clock::now);

}  // namespace vt63x

#endif
