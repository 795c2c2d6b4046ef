// SPDX-License-Identifier: MIT

#include "tests/platform/window/test_dialog.h"

namespace vt63x {
namespace {

class ModalDialogTest : public WindowTest {};

INT_PTR ShowSmall(HWND owner, DLGPROC procedure) {
  return DialogBoxParamA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(SMALL), owner, procedure, 5);
}

INT_PTR CALLBACK EndsAtOnce(HWND dialog, UINT message, WPARAM, LPARAM lparam) {
  if (message == WM_INITDIALOG) EndDialog(dialog, 40 + lparam);
  return message == WM_INITDIALOG ? TRUE : FALSE;
}

// For its user it is gone as soon as its end was asked for.
INT_PTR CALLBACK EndsOnClose(HWND dialog, UINT message, WPARAM, LPARAM) {
  if (message == WM_CLOSE) {
    const HWND owner = GetWindow(dialog, GW_OWNER);
    EndDialog(dialog, 11);
    EXPECT_EQ(IsWindowVisible(dialog), FALSE);
    EXPECT_NE(IsWindowEnabled(owner), FALSE);
  }
  return message == WM_CLOSE || message == WM_INITDIALOG ? TRUE : FALSE;
}

TEST_F(ModalDialogTest, ReturnsWhatEndDialogGave) {
  EXPECT_EQ(WithDialog([](HWND dialog) { SendMessageA(dialog, WM_END, 77, 0); }), 77);
  EXPECT_EQ(ShowSmall(nullptr, EndsAtOnce), 45);
  EXPECT_EQ(
      DialogBoxParamA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(999), nullptr, EndsAtOnce, 0),
      -1);
}

TEST_F(ModalDialogTest, OwnerIsDisabledWhileItRunsAndHasTheFocusAfterwards) {
  WithDialog([](HWND dialog) {
    INT_PTR result = 0;
    std::function<void()> show = [&] {
      SetFocus(GetDlgItem(dialog, MULTI));
      result = ShowSmall(dialog, EndsOnClose);
      EXPECT_NE(IsWindowEnabled(dialog), FALSE);
      EXPECT_EQ(GetFocus(), GetDlgItem(dialog, MULTI));
    };
    PostMessageA(dialog, WM_RUN, 0, reinterpret_cast<LPARAM>(&show));
    const HWND small = WaitForWindow("Small");
    EXPECT_EQ(IsWindowEnabled(dialog), FALSE);
    EXPECT_NE(IsWindowEnabled(GetDlgItem(dialog, SINGLE)), FALSE);
    EXPECT_EQ(GetWindow(small, GW_OWNER), dialog);
    // The owner still answers.
    SetDlgItemTextA(dialog, SINGLE, "during");
    EXPECT_EQ(Text(dialog, SINGLE), "during");
    PostMessageA(small, WM_CLOSE, 0, 0);
    WaitUntilGone(small);
    Settle(dialog);
    EXPECT_EQ(result, 11);
  });
}

TEST_F(ModalDialogTest, ShownByAnotherThreadItBlocksThatThreadOnly) {
  WithDialog([](HWND dialog) {
    std::atomic<INT_PTR> result = 0;
    std::thread thread([&] { result = ShowSmall(dialog, EndsOnClose); });
    const HWND small = WaitForWindow("Small");
    EXPECT_EQ(IsWindowEnabled(dialog), FALSE);
    SendMessageA(dialog, WM_NULL, 0, 0);
    EXPECT_EQ(result, 0);
    PostMessageA(small, WM_CLOSE, 0, 0);
    thread.join();
    EXPECT_EQ(result, 11);
    EXPECT_NE(IsWindowEnabled(dialog), FALSE);
  });
}

// Once it is ended, what is still posted belongs to the loop around it.
TEST_F(ModalDialogTest, MessagesBehindItsEndWaitForTheOwnersLoop) {
  WithDialog([](HWND dialog) {
    std::vector<std::string> order;
    std::function<void()> show = [&] {
      ShowSmall(dialog, EndsOnClose);
      order.push_back("returned");
    };
    std::function<void()> after = [&] { order.push_back("after"); };
    PostMessageA(dialog, WM_RUN, 0, reinterpret_cast<LPARAM>(&show));
    const HWND small = WaitForWindow("Small");
    PostMessageA(small, WM_CLOSE, 0, 0);
    PostMessageA(dialog, WM_RUN, 0, reinterpret_cast<LPARAM>(&after));
    Settle(dialog);
    EXPECT_EQ(order, (std::vector<std::string>{"returned", "after"}));
  });
}

