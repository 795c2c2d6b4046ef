// SPDX-License-Identifier: MIT

#include <windows.h>

#include <QApplication>
#include <utility>

#include "platform/window/main_thread.h"

namespace ui = vt63x::ui;

namespace vt63x::ui {
namespace {

// A cursor's handle is its number. NOLINTNEXTLINE(performance-no-int-to-ptr)
HCURSOR Handle(LPCSTR name) { return reinterpret_cast<HCURSOR>(const_cast<char*>(name)); }

bool IsKnown(HCURSOR cursor) { return cursor == Handle(IDC_ARROW) || cursor == Handle(IDC_WAIT); }

HCURSOR shown = Handle(IDC_ARROW);  // main thread

void Show(HCURSOR cursor) {
  if (cursor == shown) return;
  if (cursor == Handle(IDC_WAIT)) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
  } else {
    QApplication::restoreOverrideCursor();
  }
}

}  // namespace
}  // namespace vt63x::ui

HCURSOR WINAPI LoadCursorA(HINSTANCE instance, LPCSTR name) {
  if (instance == nullptr && ui::IsKnown(ui::Handle(name))) return ui::Handle(name);
  SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
  return nullptr;
}

HCURSOR WINAPI SetCursor(HCURSOR cursor) {
  if (!ui::IsKnown(cursor)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  ui::NeedApplication();
  return ui::CallOnMain<HCURSOR>(nullptr, [&] {
    ui::Show(cursor);
    return std::exchange(ui::shown, cursor);
  });
}
