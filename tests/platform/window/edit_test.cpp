// SPDX-License-Identifier: MIT

#include <tuple>

#include "tests/platform/window/test_dialog.h"

namespace vt63x {
namespace {

class EditTest : public WindowTest {};

constexpr int kUpdate = EN_UPDATE;
constexpr int kChange = EN_CHANGE;

std::string Changed(int id) {
  return std::to_string(id) + ':' + std::to_string(kUpdate) + ' ' + std::to_string(id) + ':' +
         std::to_string(kChange);
}

using notification_row = std::tuple<const char*, int, UINT, WPARAM, LPARAM, bool>;

const notification_row kRows[] = {
    {"set text", SINGLE, WM_SETTEXT, 0, reinterpret_cast<LPARAM>("abc"), true},
    {"set the same text", SINGLE, WM_SETTEXT, 0, reinterpret_cast<LPARAM>("abc"), true},
    {"type", SINGLE, WM_CHAR, 'x', 1, true},
    {"type a backspace", SINGLE, WM_CHAR, '\b', 1, true},
    {"replace", SINGLE, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>("q"), true},
    {"select", SINGLE, EM_SETSEL, 0, -1, false},
    {"set read-only text", READ_ONLY, WM_SETTEXT, 0, reinterpret_cast<LPARAM>("abc"), true},
    {"type into read-only", READ_ONLY, WM_CHAR, 'x', 1, false},
    {"set lines", MULTI, WM_SETTEXT, 0, reinterpret_cast<LPARAM>("a\r\nb"), false},
    {"type into lines", MULTI, WM_CHAR, 'x', 1, true},
    {"replace in lines", MULTI, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>("q\r\n"), true},
    {"select in lines", MULTI, EM_SETSEL, 0, 0, false},
    {"set one line", ONE_LINE, WM_SETTEXT, 0, reinterpret_cast<LPARAM>("abc"), false},
};

TEST_F(EditTest, ChangesAreToldAsOftenAsTheyShouldBe) {
  InDialog([](HWND dialog) {
    for (const auto& [what, id, message, wparam, lparam, told] : kRows) {
      Commands();
      SendDlgItemMessageA(dialog, id, message, wparam, lparam);
      EXPECT_EQ(Commands(), told ? Changed(id) : "") << what;
    }
  });
}

TEST_F(EditTest, TextIsCutToTheBufferItIsReadInto) {
  InDialog([](HWND dialog) {
    SetDlgItemTextA(dialog, SINGLE, "abcdef");
    EXPECT_EQ(GetWindowTextLengthA(GetDlgItem(dialog, SINGLE)), 6);
    char buffer[8] = "#######";
    EXPECT_EQ(GetDlgItemTextA(dialog, SINGLE, buffer, 4), 3u);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(buffer[4], '#');
    EXPECT_EQ(GetDlgItemTextA(dialog, SINGLE, buffer, 1), 0u);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(GetDlgItemTextA(dialog, 999, buffer, 4), 0u);
  });
}

TEST_F(EditTest, CapitalsWhereTheStyleAsksForThem) {
  InDialog([](HWND dialog) {
    for (const int id : {UPPER, ONE_LINE}) {
      SetDlgItemTextA(dialog, id, "");
      Type(dialog, id, "gr 3a");
      EXPECT_EQ(Text(dialog, id), "GR 3A") << id;
      SendDlgItemMessageA(dialog, id, EM_SETSEL, 0, -1);
      SendDlgItemMessageA(dialog, id, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>("x1"));
      EXPECT_EQ(Text(dialog, id), "X1") << id;
      SetDlgItemTextA(dialog, SINGLE, "pasted");
      SendDlgItemMessageA(dialog, SINGLE, EM_SETSEL, 0, -1);
      SendDlgItemMessageA(dialog, SINGLE, WM_COPY, 0, 0);
      SendDlgItemMessageA(dialog, id, EM_SETSEL, 0, -1);
      SendDlgItemMessageA(dialog, id, WM_PASTE, 0, 0);
      EXPECT_EQ(Text(dialog, id), "PASTED") << id;
    }
  });
}

TEST_F(EditTest, PastedLineEndsStayInLinesAndEndASingleLine) {
  InDialog([](HWND dialog) {
    SetDlgItemTextA(dialog, MULTI, "one\r\ntwo");
    SendDlgItemMessageA(dialog, MULTI, EM_SETSEL, 0, -1);
    SendDlgItemMessageA(dialog, MULTI, WM_COPY, 0, 0);
    SetDlgItemTextA(dialog, SINGLE, "");
    SendDlgItemMessageA(dialog, SINGLE, WM_PASTE, 0, 0);
    EXPECT_EQ(Text(dialog, SINGLE), "one");
    SendDlgItemMessageA(dialog, MULTI, EM_SETSEL, 0, 0);
    SendDlgItemMessageA(dialog, MULTI, WM_PASTE, 0, 0);
    EXPECT_EQ(Text(dialog, MULTI), "one\r\ntwoone\r\ntwo");
    EXPECT_EQ(SendDlgItemMessageA(dialog, MULTI, EM_GETLINECOUNT, 0, 0), 3);
  });
}

TEST_F(EditTest, AnyTextComesBackFromLinesAsItWas) {
  InDialog([](HWND dialog) {
    for (const char* text :
         {"", "a", "\r\n", "a\r\n\r\nb\r\n", "tab\there", "a\rb", "a\nb\r\nc", "\r\r\n"}) {
      SetDlgItemTextA(dialog, MULTI, text);
      EXPECT_EQ(Text(dialog, MULTI), text);
    }
  });
}

TEST_F(EditTest, PositionsCountLineEndsAsTwo) {
  InDialog([](HWND dialog) {
    SetDlgItemTextA(dialog, MULTI, "ab\r\ncd\r\n\r\nef");
    for (const int position : {0, 1, 2, 4, 5, 6, 8, 10, 11, 12}) {
      SendDlgItemMessageA(dialog, MULTI, EM_SETSEL, static_cast<WPARAM>(position), position);
      DWORD start = 99;
      DWORD end = 99;
      SendDlgItemMessageA(dialog, MULTI, EM_GETSEL, reinterpret_cast<WPARAM>(&start),
                          reinterpret_cast<LPARAM>(&end));
      EXPECT_EQ(start, static_cast<DWORD>(position));
      EXPECT_EQ(end, start);
    }
    SendDlgItemMessageA(dialog, MULTI, EM_SETSEL, 4, 6);
    SendDlgItemMessageA(dialog, MULTI, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>("X"));
    EXPECT_EQ(Text(dialog, MULTI), "ab\r\nX\r\n\r\nef");
    SendDlgItemMessageA(dialog, MULTI, EM_SETSEL, 1000, 1000);
    SendDlgItemMessageA(dialog, MULTI, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>("\r\nend"));
    EXPECT_EQ(Text(dialog, MULTI), "ab\r\nX\r\n\r\nef\r\nend");
    EXPECT_EQ(SendDlgItemMessageA(dialog, MULTI, EM_GETSEL, 0, 0), MAKELONG(16, 16));
  });
}

TEST_F(EditTest, ModifiedByTheUserAndByReplacingOnly) {
  InDialog([](HWND dialog) {
    for (const int id : {SINGLE, MULTI}) {
      const auto modified = [&] {
        return SendDlgItemMessageA(dialog, id, EM_GETMODIFY, 0, 0) != 0;
      };
      SendDlgItemMessageA(dialog, id, EM_SETMODIFY, TRUE, 0);
      SetDlgItemTextA(dialog, id, "text");
      EXPECT_FALSE(modified()) << id;
      Type(dialog, id, "x");
      EXPECT_TRUE(modified()) << id;
      SendDlgItemMessageA(dialog, id, EM_SETMODIFY, FALSE, 0);
      EXPECT_FALSE(modified()) << id;
      SendDlgItemMessageA(dialog, id, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>("y"));
      EXPECT_TRUE(modified()) << id;
    }
  });
}

TEST_F(EditTest, LimitHoldsForTypingAndNotForSetting) {
  InDialog([](HWND dialog) {
    for (const int id : {SINGLE, MULTI}) {
      SetDlgItemTextA(dialog, id, "");
      SendDlgItemMessageA(dialog, id, EM_SETLIMITTEXT, 3, 0);
      Commands();
      Type(dialog, id, "abc");
      Commands();
      Type(dialog, id, "d");
      // Some implementations go on to tell of a change that was none.
      EXPECT_TRUE(Commands().starts_with(std::to_string(id) + ':' + std::to_string(EN_MAXTEXT)));
      EXPECT_EQ(Text(dialog, id), "abc") << id;
      SetDlgItemTextA(dialog, id, "longer than three");
      EXPECT_EQ(Text(dialog, id), "longer than three") << id;
    }
  });
}

TEST_F(EditTest, LogOf100000CharactersGrowsAtItsEndAndShowsIt) {
  InDialog([](HWND dialog) {
    SendDlgItemMessageA(dialog, MULTI, EM_SETLIMITTEXT, 200'000, 0);
    std::string log;
    while (log.size() < 100'000) log += "GR  37          // data == 91\r\n";
    SetDlgItemTextA(dialog, MULTI, log.c_str());
    for (int i = 0; i < 20; ++i) {
      SendDlgItemMessageA(dialog, MULTI, EM_SETSEL, log.size(), static_cast<LPARAM>(log.size()));
      SendDlgItemMessageA(dialog, MULTI, EM_REPLACESEL, FALSE,
                          reinterpret_cast<LPARAM>("more\r\n"));
      log += "more\r\n";
    }
    SendDlgItemMessageA(dialog, MULTI, EM_SETSEL, log.size(), static_cast<LPARAM>(log.size()));
    SendDlgItemMessageA(dialog, MULTI, EM_SCROLLCARET, 0, 0);
    EXPECT_EQ(Text(dialog, MULTI), log);
    const LRESULT lines = SendDlgItemMessageA(dialog, MULTI, EM_GETLINECOUNT, 0, 0);
    const LRESULT first = SendDlgItemMessageA(dialog, MULTI, EM_GETFIRSTVISIBLELINE, 0, 0);
    EXPECT_GT(first, lines - 40);
    EXPECT_LT(first, lines);
  });
}

}  // namespace
}  // namespace vt63x
