// SPDX-License-Identifier: MIT

#include "shell/command_line.h"

#include <cstring>

#include "script/command_history.h"
#include "script/interpreter.h"
#include "script/line_parser.h"
#include "shell/program.h"
#include "shell/resources/resource.h"

namespace vt63x {
namespace {

constexpr WPARAM kEscape = 27;
constexpr std::size_t kShortestLine = 3;

void Show(HWND edit, const char* entry) {
  if (entry == nullptr) return;
  SendMessageA(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(entry));
  const std::size_t end = std::strlen(entry);
  SendMessageA(edit, EM_SETSEL, end, static_cast<LPARAM>(end));
  SendMessageA(edit, EM_SCROLLCARET, 0, 0);
}

void Escape(AppState& state, HWND edit) {
  SendMessageA(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(""));
  state.ignore_close = 1;
  state.history_browse = 0;
}

// True when the line has done its work and leaves the field.
bool RunLine(const action_param* action, char (&cl)[128]) {
  if (std::strlen(cl) < kShortestLine) return false;
  action_param own = *action;
  LineParser parser(&own);
  return ExecuteLine(parser, cl) == LINE_OK;
}

}  // namespace

void ProcessCommandLine(const action_param* action) {
  AppState& state = *action->app_state;
  const HWND edit = GetDlgItem(action->main_wnd, IDC_COMMAND_LINE);
  char cl[128];
  GetDlgItemTextA(action->main_wnd, IDC_COMMAND_LINE, cl, sizeof cl);
  SetFocus(edit);
  if (RunLine(action, cl)) {
    HistoryStore(state, cl);
    SendMessageA(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(""));
  }
  state.history_browse = 0;
}

LRESULT CALLBACK CommandLineEditProc(HWND edit, UINT message, WPARAM wparam, LPARAM lparam) {
  AppState& state = *ProgramState();
  if (message == WM_KEYDOWN && wparam == VK_UP) Show(edit, HistoryBack(state));
  if (message == WM_KEYDOWN && wparam == VK_DOWN) Show(edit, HistoryForward(state));
  if (message == WM_CHAR && wparam == kEscape) {
    Escape(state, edit);
    return 0;
  }
  return CallWindowProcA(state.cmdline_old_proc, edit, message, wparam, lparam);
}

}  // namespace vt63x
