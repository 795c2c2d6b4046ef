// SPDX-License-Identifier: MIT

// DialogBoxParamA, CreateDialogParamA, EndDialog and the calls that name a control by its id.

#include <windows.h>

#include <cstring>

#include "platform/window/dialog.h"
#include "platform/window/dialog_keys.h"
#include "platform/window/main_thread.h"
#include "platform/window/modal_loop.h"
#include "platform/window/resource_file.h"

namespace ui = vt63x::ui;

namespace vt63x::ui {
namespace {

constexpr WORD kDialogResource = 5;

// Null with the last error set. The toolkit's application must be there.
Dialog* MakeDialog(LPCSTR name, HWND owner, DLGPROC procedure) {
  const auto number = reinterpret_cast<ULONG_PTR>(name);
  const std::optional<dialog_template> source =
      number > 0xffff
          ? std::nullopt
          : ParseDialogTemplate(FindResource(kDialogResource, static_cast<WORD>(number)));
  if (!source) {
    SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
    return nullptr;
  }
  Window* const owner_window = owner == nullptr ? nullptr : Window::Need(owner);
  if (owner != nullptr && owner_window == nullptr) return nullptr;
  Dialog* const owner_dialog = owner_window == nullptr ? nullptr : owner_window->dialog();
  Dialog* const dialog = Dialog::Make(*source, owner_dialog, procedure);
  if (dialog == nullptr) SetLastError(ERROR_INVALID_PARAMETER);
  return dialog;
}

Dialog* NeedDialog(HWND handle) {
  Window* const window = Window::Need(handle);
  return window == nullptr || window->is_control() ? nullptr : window->dialog();
}

Window* NeedControl(HWND dialog_handle, int id) {
  Dialog* const dialog = NeedDialog(dialog_handle);
  if (dialog == nullptr) return nullptr;
  Window* const control = dialog->Control(id);
  if (control == nullptr) SetLastError(ERROR_CONTROL_ID_NOT_FOUND);
  return control;
}

template <typename Result, typename Function>
Result WithControl(HWND dialog, int id, Result failure, const Function& function) {
  return CallOnMain<Result>(failure, [&]() -> Result {
    Window* const control = NeedControl(dialog, id);
    return control == nullptr ? failure : function(*control);
  });
}

INT_PTR RunDialogBox(LPCSTR name, HWND owner, DLGPROC procedure, LPARAM parameter) {
  Dialog* const dialog = MakeDialog(name, owner, procedure);
  if (dialog == nullptr) return -1;
  OwnerDisabled owner_disabled(owner);
  return RunModalDialog(*dialog, owner_disabled, parameter);
}

}  // namespace
}  // namespace vt63x::ui

INT_PTR WINAPI DialogBoxParamA(HINSTANCE, LPCSTR name, HWND owner, DLGPROC procedure,
                               LPARAM parameter) {
  ui::NeedApplication();
  const INT_PTR result = ui::CallOnMain<INT_PTR>(
      -1, [&] { return ui::RunDialogBox(name, owner, procedure, parameter); });
  if (ui::OnMainThread()) ui::Window::FreeDestroyed();
  return result;
}

HWND WINAPI CreateDialogParamA(HINSTANCE, LPCSTR name, HWND owner, DLGPROC procedure,
                               LPARAM parameter) {
  ui::NeedApplication();
  return ui::CallOnMain<HWND>(nullptr, [&]() -> HWND {
    ui::Dialog* const dialog = ui::MakeDialog(name, owner, procedure);
    if (dialog == nullptr) return nullptr;
    const HWND handle = dialog->handle();
    const bool visible = dialog->shown_by_template();
    dialog->Initialise(parameter);
    if (ui::Window::Find(handle) == nullptr) return nullptr;
    if (visible) dialog->Show(true);
    return handle;
  });
}

BOOL WINAPI EndDialog(HWND handle, INT_PTR result) {
  return ui::CallOnMain<BOOL>(FALSE, [&]() -> BOOL {
    ui::Dialog* const dialog = ui::NeedDialog(handle);
    if (dialog == nullptr) return FALSE;
    ui::EndModalDialog(*dialog, result);
    return TRUE;
  });
}

HWND WINAPI GetDlgItem(HWND dialog, int id) {
  return ui::WithControl<HWND>(dialog, id, nullptr, [](ui::Window& c) { return c.handle(); });
}

HWND WINAPI GetNextDlgTabItem(HWND handle, HWND control, BOOL previous) {
  return ui::CallOnMain<HWND>(nullptr, [&]() -> HWND {
    ui::Dialog* const dialog = ui::NeedDialog(handle);
    if (dialog == nullptr) return nullptr;
    ui::Window* const next = ui::NextTabStop(*dialog, ui::Window::Find(control), previous != FALSE);
    return next == nullptr ? nullptr : next->handle();
  });
}

LRESULT WINAPI SendDlgItemMessageA(HWND dialog, int id, UINT message, WPARAM wparam,
                                   LPARAM lparam) {
  return ui::WithControl<LRESULT>(dialog, id, 0,
                                  [&](ui::Window& c) { return c.Send(message, wparam, lparam); });
}

BOOL WINAPI SetDlgItemTextA(HWND dialog, int id, LPCSTR text) {
  return SendDlgItemMessageA(dialog, id, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)) != 0;
}

UINT WINAPI GetDlgItemTextA(HWND dialog, int id, LPSTR buffer, int size) {
  if (buffer == nullptr || size <= 0) return 0;
  buffer[0] = '\0';
  return static_cast<UINT>(SendDlgItemMessageA(dialog, id, WM_GETTEXT, static_cast<WPARAM>(size),
                                               reinterpret_cast<LPARAM>(buffer)));
}

BOOL WINAPI CheckDlgButton(HWND dialog, int id, UINT check) {
  return ui::WithControl<BOOL>(dialog, id, FALSE, [&](ui::Window& c) {
    c.Send(BM_SETCHECK, check, 0);
    return TRUE;
  });
}

UINT WINAPI IsDlgButtonChecked(HWND dialog, int id) {
  return static_cast<UINT>(SendDlgItemMessageA(dialog, id, BM_GETCHECK, 0, 0));
}

BOOL WINAPI MapDialogRect(HWND handle, LPRECT rect) {
  return ui::CallOnMain<BOOL>(FALSE, [&]() -> BOOL {
    ui::Dialog* const dialog = ui::NeedDialog(handle);
    if (dialog == nullptr || rect == nullptr) return FALSE;
    const QRect pixels = dialog->units().ToPixels(*rect);
    *rect = {pixels.left(), pixels.top(), pixels.left() + pixels.width(),
             pixels.top() + pixels.height()};
    return TRUE;
  });
}

HHOOK WINAPI SetWindowsHookExA(int kind, HOOKPROC procedure, HINSTANCE instance, DWORD thread) {
  static char filter = 0;  // its address stands for every hook
  if (kind == WH_MSGFILTER && procedure != nullptr && instance == nullptr &&
      thread == GetCurrentThreadId()) {
    return reinterpret_cast<HHOOK>(&filter);
  }
  SetLastError(ERROR_INVALID_PARAMETER);
  return nullptr;
}

BOOL WINAPI UnhookWindowsHookEx(HHOOK hook) { return hook == nullptr ? FALSE : TRUE; }

LRESULT WINAPI CallNextHookEx(HHOOK, int, WPARAM, LPARAM) { return 0; }

BOOL WINAPI IsDialogMessageA(HWND, MSG*) { return FALSE; }
