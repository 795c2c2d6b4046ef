// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_KEY_INPUT_H
#define VT63X_PLATFORM_WINDOW_KEY_INPUT_H

// Keys on their way from the toolkit, or from PostMessageA, to a window: first the dialog's
// keyboard handling (Tab, Enter, Escape, mnemonics, arrows), then WM_KEYDOWN and WM_CHAR through
// the window's procedure chain, and at its end the widget. Main thread only.

#include "platform/window/window.h"

class QKeyEvent;

namespace vt63x::ui {

// A key pressed or released by the user while `dialog` is active. True when it must not go on to
// the widget: always, but for keys that the toolkit or the window manager takes.
bool KeyFromUser(Dialog& dialog, const QKeyEvent& event);

// The same while the menu bar has the keyboard: true for the keys that take it away again.
bool KeyForMenuBar(Dialog& dialog, const QKeyEvent& event);

// A key message taken from the message queue; false for any other message.
bool KeyFromQueue(Window& window, UINT message, WPARAM wparam, LPARAM lparam);

// The end of a chain: gives the key or character of WM_KEYDOWN, WM_KEYUP or WM_CHAR to the window's
// widget, which does what it does by itself (moves the caret, inserts, deletes). An edit
// (DLGC_HASSETSEL) takes characters from WM_CHAR, any other control keys from WM_KEYDOWN.
void KeyToWidget(Window& window, UINT message, WPARAM wparam);

// Of the user's key that is being handled; false without one.
bool ShiftDown();
bool ControlDown();

// True while KeyToWidget hands a key over: the event filter lets it pass.
bool KeyOnItsWay();

}  // namespace vt63x::ui

#endif
