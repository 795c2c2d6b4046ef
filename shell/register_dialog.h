// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_REGISTER_DIALOG_H
#define VT63X_SHELL_REGISTER_DIALOG_H

#include <windows.h>

namespace vt63x {

// Reads and writes one chip register at a time, next to the main window. It stays usable while a
// command file runs: an access waits for the runner's, a purge and its access are one sequence.
INT_PTR CALLBACK RegisterDlgProc(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

}  // namespace vt63x

#endif
