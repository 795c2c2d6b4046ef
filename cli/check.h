// SPDX-License-Identifier: MIT

#ifndef VT63X_CLI_CHECK_H
#define VT63X_CLI_CHECK_H

#include <cstdint>
#include <string>
#include <vector>

#include "script/command_file.h"

namespace vt63x {

struct Finding {
  std::uint32_t line;  // place in the file, from 1
  bool error;          // the line is no command; else it may not do what its writer meant
  std::string text;
};

// A file that is no command file at all has findings without end; so many are enough.
inline constexpr std::size_t MOST_FINDINGS = 1000;

// What is wrong with a command file, without running it: unknown commands, operands that do not
// convert, bit rates that no host has, times that do not fit, jumps without or to no label, labels
// defined twice, lines that are read in pieces, a Ctrl-Z in the middle. In the order of their
// lines, at most MOST_FINDINGS of them.
std::vector<Finding> CheckCommandFile(const CommandFile& file);

}  // namespace vt63x

#endif
