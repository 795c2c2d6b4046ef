// SPDX-License-Identifier: MIT

#include "platform/window/focus.h"

#include <QApplication>

#include "platform/window/dialog.h"

namespace vt63x::ui {
namespace {

HWND focus = nullptr;
bool ours = false;  // the toolkit follows us; what it says meanwhile is no news

class Following {
 public:
  Following() : before_(ours) { ours = true; }
  ~Following() { ours = before_; }
  Following(const Following&) = delete;
  Following& operator=(const Following&) = delete;

 private:
  bool before_;
};

enum class MovedBy { kProgram, kUser };

void Tell(Window* before, Window* now, MovedBy by) {
  const HWND before_handle = before == nullptr ? nullptr : before->handle();
  const HWND now_handle = now == nullptr ? nullptr : now->handle();
  if (before != nullptr) before->Send(WM_KILLFOCUS, reinterpret_cast<WPARAM>(now_handle), 0);
  // A handler may have moved it on.
  if (now == nullptr || focus != now_handle) return;
  if (Dialog* const dialog = now->dialog()) {
    dialog->RememberFocus(now_handle);
    dialog->FocusReached(*now, by == MovedBy::kUser);
  }
  now->Send(WM_SETFOCUS, reinterpret_cast<WPARAM>(before_handle), 0);
}

void LetToolkitFollow(Window* window) {
  const Following following;
  if (window == nullptr) {
    if (QWidget* const widget = QApplication::focusWidget()) widget->clearFocus();
    return;
  }
  Dialog* const dialog = window->dialog();
  QWidget* const widget = window->is_control() && window->enabled() ? window->widget()
                          : dialog != nullptr                       ? dialog->client()
                                                                    : nullptr;
  if (widget == nullptr) return;
  if (!widget->isActiveWindow() && widget->window()->isVisible()) widget->activateWindow();
  widget->setFocus();
}

}  // namespace

Window* FocusWindow() { return Window::Find(focus); }

Window* MoveFocus(Window* window) {
  Window* const before = FocusWindow();
  if (before == window) return before;
  focus = window == nullptr ? nullptr : window->handle();
  LetToolkitFollow(window);
  Tell(before, window, MovedBy::kProgram);
  return before;
}

void ToolkitFocusMoved(QWidget* now) {
  if (ours) return;
  // Between two windows of the program nobody has it for a moment.
  const bool active = QGuiApplication::applicationState() == Qt::ApplicationActive;
  if (now == nullptr && active) return;
  Window* window = now == nullptr ? nullptr : Window::OfWidget(now);
  // A menu or a drop-down of ours has it for a moment.
  if (window != nullptr && now->window() != window->dialog()->frame()) return;
  // The client area has it while nobody else wants it.
  if (window != nullptr && !window->is_control()) {
    Window* const remembered = Window::Find(window->dialog()->remembered_focus());
    if (remembered != nullptr) window = remembered;
  }
  Window* const before = FocusWindow();
  if (before == window) return;
  focus = window == nullptr ? nullptr : window->handle();
  Tell(before, window, MovedBy::kUser);
}

void FocusWindowGone(Window& window) {
  Window* const holder = FocusWindow();
  const bool inside = holder != nullptr && (holder == &window || holder->dialog() == &window);
  // An active dialog may have nobody with the focus, since a disabled control cannot have it.
  const bool active =
      holder == nullptr && !window.is_control() && window.widget()->isActiveWindow();
  if (!inside && !active) return;
  Window* const owner = window.is_control() ? nullptr : window.parent();
  if (owner == nullptr || !owner->enabled()) {
    MoveFocus(nullptr);
    return;
  }
  Window* const remembered = Window::Find(owner->dialog()->remembered_focus());
  MoveFocus(remembered != nullptr ? remembered : owner);
}

void HideWidget(QWidget& widget) {
  const Following following;
  widget.hide();
}

void EnableWidget(Window& control, bool enable) {
  Dialog* const dialog = control.dialog();
  if (!enable && focus == control.handle()) {
    focus = nullptr;
    Tell(&control, nullptr, MovedBy::kProgram);
    // Keys go to the dialog as long as nobody else takes the focus.
    const Following following;
    if (dialog != nullptr) dialog->client()->setFocus();
  }
  const Following following;
  control.widget()->setEnabled(enable);
}

}  // namespace vt63x::ui
