// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_CONFIGURATION_FILE_H
#define VT63X_SHELL_CONFIGURATION_FILE_H

// "wps_start.cfg": the index of the port to use (0 is COM1:) in decimal digits and nothing else. It
// is read from the current directory at the start and written to the same place at the end,
// wherever file dialogs have moved the current directory meanwhile.

#include "shell/state/app_state.h"

namespace vt63x {

// Where the file is; empty if the current directory has no name or one that is too long: then the
// file goes by its bare name.
void BuildConfigPath(AppState& state);

// Only the first character counts: a digit, or COM9: for any other. COM1: when there is no file.
void ReadConfiguration(AppState& state);

// A file that cannot be written is left alone.
void WriteConfiguration(const AppState& state);

}  // namespace vt63x

#endif
