// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_DRAW_WHILE_H
#define VT63X_PLATFORM_WINDOW_DRAW_WHILE_H

#include <functional>

namespace vt63x::ui {

// Runs `call`, on the main thread so that windows are drawn meanwhile: then on a thread of its own.
// Until it is over no message, no input and no news of focus or size reaches the program; all that
// comes afterwards. On other threads it just calls.
void DrawWhile(const std::function<void()>& call);

// Main thread: such a call is under way.
bool OnlyDrawing();

}  // namespace vt63x::ui

#endif
