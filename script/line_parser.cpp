// SPDX-License-Identifier: MIT

#include "script/line_parser.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string_view>

#include "shell/state/log.h"

namespace vt63x {
namespace {

struct UserRegister {
  std::string_view name;
  std::uint8_t LineParser::*cell;
};

constexpr std::array<UserRegister, 10> kUserRegisters = {{{"IOR", &LineParser::IOR},
                                                          {"IOE", &LineParser::IOE},
                                                          {"ML0", &LineParser::ML0},
                                                          {"ML1", &LineParser::ML1},
                                                          {"ML2", &LineParser::ML2},
                                                          {"ML3", &LineParser::ML3},
                                                          {"ML4", &LineParser::ML4},
                                                          {"ML5", &LineParser::ML5},
                                                          {"ML6", &LineParser::ML6},
                                                          {"ML7", &LineParser::ML7}}};

bool EndsLine(char c) {
  const auto code = static_cast<signed char>(c);
  return code < 32 && code != '\t';
}

// The next token's start, or the end of the line.
const char* SkipSeparators(const char* cursor) {
  while (!IsTokenChar(*cursor) && !EndsLine(*cursor)) ++cursor;
  return cursor;
}

int DigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return 16;
}

// The digits of `base` at `text`, saturating at 32 bits signed on every platform. Counts them.
std::int32_t ParseNumber(const char* text, int base, int& digits) {
  constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();
  std::int64_t value = 0;
  digits = 0;
  for (; DigitValue(text[digits]) < base; ++digits) {
    value = std::min(value * base + DigitValue(text[digits]), kMax);
  }
  return static_cast<std::int32_t>(value);
}

void ReportBadOperand(LineParser& parser) {
  parser.error = 1;
  std::strcpy(parser.msg, "Error: Invalid numeric format / parameter identifier.");
  log_append(parser.action, parser.msg, 1);
}

}  // namespace

bool IsTokenChar(char c) {
  return (c >= '/' && c <= '9') || (c >= 'A' && c <= 'Z') || c == '>' || c == ':' || c == '#' ||
         c == '_';
}

bool HasToken(const char* cursor) { return IsTokenChar(*SkipSeparators(cursor)); }

const char* ScanToken(const char* cursor, char (&token)[TOKEN_SIZE]) {
  std::memset(token, 0, TOKEN_SIZE);
  cursor = SkipSeparators(cursor);
  int length = 0;
  for (; IsTokenChar(*cursor); ++cursor) {
    if (length < TOKEN_SIZE - 1) token[length++] = *cursor;
  }
  return cursor;
}

int NextToken(LineParser& parser, char (&token)[TOKEN_SIZE]) {
  parser.cursor += ScanToken(parser.cursor, token) - parser.cursor;
  return token[0] != '\0' ? 1 : 0;
}

Operand ParseOperand(const char* token) {
  for (std::size_t index = 0; index < kUserRegisters.size(); ++index) {
    if (kUserRegisters[index].name == token) {
      return {Operand::Kind::kRegister, static_cast<std::uint8_t>(index)};
    }
  }
  const bool prefixed =
      token[0] == '0' && (token[1] == 'X' || token[1] == 'x') && DigitValue(token[2]) < 16;
  int digits = 0;
  const std::int32_t value = ParseNumber(prefixed ? token + 2 : token, 16, digits);
  if (digits == 0) return {};
  return {Operand::Kind::kNumber, static_cast<std::uint8_t>(value & 0xFF)};
}

std::uint8_t& ResolveOperand(LineParser& parser, const Operand& operand, int position) {
  if (operand.kind == Operand::Kind::kRegister) return parser.*kUserRegisters[operand.value].cell;
  if (operand.kind == Operand::Kind::kBad) ReportBadOperand(parser);
  std::uint8_t& cell = parser.scratch[position - 1];
  cell = operand.value;
  return cell;
}

std::uint8_t& ResolveOperand(LineParser& parser, const char* token, int position) {
  return ResolveOperand(parser, ParseOperand(token), position);
}

std::int32_t ParseDecimal(const char* token) {
  int digits = 0;
  return ParseNumber(token, 10, digits);
}

}  // namespace vt63x
