// SPDX-License-Identifier: MIT

#include <QPushButton>

#include "platform/window/control_classes.h"
#include "platform/window/dialog_keys.h"
#include "platform/window/text_codec.h"

namespace vt63x::ui {
namespace {

class PushButton : public Control<QPushButton> {
 public:
  PushButton(const dialog_item& item, Window& dialog) : Control(item, dialog) {
    toolkit().setAutoDefault(false);
    toolkit().setFocusPolicy(Qt::StrongFocus);
    SetText(item.text.c_str());
    ShowDefault();
    QObject::connect(&toolkit(), &QPushButton::clicked, [this] { Notify(BN_CLICKED); });
  }

  LRESULT Handle(UINT message, WPARAM wparam, LPARAM lparam) override {
    switch (message) {
      case WM_GETDLGCODE:
        return DLGC_BUTTON | (IsDefault() ? DLGC_DEFPUSHBUTTON : DLGC_UNDEFPUSHBUTTON);
      case BM_CLICK:
        if (!enabled()) return 0;
        FocusControl(*dialog(), *this);
        toolkit().click();
        return 0;
      case BM_SETSTYLE:
        ChangeStyle((style() & ~DWORD{0x0f}) | (wparam & 0x0f));
        ShowDefault();
        return 0;
      default:
        return Window::Handle(message, wparam, lparam);
    }
  }
  std::string Text() const override { return ToProgram(toolkit().text()); }
  void SetText(const char* text) override { toolkit().setText(FromProgram(text)); }

 private:
  bool IsDefault() const { return (style() & 0x0f) == BS_DEFPUSHBUTTON; }
  void ShowDefault() {
    toolkit().setDefault(IsDefault());
    toolkit().update();
  }
};

}  // namespace

std::unique_ptr<Window> MakePushButton(const dialog_item& item, Window& dialog) {
  return std::make_unique<PushButton>(item, dialog);
}

}  // namespace vt63x::ui
