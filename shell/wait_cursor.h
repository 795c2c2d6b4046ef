// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_WAIT_CURSOR_H
#define VT63X_SHELL_WAIT_CURSOR_H

#include <windows.h>

namespace vt63x {

// The mouse shows that the program is busy for as long as this lives. Main thread.
class WaitCursor {
 public:
  WaitCursor() : before_(SetCursor(LoadCursorA(nullptr, IDC_WAIT))) {}
  ~WaitCursor() { SetCursor(before_); }
  WaitCursor(const WaitCursor&) = delete;
  WaitCursor& operator=(const WaitCursor&) = delete;

 private:
  HCURSOR before_;
};

}  // namespace vt63x

#endif
