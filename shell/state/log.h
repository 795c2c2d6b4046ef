// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_STATE_LOG_H
#define VT63X_SHELL_STATE_LOG_H

// The log: one flat text in AppState::log_buf, lines separated by carriage return and line feed.
// Every message for the user is a line in it. Any thread may call log_append and log_clear; the
// view is told after the log lock has been released. Without a log buffer nothing happens.

#include "shell/state/app_state.h"

namespace vt63x {

// Appends `text`, and a line end if `newline` is not 0. A log that would reach 99,997 characters
// is emptied first. The cost does not depend on how full the log is. A text that does not fit
// even the empty log is cut.
void log_append(const action_param* action, const char* text, int newline);

void log_clear(const action_param* action);

// Asks the view for a file and appends the log to it, as the user sees it in the pane.
void log_save(const action_param* action);

// Appends the log's text, unchanged, to the file `path`, which is made if need be. A file that
// cannot be written is reported to the view and to nobody else.
void log_append_to_file(const action_param* action, const char* path);

// The same on the buffer alone: the view is not told. True when the log was emptied first.
bool log_buffer_append(AppState& state, const char* text, bool newline);
void log_buffer_clear(AppState& state);

}  // namespace vt63x

#endif
