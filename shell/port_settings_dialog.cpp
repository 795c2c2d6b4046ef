// SPDX-License-Identifier: MIT

#include "shell/port_settings_dialog.h"

#include <cstdio>

#include "serial/port_control.h"
#include "shell/program.h"
#include "shell/resources/resource.h"
#include "shell/state/app_state.h"
#include "shell/wait_cursor.h"

namespace vt63x {
namespace {

constexpr std::uint8_t kSecondPort = 1;

// Entry of the list, LB_ERR for none.
int Selected(HWND dialog) {
  return static_cast<int>(SendDlgItemMessageA(dialog, IDC_PORT_LIST, LB_GETCURSEL, 0, 0));
}

void ShowResult(HWND dialog, const char* text) { SetDlgItemTextA(dialog, IDC_VERIFY_RESULT, text); }

void Init(const action_param* action) {
  for (const auto& name : action->app_state->port_names) {
    SendDlgItemMessageA(action->dialog_wnd, IDC_PORT_LIST, LB_ADDSTRING, 0,
                        reinterpret_cast<LPARAM>(name));
  }
  SendDlgItemMessageA(action->dialog_wnd, IDC_PORT_LIST, LB_SETCURSEL,
                      action->app_state->port_index, 0);
  ShowResult(action->dialog_wnd, "Unknown");
}

void Forget(const action_param* action) { ShowResult(action->dialog_wnd, "Unknown"); }

void Verify(const action_param* action) {
  const int selected = Selected(action->dialog_wnd);
  if (selected == LB_ERR) {
    ShowResult(action->dialog_wnd, "NOK (No Sel.)");
    return;
  }
  const WaitCursor wait;
  const std::string device = PortDeviceName(action->app_state->port_names[selected]);
  SetLastError(ERROR_SUCCESS);
  const HANDLE port = CreateFileA(device.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  const bool opened = port != INVALID_HANDLE_VALUE;  // NOLINT(performance-no-int-to-ptr)
  if (opened) CloseHandle(port);
  char text[32];
  std::snprintf(text, sizeof text, opened ? "OK (0x%08X)" : "NOK (0x%08X)",
                static_cast<unsigned>(GetLastError()));
  ShowResult(action->dialog_wnd, text);
}

void End(const action_param* action) {
  EndDialog(action->dialog_wnd, static_cast<INT_PTR>(action->wparam));
}

void Apply(const action_param* action) {
  AppState& state = *action->app_state;
  const int selected = Selected(action->dialog_wnd);
  state.port_index = selected == LB_ERR ? std::uint8_t{0} : static_cast<std::uint8_t>(selected);
  state.baudrate_index = 0;
  SetDlgItemTextA(state.main_wnd, IDC_PORT_NAME, state.port_names[state.port_index]);
  SetDlgItemTextA(state.main_wnd, IDC_BIT_RATE, state.baudrate_texts[0]);
  SetDlgItemTextA(state.main_wnd, IDC_SECOND_PORT, state.port_index == kSecondPort ? "R" : "N");
  End(action);
}

struct command_row {
  WORD command;
  void (*handler)(const action_param*);
};

constexpr command_row kCommands[] = {
    {IDC_PORT_LIST, Forget}, {IDC_VERIFY, Verify}, {IDC_APPLY, Apply}, {IDC_DISCARD, End}};

INT_PTR Command(const action_param* action) {
  for (const command_row& row : kCommands) {
    if (row.command != LOWORD(action->wparam)) continue;
    row.handler(action);
    return TRUE;
  }
  return FALSE;
}

}  // namespace

INT_PTR CALLBACK PortSettingsDlgProc(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  AppState& state = *ProgramState();
  const action_param action{state.main_wnd, dialog, state.instance, lparam, wparam, &state};
  switch (message) {
    case WM_INITDIALOG:
      Init(&action);
      return TRUE;
    case WM_COMMAND:
      return Command(&action);
    case WM_CLOSE:
      End(&action);
      return TRUE;
    default:
      return FALSE;
  }
}

}  // namespace vt63x
