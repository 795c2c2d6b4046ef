// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_EVENT_FILTER_H
#define VT63X_PLATFORM_WINDOW_EVENT_FILTER_H

#include <QObject>
#include <memory>

namespace vt63x::ui {

// Turns what the toolkit tells its widgets into messages: keys, focus, sizes, close boxes. Keeps
// the user's input from windows that are disabled. Installed on the application.
std::unique_ptr<QObject> MakeEventFilter();

}  // namespace vt63x::ui

#endif
