// SPDX-License-Identifier: MIT

#include "shell/edit_text.h"

namespace vt63x {

void CorrectText(HWND dialog, int id, const char* text) {
  DWORD caret = 0;
  SendDlgItemMessageA(dialog, id, EM_GETSEL, 0, reinterpret_cast<LPARAM>(&caret));
  SetDlgItemTextA(dialog, id, text);
  SendDlgItemMessageA(dialog, id, EM_SETSEL, caret, static_cast<LPARAM>(caret));
}

}  // namespace vt63x
