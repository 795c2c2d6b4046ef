// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_MESSAGE_QUEUE_H
#define VT63X_PLATFORM_WINDOW_MESSAGE_QUEUE_H

// Messages posted to windows, and the request to quit.

#include <windows.h>

#include <optional>

namespace vt63x::ui {

// Any thread; never blocks.
void PostToWindow(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

// Main thread, from its event loop: hands out calls of other threads, posted messages, and input
// (input_queue.h) when no message is left, a bounded number of all, so that painting gets its turn;
// wakes itself for the rest. Asks the innermost modal loop to end once nothing is posted and
// somebody wants to quit, which also comes before input.
void DispatchMessages();

// True when nothing that comes before input waits, and a loop is there that takes it.
bool InputHasItsTurn();

bool QuitRequested();
// As PostQuitMessage, for a signal handler.
void QuitFromSignal();
void ForgetQuit();

}  // namespace vt63x::ui

#endif
