// SPDX-License-Identifier: MIT

#include "shell/main_window.h"

#include <iterator>

#include "serial/port_control.h"
#include "shell/command_file.h"
#include "shell/command_line.h"
#include "shell/main_commands.h"
#include "shell/main_view.h"
#include "shell/program.h"
#include "shell/programming_interface.h"
#include "shell/resources/resource.h"
#include "shell/state/log.h"
#include "shell/window_size.h"

namespace vt63x {
namespace {

constexpr WPARAM kEscape = 27;
constexpr int kLogFontHeight = 14;  // pixels

struct enable_rule {
  int id;
  bool when_open;  // enabled with the port open, disabled with it closed; or the other way round
};

constexpr enable_rule kMenuRules[] = {
    {IDM_SETTINGS, false},       {IDM_OPEN, false},        {IDM_CLOSE, true},
    {IDM_ACCESS_REGISTER, true}, {IDM_PROCESS_FILE, true}, {IDM_9600_BPS, true},
    {IDM_115200_BPS, true},
};

constexpr enable_rule kControlRules[] = {
    {IDC_OPEN, false},         {IDC_CLOSE, true},         {IDC_ALL_TO_115K, true},
    {IDC_SELECT_WCF, true},    {IDC_PROCESS_WCF, true},   {IDC_REGISTER_IO, true},
    {IDC_CPP_INTERFACE, true}, {IDC_DUMP_REGISTER, true}, {IDC_CARD_READER, true},
    {IDC_PROCESS_LINE, true},  {IDC_OVERRIDE_NAME, true}, {IDC_COMMAND_LINE, true},
};

MainWindowView& View(const AppState& state) { return static_cast<MainWindowView&>(*state.view); }

void EnableMenu(HWND window, bool open) {
  const HMENU menu = GetMenu(window);
  for (const enable_rule& rule : kMenuRules) {
    const UINT state = rule.when_open == open ? MF_ENABLED : MF_GRAYED;
    EnableMenuItem(menu, static_cast<UINT>(rule.id), MF_BYCOMMAND | state);
  }
}

WNDPROC Subclass(HWND control, WNDPROC procedure) {
  return reinterpret_cast<WNDPROC>(
      SetWindowLongPtrA(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
}

void Unsubclass(HWND control, WNDPROC& procedure) {
  if (procedure != nullptr) Subclass(control, procedure);
  procedure = nullptr;
}

// The edit also asks its dialog to close when Escape is typed; ignore_close answers that.
LRESULT CALLBACK LogViewProc(HWND edit, UINT message, WPARAM wparam, LPARAM lparam) {
  AppState& state = *ProgramState();
  if (message == WM_CHAR && wparam == kEscape) {
    state.ignore_close = 1;
    return 1;
  }
  return CallWindowProcA(state.logview_old_proc, edit, message, wparam, lparam);
}

void ShowStatusLine(const AppState& state) {
  SetDlgItemTextA(state.main_wnd, IDC_PORT_NAME, state.port_names[state.port_index]);
  SetDlgItemTextA(state.main_wnd, IDC_BIT_RATE, state.baudrate_texts[0]);
  SetDlgItemTextA(state.main_wnd, IDC_PORT_STATE, "C");
  SetDlgItemTextA(state.main_wnd, IDC_SECOND_PORT, "N");
  SetDlgItemTextA(state.main_wnd, IDC_COMMAND_FILE, state.wcf_path);
}

void MakeLogFont(const action_param* action) {
  AppState& state = *action->app_state;
  state.log_font =
      CreateFontA(kLogFontHeight, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, ANSI_CHARSET,
                  OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, FIXED_PITCH, nullptr);
  if (state.log_font == nullptr) {
    log_append(action, "ERROR: Cannot create monospace font!", 1);
    return;
  }
  SendDlgItemMessageA(state.main_wnd, IDC_LOG, WM_SETFONT, reinterpret_cast<WPARAM>(state.log_font),
                      TRUE);
}

INT_PTR InitDialog(const action_param* action) {
  AppState& state = *action->app_state;
  const HWND window = action->dialog_wnd;
  state.main_wnd = window;
  RECT rect{};
  GetWindowRect(window, &rect);
  state.init_width = rect.right - rect.left;
  state.init_height = rect.bottom - rect.top;
  state.cmdline_old_proc = Subclass(GetDlgItem(window, IDC_COMMAND_LINE), CommandLineEditProc);
  state.logview_old_proc = Subclass(GetDlgItem(window, IDC_LOG), LogViewProc);
  state.history_browse = 0;
  state.ignore_close = 0;
  state.resume_line = 0;
  View(state).WindowReady();
  const HICON icon = LoadIconA(state.instance, MAKEINTRESOURCEA(IDI_PROGRAM));
  state.pi_menu = CreatePopupMenu();
  SendMessageA(window, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon));
  EnableMenu(window, false);
  ShowStatusLine(state);
  MakeLogFont(action);
  if (state.pi_hidden == 0) {
    ShowWindow(GetDlgItem(window, IDC_CPP_INTERFACE), SW_SHOW);
    FillUserActions(action);
  }
  return TRUE;
}

// Also breaks off a command file that still runs, and takes its dialog away.
void EndProgram(const action_param* action) {
  AppState& state = *action->app_state;
  state.script_running = 0;
  if (state.processing_dlg != nullptr) PostMessageA(state.processing_dlg, WM_CLOSE, 0, 0);
  Unsubclass(GetDlgItem(state.main_wnd, IDC_COMMAND_LINE), state.cmdline_old_proc);
  Unsubclass(GetDlgItem(state.main_wnd, IDC_LOG), state.logview_old_proc);
  if (state.pi_menu != nullptr) DestroyMenu(state.pi_menu);
  state.pi_menu = nullptr;
  ClosePort(action);
  EndDialog(state.main_wnd, static_cast<INT_PTR>(action->wparam));
}

INT_PTR Close(const action_param* action) {
  if (action->app_state->ignore_close != 0) {
    action->app_state->ignore_close = 0;
  } else {
    EndProgram(action);
  }
  return TRUE;
}

INT_PTR Destroy(const action_param* action) {
  AppState& state = *action->app_state;
  EndProgram(action);
  if (state.log_font != nullptr) DeleteObject(state.log_font);
  state.log_font = nullptr;
  return TRUE;
}

INT_PTR Timer(const action_param* action) {
  switch (action->wparam) {
    case MainWindowView::SHOW_LOG_TIMER:
      View(*action->app_state).ShowLogTimer();
      return TRUE;
    case REAP_TIMER:
      ReapThreadsTimer(action);
      return TRUE;
    default:
      return FALSE;
  }
}

INT_PTR ShowLog(const action_param* action) {
  View(*action->app_state).ShowLogInTurn();
  return TRUE;
}

INT_PTR ReadLog(const action_param* action) {
  char* const buffer = reinterpret_cast<char*>(action->lparam);
  View(*action->app_state).ReadLogPane(buffer, action->wparam);
  return TRUE;
}

INT_PTR ShowRate(const action_param* action) {
  View(*action->app_state).ShowPostedRate();
  return TRUE;
}

struct message_row {
  UINT message;
  INT_PTR (*handler)(const action_param*);
};

constexpr message_row kMessages[] = {
    {WM_INITDIALOG, InitDialog}, {WM_COMMAND, RunMainCommand},
    {WM_SIZE, KeepWindowSize},   {WM_CLOSE, Close},
    {WM_DESTROY, Destroy},       {WM_TIMER, Timer},
    {WM_SHOW_LOG, ShowLog},      {WM_SHOW_RATE, ShowRate},
    {WM_READ_LOG, ReadLog},      {WM_GETMINMAXINFO, TellSizeLimits},
};

}  // namespace

INT_PTR CALLBACK MainDlgProc(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  AppState& state = *ProgramState();
  const action_param action{dialog, dialog, state.instance, lparam, wparam, &state};
  for (const message_row& row : kMessages) {
    if (row.message == message) return row.handler(&action);
  }
  return FALSE;
}

void ShowPortState(const AppState& state, bool open) {
  const HWND window = state.main_wnd;
  EnableMenu(window, open);
  for (const enable_rule& rule : kControlRules) {
    EnableWindow(GetDlgItem(window, rule.id), rule.when_open == open ? TRUE : FALSE);
  }
  SetFocus(GetDlgItem(window, open ? IDC_CLOSE : IDC_OPEN));
  SetDlgItemTextA(window, IDC_PORT_STATE, open ? "O" : "C");
}

}  // namespace vt63x
