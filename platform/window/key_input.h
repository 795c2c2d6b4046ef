#ifndef VT63X_PLATFORM_WINDOW_KEY_INPUT_H
#define VT63X_PLATFORM_WINDOW_KEY_INPUT_H

// Keys on their way from the toolkit, or from PostMessageA, to a window: first the dialog's
// keyboard handling (Tab, Enter, Escape, mnemonics, arrows), then WM_KEYDOWN and WM_CHAR through
// the window's procedure chain, and at its end the widget. Main thread only.

#include "platform/window/window.h"

class QKeyEvent;

namespace vt63x::ui {

// A key pressed or released in `window` by the user. True when it must not go on to the widget:
// always, but for keys that a menu or the window manager takes.
bool KeyFromUser(Window& window, const QKeyEvent& event);

// WM_KEYDOWN, WM_KEYUP, WM_SYSKEYDOWN, WM_CHAR or WM_SYSCHAR taken from the message queue.
void KeyFromQueue(Window& window, UINT message, WPARAM wparam, LPARAM lparam);

// The end of a chain: gives the key or character of WM_KEYDOWN or WM_CHAR to the window's widget,
// which does what it does by itself (moves the caret, inserts, deletes, copies).
void KeyToWidget(Window& window, UINT message, WPARAM wparam);

// True while KeyToWidget hands a key over: the event filter lets it pass.
bool KeyOnItsWay();

}  // namespace vt63x::ui

#endif
