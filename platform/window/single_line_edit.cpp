// SPDX-License-Identifier: MIT

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QValidator>
#include <algorithm>

#include "platform/window/control_classes.h"
#include "platform/window/edit_rules.h"
#include "platform/window/text_codec.h"

namespace vt63x::ui {
namespace {

// Whatever way text comes in: typed, pasted, dropped, from an input method.
class Filter : public QValidator {
 public:
  Filter(QObject* parent, bool capitals) : QValidator(parent), capitals_(capitals) {}
  State validate(QString& text, int&) const override {
    if (capitals_) text = Capitals(text);
    return Acceptable;
  }

 private:
  bool capitals_;
};

class SingleLineEdit : public Control<QLineEdit> {
 public:
  SingleLineEdit(const dialog_item& item, Window& dialog)
      : Control(item, dialog), capitals_(HasStyle(item.style, ES_UPPERCASE)) {
    QLineEdit& edit = toolkit();
    edit.setMaxLength(EDIT_LIMIT);
    edit.setValidator(new Filter(&edit, capitals_));
    edit.setReadOnly(HasStyle(item.style, ES_READONLY));
    if (HasStyle(item.style, ES_CENTER)) edit.setAlignment(Qt::AlignCenter);
    edit.setFrame(HasStyle(item.style, WS_BORDER));
    if (edit.isReadOnly()) {
      QPalette palette = edit.palette();
      palette.setColor(QPalette::Base, palette.color(QPalette::Window));
      edit.setPalette(palette);
    }
    if (!item.text.empty()) PutText(item.text.c_str());
    QObject::connect(&edit, &QLineEdit::textChanged, [this] { Changed(); });
    QObject::connect(&edit, &QLineEdit::inputRejected, [this] { Notify(EN_MAXTEXT); });
  }

  LRESULT Handle(UINT message, WPARAM wparam, LPARAM lparam) override {
    QLineEdit& edit = toolkit();
    switch (message) {
      case WM_GETDLGCODE:
        return DLGC_HASSETSEL | DLGC_WANTCHARS | DLGC_WANTARROWS;
      case WM_SETFOCUS:
        Notify(EN_SETFOCUS);
        return 0;
      case WM_KILLFOCUS:
        Notify(EN_KILLFOCUS);
        return 0;
      case WM_CUT:
        if (edit.isReadOnly()) return 0;
        edit.cut();
        return 0;
      case WM_COPY:
        edit.copy();
        return 0;
      case WM_PASTE:
        Paste();
        return 0;
      case WM_UNDO:
        if (!edit.isReadOnly()) edit.undo();
        return TRUE;
      case EM_GETSEL:
        return Selection(wparam, lparam);
      case EM_SETSEL:
        Select(static_cast<int>(wparam), static_cast<int>(lparam));
        return 0;
      case EM_REPLACESEL:
        edit.insert(FirstLine(FromProgram(reinterpret_cast<const char*>(lparam))));
        return 0;
      case EM_SCROLLCARET:
        return 1;
      case EM_GETMODIFY:
        return edit.isModified() ? TRUE : FALSE;
      case EM_SETMODIFY:
        edit.setModified(wparam != 0);
        return 0;
      case EM_GETLINECOUNT:
        return 1;
      case EM_SETLIMITTEXT:
        edit.setMaxLength(std::max(LimitOf(wparam), static_cast<int>(edit.text().size())));
        return 0;
      default:
        return Window::Handle(message, wparam, lparam);
    }
  }

  std::string Text() const override { return ToProgram(toolkit().text()); }

  // The program's texts are told as well.
  void SetText(const char* text) override {
    PutText(text);
    Changed();
  }

 private:
  void PutText(const char* text) {
    const QSignalBlocker quiet(toolkit());
    QString wanted = FromProgram(text);
    if (capitals_) wanted = Capitals(wanted);
    // The limit is for the user only.
    if (wanted.size() > toolkit().maxLength())
      toolkit().setMaxLength(static_cast<int>(wanted.size()));
    toolkit().setText(wanted);
    toolkit().setCursorPosition(0);
    toolkit().setModified(false);
  }

  void Changed() {
    const HWND self = handle();
    Notify(EN_UPDATE);
    if (Window::Exists(self)) Notify(EN_CHANGE);
  }

  QString FirstLine(const QString& text) const {
    const auto end = std::find_if(text.begin(), text.end(),
                                  [](QChar c) { return c == QChar('\r') || c == QChar('\n'); });
    return text.left(end - text.begin());
  }

  void Paste() {
    if (toolkit().isReadOnly()) return;
    toolkit().insert(FirstLine(QApplication::clipboard()->text()));
  }

  LRESULT Selection(WPARAM wparam, LPARAM lparam) const {
    const QLineEdit& edit = toolkit();
    const int start = edit.hasSelectedText() ? edit.selectionStart() : edit.cursorPosition();
    return TellSelection(start, start + edit.selectionLength(), wparam, lparam);
  }

  void Select(int start, int end) {
    QLineEdit& edit = toolkit();
    const int length = static_cast<int>(edit.text().size());
    if (start < 0) {
      edit.deselect();
      return;
    }
    start = std::min(start, length);
    end = end < 0 ? length : std::min(end, length);
    if (start == end) {
      edit.deselect();
      edit.setCursorPosition(end);
    } else {
      edit.setSelection(start, end - start);
    }
  }

  bool capitals_;
};

}  // namespace

std::unique_ptr<Window> MakeSingleLineEdit(const dialog_item& item, Window& dialog) {
  return std::make_unique<SingleLineEdit>(item, dialog);
}

}  // namespace vt63x::ui
