// SPDX-License-Identifier: MIT

#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionSlider>
#include <functional>
#include <utility>

#include "platform/window/control_classes.h"
#include "platform/window/edit_rules.h"
#include "platform/window/key_input.h"
#include "platform/window/message_queue.h"
#include "platform/window/text_codec.h"
#include "platform/window/text_positions.h"

namespace vt63x::ui {
namespace {

// Painted anew only when it looks different: a line more in a long text moves it by less than a
// pixel, and a bar costs more to paint than a line.
class QuietScrollBar : public QScrollBar {
 public:
  explicit QuietScrollBar(QWidget* parent) : QScrollBar(Qt::Vertical, parent) {}

 protected:
  void sliderChange(SliderChange change) override {
    if (change != SliderRangeChange && change != SliderValueChange) {
      QScrollBar::sliderChange(change);
    } else if (!std::exchange(looking_, true)) {
      // Range and value change one after the other.
      QMetaObject::invokeMethod(
          this, [this] { Look(); }, Qt::QueuedConnection);
    }
  }
  void paintEvent(QPaintEvent* event) override {
    painted_ = Slider();
    QScrollBar::paintEvent(event);
  }

 private:
  QRect Slider() const {
    QStyleOptionSlider option;
    initStyleOption(&option);
    return style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
  }
  void Look() {
    looking_ = false;
    if (Slider() != painted_) update();
  }

  QRect painted_;
  bool looking_ = false;
};

class TextEdit : public QPlainTextEdit {
 public:
  explicit TextEdit(QWidget* parent) : QPlainTextEdit(parent) {}

  // Text that the user pastes, drops or composes.
  std::function<void(const QString& text)> insert = [](const QString&) {};
  int first_visible_line() const { return firstVisibleBlock().blockNumber(); }

 protected:
  void insertFromMimeData(const QMimeData* source) override {
    if (source->hasText()) insert(source->text());
  }
  void inputMethodEvent(QInputMethodEvent* event) override {
    if (event->commitString().isEmpty()) {
      QPlainTextEdit::inputMethodEvent(event);
      return;
    }
    const QString text = event->commitString();
    event->setCommitString({});
    QPlainTextEdit::inputMethodEvent(event);
    insert(text);
  }
};

class MultiLineEdit : public Control<TextEdit> {
 public:
  MultiLineEdit(const dialog_item& item, Window& dialog)
      : Control(item, dialog), capitals_(HasStyle(item.style, ES_UPPERCASE)) {
    TextEdit& edit = toolkit();
    edit.setReadOnly(HasStyle(item.style, ES_READONLY));
    edit.setTabChangesFocus(true);
    if (HasStyle(item.style, ES_AUTOHSCROLL)) edit.setLineWrapMode(QPlainTextEdit::NoWrap);
    edit.setVerticalScrollBar(new QuietScrollBar(&edit));
    edit.setVerticalScrollBarPolicy(HasStyle(item.style, WS_VSCROLL) ? Qt::ScrollBarAlwaysOn
                                                                     : Qt::ScrollBarAlwaysOff);
    edit.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    edit.document()->setDocumentMargin(2);
    if (!item.text.empty()) PutText(item.text.c_str());
    edit.insert = [this](const QString& text) { UserInserts(text); };
    QObject::connect(&edit, &QPlainTextEdit::textChanged, [this] { Changed(); });
  }

  LRESULT Handle(UINT message, WPARAM wparam, LPARAM lparam) override {
    TextEdit& edit = toolkit();
    switch (message) {
      case WM_GETDLGCODE:
        return DLGC_HASSETSEL | DLGC_WANTCHARS | DLGC_WANTARROWS | DLGC_WANTALLKEYS;
      case WM_SETFOCUS:
        Notify(EN_SETFOCUS);
        return 0;
      case WM_KILLFOCUS:
        Notify(EN_KILLFOCUS);
        return 0;
      case WM_KEYDOWN:
        return KeyDown(wparam, lparam);
      case WM_CHAR:
        return Character(wparam, lparam);
      case WM_CUT:
        if (!edit.isReadOnly()) edit.cut();
        return 0;
      case WM_COPY:
        edit.copy();
        return 0;
      case WM_PASTE:
        if (!edit.isReadOnly()) UserInserts(QApplication::clipboard()->text());
        return 0;
      case WM_UNDO:
        if (!edit.isReadOnly()) edit.undo();
        return TRUE;
      default:
        return EditMessage(message, wparam, lparam);
    }
  }

  std::string Text() const override { return LinesToProgram(toolkit().document()->toRawText()); }

  // Not told to the dialog, unlike a single line's.
  void SetText(const char* text) override { PutText(text); }

 private:
  LRESULT EditMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    TextEdit& edit = toolkit();
    switch (message) {
      case EM_GETSEL:
        return Selection(wparam, lparam);
      case EM_SETSEL:
        Select(static_cast<int>(wparam), static_cast<int>(lparam));
        return 0;
      case EM_REPLACESEL:
        Replace(reinterpret_cast<const char*>(lparam), wparam != 0);
        return 0;
      case EM_SCROLLCARET:
        edit.ensureCursorVisible();
        return 1;
      case EM_GETMODIFY:
        return modified_ ? TRUE : FALSE;
      case EM_SETMODIFY:
        modified_ = wparam != 0;
        return 0;
      case EM_GETLINECOUNT:
        return edit.blockCount();
      case EM_GETFIRSTVISIBLELINE:
        return edit.first_visible_line();
      case EM_SETLIMITTEXT:
        limit_ = LimitOf(wparam);
        return 0;
      default:
        return Window::Handle(message, wparam, lparam);
    }
  }

