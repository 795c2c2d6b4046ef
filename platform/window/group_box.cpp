// SPDX-License-Identifier: MIT

// A frame with a caption around controls that are its neighbours, not its children. Clicks go
// through it.

#include <QPainter>
#include <QStyle>

#include "platform/window/control_classes.h"
#include "platform/window/text_codec.h"

namespace vt63x::ui {
namespace {

class Frame : public QWidget {
 public:
  explicit Frame(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
  }
  QString caption;

 protected:
  // The line runs through the middle of the caption, which interrupts it.
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    const QFontMetrics metrics = fontMetrics();
    const QRect line(0, metrics.height() / 2, width() - 1, height() - metrics.height() / 2 - 1);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(line);
    if (caption.isEmpty()) return;
    const int extent = metrics.size(Qt::TextShowMnemonic, caption).width();
    const QRect text(kInset, 0, extent + 2 * kGap, metrics.height());
    painter.fillRect(text, palette().color(QPalette::Window));
    style()->drawItemText(&painter, text, Qt::AlignCenter | Qt::TextShowMnemonic, palette(),
                          isEnabled(), caption, QPalette::WindowText);
  }

 private:
  static constexpr int kInset = 7;  // pixels from the left edge to the gap in the line
  static constexpr int kGap = 2;
};

class GroupBox : public Control<Frame> {
 public:
  GroupBox(const dialog_item& item, Window& dialog) : Control(item, dialog) {
    SetText(item.text.c_str());
  }

  LRESULT Handle(UINT message, WPARAM wparam, LPARAM lparam) override {
    return message == WM_GETDLGCODE ? DLGC_STATIC : Window::Handle(message, wparam, lparam);
  }
  std::string Text() const override { return ToProgram(toolkit().caption); }
  void SetText(const char* text) override {
    toolkit().caption = FromProgram(text);
    toolkit().update();
  }
};

}  // namespace

std::unique_ptr<Window> MakeGroupBox(const dialog_item& item, Window& dialog) {
  return std::make_unique<GroupBox>(item, dialog);
}

}  // namespace vt63x::ui
