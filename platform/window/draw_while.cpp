// SPDX-License-Identifier: MIT

#include "platform/window/draw_while.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <atomic>
#include <system_error>
#include <thread>

#include "platform/window/dialog.h"
#include "platform/window/focus.h"
#include "platform/window/main_thread.h"

namespace vt63x::ui {
namespace {

bool only_drawing = false;

class Hold {
 public:
  Hold() {
    only_drawing = true;
    HoldMessages(true);
  }
  ~Hold() {
    only_drawing = false;
    HoldMessages(false);
    const std::vector<Window*> all = Window::All();
    for (Window* const window : all) {
      if (!window->is_control()) window->dialog()->SizeMayHaveChanged();
    }
    ToolkitFocusMoved(QApplication::focusWidget());
  }
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;
};

}  // namespace

bool OnlyDrawing() { return only_drawing; }

void DrawWhile(const std::function<void()>& call) {
  QAbstractEventDispatcher* const dispatcher = QAbstractEventDispatcher::instance();
  if (!OnMainThread() || only_drawing || dispatcher == nullptr) {
    call();
    return;
  }
  std::atomic<bool> over = false;
  std::thread thread;
  try {
    thread = std::thread([&] {
      call();
      over = true;
      dispatcher->wakeUp();
    });
  } catch (const std::system_error&) {
    call();  // there is no other thread for it
    return;
  }
  {
    const Hold hold;
    while (!over) {
      QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents |
                                      QEventLoop::WaitForMoreEvents);
    }
  }
  thread.join();
}

}  // namespace vt63x::ui
