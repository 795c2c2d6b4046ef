// SPDX-License-Identifier: MIT

#include <QListWidget>

#include "platform/window/control_classes.h"
#include "platform/window/list_text.h"

namespace vt63x::ui {
namespace {

// One choice at a time. The program's own choices are not told.
class ListBox : public Control<QListWidget> {
 public:
  ListBox(const dialog_item& item, Window& dialog) : Control(item, dialog) {
    QListWidget& list = toolkit();
    list.setSelectionMode(QAbstractItemView::SingleSelection);
    list.setUniformItemSizes(true);
    const bool always = HasStyle(item.style, WS_VSCROLL | LBS_DISABLENOSCROLL);
    list.setVerticalScrollBarPolicy(always                             ? Qt::ScrollBarAlwaysOn
                                    : HasStyle(item.style, WS_VSCROLL) ? Qt::ScrollBarAsNeeded
                                                                       : Qt::ScrollBarAlwaysOff);
    list.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QObject::connect(&list, &QListWidget::currentRowChanged, [this] { Tell(LBN_SELCHANGE); });
    QObject::connect(&list, &QListWidget::itemDoubleClicked, [this] { Tell(LBN_DBLCLK); });
  }

  LRESULT Handle(UINT message, WPARAM wparam, LPARAM lparam) override {
    switch (message) {
      case WM_GETDLGCODE:
        return DLGC_WANTARROWS | DLGC_WANTCHARS;
      case WM_SETFOCUS:
        Tell(LBN_SETFOCUS);
        return 0;
      case WM_KILLFOCUS:
        Tell(LBN_KILLFOCUS);
        return 0;
      case LB_ADDSTRING:
        return Add(reinterpret_cast<const char*>(lparam));
      case LB_SETCURSEL:
        return Select(static_cast<int>(wparam));
      case LB_GETCURSEL:
        return toolkit().currentRow();  // -1 for none is LB_ERR
      case LB_GETCOUNT:
        return toolkit().count();
      case LB_GETTEXT:
      case LB_GETTEXTLEN:
        return Entry(message == LB_GETTEXT, static_cast<int>(wparam), lparam);
      default:
        return Window::Handle(message, wparam, lparam);
    }
  }

 private:
  LRESULT Add(const char* text) {
    const QSignalBlocker quiet(toolkit());
    QListWidget& list = toolkit();
    const QString entry = FromProgram(text);
    list.addItem(entry);
    return list.count() - 1;
  }

  LRESULT Select(int row) {
    const QSignalBlocker quiet(toolkit());
    const bool valid = row >= 0 && row < toolkit().count();
    toolkit().setCurrentRow(valid ? row : -1);
    if (valid) toolkit().scrollToItem(toolkit().item(row));
    return valid ? row : LB_ERR;
  }

  LRESULT Entry(bool copy, int row, LPARAM buffer) {
    const QListWidgetItem* const item = toolkit().item(row);
    return item == nullptr ? LB_ERR : ListText(item->text(), copy, buffer);
  }

  void Tell(int code) {
    if (HasStyle(style(), LBS_NOTIFY)) Notify(code);
  }
};

}  // namespace

std::unique_ptr<Window> MakeListBox(const dialog_item& item, Window& dialog) {
  return std::make_unique<ListBox>(item, dialog);
}

}  // namespace vt63x::ui
