// SPDX-License-Identifier: MIT

// Calls that concern one window: texts, places, states, procedures.

#include <windows.h>

#include <QWidget>
#include <cstring>

#include "platform/window/dialog.h"
#include "platform/window/focus.h"
#include "platform/window/main_thread.h"

namespace ui = vt63x::ui;

namespace vt63x::ui {
namespace {

template <typename Result, typename Function>
Result WithWindow(HWND handle, Result failure, const Function& function) {
  return CallOnMain<Result>(failure, [&]() -> Result {
    Window* const window = Window::Need(handle);
    return window == nullptr ? failure : function(*window);
  });
}

HWND HandleOf(const Window* window) { return window == nullptr ? nullptr : window->handle(); }

// The client area's widget for a dialog, the control itself otherwise.
QWidget* ClientOf(Window& window) {
  return window.is_control() ? window.widget() : window.dialog()->client();
}

Window* NextSibling(Window& window) {
  if (!window.is_control()) return nullptr;
  bool found = false;
  for (const auto& control : window.dialog()->controls()) {
    if (found && !control->destroyed()) return control.get();
    found = found || control.get() == &window;
  }
  return nullptr;
}

Window* FirstControl(Window& window) {
  if (window.is_control() || window.dialog()->controls().empty()) return nullptr;
  return window.dialog()->controls().front().get();
}

LONG_PTR WindowLong(Window& window, int index) {
  switch (index) {
    case GWLP_WNDPROC:
      return reinterpret_cast<LONG_PTR>(window.procedure());
    case GWL_STYLE:
      return static_cast<LONG>(window.style());
    default:
      SetLastError(ERROR_INVALID_PARAMETER);
      return 0;
  }
}

bool IsShown(const Window& window) { return !window.widget()->isHidden(); }

}  // namespace
}  // namespace vt63x::ui

BOOL WINAPI DestroyWindow(HWND window) {
  return ui::WithWindow<BOOL>(window, FALSE, [](ui::Window& w) {
    w.Destroy();
    return TRUE;
  });
}

BOOL WINAPI ShowWindow(HWND window, int command) {
  return ui::WithWindow<BOOL>(window, FALSE, [&](ui::Window& w) {
    const bool before = ui::IsShown(w);
    const bool show = command != SW_HIDE;
    if (w.is_control()) {
      w.widget()->setVisible(show);
    } else {
      w.dialog()->Show(show);
    }
    return before ? TRUE : FALSE;
  });
}

BOOL WINAPI EnableWindow(HWND window, BOOL enable) {
  return ui::WithWindow<BOOL>(window, FALSE, [&](ui::Window& w) {
    const BOOL was_disabled = w.enabled() ? FALSE : TRUE;
    w.Enable(enable != FALSE);
    return was_disabled;
  });
}

BOOL WINAPI IsWindow(HWND window) { return ui::Window::Exists(window) ? TRUE : FALSE; }

BOOL WINAPI IsWindowEnabled(HWND window) {
  return ui::WithWindow<BOOL>(window, FALSE,
                              [](ui::Window& w) { return w.enabled() ? TRUE : FALSE; });
}

BOOL WINAPI IsWindowVisible(HWND window) {
  return ui::WithWindow<BOOL>(window, FALSE, [](ui::Window& w) {
    return ui::IsShown(w) && ui::IsShown(*w.dialog()) ? TRUE : FALSE;
  });
}

HWND WINAPI SetFocus(HWND window) {
  if (window == nullptr) {
    return ui::CallOnMain<HWND>(nullptr, [] { return ui::HandleOf(ui::MoveFocus(nullptr)); });
  }
  return ui::WithWindow<HWND>(window, nullptr,
                              [](ui::Window& w) { return ui::HandleOf(ui::MoveFocus(&w)); });
}

HWND WINAPI GetFocus() { return ui::OnMainThread() ? ui::HandleOf(ui::FocusWindow()) : nullptr; }

HWND WINAPI GetParent(HWND window) {
  return ui::WithWindow<HWND>(window, nullptr,
                              [](ui::Window& w) { return ui::HandleOf(w.parent()); });
}

