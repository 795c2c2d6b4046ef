// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_MAIN_THREAD_H
#define VT63X_PLATFORM_WINDOW_MAIN_THREAD_H

// The thread that windows live on: the one that makes the first. Other threads hand it their calls
// through a queue of our own (not the toolkit's, so that ThreadSanitizer sees every hand-over) and
// a file descriptor that wakes its event loop, a nested one as well.

#include <windows.h>

#include <functional>

namespace vt63x::ui {

// Makes the toolkit's application if there is none; the calling thread is then the main thread.
void NeedApplication();

// False also as long as there is no main thread.
bool OnMainThread();

// Runs `call` on the main thread between two messages and waits for it. Waits as long as the call
// takes, but at most 5 s for a main thread that runs no event loop. False when it did not run.
// Not from the main thread.
bool RunOnMainThread(const std::function<void()>& call);

// Wakes the main thread for what was put into a queue. Any thread.
void WakeMainThread();

// While held, neither calls nor messages are handed out; they are afterwards. Main thread.
void HoldMessages(bool hold);

// Runs the calls of other threads that wait. Main thread.
void RunWaitingCalls();

// An event loop begins or ends on the main thread; calls wait without limit while there is one.
void LoopBegins();
void LoopEnds();

// `function()` on the main thread, with the last error it leaves; `failure` and
// ERROR_INVALID_WINDOW_HANDLE when there is no main thread to run it.
template <typename Result, typename Function>
Result CallOnMain(Result failure, const Function& function) {
  if (OnMainThread()) return function();
  Result result = failure;
  DWORD error = ERROR_INVALID_WINDOW_HANDLE;
  const bool ran = RunOnMainThread([&] {
    SetLastError(ERROR_SUCCESS);
    result = function();
    error = GetLastError();
  });
  SetLastError(ran ? error : ERROR_INVALID_WINDOW_HANDLE);
  return result;
}

}  // namespace vt63x::ui

#endif
