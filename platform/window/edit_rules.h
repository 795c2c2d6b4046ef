// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_EDIT_RULES_H
#define VT63X_PLATFORM_WINDOW_EDIT_RULES_H

// What single-line and multi-line edits have in common. Positions and limits count characters.

#include <windows.h>

#include <QString>

namespace vt63x::ui {

inline constexpr int EDIT_LIMIT = 30'000;  // for typing and pasting, at first
inline constexpr int EDIT_LARGEST_LIMIT = 0x7ffffffe;

// The limit that EM_SETLIMITTEXT asks for; 0 is none.
inline int LimitOf(WPARAM wanted) {
  return wanted == 0 || wanted > EDIT_LARGEST_LIMIT ? EDIT_LARGEST_LIMIT : static_cast<int>(wanted);
}

// Letter by letter, so that the length stays.
inline QString Capitals(QString text) {
  for (QChar& c : text) c = c.toUpper();
  return text;
}

// Answers EM_GETSEL.
inline LRESULT TellSelection(int start, int end, WPARAM wparam, LPARAM lparam) {
  if (wparam != 0) *reinterpret_cast<DWORD*>(wparam) = static_cast<DWORD>(start);
  if (lparam != 0) *reinterpret_cast<DWORD*>(lparam) = static_cast<DWORD>(end);
  return start > 0xffff || end > 0xffff ? -1 : MAKELONG(start, end);
}

}  // namespace vt63x::ui

#endif
