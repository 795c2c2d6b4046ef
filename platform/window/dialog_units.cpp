// SPDX-License-Identifier: MIT

#include "platform/window/dialog_units.h"

#include <QFontMetrics>

namespace vt63x::ui {

dialog_units UnitsOf(const QFont& font) {
  const QFontMetrics metrics(font);
  const int extent = metrics.horizontalAdvance(
      QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"));
  return {(extent / 26 + 1) / 2, metrics.height()};
}

}  // namespace vt63x::ui
