// SPDX-License-Identifier: MIT

#ifndef VT63X_SCRIPT_COMMAND_HISTORY_H
#define VT63X_SCRIPT_COMMAND_HISTORY_H

#include "shell/state/app_state.h"

namespace vt63x {

inline constexpr std::size_t HISTORY_SIZE = 16;

// The lines typed before: AppState::cmd_history, oldest first, no two equal. Main thread only.

// Puts a line at the end, taking away an equal one, or the oldest of HISTORY_SIZE. A line longer
// than an entry is cut to its 127 characters. The next step back shows it.
void HistoryStore(AppState& state, const char* line);

// The entry to show for a step back or forward, null when there is none yet. The first step back
// after a line was processed (history_browse 0) shows the entry stored or shown last; beyond either
// end the steps go on at the other.
const char* HistoryBack(AppState& state);
const char* HistoryForward(AppState& state);

}  // namespace vt63x

#endif
