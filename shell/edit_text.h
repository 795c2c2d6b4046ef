// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_EDIT_TEXT_H
#define VT63X_SHELL_EDIT_TEXT_H

#include <windows.h>

namespace vt63x {

// Puts a corrected text into an edit that the user is typing into: the caret stays where it is, as
// far as the new text reaches.
void CorrectText(HWND dialog, int id, const char* text);

}  // namespace vt63x

#endif
