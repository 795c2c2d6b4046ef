// SPDX-License-Identifier: MIT

#include "script/decoded_line.h"

#include <cstring>

#include "script/command_table.h"

namespace vt63x {
namespace {

void FoldToCapitals(char* line) {
  for (; *line != '\0'; ++line) {
    if (*line >= 'a' && *line <= 'z') *line = static_cast<char>(*line - 'a' + 'A');
  }
}

std::uint8_t FindCommand(const char* word) {
  if (word[0] == '\0') return kEmpty;
  for (std::uint8_t row = 0; row < kUnknown; ++row) {
    if (std::strcmp(word, kCommands[row].word) == 0) return row;
  }
  return kUnknown;
}

}  // namespace

DecodedLine DecodeLine(char* line) {
  token_buffer token;
  // As typed, lower-case letters are separators: this looks at the first run of token characters.
  ScanToken(line, token);
  if (std::strstr(token, "//>") == nullptr) FoldToCapitals(line);

  const char* cursor = ScanToken(line, token);
  DecodedLine decoded;
  decoded.command = FindCommand(token);
  for (int index = 0; index < kCommands[decoded.command].cell_operands; ++index) {
    cursor = ScanToken(cursor, token);
    decoded.operand[index] = ParseOperand(token);
  }
  // The handler of an unknown command quotes its word.
  decoded.text = decoded.command == kUnknown ? 0 : static_cast<std::uint32_t>(cursor - line);
  return decoded;
}

bool IsJump(const DecodedLine& line) { return line.command == kJmp || line.command == kJne; }

bool IsIdle(const DecodedLine& line) { return line.command == kEmpty || line.command == kComment; }

}  // namespace vt63x
