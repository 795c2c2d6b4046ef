// A frame with a caption around controls that are its neighbours, not its children. Clicks go
// through it.

#include <QStyleOptionGroupBox>
#include <QStylePainter>

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
  void paintEvent(QPaintEvent*) override {
    QStylePainter painter(this);
    QStyleOptionGroupBox option;
    option.initFrom(this);
    option.text = caption;
    option.lineWidth = 1;
    option.midLineWidth = 0;
    option.textAlignment = Qt::AlignLeft;
    option.subControls = QStyle::SC_GroupBoxFrame | QStyle::SC_GroupBoxLabel;
    painter.drawComplexControl(QStyle::CC_GroupBox, option);
  }
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
