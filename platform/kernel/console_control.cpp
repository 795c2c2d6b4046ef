// SPDX-License-Identifier: MIT

#include <pthread.h>
#include <signal.h>
#include <windows.h>

#include <atomic>
#include <system_error>
#include <thread>

#include "platform/kernel/last_error.h"

namespace kernel = vt63x::kernel;

namespace {

struct ControlEvent {
  int signal;
  DWORD event;
};

constexpr ControlEvent kEvents[] = {
    {SIGINT, CTRL_C_EVENT},
    {SIGHUP, CTRL_CLOSE_EVENT},
    {SIGTERM, CTRL_SHUTDOWN_EVENT},
};

DWORD EventOf(int signal) {
  for (const ControlEvent& row : kEvents) {
    if (row.signal == signal) return row.event;
  }
  return CTRL_SHUTDOWN_EVENT;
}

// As nohup and a shell's background jobs leave them.
bool IsIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

sigset_t SignalsToServe() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const ControlEvent& row : kEvents) {
    if (!IsIgnored(row.signal)) sigaddset(&signals, row.signal);
  }
  return signals;
}

// What the signal does in a program without a handler, so that its parent sees it.
void EndBySignal(int signal) {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, signal);
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
  pthread_kill(pthread_self(), signal);
}

// Signals are taken by waiting for them: nothing is interrupted, and the handler may do whatever a
// thread may.
void Serve(sigset_t signals, PHANDLER_ROUTINE handler) {
  while (true) {
    int signal = 0;
    if (sigwait(&signals, &signal) != 0) return;
    if (handler(EventOf(signal)) == FALSE) EndBySignal(signal);
  }
}

}  // namespace

BOOL WINAPI SetConsoleCtrlHandler(PHANDLER_ROUTINE handler, BOOL add) {
  static std::atomic<bool> given = false;
  if (handler == nullptr || add != TRUE || given.exchange(true)) {
    return kernel::Finish(ERROR_INVALID_PARAMETER);
  }
  const sigset_t signals = SignalsToServe();
  sigset_t before;
  pthread_sigmask(SIG_BLOCK, &signals, &before);
  try {
    std::thread(Serve, signals, handler).detach();
  } catch (const std::system_error&) {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return kernel::Finish(ERROR_NOT_ENOUGH_MEMORY);
  }
  signal(SIGPIPE, SIG_IGN);
  return kernel::Finish(ERROR_SUCCESS);
}
