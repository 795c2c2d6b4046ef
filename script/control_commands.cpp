// SPDX-License-Identifier: MIT

// Jumps, labels, user registers and text.

#include <cstring>
#include <string>

#include "script/command_table.h"
#include "script/interpreter.h"
#include "script/script_log.h"

namespace vt63x {

int RunComment(CommandCall&) { return LINE_OK; }

int RunMessage(CommandCall& call) {
  // The character behind the command word is its separator.
  const char* const text = call.rest[0] == '\0' ? call.rest : call.rest + 1;
  // In one piece, whatever its length, so that no other thread's line comes in between.
  log_append(call.parser.action, (std::string("//< ") + text).c_str(), 1);
  return LINE_OK;
}

int RunJmp(CommandCall& call) {
  if (HasToken(call.rest)) return LINE_JUMP;
  ReportFault(call.parser, ScriptFaultKind::kJumpWithoutLabel, "");
  return LINE_FAILED;
}

int RunJne(CommandCall& call) {
  if (*call.operand[0] == *call.operand[1]) return LINE_OK;
  return RunJmp(call);
}

int RunMov(CommandCall& call) {
  *call.operand[0] = *call.operand[1];
  return LINE_OK;
}

int RunInc(CommandCall& call) {
  ++*call.operand[0];
  return LINE_OK;
}

int RunDec(CommandCall& call) {
  --*call.operand[0];
  return LINE_OK;
}

int RunLabel(CommandCall&) { return LINE_OK; }

int RunBrk(CommandCall&) { return LINE_BREAK; }

int RunUnknown(CommandCall& call) {
  LineParser& parser = call.parser;
  token_buffer word;
  ScanToken(call.rest, word);
  LogLine(parser, "ERROR: Unknown Command - \"%s\" (length = %d).", word,
          static_cast<int>(std::strlen(word)));
  ReportFault(parser, ScriptFaultKind::kUnknownCommand, word);
  return LINE_FAILED;
}

}  // namespace vt63x
