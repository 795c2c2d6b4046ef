// SPDX-License-Identifier: MIT

#include "script/runner.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <string>
#include <utility>

#include "script/command_table.h"
#include "script/interpreter.h"
#include "shell/state/log.h"

namespace vt63x {
namespace {

ScriptEnd ReportUnreadable(const LineParser& parser, int error) {
  const AppState& state = *parser.action->app_state;
  log_append(parser.action, "Error. Could not read file.", 1);
  if (state.view != nullptr) state.view->CommandFileNotRead(state.wcf_path, error);
  return ScriptEnd::kUnreadable;
}

// Memory may run out; no exception leaves the runner's thread.
ScriptEnd RunFile(LineParser& parser) try {
  const AppState& state = *parser.action->app_state;
  // In one piece, so that no line of a dialog comes between.
  log_append(parser.action, (std::string("Processing ") + state.wcf_path).c_str(), 1);
  std::string content;
  const int error = ReadWholeFile(state.wcf_path, content);
  if (error != 0) return ReportUnreadable(parser, error);
  const CommandFile file(content);
  std::string().swap(content);  // the decoded file has its own text
  return RunLines(parser, file);
} catch (const std::bad_alloc&) {
  return ReportUnreadable(parser, ENOMEM);
}

// The view is asked this often, in lines, so that a run ends that never waits.
constexpr std::uint32_t kStepsBetweenLooks = 64;

ScriptEnd Broken(const LineParser& parser) {
  const MainView* const view = parser.action->app_state->view;
  const ScriptEnd reason = view != nullptr ? view->BreakReason() : ScriptEnd::kUserBreak;
  if (reason == ScriptEnd::kUserBreak) log_append(parser.action, "User Break recognised.", 1);
  return reason;
}

}  // namespace

DWORD WINAPI RunCommandFile(void* action) {
  LineParser parser(static_cast<action_param*>(action));
  AppState& state = *parser.action->app_state;
  if (state.view != nullptr) state.view->ScriptBegins(parser.totals);
  const ScriptEnd end = RunFile(parser);
  state.script_running = 0;
  if (state.view != nullptr) state.view->ScriptEnded(end, parser.totals);
  return 0;
}

// A jump goes to its label's line, which then does nothing but count as an executed line: what is
// skipped on the way has no effect either. A jump without a label to go to reads to the end of the
// file.
ScriptEnd RunLines(LineParser& parser, const CommandFile& file) {
  AppState& state = *parser.action->app_state;
  const auto skipped = static_cast<std::uint32_t>(std::max(0, state.resume_line.load()));
  std::size_t next = file.Find(skipped);
  // Idle lines that stand before the first of the run and in one entry with it.
  std::uint32_t before = next < file.size() ? skipped - file.line(next).number : 0;
  std::uint32_t steps = 0;
  while (next < file.size()) {
    if (++steps % kStepsBetweenLooks == 0 && state.view != nullptr) state.view->BreaksOff();
    if (state.script_running == 0) return Broken(parser);
    const std::size_t index = next++;
    const DecodedLine& line = file.line(index);
    if (IsIdle(line)) {
      parser.totals.lines.Add(file.LinesOf(index) - std::exchange(before, 0));
      state.resume_line.store(0, std::memory_order_relaxed);
      continue;
    }
    parser.line = line.file_line;
    const int result = ExecuteDecoded(parser, line, file.text(line));
    if (result == LINE_JUMP && line.target != DecodedLine::kNoTarget) {
      next = line.target;
      continue;
    }
    if (result == LINE_BREAK) {
      state.resume_line = static_cast<std::int32_t>(line.number + 1);
      return ScriptEnd::kBreakCommand;
    }
    state.resume_line.store(0, std::memory_order_relaxed);
    if (result == LINE_JUMP) {
      token_buffer label;
      ScanToken(file.text(line), label);
      ReportFault(parser, ScriptFaultKind::kNoSuchLabel, label);
      break;
    }
  }
  return ScriptEnd::kEndOfFile;
}

}  // namespace vt63x
