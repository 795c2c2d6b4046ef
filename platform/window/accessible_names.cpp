// SPDX-License-Identifier: MIT

#include "platform/window/accessible_names.h"

#include "platform/window/text_codec.h"

namespace vt63x::ui {
namespace {

// Without the ampersand that underlines a letter, and the colon or blanks at the end.
QString Plain(const std::string& caption) {
  QString text = FromProgram(caption);
  text.replace(QStringLiteral("&&"), QStringLiteral("\x01"));
  text.remove(QChar('&'));
  text.replace(QChar(1), QChar('&'));
  text = text.trimmed();
  while (text.endsWith(QChar(':'))) text.chop(1);
  return text;
}

}  // namespace

void NameControls(const std::vector<Window*>& controls) {
  QString label;
  for (Window* const control : controls) {
    const LRESULT code = control->Send(WM_GETDLGCODE, 0, 0);
    const QString own = Plain(control->Text());
    if ((code & DLGC_STATIC) != 0 && !own.isEmpty()) label = own;
    const bool by_caption = (code & (DLGC_STATIC | DLGC_BUTTON)) != 0;
    control->widget()->setAccessibleName(by_caption ? own : label);
  }
}

}  // namespace vt63x::ui
