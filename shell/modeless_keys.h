// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_MODELESS_KEYS_H
#define VT63X_SHELL_MODELESS_KEYS_H

#include <windows.h>

namespace vt63x {

// Gives the register dialog, which is modeless, its keys (Tab, Enter, Alt and a letter) for as long
// as this lives: a modal dialog's loop knows those of its own dialog only. Main thread.
class ModelessKeys {
 public:
  ModelessKeys();
  ~ModelessKeys();
  ModelessKeys(const ModelessKeys&) = delete;
  ModelessKeys& operator=(const ModelessKeys&) = delete;

 private:
  HHOOK hook_;
};

}  // namespace vt63x

#endif
