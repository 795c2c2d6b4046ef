// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_DIALOG_TEMPLATE_H
#define VT63X_PLATFORM_WINDOW_DIALOG_TEMPLATE_H

// Dialog resources, DLGTEMPLATE and DLGTEMPLATEEX, read into records.

#include <optional>
#include <string>
#include <vector>

#include "platform/window/control.h"
#include "platform/window/resource_file.h"

namespace vt63x::ui {

struct dialog_template {
  DWORD style = 0;
  DWORD ex_style = 0;
  RECT rect{};    // dialog units
  WORD menu = 0;  // resource number, 0 for none
  std::string caption;
  std::string font_name;  // empty: the system's
  int font_points = 8;
  std::vector<dialog_item> items;
};

// Nothing for data that is cut short or names a control of another class.
std::optional<dialog_template> ParseDialogTemplate(ResourceData data);

}  // namespace vt63x::ui

#endif
