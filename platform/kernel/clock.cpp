// SPDX-License-Identifier: MIT

#include <sched.h>
#include <time.h>
#include <windows.h>

#include <cerrno>

namespace {

constexpr LONGLONG kNanosecondsPerSecond = 1'000'000'000;
constexpr long kNanosecondsPerMillisecond = 1'000'000;

timespec Now() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now;
}

}  // namespace

void WINAPI Sleep(DWORD timeout_ms) {
  if (timeout_ms == 0) {
    sched_yield();
    return;
  }
  timespec end = Now();
  end.tv_sec += timeout_ms / 1000;
  end.tv_nsec += static_cast<long>(timeout_ms % 1000) * kNanosecondsPerMillisecond;
  if (end.tv_nsec >= kNanosecondsPerSecond) {
    end.tv_sec += 1;
    end.tv_nsec -= kNanosecondsPerSecond;
  }
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
  }
}

BOOL WINAPI QueryPerformanceFrequency(LARGE_INTEGER* frequency) {
  frequency->QuadPart = kNanosecondsPerSecond;
  return TRUE;
}

BOOL WINAPI QueryPerformanceCounter(LARGE_INTEGER* count) {
  const timespec now = Now();
  count->QuadPart = now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
  return TRUE;
}
