// SPDX-License-Identifier: MIT

#include "tests/platform/window/test_dialog.h"

namespace vt63x {
namespace {

class MessageTest : public WindowTest {};

std::vector<WPARAM> Values(UINT message) {
  std::vector<WPARAM> values;
  for (const recorded_message& m : Record().Take()) {
    if (m.message == message) values.push_back(m.wparam);
  }
  return values;
}

TEST_F(MessageTest, PostedOnesArriveInOrder) {
  WithDialog([](HWND dialog) {
    std::vector<WPARAM> expected;
    for (WPARAM i = 0; i < 1000; ++i) {
      EXPECT_NE(PostMessageA(dialog, WM_USER, i, 0), FALSE);
      expected.push_back(i);
    }
    Settle(dialog);
    EXPECT_EQ(Values(WM_USER), expected);
  });
}

TEST_F(MessageTest, SendFromAnotherThreadRunsOnTheWindowsThreadAndReturnsItsAnswer) {
  WithDialog([](HWND dialog) {
    DWORD thread = 0;
    DWORD second = 0;
    OnWindowThread(dialog, [&] { thread = GetCurrentThreadId(); });
    OnWindowThread(dialog, [&] { second = GetCurrentThreadId(); });
    EXPECT_NE(thread, GetCurrentThreadId());
    EXPECT_EQ(thread, second);
    SetDlgItemTextA(dialog, SINGLE, "four");
    EXPECT_EQ(SendMessageA(GetDlgItem(dialog, SINGLE), WM_GETTEXTLENGTH, 0, 0), 4);
    EXPECT_EQ(GetFocus(), nullptr);
  });
}

// A thread that sends must not get ahead of itself: what it posted before may wait, what it sent
// has been done.
TEST_F(MessageTest, ManyThreadsSendAndPostAtOnce) {
  WithDialog([](HWND dialog) {
    std::vector<std::thread> threads;
    for (WPARAM t = 0; t < 4; ++t) {
      threads.emplace_back([=] {
        for (WPARAM i = 0; i < 200; ++i) {
          SendMessageA(dialog, WM_USER, t, 0);
          PostMessageA(dialog, WM_USER + 1, t * 1000 + i, 0);
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    Settle(dialog);
    std::vector<WPARAM> last(4, 0);
    int sent = 0;
    for (const recorded_message& m : Record().Take()) {
      sent += m.message == WM_USER ? 1 : 0;
      if (m.message != WM_USER + 1) continue;
      WPARAM& previous = last[m.wparam / 1000];
      EXPECT_LE(previous, m.wparam % 1000);
      previous = m.wparam % 1000;
    }
    EXPECT_EQ(sent, 800);
    EXPECT_EQ(last, std::vector<WPARAM>(4, 199));
  });
}

TEST_F(MessageTest, TimerTicksUntilItIsKilled) {
  WithDialog([](HWND dialog) {
    OnWindowThread(dialog, [&] { EXPECT_EQ(SetTimer(dialog, 7, 10, nullptr), 7u); });
    WaitFor(
        [] {
          const std::lock_guard lock(Record().mutex);
          int ticks = 0;
          for (const recorded_message& m : Record().messages)
            ticks += m.message == WM_TIMER ? 1 : 0;
          return ticks >= 2;
        },
        "two ticks");
    EXPECT_EQ(Values(WM_TIMER).front(), 7u);
    OnWindowThread(dialog, [&] {
      EXPECT_NE(KillTimer(dialog, 7), FALSE);
      EXPECT_EQ(KillTimer(dialog, 7), FALSE);
    });
  });
}

TEST_F(MessageTest, StaleWindowsAreRefused) {
  HWND dialog = nullptr;
  HWND edit = nullptr;
  WithDialog([&](HWND window) {
    dialog = window;
    edit = GetDlgItem(window, SINGLE);
    EXPECT_NE(IsWindow(edit), FALSE);
    EXPECT_EQ(GetParent(edit), dialog);
    EXPECT_EQ(GetDlgCtrlID(edit), SINGLE);
    EXPECT_EQ(GetDlgItem(dialog, 999), nullptr);
  });
  for (const HWND window : {dialog, edit}) {
    EXPECT_EQ(IsWindow(window), FALSE);
    SetLastError(0);
    EXPECT_EQ(PostMessageA(window, WM_USER, 0, 0), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    RECT rect{};
    char text[4] = "abc";
    EXPECT_EQ(GetWindowRect(window, &rect), FALSE);
    EXPECT_EQ(SetWindowTextA(window, "x"), FALSE);
    EXPECT_EQ(GetWindowTextA(window, text, sizeof text), 0);
    EXPECT_EQ(SendMessageA(window, WM_USER, 0, 0), 0);
    EXPECT_EQ(DestroyWindow(window), FALSE);
    EXPECT_EQ(EndDialog(window, 0), FALSE);
  }
}

}  // namespace
}  // namespace vt63x
