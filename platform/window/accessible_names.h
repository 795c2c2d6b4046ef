// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_ACCESSIBLE_NAMES_H
#define VT63X_PLATFORM_WINDOW_ACCESSIBLE_NAMES_H

#include <vector>

#include "platform/window/window.h"

namespace vt63x::ui {

// Tells screen readers what each control is called: a button by its caption, an edit or a list by
// the text of the nearest label or group box before it, a hidden one too. `controls` in the order
// of their template.
void NameControls(const std::vector<Window*>& controls);

}  // namespace vt63x::ui

#endif