HWND WINAPI GetWindow(HWND window, UINT relation) {
  return ui::WithWindow<HWND>(window, nullptr, [&](ui::Window& w) -> HWND {
    switch (relation) {
      case GW_CHILD:
        return ui::HandleOf(ui::FirstControl(w));
      case GW_HWNDNEXT:
        return ui::HandleOf(ui::NextSibling(w));
      case GW_OWNER:
        return w.is_control() ? nullptr : ui::HandleOf(w.parent());
      default:
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
  });
}

int WINAPI GetDlgCtrlID(HWND control) {
  return ui::WithWindow<int>(control, 0, [](ui::Window& w) { return w.id(); });
}

HWND WINAPI FindWindowA(LPCSTR class_name, LPCSTR caption) {
  return ui::CallOnMain<HWND>(nullptr, [&]() -> HWND {
    if (class_name != nullptr && std::strcmp(class_name, "#32770") != 0) return nullptr;
    const auto& all = ui::Window::All();
    for (auto window = all.rbegin(); window != all.rend(); ++window) {
      if ((*window)->is_control()) continue;
      if (caption == nullptr || (*window)->Text() == caption) return (*window)->handle();
    }
    return nullptr;
  });
}

BOOL WINAPI SetWindowTextA(HWND window, LPCSTR text) {
  return ui::WithWindow<BOOL>(window, FALSE, [&](ui::Window& w) {
    return w.Send(WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)) != 0 ? TRUE : FALSE;
  });
}

int WINAPI GetWindowTextA(HWND window, LPSTR buffer, int size) {
  if (buffer == nullptr || size <= 0) return 0;
  buffer[0] = '\0';
  return ui::WithWindow<int>(window, 0, [&](ui::Window& w) {
    return static_cast<int>(
        w.Send(WM_GETTEXT, static_cast<WPARAM>(size), reinterpret_cast<LPARAM>(buffer)));
  });
}

int WINAPI GetWindowTextLengthA(HWND window) {
  return ui::WithWindow<int>(
      window, 0, [](ui::Window& w) { return static_cast<int>(w.Send(WM_GETTEXTLENGTH, 0, 0)); });
}

LONG_PTR WINAPI SetWindowLongPtrA(HWND window, int index, LONG_PTR value) {
  return ui::WithWindow<LONG_PTR>(window, 0, [&](ui::Window& w) -> LONG_PTR {
    if (index != GWLP_WNDPROC || value == 0) {
      SetLastError(ERROR_INVALID_PARAMETER);
      return 0;
    }
    return reinterpret_cast<LONG_PTR>(w.set_procedure(reinterpret_cast<WNDPROC>(value)));
  });
}

LONG_PTR WINAPI GetWindowLongPtrA(HWND window, int index) {
  return ui::WithWindow<LONG_PTR>(window, 0,
                                  [&](ui::Window& w) { return ui::WindowLong(w, index); });
}

LRESULT WINAPI CallWindowProcA(WNDPROC procedure, HWND window, UINT message, WPARAM wparam,
                               LPARAM lparam) {
  return ui::WithWindow<LRESULT>(window, 0, [&](ui::Window&) -> LRESULT {
    return procedure == nullptr ? 0 : procedure(window, message, wparam, lparam);
  });
}

BOOL WINAPI GetWindowRect(HWND window, LPRECT rect) {
  return ui::WithWindow<BOOL>(window, FALSE, [&](ui::Window& w) -> BOOL {
    if (rect == nullptr) return FALSE;
    const QWidget& widget = *w.widget();
    const QRect place =
        w.is_control() ? QRect(widget.mapToGlobal(QPoint()), widget.size()) : w.dialog()->Place();
    *rect = {place.left(), place.top(), place.left() + place.width(), place.top() + place.height()};
    return TRUE;
  });
}

BOOL WINAPI GetClientRect(HWND window, LPRECT rect) {
  return ui::WithWindow<BOOL>(window, FALSE, [&](ui::Window& w) -> BOOL {
    if (rect == nullptr) return FALSE;
    const QWidget& client = *ui::ClientOf(w);
    *rect = {0, 0, client.width(), client.height()};
    return TRUE;
  });
}

BOOL WINAPI ClientToScreen(HWND window, LPPOINT point) {
  return ui::WithWindow<BOOL>(window, FALSE, [&](ui::Window& w) -> BOOL {
    if (point == nullptr) return FALSE;
    const QPoint global = ui::ClientOf(w)->mapToGlobal(QPoint(point->x, point->y));
    *point = {global.x(), global.y()};
    return TRUE;
  });
}

BOOL WINAPI MoveWindow(HWND window, int x, int y, int width, int height, BOOL) {
  return ui::WithWindow<BOOL>(window, FALSE, [&](ui::Window& w) {
    const QRect place(x, y, std::max(0, width), std::max(0, height));
    if (w.is_control()) {
      w.widget()->setGeometry(place);
    } else {
      w.dialog()->MoveTo(place);
    }
    return TRUE;
  });
}

HINSTANCE WINAPI GetModuleHandleA(LPCSTR name) {
  // The program's resources are one place in memory: its address stands for the program.
  static char program = 0;
  return name == nullptr ? reinterpret_cast<HINSTANCE>(&program) : nullptr;
}
