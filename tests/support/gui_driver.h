// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_SUPPORT_GUI_DRIVER_H
#define VT63X_TESTS_SUPPORT_GUI_DRIVER_H

// Tests of windows by Win32 calls alone, the same source on every system. Windows live on the
// test's own thread, which runs them; a second thread drives them from outside, as another program
// would.

#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <functional>
#include <thread>

namespace vt63x {

// Polls until `condition` holds, for 10 s at most; false, and the test fails, if it does not.
inline bool WaitFor(const std::function<bool()>& condition, const char* what) {
  constexpr int kAttempts = 2000;
  for (int i = 0; i < kAttempts; ++i) {
    if (condition()) return true;
    Sleep(5);
  }
  ADD_FAILURE() << "waited in vain for " << what;
  return false;
}

// The top-level window with this caption, once it is visible; null, and the test fails, if it does
// not come.
inline HWND WaitForWindow(const char* caption) {
  HWND window = nullptr;
  WaitFor(
      [&] {
        window = FindWindowA(nullptr, caption);
        return window != nullptr && IsWindowVisible(window) != FALSE;
      },
      caption);
  return window;
}

inline bool WaitUntilGone(HWND window) {
  return WaitFor([&] { return IsWindow(window) == FALSE; }, "the end of a window");
}

// Runs `windows` here, until it returns, and `driver` on the second thread. `end` is called after
// the driver, and again every 100 ms until `windows` has returned: it makes the windows go,
// whatever the driver left open.
inline INT_PTR Drive(const std::function<INT_PTR()>& windows, const std::function<void()>& driver,
                     const std::function<void()>& end) {
  std::atomic<bool> over = false;
  std::thread thread([&] {
    driver();
    while (!over) {
      end();
      for (int i = 0; i < 20 && !over; ++i) Sleep(5);
    }
  });
  const INT_PTR result = windows();
  over = true;
  thread.join();
  return result;
}

}  // namespace vt63x

#endif
