// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_MAIN_COMMANDS_H
#define VT63X_SHELL_MAIN_COMMANDS_H

#include "shell/state/app_state.h"

namespace vt63x {

// WM_COMMAND of the main window, by the low word of wParam: notification codes are not told apart.
// FALSE for a command that is none of the program's.
INT_PTR RunMainCommand(const action_param* action);

}  // namespace vt63x

#endif
