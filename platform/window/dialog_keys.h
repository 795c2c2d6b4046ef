// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_DIALOG_KEYS_H
#define VT63X_PLATFORM_WINDOW_DIALOG_KEYS_H

// What a dialog does with keys before its controls see them: Tab and arrows move the focus, Enter
// presses the default button, Escape cancels, a letter that a caption underlines reaches its
// control. Main thread only.

#include "platform/window/dialog.h"

namespace vt63x::ui {

// The next control with WS_TABSTOP that can take the focus, going round; from the first when `from`
// is no control of the dialog. Null when there is none.
Window* NextTabStop(const Dialog& dialog, const Window* from, bool back);

// Moves the focus as the keyboard does: the text of an edit is selected, a button becomes the one
// that Enter presses.
void FocusControl(Dialog& dialog, Window& control);

// True when the dialog has done with WM_KEYDOWN what there is to do.
bool KeyIsForDialog(Dialog& dialog, Window& target, WPARAM virtual_key, bool shift);

// The same with WM_CHAR: without Alt a mnemonic works where the focus wants no characters.
bool CharacterIsForDialog(Dialog& dialog, Window& target, WPARAM character);

// Presses, or gives the focus to, the next control after `from`, going round, whose caption
// underlines the character; false when there is none.
bool PressMnemonic(Dialog& dialog, Window& from, WPARAM character);

}  // namespace vt63x::ui

#endif
