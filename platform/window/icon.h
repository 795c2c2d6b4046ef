// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_ICON_H
#define VT63X_PLATFORM_WINDOW_ICON_H

#include <windows.h>

#include <QIcon>

namespace vt63x::ui {

// Main thread only. Empty for a handle that is stale.
QIcon IconOf(HICON icon);

// The program's icon resource in all its sizes; empty when it is missing or broken.
QIcon LoadIconResource(WORD number);

}  // namespace vt63x::ui

#endif
