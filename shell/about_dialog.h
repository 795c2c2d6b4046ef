// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_ABOUT_DIALOG_H
#define VT63X_SHELL_ABOUT_DIALOG_H

#include <windows.h>

namespace vt63x {

// Name and version of the program.
INT_PTR CALLBACK AboutDlgProc(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

}  // namespace vt63x

#endif
