// SPDX-License-Identifier: MIT

#include "platform/window/control.h"

#include "platform/window/control_classes.h"

namespace vt63x::ui {
namespace {

struct known_styles {
  ControlClass control_class;
  long styles;
};

// What is not here is not carried out.
constexpr long kEveryControl =
    WS_CHILD | WS_VISIBLE | WS_DISABLED | WS_BORDER | WS_GROUP | WS_TABSTOP;
constexpr known_styles kKnownStyles[] = {
    {ControlClass::kButton, BS_DEFPUSHBUTTON | BS_AUTOCHECKBOX | BS_GROUPBOX},
    {ControlClass::kEdit, ES_CENTER | ES_MULTILINE | ES_UPPERCASE | ES_AUTOVSCROLL |
                              ES_AUTOHSCROLL | ES_READONLY | WS_VSCROLL},
    {ControlClass::kStatic, SS_ICON | SS_SUNKEN},
    {ControlClass::kListBox, LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | LBS_DISABLENOSCROLL | WS_VSCROLL},
    {ControlClass::kComboBox, CBS_DROPDOWNLIST | CBS_SORT | WS_VSCROLL},
};

bool Known(const dialog_item& item) {
  if (item.ex_style != 0) return false;
  for (const known_styles& row : kKnownStyles) {
    if (row.control_class != item.control_class) continue;
    return (item.style & ~static_cast<DWORD>(row.styles | kEveryControl)) == 0;
  }
  return false;
}

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
  std::unique_ptr<Window> control = Known(item) ? Make(item, dialog) : nullptr;
  if (control == nullptr) return nullptr;
  QWidget& widget = *control->widget();
  widget.setFont(font);
  QRect place = pixels;
  // The template gives the height with the list open.
  if (item.control_class == ControlClass::kComboBox) {
    place.setHeight(widget.sizeHint().height());
    SetDropDownHeight(*control, pixels.height() - place.height());
  }
  widget.setGeometry(place);
  return control;
}

}  // namespace vt63x::ui
