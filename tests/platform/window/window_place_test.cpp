// SPDX-License-Identifier: MIT

#include <tuple>

#include "tests/platform/window/test_dialog.h"

namespace vt63x {
namespace {

class WindowPlaceTest : public WindowTest {};

int Width(const RECT& rect) { return rect.right - rect.left; }
int Height(const RECT& rect) { return rect.bottom - rect.top; }

RECT RectOf(HWND window) {
  RECT rect{};
  EXPECT_NE(GetWindowRect(window, &rect), FALSE);
  return rect;
}

// Left and top in the client area of the dialog.
RECT InClient(HWND dialog, int id) {
  RECT rect = RectOf(GetDlgItem(dialog, id));
  POINT corner{};
  ClientToScreen(dialog, &corner);
  return {rect.left - corner.x, rect.top - corner.y, rect.right - corner.x, rect.bottom - corner.y};
}

TEST_F(WindowPlaceTest, ControlsStandWhereTheTemplatePutsThem) {
  InDialog([](HWND dialog) {
    using row = std::tuple<int, RECT>;
    for (const auto& [id, units] : {row{SINGLE, {50, 5, 130, 19}}, row{MULTI, {145, 10, 285, 70}},
                                    row{CHECK, {5, 120, 55, 130}}, row{LIST, {5, 140, 85, 190}}}) {
      RECT expected = units;
      MapDialogRect(dialog, &expected);
      const RECT seen = InClient(dialog, id);
      EXPECT_NEAR(seen.left, expected.left, 1) << id;
      EXPECT_NEAR(seen.top, expected.top, 1) << id;
      EXPECT_NEAR(Width(seen), Width(expected), 1) << id;
      EXPECT_NEAR(Height(seen), Height(expected), 1) << id;
    }
    RECT client{};
    RECT expected{0, 0, 300, 200};
    GetClientRect(dialog, &client);
    MapDialogRect(dialog, &expected);
    EXPECT_EQ(client.left, 0);
    EXPECT_NEAR(client.right, expected.right, 1);
    EXPECT_NEAR(client.bottom, expected.bottom, 1);
  });
}

std::vector<std::pair<int, int>> Sizes() {
  std::vector<std::pair<int, int>> sizes;
  for (const recorded_message& m : Record().Take()) {
    if (m.message == WM_SIZE) sizes.emplace_back(LOWORD(m.lparam), HIWORD(m.lparam));
  }
  return sizes;
}

TEST_F(WindowPlaceTest, EverySizeChangeIsToldAtOnceWithTheClientSize) {
  InDialog([](HWND dialog) {
    RECT client{};
    GetClientRect(dialog, &client);
    const RECT rect = RectOf(dialog);
    Record().Take();
    MoveWindow(dialog, rect.left, rect.top, Width(rect) + 20, Height(rect) + 30, TRUE);
    EXPECT_EQ(Sizes(), (std::vector<std::pair<int, int>>{{client.right + 20, client.bottom + 30}}));
    MoveWindow(dialog, rect.left + 5, rect.top, Width(rect) + 20, Height(rect) + 30, TRUE);
    EXPECT_TRUE(Sizes().empty());
    EXPECT_EQ(RectOf(dialog).left, rect.left + 5);
  });
}

// As a window does that does not allow another width.
TEST_F(WindowPlaceTest, SizeCanBePutBackWhileItIsTold) {
  static int width = 0;
  Record().first = [](HWND dialog, const recorded_message& m) -> INT_PTR {
    if (m.message != WM_SIZE || width == 0) return FALSE;
    RECT rect{};
    GetWindowRect(dialog, &rect);
    if (rect.right - rect.left != width) {
      MoveWindow(dialog, rect.left, rect.top, width, rect.bottom - rect.top, TRUE);
    }
    return TRUE;
  };
  InDialog([](HWND dialog) {
    const RECT rect = RectOf(dialog);
    width = Width(rect);
    Record().Take();
    MoveWindow(dialog, rect.left, rect.top, width + 50, Height(rect) + 10, TRUE);
    EXPECT_EQ(Sizes().size(), 2u);
    EXPECT_EQ(Width(RectOf(dialog)), width);
    EXPECT_EQ(Height(RectOf(dialog)), Height(rect) + 10);
    width = 0;
  });
}

TEST_F(WindowPlaceTest, ControlsMoveInTheClientArea) {
  InDialog([](HWND dialog) {
    MoveWindow(GetDlgItem(dialog, MULTI), 20, 30, 100, 60, TRUE);
    const RECT rect = InClient(dialog, MULTI);
    EXPECT_EQ(rect.left, 20);
    EXPECT_EQ(rect.top, 30);
    EXPECT_EQ(Width(rect), 100);
    EXPECT_EQ(Height(rect), 60);
  });
}

TEST_F(WindowPlaceTest, HiddenAndShown) {
  InDialog([](HWND dialog) {
    const HWND hidden = GetDlgItem(dialog, HIDDEN_BUTTON);
    EXPECT_EQ(IsWindowVisible(hidden), FALSE);
    EXPECT_EQ(ShowWindow(hidden, SW_SHOW), FALSE);
    EXPECT_NE(IsWindowVisible(hidden), FALSE);
    EXPECT_NE(ShowWindow(hidden, SW_HIDE), FALSE);
    EXPECT_EQ(IsWindowVisible(hidden), FALSE);
    EXPECT_NE(GetWindowLongPtrA(GetDlgItem(dialog, ONE_LINE), GWL_STYLE) & ES_MULTILINE, 0);
  });
}

}  // namespace
}  // namespace vt63x
