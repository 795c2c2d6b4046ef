// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_COMMAND_LINE_H
#define VT63X_SHELL_COMMAND_LINE_H

// The command line of the main window: a line typed there runs at once, and those that did their
// work come back with Up and Down. Main thread.

#include <windows.h>

#include "shell/state/app_state.h"

namespace vt63x {

// Runs the line in the field. A line that did not do its work stays for correction.
void ProcessCommandLine(const action_param* action);

// In front of the field's own procedure: Up and Down bring lines back, Escape empties the field
// (and keeps the window from closing, which the field asks for on Escape).
LRESULT CALLBACK CommandLineEditProc(HWND edit, UINT message, WPARAM wparam, LPARAM lparam);

}  // namespace vt63x

#endif
