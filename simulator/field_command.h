// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_FIELD_COMMAND_H
#define VT63X_SIMULATOR_FIELD_COMMAND_H

#include <string>
#include <string_view>

#include "simulator/field.h"

namespace vt63x {

// Carries out one line of text on a field and gives the lines to say about it, each with its end:
//
//   card add UID[:TYPE][=FILE]          puts a card in
//   card remove UID                     takes it out
//   field list                          one line for each card: UID, kind, state
//   air NAME[@FIRST[+COUNT]]            spoils answers, beside what is set already
//   air none                            leaves answers alone
//
// The last line is "ok", or "error: " and what was wrong, and then nothing has changed. An empty
// line gives nothing.
std::string RunFieldCommand(Field& field, std::string_view line);

}  // namespace vt63x

#endif
