// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_MAIN_WINDOW_H
#define VT63X_SHELL_MAIN_WINDOW_H

// The main window. Its width is fixed, its height never below that at the start; the log pane takes
// what is added. All on the main thread.

#include <windows.h>

#include "shell/state/app_state.h"

namespace vt63x {

INT_PTR CALLBACK MainDlgProc(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

// Enables what can be used with the port open or closed, moves the focus to the button that undoes
// it, and shows the state's letter.
void ShowPortState(const AppState& state, bool open);

}  // namespace vt63x

#endif
