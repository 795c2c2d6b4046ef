// SPDX-License-Identifier: MIT

// What the user sees and what the wheel does, which no window call tells.

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QImage>
#include <QKeyEvent>
#include <QWheelEvent>
#include <QWindow>

#include "platform/window/dialog.h"
#include "tests/platform/window/test_dialog.h"

namespace vt63x {
namespace {

class LookTest : public WindowTest {
 protected:
  static QWidget& WidgetOf(HWND window) { return *ui::Window::Find(window)->widget(); }

  // The screen tells some time after the dialog is shown that it has the keyboard.
  static void InActiveDialog(const std::function<void(HWND)>& test) {
    WithDialog([&](HWND dialog) {
      bool active = false;
      std::function<void()> look = [&] { active = WidgetOf(dialog).isActiveWindow(); };
      WaitFor(
          [&] {
            OnWindowThread(dialog, look);
            return active;
          },
          "the keyboard");
      OnWindowThread(dialog, [&] { test(dialog); });
    });
  }

  static QImage Picture(HWND dialog, int id, int focus) {
    SetFocus(GetDlgItem(dialog, focus));
    return WidgetOf(GetDlgItem(dialog, id)).grab().toImage();
  }
};

TEST_F(LookTest, FocusIsSeenOnceAKeyWasPressed) {
  InActiveDialog([](HWND dialog) {
    SendDlgItemMessageA(dialog, LIST, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>("entry"));
    QKeyEvent shift(QEvent::KeyPress, Qt::Key_Shift, Qt::ShiftModifier);
    QCoreApplication::sendEvent(WidgetOf(dialog).windowHandle(), &shift);
    for (const int id : {OTHER_BUTTON, DEFAULT_BUTTON, CHECK, LIST, COMBO, SINGLE, MULTI}) {
      const int elsewhere = id == SINGLE ? UPPER : SINGLE;
      EXPECT_NE(Picture(dialog, id, id), Picture(dialog, id, elsewhere)) << id;
    }
  });
}

// A turn of the wheel over a list that somebody only passes must not choose another entry.
TEST_F(LookTest, DropDownListKeepsToItsTemplateAndItsWheelToTheFocus) {
  InActiveDialog([](HWND dialog) {
    for (int i = 0; i < 100; ++i) {
      SendDlgItemMessageA(dialog, COMBO, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>("entry"));
    }
    SendDlgItemMessageA(dialog, COMBO, CB_SETCURSEL, 0, 0);
    auto& box = static_cast<QComboBox&>(WidgetOf(GetDlgItem(dialog, COMBO)));
    for (const auto& [focus, chosen] : {std::pair{LIST, 0}, std::pair{COMBO, 1}}) {
      SetFocus(GetDlgItem(dialog, focus));
      QWheelEvent down(QPointF(5, 5), box.mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton,
                       Qt::NoModifier, Qt::NoScrollPhase, false);
      QCoreApplication::sendEvent(&box, &down);
      EXPECT_EQ(SendDlgItemMessageA(dialog, COMBO, CB_GETCURSEL, 0, 0), chosen) << focus;
    }
    RECT template_height{0, 0, 0, 60};
    MapDialogRect(dialog, &template_height);
    box.showPopup();
    EXPECT_LE(box.height() + box.view()->height(), template_height.bottom);
    EXPECT_GT(box.view()->height(), box.height());
    box.hidePopup();
  });
}

}  // namespace
}  // namespace vt63x
