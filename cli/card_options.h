// SPDX-License-Identifier: MIT

#ifndef VT63X_CLI_CARD_OPTIONS_H
#define VT63X_CLI_CARD_OPTIONS_H

#include <CLI/CLI.hpp>
#include <functional>

#include "cli/card_commands.h"

namespace vt63x {

// Adds the commands below `wcf card` with their operands to `card`; a wrong operand is refused
// with a message before anything is opened. `run` is called for the command that was given, with
// `options` filled.
void AddCardCommands(CLI::App& card, CardOptions& options, const std::function<void()>& run);

}  // namespace vt63x

#endif
