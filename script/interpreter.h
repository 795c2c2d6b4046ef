// SPDX-License-Identifier: MIT

#ifndef VT63X_SCRIPT_INTERPRETER_H
#define VT63X_SCRIPT_INTERPRETER_H

// The command language, a line at a time. The commands stand in one table in interpreter.cpp.

#include "script/decoded_line.h"
#include "script/line_parser.h"

namespace vt63x {

// How the caller goes on after a line.
inline constexpr int LINE_OK = 1;
// Unknown command, bad operand, jump without a label, or SAV. A command file goes on all the same.
inline constexpr int LINE_FAILED = 0;
// A jump was taken: parser.searching is set and parser.label names the target.
inline constexpr int LINE_JUMP = -1;
// BRK: a command file stops here.
inline constexpr int LINE_BREAK = -2;

// Decodes and executes one line, which is folded to capitals in place unless it is a message. While
// parser.searching is set, lines do nothing until the label is found. Chip accesses take
// AppState::stack_lock one by one; SLP, WIE and WIL block for up to 65.5 s.
int ExecuteLine(LineParser& parser, char* line);

// Executes a decoded line, whose text stands at `text`. A taken jump returns LINE_JUMP and leaves
// the way to its label to the caller.
int ExecuteDecoded(LineParser& parser, const DecodedLine& line, const char* text);

}  // namespace vt63x

#endif
