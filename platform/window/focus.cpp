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

void Tell(Window* before, Window* now) {
  const HWND before_handle = before == nullptr ? nullptr : before->handle();
  const HWND now_handle = now == nullptr ? nullptr : now->handle();
  if (before != nullptr) before->Send(WM_KILLFOCUS, reinterpret_cast<WPARAM>(now_handle), 0);
  // A handler may have moved it on.
  if (now == nullptr || focus != now_handle) return;
  if (Dialog* const dialog = now->dialog()) dialog->RememberFocus(now_handle);
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
  Tell(before, window);
  return before;
}

void ToolkitFocusMoved(QWidget* now) {
  if (ours) return;
  Window* window = now == nullptr ? nullptr : Window::OfWidget(now);
  // A menu or a drop-down of ours has it for a moment.
  if (window != nullptr && now->window() != window->dialog()->frame()) return;
  // The toolkit gives it to the client area when the control that has it is disabled.
  if (window != nullptr && !window->is_control()) {
    Window* const remembered = Window::Find(window->dialog()->remembered_focus());
    if (remembered != nullptr) window = remembered;
  }
  Window* const before = FocusWindow();
  if (before == window) return;
  focus = window == nullptr ? nullptr : window->handle();
  Tell(before, window);
}

void FocusWindowGone(Window& window) {
  Window* const holder = FocusWindow();
  if (holder == nullptr) return;
  if (holder != &window && holder->dialog() != &window) return;
  focus = nullptr;
  Window* const owner = window.is_control() ? nullptr : window.parent();
  if (owner == nullptr || owner->destroyed() || !owner->enabled()) return;
  Window* const remembered = Window::Find(owner->dialog()->remembered_focus());
  MoveFocus(remembered != nullptr ? remembered : owner);
}

void EnableWidget(Window& control, bool enable) {
  const Following following;
  const bool has_focus = focus == control.handle();
  Dialog* const dialog = control.dialog();
  if (has_focus && !enable && dialog != nullptr) dialog->client()->setFocus();
  control.widget()->setEnabled(enable);
  if (has_focus && enable) control.widget()->setFocus();
}

}  // namespace vt63x::ui
