// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_MENU_TEMPLATE_H
#define VT63X_PLATFORM_WINDOW_MENU_TEMPLATE_H

// Menu resources read into a tree.

#include <optional>
#include <string>
#include <vector>

#include "platform/window/resource_file.h"

namespace vt63x::ui {

struct menu_template_item {
  std::string text;
  UINT flags = 0;  // MF_POPUP, MF_SEPARATOR, MF_GRAYED, MF_HELP
  UINT id = 0;     // of an item that is no popup
  std::vector<menu_template_item> children;
};

// Nothing for data that is cut short or of another version than 0.
std::optional<std::vector<menu_template_item>> ParseMenuTemplate(ResourceData data);

}  // namespace vt63x::ui

#endif
