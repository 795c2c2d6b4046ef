// SPDX-License-Identifier: MIT

#ifndef VT63X_SCRIPT_COMMAND_TABLE_H
#define VT63X_SCRIPT_COMMAND_TABLE_H

// The commands of the language: their words, how many of their operands name a cell (a user
// register or a number in hexadecimal), and their handlers.

#include <cstdint>
#include <string>

#include "script/decoded_line.h"
#include "script/line_parser.h"

namespace vt63x {

// What a handler works on. Operands are resolved, the last first; `rest` is the line behind them,
// where a handler finds its text and decimal operands.
struct CommandCall {
  LineParser& parser;
  std::uint8_t* operand[3];
  const char* rest;
};

using CommandHandler = int (*)(CommandCall& call);

struct Command {
  const char* word;
  int cell_operands;
  CommandHandler run;  // runs only when every operand has converted
};

extern const Command kCommands[kCommandRows];

// Chip registers (script/register_commands.cpp).
int RunSr(CommandCall& call);
int RunGr(CommandCall& call);
int RunMr(CommandCall& call);
int RunRe(CommandCall& call);
int RunRf(CommandCall& call);

// Control flow, user registers and text (script/control_commands.cpp).
int RunComment(CommandCall& call);
int RunMessage(CommandCall& call);
int RunJmp(CommandCall& call);
int RunMov(CommandCall& call);
int RunJne(CommandCall& call);
int RunInc(CommandCall& call);
int RunDec(CommandCall& call);
int RunLabel(CommandCall& call);
int RunBrk(CommandCall& call);
int RunUnknown(CommandCall& call);

// The port, time and the log (script/application_commands.cpp).
int RunChb(CommandCall& call);
int RunSlp(CommandCall& call);
int RunWie(CommandCall& call);
int RunWil(CommandCall& call);
int RunCll(CommandCall& call);
int RunShow(CommandCall& call);
int RunSav(CommandCall& call);

// The bit rates that CHB accepts.
bool IsHostBitRate(std::int32_t bit_rate);

// The text of a fault that says which operand of a command is bad; `position` counts from 1.
std::string BadOperandText(const Command& command, int position);

// Tells the view, if there is one, what did not do its work.
void ReportFault(const LineParser& parser, ScriptFaultKind kind, const char* text);

}  // namespace vt63x

#endif
