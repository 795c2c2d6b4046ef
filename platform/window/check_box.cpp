// SPDX-License-Identifier: MIT

#include <QCheckBox>

#include "platform/window/control_classes.h"
#include "platform/window/focus.h"
#include "platform/window/text_codec.h"

namespace vt63x::ui {
namespace {

// Changes by itself when the user presses it, and then tells.
class CheckBox : public Control<QCheckBox> {
 public:
  CheckBox(const dialog_item& item, Window& dialog) : Control(item, dialog) {
    toolkit().setFocusPolicy(Qt::StrongFocus);
    SetText(item.text.c_str());
    QObject::connect(&toolkit(), &QCheckBox::clicked, [this] { Notify(BN_CLICKED); });
  }

  LRESULT Handle(UINT message, WPARAM wparam, LPARAM lparam) override {
    switch (message) {
      case WM_GETDLGCODE:
        return DLGC_BUTTON;
      case BM_CLICK:
        if (!enabled()) return 0;
        MoveFocus(this);
        toolkit().click();
        return 0;
      case BM_GETCHECK:
        return toolkit().isChecked() ? BST_CHECKED : BST_UNCHECKED;
      case BM_SETCHECK:
        toolkit().setChecked(wparam == BST_CHECKED);
        return 0;
      default:
        return Window::Handle(message, wparam, lparam);
    }
  }
  std::string Text() const override { return ToProgram(toolkit().text()); }
  void SetText(const char* text) override { toolkit().setText(FromProgram(text)); }
};

}  // namespace

std::unique_ptr<Window> MakeCheckBox(const dialog_item& item, Window& dialog) {
  return std::make_unique<CheckBox>(item, dialog);
}

}  // namespace vt63x::ui
