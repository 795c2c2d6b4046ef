// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_CONTROL_H
#define VT63X_PLATFORM_WINDOW_CONTROL_H

// Controls of a dialog, made from the items of its template.

#include <memory>
#include <string>

#include "platform/window/window.h"

namespace vt63x::ui {

// The predefined classes of controls, by the numbers that templates use for them.
enum class ControlClass : WORD {
  kButton = 0x0080,
  kEdit = 0x0081,
  kStatic = 0x0082,
  kListBox = 0x0083,
  kComboBox = 0x0085,
};

// One item of a dialog template. The position is in dialog units.
struct dialog_item {
  ControlClass control_class;
  int id;
  DWORD style;
  DWORD ex_style;
  RECT position;     // left, top, right, bottom
  std::string text;  // UTF-8; empty when the title is a resource number
  WORD resource;     // of a static icon, else 0
};

// The control that `item` describes as a child of `dialog`, placed at `pixels`, with the dialog's
// font, not yet shown. Null for a style that is not in the list (win32/styles.h).
std::unique_ptr<Window> MakeControl(const dialog_item& item, Window& dialog, const QRect& pixels,
                                    const QFont& font);

}  // namespace vt63x::ui

#endif
