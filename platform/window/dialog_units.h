// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_DIALOG_UNITS_H
#define VT63X_PLATFORM_WINDOW_DIALOG_UNITS_H

#include <windows.h>

#include <QFont>
#include <QRect>

namespace vt63x::ui {

// Positions in a dialog template are in units of the dialog's font: a quarter of its average
// character width, an eighth of its line height.
struct dialog_units {
  int base_x;  // pixels that make 4 units
  int base_y;  // pixels that make 8 units

  // Rounded to the nearest pixel.
  int X(int units) const { return (units * base_x + 2) / 4; }
  int Y(int units) const { return (units * base_y + 4) / 8; }
  QRect ToPixels(const RECT& rect) const {
    const QPoint corner(X(rect.left), Y(rect.top));
    return {corner, QSize(X(rect.right - rect.left), Y(rect.bottom - rect.top))};
  }
};

// The average is that of the letters A to Z and a to z.
dialog_units UnitsOf(const QFont& font);

}  // namespace vt63x::ui

#endif
