// SPDX-License-Identifier: MIT

#include "platform/window/message_queue.h"

#include <QTimer>
#include <atomic>
#include <deque>
#include <map>
#include <memory>

#include "platform/window/draw_while.h"
#include "platform/window/input_queue.h"
#include "platform/window/key_input.h"
#include "platform/window/main_thread.h"
#include "platform/window/modal_loop.h"
#include "platform/window/start_up.h"
#include "platform/window/window.h"
#include "threading/mutex.h"

namespace vt63x::ui {
namespace {

constexpr int kAtOnce = 64;
constexpr UINT kShortestTimer = 10;  // ms

struct posted_message {
  HWND window;
  UINT message;
  WPARAM wparam;
  LPARAM lparam;
};

struct MessageQueue {
  Mutex mutex;
  std::deque<posted_message> messages GUARDED_BY(mutex);
  bool quit GUARDED_BY(mutex) = false;
};

MessageQueue& Queue() {
  static MessageQueue* const queue = new MessageQueue;  // as long as any thread lives
  return *queue;
}

std::atomic<bool> quit_from_signal = false;

std::optional<posted_message> NextMessage() {
  MessageQueue& queue = Queue();
  const LockGuard lock(queue.mutex);
  if (queue.messages.empty()) return std::nullopt;
  const posted_message message = queue.messages.front();
  queue.messages.pop_front();
  return message;
}

bool Empty() {
  MessageQueue& queue = Queue();
  const LockGuard lock(queue.mutex);
  return queue.messages.empty();
}

void Deliver(const posted_message& posted) {
  Window* const window = Window::Find(posted.window);
  if (window == nullptr) return;
  if (KeyFromQueue(*window, posted.message, posted.wparam, posted.lparam)) return;
  window->Send(posted.message, posted.wparam, posted.lparam);
}

bool SomethingWaits() { return !Empty() || (!InputQueue::Instance().empty() && !QuitRequested()); }

// False when it is nobody's turn. Something may be left when a nested loop begins in here: it must
// wake up for that.
bool HandOutNext() {
  InputQueue& input = InputQueue::Instance();
  const std::optional<posted_message> message = NextMessage();
  if (!message && (input.empty() || !InputHasItsTurn())) return false;
  if (SomethingWaits()) WakeMainThread();
  if (message) {
    Deliver(*message);
  } else {
    input.HandOut();
  }
  return true;
}

using timer_key = std::pair<HWND, UINT_PTR>;

// Main thread.
std::map<timer_key, std::unique_ptr<QTimer>>& Timers() {
  static auto* const timers = new std::map<timer_key, std::unique_ptr<QTimer>>;
  return *timers;
}

void StopTimer(std::map<timer_key, std::unique_ptr<QTimer>>::iterator timer) {
  // It may be ending itself: the toolkit deletes it when its signal has run.
  timer->second->stop();
  timer->second.release()->deleteLater();
  Timers().erase(timer);
}

void Tick(HWND window, UINT_PTR id) {
  if (Window::Find(window) != nullptr) {
    PostToWindow(window, WM_TIMER, id, 0);
    return;
  }
  const auto timer = Timers().find({window, id});
  if (timer != Timers().end()) StopTimer(timer);
}

}  // namespace

void PostToWindow(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  MessageQueue& queue = Queue();
  {
    const LockGuard lock(queue.mutex);
    queue.messages.push_back({window, message, wparam, lparam});
  }
  WakeMainThread();
}

void DispatchMessages() {
  for (int i = 0; i < kAtOnce; ++i) {
    RunWaitingCalls();
    // Once a dialog is ended its loop takes no further message; they are for the loop around it.
    if (ModalLoop::InnermostEnded()) {
      WakeMainThread();
      return;
    }
    if (!HandOutNext()) break;
  }
  Window::FreeDestroyed();
  if (SomethingWaits()) {
    WakeMainThread();
  } else if (QuitRequested()) {
    ModalLoop::EndInnermost();
  }
}

void QuitFromSignal() {
  quit_from_signal = true;
  WakeMainThread();
}

bool InputHasItsTurn() {
  return Empty() && !QuitRequested() && !ModalLoop::InnermostEnded() && !OnlyDrawing();
}

bool QuitRequested() {
  if (quit_from_signal) return true;
  MessageQueue& queue = Queue();
  const LockGuard lock(queue.mutex);
  return queue.quit;
}

void ForgetQuit() {
  if (quit_from_signal.exchange(false)) CatchEndSignals();
  MessageQueue& queue = Queue();
  const LockGuard lock(queue.mutex);
  queue.quit = false;
}

}  // namespace vt63x::ui

namespace ui = vt63x::ui;

BOOL WINAPI PostMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (!ui::Window::Exists(window)) {
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return FALSE;
  }
  ui::PostToWindow(window, message, wparam, lparam);
  return TRUE;
}

void WINAPI PostQuitMessage(int) {
  ui::MessageQueue& queue = ui::Queue();
  {
    const vt63x::LockGuard lock(queue.mutex);
    queue.quit = true;
  }
  ui::WakeMainThread();
}

LRESULT WINAPI SendMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  return ui::CallOnMain<LRESULT>(0, [&]() -> LRESULT {
    ui::Window* const target = ui::Window::Need(window);
    return target == nullptr ? 0 : target->Send(message, wparam, lparam);
  });
}

UINT_PTR WINAPI SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure) {
  return ui::CallOnMain<UINT_PTR>(0, [&]() -> UINT_PTR {
    if (procedure != nullptr || id == 0) {
      SetLastError(ERROR_INVALID_PARAMETER);
      return 0;
    }
    if (ui::Window::Need(window) == nullptr) return 0;
    std::unique_ptr<QTimer>& timer = ui::Timers()[{window, id}];
    if (timer == nullptr) {
      timer = std::make_unique<QTimer>();
      QObject::connect(timer.get(), &QTimer::timeout, [window, id] { ui::Tick(window, id); });
    }
    timer->start(static_cast<int>(std::max(milliseconds, ui::kShortestTimer)));
    return id;
  });
}

BOOL WINAPI KillTimer(HWND window, UINT_PTR id) {
  return ui::CallOnMain<BOOL>(FALSE, [&]() -> BOOL {
    const auto timer = ui::Timers().find({window, id});
    if (timer == ui::Timers().end()) return FALSE;
    ui::StopTimer(timer);
    return TRUE;
  });
}
