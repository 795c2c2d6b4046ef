// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_TOOLKIT_STYLE_H
#define VT63X_PLATFORM_WINDOW_TOOLKIT_STYLE_H

class QStyle;

namespace vt63x::ui {

// The system's style, but for what users of Windows would miss: a drop-down list opens below its
// box with a scroll bar; the menu that the keyboard is at is marked before it opens; and the focus
// is seen on lists and edits of several lines, and on buttons apart from the default button's look.
// The caller owns it.
QStyle* MakeToolkitStyle();

}  // namespace vt63x::ui

#endif