  // Keys that a single line leaves to its dialog are this control's own, since it wants all keys.
  LRESULT KeyDown(WPARAM key, LPARAM lparam) {
    switch (key) {
      case VK_ESCAPE:
        PostToWindow(parent()->handle(), WM_CLOSE, 0, 0);
        return 0;
      case VK_TAB:
        parent()->Send(WM_NEXTDLGCTL, ShiftDown() ? 1 : 0, FALSE);
        return 0;
      case VK_RETURN:
        if (!ControlDown()) PressDefault();
        return 0;
      default:
        return Window::Handle(WM_KEYDOWN, key, lparam);
    }
  }

  void PressDefault() {
    const LRESULT answer = parent()->Send(DM_GETDEFID, 0, 0);
    if (HIWORD(answer) != DC_HASDEFID) return;
    Window* const button = dialog()->Control(LOWORD(answer));
    if (button == nullptr || !button->enabled()) return;
    const HWND handle = button->handle();
    parent()->Send(WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(handle), TRUE);
    PostToWindow(handle, WM_KEYDOWN, VK_RETURN, 0);
  }

  LRESULT Character(WPARAM character, LPARAM lparam) {
    // Control and Return.
    if (character == '\n' && !toolkit().isReadOnly()) UserInserts(QStringLiteral("\n"));
    if (character == '\r' || character == '\n' || character == VK_TAB) return 0;
    if (character < ' ' || character == 0x7f) return Window::Handle(WM_CHAR, character, lparam);
    if (!toolkit().isReadOnly()) UserInserts(QString(QChar(static_cast<char16_t>(character))));
    return 0;
  }

  // At the caret, in place of what is selected, as far as the limit allows.
  void UserInserts(QString text) {
    QTextCursor cursor = toolkit().textCursor();
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (capitals_) text = Capitals(text);
    const qsizetype room = std::max(0, limit_ - ProgramLength(*toolkit().document()) +
                                           (cursor.selectionEnd() - cursor.selectionStart()));
    const bool cut = text.size() > room;
    text.truncate(room);
    cursor.insertText(text);
    toolkit().setTextCursor(cursor);
    toolkit().ensureCursorVisible();
    if (cut) Notify(EN_MAXTEXT);
  }

  void PutText(const char* text) {
    const QSignalBlocker quiet(toolkit());
    QString wanted = LinesFromProgram(text);
    if (capitals_) wanted = Capitals(wanted);
    toolkit().setPlainText(wanted);
    modified_ = false;
    limit_ = std::max(limit_, ProgramLength(*toolkit().document()));
  }

  // The program's own insertions are kept out of what the user can undo, unless it wants them in.
  void Replace(const char* text, bool can_undo) {
    const bool undo = toolkit().isUndoRedoEnabled();
    if (!can_undo && undo) toolkit().setUndoRedoEnabled(false);
    QTextCursor cursor = toolkit().textCursor();
    const qsizetype room = std::max(0, limit_ - ProgramLength(*toolkit().document()) +
                                           (cursor.selectionEnd() - cursor.selectionStart()));
    QString wanted = LinesFromProgram(text);
    wanted.truncate(room);
    // The edit's own cursor, which stands at the same place, goes along.
    cursor.insertText(capitals_ ? Capitals(wanted) : wanted);
    toolkit().ensureCursorVisible();
    if (!can_undo && undo) toolkit().setUndoRedoEnabled(true);
  }

  void Changed() {
    modified_ = true;
    const HWND self = handle();
    Notify(EN_UPDATE);
    if (Window::Exists(self)) Notify(EN_CHANGE);
  }

  LRESULT Selection(WPARAM wparam, LPARAM lparam) const {
    const QTextCursor cursor = toolkit().textCursor();
    const QTextDocument& document = *toolkit().document();
    return TellSelection(ProgramPosition(document, cursor.selectionStart()),
                         ProgramPosition(document, cursor.selectionEnd()), wparam, lparam);
  }

  void Select(int start, int end) {
    QTextCursor cursor = toolkit().textCursor();
    const QTextDocument& document = *toolkit().document();
    if (start < 0) {
      cursor.clearSelection();
    } else {
      const int last = document.characterCount() - 1;
      cursor.setPosition(ToolkitPosition(document, start));
      cursor.setPosition(end < 0 ? last : ToolkitPosition(document, end), QTextCursor::KeepAnchor);
    }
    toolkit().setTextCursor(cursor);
  }

  bool capitals_;
  bool modified_ = false;
  int limit_ = EDIT_LIMIT;
};

}  // namespace

std::unique_ptr<Window> MakeMultiLineEdit(const dialog_item& item, Window& dialog) {
  return std::make_unique<MultiLineEdit>(item, dialog);
}

}  // namespace vt63x::ui
