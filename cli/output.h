// SPDX-License-Identifier: MIT

#ifndef VT63X_CLI_OUTPUT_H
#define VT63X_CLI_OUTPUT_H

#include <cstdio>
#include <string>
#include <string_view>

namespace vt63x {

// Makes `stream` write what it is given at once, as WriteAll needs it.
void MakeUnbuffered(std::FILE* stream);

// Writes all of `text` to an unbuffered stream, however many pieces it takes: a signal that breaks
// a write off loses nothing, and a stream that does not block is tried again every millisecond for
// as long as its reader takes (the end of the program, cli/break_off.h, does not wait for it). 0,
// or the errno value of what went wrong.
int WriteAll(std::FILE* stream, std::string_view text);

// "wcf: " and the message as a line of standard error.
void PrintMessage(const std::string& message);

}  // namespace vt63x

#endif
