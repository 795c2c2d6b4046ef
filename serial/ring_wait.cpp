// SPDX-License-Identifier: MIT

#include "serial/ring_wait.h"

#include "shell/state/breakable_wait.h"

namespace vt63x {
namespace {

// Milliseconds since its construction; without a performance counter, the number of calls.
class Stopwatch {
 public:
  Stopwatch() {
    LARGE_INTEGER frequency{};
    if (!QueryPerformanceFrequency(&frequency)) return;
    ticks_per_ms_ = frequency.QuadPart / 1000;
    if (ticks_per_ms_ > 0) QueryPerformanceCounter(&start_time_);
  }

  bool Expired(std::uint16_t timeout_ms) {
    if (ticks_per_ms_ <= 0) return ++loop_counter_ >= timeout_ms;
    LARGE_INTEGER current_time{};
    QueryPerformanceCounter(&current_time);
    return (current_time.QuadPart - start_time_.QuadPart) / ticks_per_ms_ > timeout_ms;
  }

 private:
  LONGLONG ticks_per_ms_ = 0;
  LARGE_INTEGER start_time_{};
  std::uint32_t loop_counter_ = 0;
};

// A WaitCommEvent that timed out still refers to the caller's OVERLAPPED. Changing the mask ends
// it; then the ring event is asked for again, as it was.
void EndPendingWait(HANDLE port, OVERLAPPED* overlapped) {
  DWORD unused = 0;
  SetCommMask(port, 0);
  GetOverlappedResult(port, overlapped, &unused, TRUE);
  SetCommMask(port, EV_RING);
}

std::uint32_t WaitForRingEvent(const action_param* action, const PortUse& use, HANDLE event,
                               std::uint16_t timeout_ms) {
  const HANDLE port = use.handle();
  OVERLAPPED ovr_ri{};
  ovr_ri.hEvent = event;
  DWORD events = 0;
  if (WaitCommEvent(port, &events, &ovr_ri)) return 1;
  if (GetLastError() != ERROR_IO_PENDING) return 0;
  SetLastError(ERROR_SUCCESS);
  BreakableWait wait(action, timeout_ms);
  DWORD waited = WAIT_TIMEOUT;
  while (waited == WAIT_TIMEOUT && wait.GoesOn())
    waited = WaitForSingleObject(event, wait.StepMs());
  if (waited != WAIT_OBJECT_0) {
    EndPendingWait(port, &ovr_ri);
    return 0;
  }
  // The wait also ends when the line goes away or the port is about to be closed.
  return use.current() && GetOverlappedResult(port, &ovr_ri, &events, FALSE) ? 1 : 0;
}

}  // namespace

std::uint32_t WaitRingLevel(const action_param* action, std::uint8_t level,
                            std::uint16_t timeout_ms) {
  const PortUse port(action->app_state->port_handle);
  MainView* const view = action->app_state->view;
  Stopwatch stopwatch;
  DWORD modem_status = 0;
  while (true) {
    GetCommModemStatus(port.handle(), &modem_status);
    if (!port.current()) return 0;
    const bool ring = (modem_status & MS_RING_ON) != 0;
    if (timeout_ms == 0) return ring ? 1 : 0;
    if (ring == (level != 0)) return 1;
    if (view != nullptr && view->BreaksOff()) return 0;
    Sleep(1);
    if (stopwatch.Expired(timeout_ms)) return 0;
  }
}

std::uint32_t WaitRingEdge(const action_param* action, std::uint16_t timeout_ms) {
  const PortUse port(action->app_state->port_handle);
  if (!SetCommMask(port.handle(), EV_RING)) return 0;
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  if (event == nullptr) return 0;
  const std::uint32_t result = WaitForRingEvent(action, port, event, timeout_ms);
  CloseHandle(event);
  return result;
}

}  // namespace vt63x
