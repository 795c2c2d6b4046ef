// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_FILE_REQUEST_H
#define VT63X_SHELL_FILE_REQUEST_H

#include "shell/state/app_state.h"

namespace vt63x {

// The system's file dialogs over the main window, for files of one kind. `path` goes in with the
// pattern to start from and comes out with the chosen file; false, and `path` of no use, when the
// user cancels. Main thread.
bool AskFileToOpen(const AppState& state, const char* description, const char* pattern,
                   char (&path)[MAX_PATH]);
bool AskFileToSave(const AppState& state, const char* description, const char* pattern,
                   char (&path)[MAX_PATH]);

}  // namespace vt63x

#endif
