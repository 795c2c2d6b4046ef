// SPDX-License-Identifier: MIT

#ifndef VT63X_SCRIPT_LINE_PARSER_H
#define VT63X_SCRIPT_LINE_PARSER_H

// The interpreter's state, and how a line of the command language falls into tokens and operands.

#include <cstdint>

#include "shell/state/app_state.h"

namespace vt63x {

// Length of a token buffer; longer tokens are cut to 31 characters.
inline constexpr int TOKEN_SIZE = 32;
using token_buffer = char[TOKEN_SIZE];

// Interprets a sequence of lines: a command file's run has one from its first line to its end, a
// typed line one of its own. Used by one thread.
struct LineParser {
  explicit LineParser(action_param* action_record) : action(action_record) {}

  char* cursor = nullptr;        // position in the line, which belongs to the caller
  std::uint8_t searching = 0;    // a taken jump looks for `label`
  std::uint8_t scratch[3] = {};  // operands 1 to 3 when written as numbers
  action_param* action;
  char label[32] = {};
  char msg[100] = {};      // one log line; the longest has 96 characters
  std::uint8_t error = 0;  // an operand of the current line did not convert

  // User registers: result and error of the last access, and eight for general use.
  std::uint8_t IOR = 0, IOE = 0;
  std::uint8_t ML0 = 0, ML1 = 0, ML2 = 0, ML3 = 0, ML4 = 0, ML5 = 0, ML6 = 0, ML7 = 0;

  std::uint32_t line = 0;  // place in the command file for messages, from 1; 0 for a typed line
  script_totals totals;
};

// An operand as it is written: it names a cell of whatever parser executes the line.
struct Operand {
  enum class Kind : std::uint8_t { kNumber, kRegister, kBad };
  Kind kind = Kind::kBad;
  std::uint8_t value = 0;  // the number's low 8 bits, or the register's index: IOR, IOE, ML0 to ML7
};

// Digits, capitals and / > : # _ ; every other character, bytes of 0x80 and above included,
// separates tokens.
bool IsTokenChar(char c);

// Copies the next token of the line at parser.cursor and moves the cursor behind it, behind the
// dropped characters of a long token as well. 0 and an empty token at the end of the line, which
// is a terminator, a control character other than tab, or a byte of 0x80 or above.
int NextToken(LineParser& parser, char (&token)[TOKEN_SIZE]);

// The same on a line that nobody changes; returns the position behind the token.
const char* ScanToken(const char* cursor, char (&token)[TOKEN_SIZE]);

// True when ScanToken would find a token.
bool HasToken(const char* cursor);

// A user register's exact name, or a hexadecimal number: an optional 0X, then digits up to the
// first character that is none; above 32 bits signed it saturates.
Operand ParseOperand(const char* token);

// The cell that an operand names: a user register, or scratch byte number `position` (1 to 3) with
// the value put into it. An operand that is neither sets parser.error and leaves a log line.
std::uint8_t& ResolveOperand(LineParser& parser, const char* token, int position);
std::uint8_t& ResolveOperand(LineParser& parser, const Operand& operand, int position);

// Decimal number from 0 to 2147483647, where it saturates; anything else reads as 0.
std::int32_t ParseDecimal(const char* token);

}  // namespace vt63x

#endif
