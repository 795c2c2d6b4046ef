// SPDX-License-Identifier: MIT

#include "platform/window/main_thread.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <QApplication>
#include <QSettings>
#include <QSocketNotifier>
#include <atomic>
#include <chrono>
#include <deque>
#include <memory>

#include "platform/kernel/slow_call.h"
#include "platform/window/draw_while.h"
#include "platform/window/event_filter.h"
#include "platform/window/message_queue.h"
#include "platform/window/start_up.h"
#include "platform/window/toolkit_style.h"
#include "threading/mutex.h"

namespace vt63x::ui {
namespace {

constexpr std::chrono::seconds kLoopAwaited{5};
// The toolkit's own dialogs would leave files in the user's home directory.
const QString kNoSettings = QStringLiteral("/dev/null");

enum class CallState { kWaiting, kRunning, kDone };

struct thread_call {
  const std::function<void()>* function;
  CallState state = CallState::kWaiting;
};

struct CallQueue {
  Mutex mutex;
  Condition changed;
  std::deque<thread_call*> calls GUARDED_BY(mutex);  // each is on its caller's stack
  int loops GUARDED_BY(mutex) = 0;                   // event loops that run, nested ones included
};

CallQueue& Queue() {
  static CallQueue* const queue = new CallQueue;
  return *queue;
}

std::atomic<DWORD> main_thread = 0;
std::atomic<int> wake_descriptor = -1;

void ClearWake() {
  std::uint64_t count = 0;
  if (read(wake_descriptor, &count, sizeof count) < 0) return;  // nothing to clear
}

// Never destroyed: other threads may call until the very end, and the toolkit's libraries take
// their own parts down before ours.
struct Application {
  Application() {
    static int count = 1;
    static char name[] = "wps";
    static char* arguments[] = {name, nullptr};
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, kNoSettings);
    {
      const DisplayNeeded display_needed;
      application = std::make_unique<QApplication>(count, arguments);
    }
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setStyle(MakeToolkitStyle());
    wake_descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    notifier = std::make_unique<QSocketNotifier>(wake_descriptor.load(), QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [] {
      ClearWake();
      DispatchMessages();
    });
    filter = MakeEventFilter();
    application->installEventFilter(filter.get());
  }

  std::unique_ptr<QApplication> application;
  std::unique_ptr<QSocketNotifier> notifier;
  std::unique_ptr<QObject> filter;
};

Application* application = nullptr;  // main thread

thread_call* NextCall() {
  CallQueue& queue = Queue();
  const LockGuard lock(queue.mutex);
  if (queue.calls.empty()) return nullptr;
  thread_call* const call = queue.calls.front();
  queue.calls.pop_front();
  call->state = CallState::kRunning;
  return call;
}

void Finish(thread_call& call) {
  CallQueue& queue = Queue();
  const LockGuard lock(queue.mutex);
  call.state = CallState::kDone;
  queue.changed.NotifyAll();
}

}  // namespace

void NeedApplication() {
  if (main_thread != 0) return;
  application = new Application;
  main_thread = GetCurrentThreadId();
  kernel::SetSlowCallRunner(DrawWhile);
  CatchEndSignals();
}

void HoldMessages(bool hold) { application->notifier->setEnabled(!hold); }

bool OnMainThread() { return main_thread == GetCurrentThreadId(); }

void WakeMainThread() {
  const std::uint64_t one = 1;
  const int descriptor = wake_descriptor;
  if (descriptor >= 0 && write(descriptor, &one, sizeof one) < 0) return;  // awake already
}

bool RunOnMainThread(const std::function<void()>& function) {
  CallQueue& queue = Queue();
  thread_call call{&function};
  const LockGuard lock(queue.mutex);
  queue.calls.push_back(&call);
  WakeMainThread();
  const auto limit = std::chrono::steady_clock::now() + kLoopAwaited;
  // A call that waits may be waited for without limit only while a loop is there to take it.
  while (call.state == CallState::kWaiting) {
    if (queue.loops > 0) {
      queue.changed.Wait(queue.mutex);
    } else if (std::chrono::steady_clock::now() < limit) {
      queue.changed.WaitUntil(queue.mutex, limit);
    } else {
      std::erase(queue.calls, &call);
      return false;
    }
  }
  while (call.state != CallState::kDone) queue.changed.Wait(queue.mutex);
  return true;
}

void RunWaitingCalls() {
  for (thread_call* call = NextCall(); call != nullptr; call = NextCall()) {
    (*call->function)();
    Finish(*call);
  }
}

void LoopBegins() {
  CallQueue& queue = Queue();
  {
    const LockGuard lock(queue.mutex);
    ++queue.loops;
    queue.changed.NotifyAll();
  }
  WakeMainThread();
}

void LoopEnds() {
  CallQueue& queue = Queue();
  const LockGuard lock(queue.mutex);
  --queue.loops;
  queue.changed.NotifyAll();
}

}  // namespace vt63x::ui
