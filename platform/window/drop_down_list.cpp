// SPDX-License-Identifier: MIT

#include <QAbstractItemView>
#include <QComboBox>
#include <QWheelEvent>
#include <algorithm>

#include "platform/window/control_classes.h"
#include "platform/window/list_text.h"

namespace vt63x::ui {
namespace {

class Box : public QComboBox {
 public:
  explicit Box(QWidget* parent) : QComboBox(parent) {}
  std::function<void(bool open)> dropped = [](bool) {};

  void showPopup() override {
    if (count() == 0) return;
    open_ = true;
    dropped(true);
    QComboBox::showPopup();
  }
  // The wheel belongs to the control with the focus.
  void wheelEvent(QWheelEvent* event) override {
    if (hasFocus()) {
      QComboBox::wheelEvent(event);
    } else {
      event->ignore();
    }
  }
  void hidePopup() override {
    QComboBox::hidePopup();
    if (!std::exchange(open_, false)) return;
    dropped(false);
  }

 private:
  bool open_ = false;
};

class DropDownList : public Control<Box> {
 public:
  DropDownList(const dialog_item& item, Window& dialog) : Control(item, dialog) {
    toolkit().setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    toolkit().dropped = [this](bool open) { Notify(open ? CBN_DROPDOWN : CBN_CLOSEUP); };
    QObject::connect(&toolkit(), &QComboBox::activated, [this](int row) { Chosen(row); });
  }

  LRESULT Handle(UINT message, WPARAM wparam, LPARAM lparam) override {
    switch (message) {
      case WM_GETDLGCODE:
        return DLGC_WANTARROWS | DLGC_WANTCHARS;
      case WM_SETFOCUS:
        Notify(CBN_SETFOCUS);
        return 0;
      case WM_KILLFOCUS:
        Notify(CBN_SELENDCANCEL);
        Notify(CBN_KILLFOCUS);
        return 0;
      case CB_ADDSTRING:
        return Insert(HasStyle(style(), CBS_SORT) ? SortedRow(lparam) : toolkit().count(), lparam);
      case CB_INSERTSTRING:
        return Insert(static_cast<int>(wparam), lparam);
      case CB_SETCURSEL:
        return Select(static_cast<int>(wparam));
      case CB_GETCURSEL:
        return toolkit().currentIndex();  // -1 for none is CB_ERR
      case CB_GETCOUNT:
        return toolkit().count();
      case CB_GETLBTEXT:
        return Entry(static_cast<int>(wparam), lparam);
      default:
        return Window::Handle(message, wparam, lparam);
    }
  }
  std::string Text() const override { return ToProgram(toolkit().currentText()); }
  void SetText(const char*) override {}  // the text is that of the chosen entry

 private:
  int SortedRow(LPARAM text) const {
    const QString entry = FromProgram(reinterpret_cast<const char*>(text));
    int row = 0;
    while (row < toolkit().count() && QString::compare(toolkit().itemText(row), entry) <= 0) ++row;
    return row;
  }

  LRESULT Insert(int row, LPARAM text) {
    if (row < -1 || row > toolkit().count()) return CB_ERR;
    if (row == -1) row = toolkit().count();
    // The toolkit chooses the first entry by itself; here none is until somebody does.
    const int chosen = toolkit().currentIndex();
    toolkit().insertItem(row, FromProgram(reinterpret_cast<const char*>(text)));
    toolkit().setCurrentIndex(chosen < 0 ? -1 : chosen + (row <= chosen ? 1 : 0));
    last_ = toolkit().currentIndex();
    return row;
  }

  LRESULT Select(int row) {
    const bool valid = row >= 0 && row < toolkit().count();
    last_ = valid ? row : -1;
    toolkit().setCurrentIndex(last_);
    return valid ? row : CB_ERR;
  }

  void Chosen(int row) {
    const HWND self = handle();
    const bool changed = std::exchange(last_, row) != row;
    Notify(CBN_SELENDOK);
    if (changed && Window::Exists(self)) Notify(CBN_SELCHANGE);
  }

  LRESULT Entry(int row, LPARAM buffer) {
    if (row < 0 || row >= toolkit().count()) return CB_ERR;
    return ListText(toolkit().itemText(row), true, buffer);
  }

  int last_ = -1;
};

}  // namespace

void SetDropDownHeight(Window& drop_down_list, int pixels) {
  auto& box = *static_cast<Box*>(drop_down_list.widget());
  const int row = box.view()->fontMetrics().height();
  box.setMaxVisibleItems(std::max(1, pixels / row));
}

std::unique_ptr<Window> MakeDropDownList(const dialog_item& item, Window& dialog) {
  return std::make_unique<DropDownList>(item, dialog);
}

}  // namespace vt63x::ui
