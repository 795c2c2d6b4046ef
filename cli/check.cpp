// SPDX-License-Identifier: MIT

#include "cli/check.h"

#include <algorithm>

#include "cli/headless_view.h"
#include "script/command_table.h"
#include "script/line_parser.h"

namespace vt63x {
namespace {

constexpr std::int32_t kLongestTimeMs = 0xFFFF;

std::string TokenAt(const char* text) {
  token_buffer token;
  ScanToken(text, token);
  return token;
}

class Checker {
 public:
  explicit Checker(const CommandFile& file) : file_(file) {}

  std::vector<Finding> Run() {
    for (std::size_t index = 0; index < file_.size() && !Full(); ++index) {
      CheckLine(file_.line(index));
    }
    for (const DuplicateLabel& label : file_.duplicate_labels()) {
      Warn(label.line, "label '" + std::string(label.name) +
                           "' is defined twice; jumps go to line " +
                           std::to_string(label.first_line));
    }
    for (const std::uint32_t line : file_.long_lines()) {
      Warn(line, "the line has " + std::to_string(LONGEST_LINE) +
                     " characters or more and is read in pieces");
    }
    if (file_.cut_line() != 0) {
      Warn(file_.cut_line(), "a Ctrl-Z character ends the text; what follows is not read");
    }
    std::stable_sort(findings_.begin(), findings_.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    if (Full()) findings_.resize(MOST_FINDINGS);
    return std::move(findings_);
  }

 private:
  bool Full() const { return findings_.size() >= MOST_FINDINGS; }

  void CheckLine(const DecodedLine& line) {
    const Command& command = kCommands[line.command];
    const std::string token = TokenAt(file_.text(line));
    if (line.command == kUnknown) Fault(line, ScriptFaultKind::kUnknownCommand, token);
    for (int i = 0; i < command.cell_operands; ++i) {
      if (line.operand[i].kind != Operand::Kind::kBad) continue;
      Fault(line, ScriptFaultKind::kBadOperand, BadOperandText(command, i + 1));
    }
    if (line.command == kChb && !IsHostBitRate(ParseDecimal(token.c_str()))) {
      Fault(line, ScriptFaultKind::kBadBitRate, token);
    }
    CheckTime(line);
    if (!IsJump(line)) return;
    if (token.empty()) {
      Fault(line, ScriptFaultKind::kJumpWithoutLabel, "");
    } else if (line.target == DecodedLine::kNoTarget) {
      Fault(line, ScriptFaultKind::kNoSuchLabel, token);
    }
  }

  // Times have 16 bits; of a larger one the lower bits count.
  void CheckTime(const DecodedLine& line) {
    if (line.command != kSlp && line.command != kWie && line.command != kWil) return;
    token_buffer time;
    const char* const rest = ScanToken(file_.text(line), time);
    if (line.command == kWil) ScanToken(rest, time);
    const std::int32_t value = ParseDecimal(time);
    if (value <= kLongestTimeMs) return;
    Warn(line.file_line, std::string(kCommands[line.command].word) + ": '" + time +
                             "' does not fit 16 bits; " + std::to_string(value & kLongestTimeMs) +
                             " ms are waited");
  }

  void Fault(const DecodedLine& line, ScriptFaultKind kind, const std::string& text) {
    findings_.push_back({line.file_line, true, FaultText({kind, line.file_line, text})});
  }

  void Warn(std::uint32_t line, const std::string& text) {
    findings_.push_back({line, false, "warning: " + text});
  }

  const CommandFile& file_;
  std::vector<Finding> findings_;
};

}  // namespace

std::vector<Finding> CheckCommandFile(const CommandFile& file) { return Checker(file).Run(); }

}  // namespace vt63x
