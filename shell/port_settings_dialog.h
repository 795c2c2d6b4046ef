// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_PORT_SETTINGS_DIALOG_H
#define VT63X_SHELL_PORT_SETTINGS_DIALOG_H

#include <windows.h>

namespace vt63x {

// Chooses the serial port to use, and tells whether it can be opened now. Only while no port is
// open.
INT_PTR CALLBACK PortSettingsDlgProc(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

}  // namespace vt63x

#endif
