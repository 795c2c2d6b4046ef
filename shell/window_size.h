// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_WINDOW_SIZE_H
#define VT63X_SHELL_WINDOW_SIZE_H

#include "shell/state/app_state.h"

namespace vt63x {

// WM_GETMINMAXINFO of the main window: its first width is the only one, its first height the least.
INT_PTR TellSizeLimits(const action_param* action);

// WM_SIZE of the main window: puts width and height back into their limits, or else stretches the
// log pane to the lower edge. TRUE when the message was for it.
INT_PTR KeepWindowSize(const action_param* action);

}  // namespace vt63x

#endif
