// SPDX-License-Identifier: MIT

#include "platform/window/draw_while.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>

#include "platform/kernel/slow_call.h"
#include "platform/window/window.h"
#include "tests/platform/window/window_test_ids.h"

namespace vt63x::ui {
namespace {

class Picture : public QWidget {
 public:
  std::atomic<bool> drawn = false;

 protected:
  void paintEvent(QPaintEvent*) override { drawn = true; }
};

std::atomic<int> commands = 0;

INT_PTR CALLBACK CountCommands(HWND, UINT message, WPARAM, LPARAM) {
  if (message == WM_COMMAND) ++commands;
  return FALSE;
}

// A port that is opened for seconds must neither freeze the window nor let in the next click.
TEST(DrawWhileTest, SlowCallLeavesTheWindowDrawnAndItsMessagesWaiting) {
  const HWND dialog = CreateDialogParamA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(SMALL),
                                         nullptr, CountCommands, 0);
  ASSERT_NE(dialog, nullptr);
  Picture picture;
  picture.show();
  PostMessageA(dialog, WM_COMMAND, 1, 0);
  kernel::RunSlowCall([&] {
    for (int i = 0; i < 2000 && !picture.drawn; ++i) Sleep(5);
  });
  EXPECT_TRUE(picture.drawn);
  EXPECT_EQ(commands, 0);
  DestroyWindow(dialog);
}

}  // namespace
}  // namespace vt63x::ui
