// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_CONTROL_CLASSES_H
#define VT63X_PLATFORM_WINDOW_CONTROL_CLASSES_H

// The kinds of controls, each in a file of its own name. All are made as children of the dialog's
// client area, without place and font.

#include <memory>

#include "platform/window/control.h"
#include "platform/window/dialog.h"

namespace vt63x::ui {

std::unique_ptr<Window> MakePushButton(const dialog_item& item, Window& dialog);
std::unique_ptr<Window> MakeCheckBox(const dialog_item& item, Window& dialog);
std::unique_ptr<Window> MakeGroupBox(const dialog_item& item, Window& dialog);
std::unique_ptr<Window> MakeStatic(const dialog_item& item, Window& dialog);
std::unique_ptr<Window> MakeSingleLineEdit(const dialog_item& item, Window& dialog);
std::unique_ptr<Window> MakeMultiLineEdit(const dialog_item& item, Window& dialog);
std::unique_ptr<Window> MakeListBox(const dialog_item& item, Window& dialog);
std::unique_ptr<Window> MakeDropDownList(const dialog_item& item, Window& dialog);

// How many pixels a drop-down list takes when it is open, at least a row, at most a screen; rows
// are shown whole.
void SetDropDownHeight(Window& drop_down_list, int pixels);

inline bool HasStyle(DWORD style, long bits) {
  return (style & static_cast<DWORD>(bits)) == static_cast<DWORD>(bits);
}

// What all controls share: a widget of their own kind.
template <typename Widget>
class Control : public Window {
 public:
  Control(const dialog_item& item, Window& dialog)
      : Window(new Widget(dialog.dialog()->client()), &dialog, item.id, item.style) {}

 protected:
  Widget& toolkit() const { return *static_cast<Widget*>(widget()); }
};

}  // namespace vt63x::ui

#endif
