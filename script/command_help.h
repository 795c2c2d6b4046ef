// SPDX-License-Identifier: MIT

#ifndef VT63X_SCRIPT_COMMAND_HELP_H
#define VT63X_SCRIPT_COMMAND_HELP_H

#include "shell/state/app_state.h"

namespace vt63x {

// Empties the log and fills it with the reference of the command language, 143 lines. The text is
// for users and simpler than the truth in places: CHB, for one, accepts more bit rates.
void ShowCommandHelp(const action_param* action);

}  // namespace vt63x

#endif
