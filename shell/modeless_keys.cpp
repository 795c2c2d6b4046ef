// SPDX-License-Identifier: MIT

#include "shell/modeless_keys.h"

#include "shell/program.h"
#include "shell/state/app_state.h"

namespace vt63x {
namespace {

// Asked by IsDialogMessage, the one of the loop and the one in here alike.
LRESULT CALLBACK FilterMessage(int code, WPARAM wparam, LPARAM lparam) {
  static bool inside = false;
  const AppState* const state = ProgramState();
  if (code != MSGF_DIALOGBOX || inside || state == nullptr || state->register_dlg == nullptr) {
    return CallNextHookEx(nullptr, code, wparam, lparam);
  }
  inside = true;
  const BOOL taken = IsDialogMessageA(state->register_dlg, reinterpret_cast<MSG*>(lparam));
  inside = false;
  return taken;
}

}  // namespace

ModelessKeys::ModelessKeys()
    : hook_(SetWindowsHookExA(WH_MSGFILTER, FilterMessage, nullptr, GetCurrentThreadId())) {}

ModelessKeys::~ModelessKeys() {
  if (hook_ != nullptr) UnhookWindowsHookEx(hook_);
}

}  // namespace vt63x
