// SPDX-License-Identifier: MIT

#ifndef VT63X_SCRIPT_DECODED_LINE_H
#define VT63X_SCRIPT_DECODED_LINE_H

// A line of the command language, taken apart once so that it can be executed many times.

#include <cstdint>

#include "script/line_parser.h"

namespace vt63x {

struct DecodedLine {
  static constexpr std::uint32_t kNoTarget = 0xFFFF'FFFF;

  std::uint8_t command = 0;  // row of the command table
  Operand operand[3];        // as many as the command has that name cells
  std::uint32_t text = 0;  // offset of the rest of the line, behind the command and these operands
  std::uint32_t target = kNoTarget;  // of a jump in a command file: the line of its label
  std::uint32_t file_line = 0;       // place in the command file, from 1
  std::uint32_t number = 0;          // of the line as the run counts lines, from 0
};

// The commands by their row in the command table, in the order in which a command word is compared.
enum CommandRow : std::uint8_t {
  kSr,
  kGr,
  kMr,
  kRe,
  kRf,
  kChb,
  kSlp,
  kWie,
  kWil,
  kCll,
  kComment,
  kMessage,
  kShow,
  kJmp,
  kMov,
  kJne,
  kInc,
  kDec,
  kLabel,
  kBrk,
  kSav,
  kUnknown,  // a command word that is none of these
  kEmpty,    // no command word at all
  kCommandRows
};

// Folds `line` to capitals in place, unless its first token as typed holds "//>", and decodes it.
// Offsets count from `line`.
DecodedLine DecodeLine(char* line);

// True for JMP and JNE.
bool IsJump(const DecodedLine& line);

// True for lines that do nothing and that nothing refers to: empty ones and comments.
bool IsIdle(const DecodedLine& line);

}  // namespace vt63x

#endif
