// SPDX-License-Identifier: MIT

#include "shell/about_dialog.h"

#include "shell/resources/resource.h"

namespace vt63x {

INT_PTR CALLBACK AboutDlgProc(HWND dialog, UINT message, WPARAM wparam, LPARAM) {
  const bool leave =
      message == WM_CLOSE || (message == WM_COMMAND && LOWORD(wparam) == IDC_ABOUT_CLOSE);
  if (leave) EndDialog(dialog, static_cast<INT_PTR>(wparam));
  return leave || message == WM_INITDIALOG ? TRUE : FALSE;
}

}  // namespace vt63x
