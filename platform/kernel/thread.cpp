// SPDX-License-Identifier: MIT

#include "platform/kernel/thread.h"

#include <pthread.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <utility>

#include "platform/kernel/handle_table.h"
#include "platform/kernel/last_error.h"

namespace vt63x::kernel {

DWORD Thread::Wait(Deadline deadline) {
  const LockGuard lock(mutex_);
  while (!ended_) {
    if (deadline.Passed()) return ERROR_SEM_TIMEOUT;
    WaitUntil(changed_, mutex_, deadline);
  }
  return ERROR_SUCCESS;
}

DWORD Thread::ExitCode() {
  const LockGuard lock(mutex_);
  return exit_code_;
}

void Thread::End(DWORD exit_code) {
  const LockGuard lock(mutex_);
  ended_ = true;
  exit_code_ = exit_code;
  changed_.NotifyAll();
}

namespace {

// What a new thread is started with.
struct Start {
  std::shared_ptr<Thread> thread;
  LPTHREAD_START_ROUTINE routine;
  LPVOID parameter;
};

// Lives on the stack of a running thread. Its destructor is the thread's last act, reached by
// returning and by the unwinding of ExitThread alike.
class Running {
 public:
  explicit Running(std::shared_ptr<Thread> thread) : thread_(std::move(thread)) { current = this; }
  ~Running() {
    current = nullptr;
    thread_->End(exit_code);
  }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

  static thread_local Running* current;
  DWORD exit_code = 0;

 private:
  const std::shared_ptr<Thread> thread_;
};

thread_local Running* Running::current = nullptr;

void* ThreadMain(void* argument) {
  std::unique_ptr<Start> start(static_cast<Start*>(argument));
  const LPTHREAD_START_ROUTINE routine = start->routine;
  const LPVOID parameter = start->parameter;
  Running running(std::move(start->thread));
  start.reset();
  running.exit_code = routine(parameter);
  return nullptr;
}

bool StartDetached(std::unique_ptr<Start> start) {
  pthread_t id;
  if (pthread_create(&id, nullptr, ThreadMain, start.get()) != 0) return false;
  static_cast<void>(start.release());  // owned by the new thread
  pthread_detach(id);
  return true;
}

HANDLE Fail(DWORD error) {
  SetLastError(error);
  return nullptr;
}

DWORD NextThreadId() {
  static std::atomic<DWORD> last{0};
  return ++last;
}

}  // namespace
}  // namespace vt63x::kernel

namespace kernel = vt63x::kernel;

HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES security, SIZE_T stack_size,
                           LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD flags,
                           LPDWORD thread_id) {
  if (security != nullptr || stack_size != 0 || start == nullptr || flags != 0) {
    return kernel::Fail(ERROR_INVALID_PARAMETER);
  }
  auto thread = std::make_shared<kernel::Thread>();
  const HANDLE handle = kernel::Handles().Add(thread);
  if (handle == nullptr) return kernel::Fail(ERROR_NOT_ENOUGH_MEMORY);
  if (thread_id != nullptr) *thread_id = kernel::NextThreadId();
  auto record = std::make_unique<kernel::Start>(kernel::Start{thread, start, parameter});
  if (!kernel::StartDetached(std::move(record))) {
    kernel::Handles().Remove(handle);
    return kernel::Fail(ERROR_NOT_ENOUGH_MEMORY);
  }
  return handle;
}

void WINAPI ExitThread(DWORD exit_code) {
  kernel::Running* const running = kernel::Running::current;
  if (running == nullptr) std::abort();  // not a thread of CreateThread
  running->exit_code = exit_code;
  pthread_exit(nullptr);
}

BOOL WINAPI GetExitCodeThread(HANDLE thread, LPDWORD exit_code) {
  const std::shared_ptr<kernel::Thread> object = kernel::FindObject<kernel::Thread>(thread);
  if (object == nullptr) return kernel::Finish(ERROR_INVALID_HANDLE);
  if (exit_code == nullptr) return kernel::Finish(ERROR_INVALID_PARAMETER);
  *exit_code = object->ExitCode();
  return TRUE;
}
