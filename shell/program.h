// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_PROGRAM_H
#define VT63X_SHELL_PROGRAM_H

// The program from start to end.

#include <windows.h>

#include "frontend/serial_bus_interface.h"
#include "shell/state/app_state.h"

namespace vt63x {

// Reads the port to use, builds the component stack, runs the main window until it ends, and writes
// the port back. `command_line` (separated by blanks, commas, tabs and line feeds; split in place)
// may say "-pi": then the programming interface is shown. `bus` takes the place of the serial bus
// when it is given. Returns the main window's result. Main thread.
//
// A command file that still runs when the window ends is broken off; if it does not end within 2 s
// (it may be asleep) the process ends here instead of taking the component stack away under it.
int RunProgram(HINSTANCE instance, char* command_line, SerialBusInterface* bus = nullptr);

// The state of the program that runs. Null when none does.
AppState* ProgramState();

}  // namespace vt63x

#endif
