// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_MESSAGE_QUEUE_H
#define VT63X_PLATFORM_WINDOW_MESSAGE_QUEUE_H

// Messages posted to windows, and the request to quit.

#include <windows.h>

#include <optional>

namespace vt63x::ui {

// Any thread; never blocks.
void PostToWindow(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

// Main thread, from its event loop: hands out calls of other threads and posted messages, a bounded
// number of them, so that painting and input get their turn; wakes itself for the rest. Asks the
// innermost modal loop to end once nothing is posted and somebody wants to quit.
void DispatchMessages();

bool QuitRequested();
// As PostQuitMessage, for a signal handler.
void QuitFromSignal();
void ForgetQuit();

}  // namespace vt63x::ui

#endif
