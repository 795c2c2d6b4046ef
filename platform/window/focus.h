// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_FOCUS_H
#define VT63X_PLATFORM_WINDOW_FOCUS_H

// Who has the keyboard. The rules are those of Windows and not the toolkit's: SetFocus takes effect
// at once, and when the control that has it is disabled nobody has it (Tab still moves on from
// there). WM_KILLFOCUS and WM_SETFOCUS tell. Main thread only.

#include "platform/window/window.h"

class QWidget;

namespace vt63x::ui {

// Null when none of our windows has it.
Window* FocusWindow();

// Returns the window that had it. Null gives it up.
Window* MoveFocus(Window* window);

// The toolkit moved its focus: the user clicked, or another window became active.
void ToolkitFocusMoved(QWidget* now);

// The window is being destroyed or hidden: a dialog's focus goes back to its owner.
void FocusWindowGone(Window& window);

// Hides the widget of a window without the toolkit moving the focus.
void HideWidget(QWidget& widget);

// Enables or disables a control's widget without the toolkit moving the focus.
void EnableWidget(Window& control, bool enable);

}  // namespace vt63x::ui

#endif
