#include "platform/window/control.h"

#include "platform/window/control_classes.h"

namespace vt63x::ui {
namespace {

std::unique_ptr<Window> MakeButton(const dialog_item& item, Window& dialog) {
  constexpr DWORD kKind = 0x0f;
  switch (item.style & kKind) {
    case BS_PUSHBUTTON:
    case BS_DEFPUSHBUTTON:
      return MakePushButton(item, dialog);
    case BS_AUTOCHECKBOX:
      return MakeCheckBox(item, dialog);
    case BS_GROUPBOX:
      return MakeGroupBox(item, dialog);
    default:
      return nullptr;
  }
}

std::unique_ptr<Window> Make(const dialog_item& item, Window& dialog) {
  switch (item.control_class) {
    case ControlClass::kButton:
      return MakeButton(item, dialog);
    case ControlClass::kEdit:
      return (item.style & ES_MULTILINE) != 0 ? MakeMultiLineEdit(item, dialog)
                                              : MakeSingleLineEdit(item, dialog);
    case ControlClass::kStatic:
      return MakeStatic(item, dialog);
    case ControlClass::kListBox:
      return MakeListBox(item, dialog);
    case ControlClass::kComboBox:
      return (item.style & CBS_DROPDOWNLIST) == CBS_DROPDOWNLIST ? MakeDropDownList(item, dialog)
                                                                 : nullptr;
  }
  return nullptr;
}

}  // namespace

std::unique_ptr<Window> MakeControl(const dialog_item& item, Window& dialog, const QRect& pixels,
                                    const QFont& font) {
  std::unique_ptr<Window> control = Make(item, dialog);
  if (control == nullptr) return nullptr;
  QWidget& widget = *control->widget();
  widget.setFont(font);
  QRect place = pixels;
  // The template gives the height with the list open.
  if (item.control_class == ControlClass::kComboBox) place.setHeight(widget.sizeHint().height());
  widget.setGeometry(place);
  return control;
}

}  // namespace vt63x::ui
