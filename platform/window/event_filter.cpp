// SPDX-License-Identifier: MIT

#include "platform/window/event_filter.h"

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QMenuBar>
#include <QWindow>

#include "platform/window/dialog.h"
#include "platform/window/draw_while.h"
#include "platform/window/input_queue.h"
#include "platform/window/key_input.h"
#include "platform/window/message_queue.h"

namespace vt63x::ui {
namespace {

bool IsInput(QEvent::Type type) {
  switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::Enter:
    case QEvent::HoverEnter:
    case QEvent::HoverMove:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::ShortcutOverride:
    case QEvent::InputMethod:
    case QEvent::ContextMenu:
    case QEvent::DragEnter:
    case QEvent::Drop:
    case QEvent::TouchBegin:
      return true;
    default:
      return false;
  }
}

// The newest dialog that the disabled one owns, and so on: the one that the user must answer.
Dialog* ModalOf(Dialog& disabled) {
  const auto& all = Window::All();
  for (auto window = all.rbegin(); window != all.rend(); ++window) {
    if ((*window)->is_control() || (*window)->parent() != &disabled) continue;
    auto* const owned = static_cast<Dialog*>(*window);
    if (owned->loop == nullptr) continue;
    return owned->enabled() ? owned : ModalOf(*owned);
  }
  return nullptr;
}

void PointToModal(Dialog& disabled) {
  Dialog* const modal = ModalOf(disabled);
  if (modal == nullptr) return;
  modal->frame()->raise();
  modal->frame()->activateWindow();
}

// A window without a system menu has no close box; some window managers draw one all the same.
bool CanBeClosed(const Dialog& dialog) {
  return dialog.TakesInput() && (dialog.style() & static_cast<DWORD>(WS_SYSMENU)) != 0;
}

class EventFilter : public QObject {
 public:
  EventFilter() {
    QObject::connect(qApp, &QApplication::focusChanged, this, [](QWidget*, QWidget* now) {
      if (!OnlyDrawing()) InputQueue::Instance().FocusMoved(now);
    });
  }

  bool eventFilter(QObject* object, QEvent* event) override {
    if (object->isWindowType()) {
      return InputQueue::Instance().Take(*static_cast<QWindow*>(object), *event);
    }
    if (!object->isWidgetType()) return false;
    auto* const widget = static_cast<QWidget*>(object);
    Window* const window = Window::OfWidget(widget);
    if (window == nullptr) return false;
    Dialog* const dialog = window->dialog();
    // Menus and drop-downs are windows of the toolkit's own.
    if (dialog == nullptr || widget->window() != dialog->frame()) return false;
    if (!dialog->TakesInput() && IsInput(event->type())) {
      if (event->type() == QEvent::MouseButtonPress) PointToModal(*dialog);
      return true;
    }
    return widget == dialog->frame() && FrameEvent(*dialog, *event)
               ? true
               : KeyEvent(*dialog, *widget, *event);
  }

 private:
  static bool FrameEvent(Dialog& dialog, QEvent& event) {
    switch (event.type()) {
      case QEvent::Close:
        event.ignore();
        if (CanBeClosed(dialog)) PostToWindow(dialog.handle(), WM_CLOSE, 0, 0);
        return true;
      case QEvent::Resize:
      case QEvent::WindowStateChange:
        if (!OnlyDrawing()) dialog.SizeMayHaveChanged();
        return false;
      case QEvent::WindowActivate:
        if (!OnlyDrawing() && !dialog.enabled()) PointToModal(dialog);
        return false;
      default:
        return false;
    }
  }

  static bool KeyEvent(Dialog& dialog, const QWidget& widget, QEvent& event) {
    if (KeyOnItsWay()) return false;
    const bool in_menu_bar = qobject_cast<const QMenuBar*>(&widget) != nullptr;
    switch (event.type()) {
      case QEvent::ShortcutOverride:
        // The toolkit would look for menus as soon as a key arrives, before it has its turn.
        event.accept();
        return true;
      case QEvent::KeyPress:
      case QEvent::KeyRelease:
        return in_menu_bar ? KeyForMenuBar(dialog, static_cast<QKeyEvent&>(event))
                           : KeyFromUser(dialog, static_cast<QKeyEvent&>(event));
      default:
        return false;
    }
  }
};

}  // namespace

std::unique_ptr<QObject> MakeEventFilter() { return std::make_unique<EventFilter>(); }

}  // namespace vt63x::ui
