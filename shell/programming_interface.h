// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_PROGRAMMING_INTERFACE_H
#define VT63X_SHELL_PROGRAMMING_INTERFACE_H

#include "shell/state/app_state.h"

namespace vt63x {

// Where a developer adds actions of his own: one row each in the table of
// programming_interface.cpp, with a command of IDM_FIRST_USER_ACTION to IDM_LAST_USER_ACTION. The
// two that are there show how a card is activated and read from code. Main thread.

// Fills the popup menu of actions. Only when the interface is shown.
void FillUserActions(const action_param* action);

// Runs the action whose command is the low word of wParam. Without an open port it only says so.
void RunUserAction(const action_param* action);

}  // namespace vt63x

#endif
