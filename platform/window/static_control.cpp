// SPDX-License-Identifier: MIT

// Labels, sunken fields of a status line, and icons.

#include <QFrame>
#include <QPainter>
#include <QStyle>

#include "platform/window/control_classes.h"
#include "platform/window/icon.h"
#include "platform/window/text_codec.h"

namespace vt63x::ui {
namespace {

// The toolkit's own label underlines a letter only together with a control to jump to.
class Label : public QFrame {
 public:
  explicit Label(QWidget* parent) : QFrame(parent) {}

  QString text;
  QIcon icon;

 protected:
  void paintEvent(QPaintEvent* event) override {
    QFrame::paintEvent(event);
    QPainter painter(this);
    if (!icon.isNull()) {
      icon.paint(&painter, contentsRect());
      return;
    }
    const int flags =
        static_cast<int>(Qt::AlignLeft | Qt::AlignTop) | Qt::TextShowMnemonic | Qt::TextWordWrap;
    style()->drawItemText(&painter, contentsRect(), flags, palette(), isEnabled(), text,
                          QPalette::WindowText);
  }
};

constexpr DWORD kKind = 0x1f;
constexpr int kIconSize = 32;  // pixels

class Static : public Control<Label> {
 public:
  Static(const dialog_item& item, Window& dialog) : Control(item, dialog) {
    if (HasStyle(item.style, SS_SUNKEN)) toolkit().setFrameStyle(QFrame::Panel | QFrame::Sunken);
    if (HasStyle(item.style, SS_ICON)) SetIcon(item.resource);
    SetText(item.text.c_str());
  }

  LRESULT Handle(UINT message, WPARAM wparam, LPARAM lparam) override {
    return message == WM_GETDLGCODE ? DLGC_STATIC : Window::Handle(message, wparam, lparam);
  }
  std::string Text() const override { return ToProgram(toolkit().text); }
  void SetText(const char* text) override {
    toolkit().text = FromProgram(text);
    toolkit().update();
  }

 private:
  // As large as icons are, whatever the template says; resource compilers leave the size out.
  void SetIcon(WORD resource) {
    toolkit().icon = LoadIconResource(resource);
    toolkit().setFixedSize(kIconSize, kIconSize);
  }
};

}  // namespace

std::unique_ptr<Window> MakeStatic(const dialog_item& item, Window& dialog) {
  const DWORD kind = item.style & kKind;
  if (kind != 0 && kind != SS_ICON) return nullptr;
  return std::make_unique<Static>(item, dialog);
}

}  // namespace vt63x::ui
