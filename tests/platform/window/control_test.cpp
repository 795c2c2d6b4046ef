// SPDX-License-Identifier: MIT

#include <tuple>

#include "tests/platform/window/test_dialog.h"

namespace vt63x {
namespace {

class ControlTest : public WindowTest {};

TEST_F(ControlTest, ButtonsTellOfClicksOnly) {
  InDialog([](HWND dialog) {
    SetFocus(GetDlgItem(dialog, DEFAULT_BUTTON));
    Commands();
    SendDlgItemMessageA(dialog, OTHER_BUTTON, BM_CLICK, 0, 0);
    EXPECT_EQ(Commands(), "18:0");
    EXPECT_EQ(GetFocus(), GetDlgItem(dialog, OTHER_BUTTON));
    SetDlgItemTextA(dialog, OTHER_BUTTON, "&New");
    EXPECT_EQ(Commands(), "");
    EXPECT_EQ(Text(dialog, OTHER_BUTTON), "&New");
    CheckDlgButton(dialog, CHECK, BST_CHECKED);
    EXPECT_EQ(Commands(), "");
    EXPECT_EQ(IsDlgButtonChecked(dialog, CHECK), static_cast<UINT>(BST_CHECKED));
    SendDlgItemMessageA(dialog, CHECK, BM_CLICK, 0, 0);
    EXPECT_EQ(Commands(), "23:0");
    EXPECT_EQ(IsDlgButtonChecked(dialog, CHECK), static_cast<UINT>(BST_UNCHECKED));
  });
}

TEST_F(ControlTest, ListBoxKeepsOrderAndChoice) {
  InDialog([](HWND dialog) {
    const auto send = [&](UINT message, WPARAM wparam, const char* text) {
      return SendDlgItemMessageA(dialog, LIST, message, wparam, reinterpret_cast<LPARAM>(text));
    };
    EXPECT_EQ(send(LB_GETCURSEL, 0, nullptr), LB_ERR);
    EXPECT_EQ(send(LB_ADDSTRING, 0, "COM10:"), 0);
    EXPECT_EQ(send(LB_ADDSTRING, 0, "COM1:"), 1);
    Commands();
    EXPECT_EQ(send(LB_SETCURSEL, 1, nullptr), 1);
    EXPECT_EQ(Commands(), "");
    EXPECT_EQ(send(LB_GETCURSEL, 0, nullptr), 1);
    EXPECT_EQ(send(LB_SETCURSEL, 5, nullptr), LB_ERR);
    EXPECT_EQ(send(LB_GETCOUNT, 0, nullptr), 2);
    char text[16] = "";
    EXPECT_EQ(send(LB_GETTEXTLEN, 0, nullptr), 6);
    EXPECT_EQ(send(LB_GETTEXT, 0, text), 6);
    EXPECT_STREQ(text, "COM10:");
    EXPECT_EQ(send(LB_GETTEXT, 2, text), LB_ERR);
  });
}

TEST_F(ControlTest, DropDownListInsertsWhereItIsTold) {
  InDialog([](HWND dialog) {
    const auto send = [&](UINT message, WPARAM wparam, const char* text) {
      return SendDlgItemMessageA(dialog, COMBO, message, wparam, reinterpret_cast<LPARAM>(text));
    };
    EXPECT_EQ(send(CB_INSERTSTRING, 0, "z"), 0);
    EXPECT_EQ(send(CB_INSERTSTRING, 1, "a"), 1);
    EXPECT_EQ(send(CB_GETCURSEL, 0, nullptr), CB_ERR);
    Commands();
    EXPECT_EQ(send(CB_SETCURSEL, 1, nullptr), 1);
    EXPECT_EQ(Commands(), "");
    EXPECT_EQ(Text(dialog, COMBO), "a");
    char text[8] = "";
    EXPECT_EQ(send(CB_GETLBTEXT, 0, text), 1);
    EXPECT_STREQ(text, "z");
    EXPECT_EQ(send(CB_GETCOUNT, 0, nullptr), 2);
    EXPECT_EQ(send(CB_SETCURSEL, static_cast<WPARAM>(-1), nullptr), CB_ERR);
    EXPECT_EQ(send(CB_GETCURSEL, 0, nullptr), CB_ERR);
  });
}

TEST_F(ControlTest, FocusIsToldToEditsAndLists) {
  InDialog([](HWND dialog) {
    SetFocus(GetDlgItem(dialog, OTHER_BUTTON));
    using row = std::tuple<int, int, const char*>;
    for (const auto& [id, gained, lost] :
         {row{SINGLE, EN_SETFOCUS, "11:512"}, row{MULTI, EN_SETFOCUS, "15:512"},
          row{LIST, LBN_SETFOCUS, "24:5"}, row{COMBO, CBN_SETFOCUS, "25:10 25:4"}}) {
      Commands();
      SetFocus(GetDlgItem(dialog, id));
      EXPECT_EQ(Commands(), std::to_string(id) + ':' + std::to_string(gained));
      EXPECT_EQ(GetFocus(), GetDlgItem(dialog, id));
      SetFocus(GetDlgItem(dialog, OTHER_BUTTON));
      EXPECT_EQ(Commands(), lost);
    }
  });
}

TEST_F(ControlTest, DisabledControlHasNoFocus) {
  InDialog([](HWND dialog) {
    const HWND single = GetDlgItem(dialog, SINGLE);
    SetFocus(single);
    EXPECT_EQ(EnableWindow(single, FALSE), FALSE);
    EXPECT_EQ(EnableWindow(single, FALSE), TRUE);
    EXPECT_EQ(IsWindowEnabled(single), FALSE);
    EXPECT_EQ(GetFocus(), nullptr);
    SetFocus(GetDlgItem(dialog, UPPER));
    EXPECT_EQ(GetFocus(), GetDlgItem(dialog, UPPER));
  });
}

TEST_F(ControlTest, FontsAndIconsByTheirHandles) {
  InDialog([](HWND dialog) {
    const HFONT font =
        CreateFontA(14, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, ANSI_CHARSET, OUT_DEFAULT_PRECIS,
                    CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, FIXED_PITCH, nullptr);
    ASSERT_NE(font, nullptr);
    SendDlgItemMessageA(dialog, MULTI, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
    EXPECT_EQ(SendDlgItemMessageA(dialog, MULTI, WM_GETFONT, 0, 0),
              reinterpret_cast<LRESULT>(font));
    SendDlgItemMessageA(dialog, MULTI, WM_SETFONT, 0, TRUE);
    EXPECT_NE(DeleteObject(font), FALSE);
    EXPECT_EQ(DeleteObject(font), FALSE);
    EXPECT_EQ(LoadIconA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(999)), nullptr);
  });
}

TEST_F(ControlTest, MenuItemsByCommandAndByPosition) {
  InDialog([](HWND dialog) {
    const HMENU menu = GetMenu(dialog);
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(GetMenuItemCount(menu), 2);
    const HMENU file = GetSubMenu(menu, 0);
    EXPECT_EQ(GetMenuItemCount(file), 3);
    EXPECT_EQ(GetMenuItemID(file, 0), static_cast<UINT>(MENU_OPEN));
    EXPECT_EQ(GetMenuItemID(file, 2), static_cast<UINT>(-1));
    char text[16] = "";
    EXPECT_EQ(GetMenuStringA(file, 0, text, sizeof text, MF_BYPOSITION), 5);
    EXPECT_STREQ(text, "&Open");
    EXPECT_EQ(GetMenuState(menu, MENU_DEEP, MF_BYCOMMAND) & MF_GRAYED, MF_GRAYED);
    EXPECT_EQ(EnableMenuItem(menu, MENU_DEEP, MF_BYCOMMAND | MF_ENABLED),
              static_cast<BOOL>(MF_GRAYED));
    EXPECT_EQ(GetMenuState(menu, MENU_DEEP, MF_BYCOMMAND) & MF_GRAYED, 0u);
    EXPECT_EQ(EnableMenuItem(menu, MENU_DEEP, MF_BYCOMMAND | MF_GRAYED), 0);
    EXPECT_EQ(EnableMenuItem(menu, 999, MF_BYCOMMAND | MF_GRAYED), -1);
    EXPECT_EQ(GetMenuState(menu, 999, MF_BYCOMMAND), static_cast<UINT>(-1));
  });
}

TEST_F(ControlTest, PopupMenusGrowAtTheTopAndAreGoneWhenDestroyed) {
  InDialog([](HWND) {
    const HMENU popup = CreatePopupMenu();
    EXPECT_EQ(GetMenuItemCount(popup), 0);
    EXPECT_NE(InsertMenuA(popup, 0, MF_BYPOSITION | MF_STRING, 1, "one"), FALSE);
    EXPECT_NE(InsertMenuA(popup, 0, MF_BYPOSITION | MF_STRING, 2, "two"), FALSE);
    EXPECT_EQ(GetMenuItemID(popup, 0), 2u);
    EXPECT_EQ(GetMenuItemID(popup, 1), 1u);
    EXPECT_NE(DestroyMenu(popup), FALSE);
    EXPECT_EQ(DestroyMenu(popup), FALSE);
    EXPECT_EQ(GetMenuItemCount(popup), -1);
  });
}

}  // namespace
}  // namespace vt63x
