// SPDX-License-Identifier: MIT

#include "platform/window/input_queue.h"

#include <QApplication>
#include <QMenuBar>
#include <algorithm>
#include <utility>

#include "platform/window/dialog.h"
#include "platform/window/focus.h"
#include "platform/window/main_thread.h"
#include "platform/window/message_queue.h"
#include "platform/window/modal_loop.h"

namespace vt63x::ui {
namespace {

bool IsFrame(const QWindow& window) {
  const auto& all = Window::All();
  return std::any_of(all.begin(), all.end(), [&](const Window* w) {
    return !w->is_control() && w->widget()->windowHandle() == &window;
  });
}

bool IsKey(QEvent::Type type) { return type == QEvent::KeyPress || type == QEvent::KeyRelease; }

bool IsFromUser(const QWindow& window, QEvent::Type type) {
  switch (type) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
      return true;
    case QEvent::Close:
      // The toolkit closes windows of its own in this way too.
      return IsFrame(window);
    default:
      return false;
  }
}

// Where keys go: a menu or a drop-down list that is open, a dialog of the toolkit's own, a menu bar
// that the keyboard moves in, or the dialog with the focus. Another window may still have the
// keyboard as the screen sees it, when a dialog has just come or gone.
QWidget* KeyReceiver() {
  if (QWidget* const popup = QApplication::activePopupWidget()) return popup;
  if (QWidget* const modal = QApplication::activeModalWidget()) return modal;
  QWidget* const holder = QApplication::focusWidget();
  if (qobject_cast<QMenuBar*>(holder) != nullptr) return holder->window();
  Window* const focus = FocusWindow();
  return focus == nullptr ? nullptr : focus->dialog()->frame();
}

QWindow* KeyWindow(QWindow* arrived_at) {
  const QWidget* const receiver = KeyReceiver();
  QWindow* const window = receiver == nullptr ? nullptr : receiver->windowHandle();
  return window == nullptr ? arrived_at : window;
}

}  // namespace

InputQueue& InputQueue::Instance() {
  static auto* const queue = new InputQueue;
  return *queue;
}

bool InputQueue::Take(QWindow& window, QEvent& event) {
  if (&event == handed_out_ || !IsFromUser(window, event.type())) return false;
  waiting_input input{&window, std::unique_ptr<QEvent>(event.clone())};
  // A window is closed by its own procedure, if at all.
  if (event.type() == QEvent::Close) event.ignore();
  if (empty() && InputHasItsTurn()) {
    Deliver(input);
  } else {
    waiting_.push_back(std::move(input));
    WakeMainThread();
  }
  return true;
}

void InputQueue::FocusMoved(QWidget* now) {
  if (empty() || HandingOut()) {
    ToolkitFocusMoved(now);
  } else {
    waiting_.push_back({});
  }
}

// A loop that an event began lets new ones come while the event is still being handled.
bool InputQueue::HandingOut() const {
  return handed_out_ != nullptr && depth_ == ModalLoop::Depth();
}

void InputQueue::HandOut() {
  const waiting_input input = std::move(waiting_.front());
  waiting_.pop_front();
  if (input.event == nullptr) {
    ToolkitFocusMoved(QApplication::focusWidget());
    return;
  }
  // What was typed before may have taken the keyboard back to another window.
  const bool press = input.event->type() == QEvent::MouseButtonPress;
  if (press && input.window != nullptr && IsFrame(*input.window)) input.window->requestActivate();
  Deliver(input);
}

void InputQueue::Deliver(const waiting_input& input) {
  QWindow* const window =
      IsKey(input.event->type()) ? KeyWindow(input.window) : input.window.data();
  if (window == nullptr) return;
  const QEvent* const before = std::exchange(handed_out_, input.event.get());
  const std::size_t depth_before = std::exchange(depth_, ModalLoop::Depth());
  QCoreApplication::sendEvent(window, input.event.get());
  handed_out_ = before;
  depth_ = depth_before;
}

}  // namespace vt63x::ui
