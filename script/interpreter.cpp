// SPDX-License-Identifier: MIT

#include "script/interpreter.h"

#include <cstring>

#include "script/command_table.h"

namespace vt63x {

// In the order in which a command word is compared; the first match runs.
const Command kCommands[kCommandRows] = {
    {"SR", 2, RunSr},        // address data
    {"GR", 1, RunGr},        // address
    {"MR", 3, RunMr},        // address mask set
    {"RE", 2, RunRe},        // address data
    {"RF", 3, RunRf},        // address data mask
    {"CHB", 0, RunChb},      // bit rate, decimal
    {"SLP", 0, RunSlp},      // milliseconds, decimal
    {"WIE", 0, RunWie},      // milliseconds, decimal
    {"WIL", 0, RunWil},      // level and milliseconds, decimal
    {"CLL", 0, RunCll},      //
    {"//", 0, RunComment},   // the rest of the line is the comment
    {"//>", 0, RunMessage},  // the rest of the line is the message
    {"//#", 1, RunShow},     // value
    {"JMP", 0, RunJmp},      // label
    {"MOV", 2, RunMov},      // destination source
    {"JNE", 2, RunJne},      // value compare_value label
    {"INC", 1, RunInc},      // register
    {"DEC", 1, RunDec},      // register
    {":::", 0, RunLabel},    // label
    {"BRK", 0, RunBrk},      //
    {"SAV", 0, RunSav},      // file name, optional
    {nullptr, 0, RunUnknown}, {"", 0, RunComment},
};

int ExecuteDecoded(LineParser& parser, const DecodedLine& line, const char* text) {
  parser.error = 0;
  const Command& command = kCommands[line.command];
  CommandCall call{parser, {}, text};
  for (int index = command.cell_operands; index-- > 0;) {
    call.operand[index] = &ResolveOperand(parser, line.operand[index], index + 1);
    if (line.operand[index].kind == Operand::Kind::kBad) {
      ReportFault(parser, ScriptFaultKind::kBadOperand, BadOperandText(command, index + 1).c_str());
    }
  }
  ++parser.totals.lines;
  if (parser.error != 0) return LINE_FAILED;
  return command.run(call);
}

int ExecuteLine(LineParser& parser, char* line) {
  const DecodedLine decoded = DecodeLine(line);
  const char* const text = line + decoded.text;
  parser.cursor = line + decoded.text;
  if (parser.searching != 0) {
    parser.error = 0;
    token_buffer label;
    if (decoded.command == kLabel) {
      ScanToken(text, label);
      if (std::strcmp(label, parser.label) == 0) parser.searching = 0;
    }
    return LINE_OK;
  }
  const int result = ExecuteDecoded(parser, decoded, text);
  if (result == LINE_JUMP) {
    ScanToken(text, parser.label);
    parser.searching = 1;
  }
  return result;
}

std::string BadOperandText(const Command& command, int position) {
  return std::string(command.word) + ": operand " + std::to_string(position);
}

void ReportFault(const LineParser& parser, ScriptFaultKind kind, const char* text) {
  MainView* const view = parser.action->app_state->view;
  if (view != nullptr) view->ScriptFault({kind, parser.line, text});
}

}  // namespace vt63x
