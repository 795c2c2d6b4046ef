// SPDX-License-Identifier: MIT

#include "platform/kernel/read_limit.h"

#include <signal.h>

namespace vt63x::kernel {
namespace {

// Ignored unless there is a handler, so that it does no harm where it is not expected.
constexpr int kInterrupt = SIGURG;

// A signal that comes just before the read enters the kernel is lost: it is sent again.
constexpr std::chrono::milliseconds kAgain{10};

// Without SA_RESTART: what it interrupts ends.
void InstallHandler() {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  sigaction(kInterrupt, &action, nullptr);
}

}  // namespace

ReadLimit::ReadLimit(std::chrono::milliseconds limit) : limit_(limit) {
  InstallHandler();
  watcher_ = std::thread([this] { Watch(); });
}

ReadLimit::~ReadLimit() {
  {
    const LockGuard lock(mutex_);
    ending_ = true;
    changed_.NotifyAll();
  }
  watcher_.join();
}

void ReadLimit::Begin() {
  const LockGuard lock(mutex_);
  reading_ = true;
  interrupted_ = false;
  reader_ = pthread_self();
  overdue_ = Clock::now() + limit_;
  if (!asleep_) return;
  asleep_ = false;
  changed_.NotifyAll();
}

bool ReadLimit::End() {
  const LockGuard lock(mutex_);
  reading_ = false;
  return interrupted_;
}

// Sleeps when there has been no read for as long as one may take, so that reads in a row need not
// wake it. Signals with the lock held: the reader is still between Begin and End then, and nothing
// else of that thread is interrupted.
void ReadLimit::Watch() {
  const LockGuard lock(mutex_);
  while (!ending_) {
    if (Clock::now() < overdue_) {
      changed_.WaitUntil(mutex_, overdue_);
    } else if (!reading_) {
      asleep_ = true;
      changed_.Wait(mutex_);
    } else {
      interrupted_ = true;
      pthread_kill(reader_, kInterrupt);
      overdue_ = Clock::now() + kAgain;
    }
  }
}

}  // namespace vt63x::kernel