TEST_F(ModalDialogTest, UnansweredCloseCancels) {
  WithDialog([](HWND dialog) {
    PostMessageA(dialog, WM_CLOSE, 0, 0);
    Settle(dialog);
    Settle(dialog);
    EXPECT_EQ(Commands(), "2:0");
    EXPECT_NE(IsWindow(dialog), FALSE);
  });
}

TEST_F(ModalDialogTest, ModelessOneLivesUntilItIsDestroyedOrItsOwnerIs) {
  HWND second = nullptr;
  WithDialog([&](HWND dialog) {
    OnWindowThread(dialog, [&] {
      const auto create = [&] {
        return CreateDialogParamA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(SMALL), dialog,
                                  EndsOnClose, 0);
      };
      const HWND first = create();
      EXPECT_NE(first, nullptr);
      EXPECT_EQ(IsWindowVisible(first), FALSE);
      ShowWindow(first, SW_SHOW);
      EXPECT_NE(IsWindowVisible(first), FALSE);
      EXPECT_NE(IsWindowEnabled(dialog), FALSE);
      EXPECT_NE(DestroyWindow(first), FALSE);
      EXPECT_EQ(IsWindow(first), FALSE);
      second = create();
    });
    EXPECT_NE(IsWindow(second), FALSE);
  });
  EXPECT_EQ(IsWindow(second), FALSE);
}

TEST_F(ModalDialogTest, EndOfADialogIsToldToItOnce) {
  WithDialog([](HWND dialog) { SendMessageA(dialog, WM_END, 0, 0); });
  int destroyed = 0;
  for (const recorded_message& m : Record().Take()) destroyed += m.message == WM_DESTROY ? 1 : 0;
  EXPECT_EQ(destroyed, 1);
}

TEST_F(ModalDialogTest, FocusAtTheStartIsTheFirstTabStopUnlessTheDialogChose) {
  WithDialog([](HWND dialog) {
    OnWindowThread(dialog, [&] { EXPECT_EQ(GetFocus(), GetDlgItem(dialog, SINGLE)); });
  });
  Record().first = [](HWND dialog, const recorded_message& m) -> INT_PTR {
    if (m.message != WM_INITDIALOG) return FALSE;
    SetFocus(GetDlgItem(dialog, LIST));
    return FALSE;
  };
  // RecordingProc answers TRUE for WM_INITDIALOG itself; this one must answer FALSE.
  static const DLGPROC chooser = [](HWND dialog, UINT message, WPARAM wparam,
                                    LPARAM lparam) -> INT_PTR {
    const INT_PTR answer = RecordingProc(dialog, message, wparam, lparam);
    return message == WM_INITDIALOG ? FALSE : answer;
  };
  HWND window = nullptr;
  Drive(
      [] {
        return DialogBoxParamA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(ALL_CONTROLS), nullptr,
                               chooser, 0);
      },
      [&] {
        window = WaitForWindow("All controls");
        OnWindowThread(window, [&] { EXPECT_EQ(GetFocus(), GetDlgItem(window, LIST)); });
      },
      [&] { PostMessageA(window, WM_END, 0, 0); });
}

// Last: the request to quit may outlive the loops on some systems.
TEST_F(ModalDialogTest, ZQuitEndsNestedLoopsFromTheInside) {
  std::vector<std::string> order;
  HWND outer = nullptr;
  Drive(
      [&] {
        const INT_PTR result = DialogBoxParamA(
            GetModuleHandleA(nullptr), MAKEINTRESOURCEA(ALL_CONTROLS), nullptr, RecordingProc, 0);
        order.push_back("outer");
        return result;
      },
      [&] {
        outer = WaitForWindow("All controls");
        std::function<void()> nested = [&] {
          ShowSmall(outer, EndsOnClose);
          order.push_back("inner");
        };
        PostMessageA(outer, WM_RUN, 0, reinterpret_cast<LPARAM>(&nested));
        const HWND small = WaitForWindow("Small");
        OnWindowThread(outer, [] { PostQuitMessage(0); });
        WaitUntilGone(small);
        WaitUntilGone(outer);
      },
      [] {});
  EXPECT_EQ(order, (std::vector<std::string>{"inner", "outer"}));
}

}  // namespace
}  // namespace vt63x
