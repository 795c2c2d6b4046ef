// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_WINDOW_PICTURE_H
#define VT63X_PLATFORM_WINDOW_WINDOW_PICTURE_H

// Pictures of windows for documents and tests. Not a window call of the program's.

#include <windows.h>

namespace vt63x::ui {

// Writes what the window shows, without the window manager's frame, into a PNG file. False when the
// window is gone or the file cannot be written. Any thread; waits for the main thread.
bool SaveWindowPicture(HWND window, const char* path);

}  // namespace vt63x::ui

#endif
