// SPDX-License-Identifier: MIT

// Keys that arrive through the message queue, as pressed ones do.

#include <tuple>

#include "tests/platform/window/test_dialog.h"

namespace vt63x {
namespace {

class KeyboardTest : public WindowTest {
 protected:
  static int Focus(HWND dialog) {
    int id = -1;
    OnWindowThread(dialog, [&] { id = GetFocus() == nullptr ? 0 : GetDlgCtrlID(GetFocus()); });
    return id;
  }
  static void FocusOn(HWND dialog, int id) {
    OnWindowThread(dialog, [&] { SetFocus(GetDlgItem(dialog, id)); });
    Record().Take();
  }
  static void Press(HWND dialog, int id, UINT message, WPARAM key) {
    PostMessageA(GetDlgItem(dialog, id), message, key, 1);
    Settle(dialog);
    Settle(dialog);  // for what the first one made somebody post
  }
};

TEST_F(KeyboardTest, TabGoesThroughTheControlsThatCanBeUsed) {
  WithDialog([](HWND dialog) {
    FocusOn(dialog, SINGLE);
    std::vector<int> order;
    for (int i = 0; i < 12; ++i) {
      Press(dialog, Focus(dialog), WM_KEYDOWN, VK_TAB);
      order.push_back(Focus(dialog));
    }
    EXPECT_EQ(order, (std::vector<int>{UPPER, READ_ONLY, MULTI, ONE_LINE, DEFAULT_BUTTON,
                                       OTHER_BUTTON, TWIN_1, TWIN_2, CHECK, LIST, COMBO, SINGLE}));
    OnWindowThread(dialog, [&] {
      const HWND single = GetDlgItem(dialog, SINGLE);
      EXPECT_EQ(GetNextDlgTabItem(dialog, single, TRUE), GetDlgItem(dialog, COMBO));
      EXPECT_EQ(GetNextDlgTabItem(dialog, single, FALSE), GetDlgItem(dialog, UPPER));
    });
  });
}

TEST_F(KeyboardTest, EnterPressesTheDefaultButtonOrTheFocusedOneAndEscapeCancels) {
  WithDialog([](HWND dialog) {
    for (const int focus : {SINGLE, ONE_LINE, MULTI, CHECK}) {
      FocusOn(dialog, focus);
      Press(dialog, focus, WM_KEYDOWN, VK_RETURN);
      EXPECT_NE((' ' + Commands() + ' ').find(' ' + std::to_string(DEFAULT_BUTTON) + ":0 "),
                std::string::npos)
          << focus;
    }
    // A button that the keyboard brought the focus to is the one that Enter presses.
    FocusOn(dialog, DEFAULT_BUTTON);
    Press(dialog, DEFAULT_BUTTON, WM_KEYDOWN, VK_TAB);
    Record().Take();
    Press(dialog, OTHER_BUTTON, WM_KEYDOWN, VK_RETURN);
    EXPECT_EQ(Commands(), std::to_string(OTHER_BUTTON) + ":0");
    EXPECT_EQ(Text(dialog, MULTI), "");
    FocusOn(dialog, SINGLE);
    Press(dialog, SINGLE, WM_KEYDOWN, VK_ESCAPE);
    EXPECT_EQ(Commands(), "2:0");
    EnableWindow(GetDlgItem(dialog, DEFAULT_BUTTON), FALSE);
    FocusOn(dialog, SINGLE);
    Press(dialog, SINGLE, WM_KEYDOWN, VK_RETURN);
    EXPECT_EQ(Commands(), "") << "with the default button disabled";
  });
}

WNDPROC old_procedure = nullptr;

LRESULT CALLBACK SpyOnCharacters(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_CHAR || message == WM_KEYDOWN) Record().Add({message, wparam, 0});
  return CallWindowProcA(old_procedure, window, message, wparam, lparam);
}

TEST_F(KeyboardTest, EscapeInLinesReachesASubclassBeforeTheDialogIsAskedToClose) {
  WithDialog([](HWND dialog) {
    FocusOn(dialog, MULTI);
    const HWND edit = GetDlgItem(dialog, MULTI);
    old_procedure = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrA(edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(SpyOnCharacters)));
    Record().first = [](HWND, const recorded_message& m) -> INT_PTR {
      return m.message == WM_CLOSE;
    };
    Press(dialog, MULTI, WM_KEYDOWN, VK_ESCAPE);
    std::vector<UINT> order;
    for (const recorded_message& m : Record().Take()) {
      if (m.message == WM_KEYDOWN || m.message == WM_CHAR || m.message == WM_CLOSE) {
        order.push_back(m.message);
      }
    }
    EXPECT_EQ(order, (std::vector<UINT>{WM_KEYDOWN, WM_CHAR, WM_CLOSE}));
    EXPECT_EQ(SetWindowLongPtrA(edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(old_procedure)),
              reinterpret_cast<LONG_PTR>(SpyOnCharacters));
    EXPECT_EQ(Text(dialog, MULTI), "");
  });
}

TEST_F(KeyboardTest, UnderlinedLettersReachTheirControls) {
  WithDialog([](HWND dialog) {
    // `focus`: where the key arrives
    // `commands`: of buttons
    using row = std::tuple<char, int, int, const char*>;
    for (const auto& [letter, focus, focus_after, commands] :
         {row{'o', SINGLE, OTHER_BUTTON, "18:0"}, row{'s', OTHER_BUTTON, SINGLE, ""},
          row{'g', SINGLE, MULTI, ""}, row{'m', SINGLE, SINGLE, ""},
          row{'c', SINGLE, CHECK, "23:0"}, row{'t', SINGLE, TWIN_1, "19:0"}}) {
      FocusOn(dialog, focus);
      Press(dialog, focus, WM_SYSCHAR, static_cast<WPARAM>(letter));
      std::string clicks;
      for (const recorded_message& m : Record().Take()) {
        if (m.message == WM_COMMAND && LOWORD(m.wparam) >= DEFAULT_BUTTON &&
            LOWORD(m.wparam) <= CHECK) {
          clicks += std::to_string(LOWORD(m.wparam)) + ':' + std::to_string(HIWORD(m.wparam));
        }
      }
      EXPECT_EQ(clicks, commands) << letter << " at " << focus;
      EXPECT_EQ(Focus(dialog), focus_after) << letter << " at " << focus;
    }
  });
}

TEST_F(KeyboardTest, ArrowsMoveTheChoiceOfListsAndTell) {
  WithDialog([](HWND dialog) {
    for (const char* text : {"a", "b", "c"}) {
      SendDlgItemMessageA(dialog, LIST, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
      SendDlgItemMessageA(dialog, COMBO, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    }
    SendDlgItemMessageA(dialog, LIST, LB_SETCURSEL, 0, 0);
    SendDlgItemMessageA(dialog, COMBO, CB_SETCURSEL, 0, 0);
    FocusOn(dialog, LIST);
    Press(dialog, LIST, WM_KEYDOWN, VK_DOWN);
    EXPECT_EQ(Commands(), "24:1");
    EXPECT_EQ(SendDlgItemMessageA(dialog, LIST, LB_GETCURSEL, 0, 0), 1);
    FocusOn(dialog, COMBO);
    Press(dialog, COMBO, WM_KEYDOWN, VK_DOWN);
    EXPECT_EQ(Commands(), "25:9 25:1");
    EXPECT_EQ(SendDlgItemMessageA(dialog, COMBO, CB_GETCURSEL, 0, 0), 1);
  });
}

}  // namespace
}  // namespace vt63x
