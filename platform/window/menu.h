// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_MENU_H
#define VT63X_PLATFORM_WINDOW_MENU_H

// Menus behind handles: the bar of a window with its submenus, and popups that the program makes.
// Main thread only.

#include <windows.h>

class QMenuBar;

namespace vt63x::ui {

// Fills the bar from a menu resource; a chosen item sends WM_COMMAND to `target`. Null when the
// resource is missing or broken.
HMENU FillMenuBar(QMenuBar& bar, WORD resource, HWND target);

// Opens the menu whose name underlines the letter (a capital or a digit); false when there is none.
bool OpenMenu(QMenuBar& bar, int letter);

// Gives the keyboard to the bar, as F10 and Alt do, or takes it away again.
void SwitchMenuBar(QMenuBar& bar);

// The handles of the menu and its submenus become stale.
void FreeMenu(HMENU menu);

}  // namespace vt63x::ui

#endif
