// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_FONT_H
#define VT63X_PLATFORM_WINDOW_FONT_H

#include <windows.h>

#include <QFont>
#include <string>

namespace vt63x::ui {

// Main thread only, both. Null for a handle that is stale.
const QFont* FontOf(HFONT font);

// The font of a dialog template; a family that the system does not have becomes its sans serif.
QFont DialogFont(const std::string& name, int points);

}  // namespace vt63x::ui

#endif
