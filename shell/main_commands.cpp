// SPDX-License-Identifier: MIT

#include "shell/main_commands.h"

#include "script/command_help.h"
#include "serial/port_control.h"
#include "shell/about_dialog.h"
#include "shell/card_reader_dialog.h"
#include "shell/command_file.h"
#include "shell/command_line.h"
#include "shell/port_settings_dialog.h"
#include "shell/programming_interface.h"
#include "shell/register_dialog.h"
#include "shell/register_dump.h"
#include "shell/resources/resource.h"
#include "shell/state/log.h"
#include "shell/wait_cursor.h"

namespace vt63x {
namespace {

void ForgetResumeLine(const action_param* action) { action->app_state->resume_line = 0; }

void Open(const action_param* action) {
  const WaitCursor wait;
  OpenPort(action);
}

void OpenByButton(const action_param* action) {
  Open(action);
  ForgetResumeLine(action);
}

void CloseByButton(const action_param* action) {
  ClosePort(action);
  ForgetResumeLine(action);
}

void CloseByMenu(const action_param* action) {
  ForgetResumeLine(action);
  ClosePort(action);
}

void AllTo115k(const action_param* action) {
  ForgetResumeLine(action);
  SwitchAllTo115k(action);
}

void SelectByButton(const action_param* action) {
  ForgetResumeLine(action);
  SelectCommandFile(action);
}

void ProcessFile(const action_param* action) {
  PurgePort(action);
  ProcessCommandFile(action);
}

void HostTo9600(const action_param* action) {
  SetHostBaud9600(action);
  PurgePort(action);
}

void HostTo115200(const action_param* action) {
  SetHostBaud115200(action);
  PurgePort(action);
}

void Dump(const action_param* action) { DumpRegisters(action); }

void ShowModal(const action_param* action, int id, DLGPROC procedure) {
  DialogBoxParamA(action->instance, MAKEINTRESOURCEA(id), action->main_wnd, procedure, 0);
}

void ReadCards(const action_param* action) {
  ShowModal(action, IDD_CARD_READER, CardReaderDlgProc);
}

void SetPort(const action_param* action) {
  ShowModal(action, IDD_PORT_SETTINGS, PortSettingsDlgProc);
}

void ShowInfo(const action_param* action) { ShowModal(action, IDD_ABOUT, AboutDlgProc); }

void AccessRegisters(const action_param* action) {
  AppState& state = *action->app_state;
  if (state.register_dlg != nullptr) return;
  state.register_dlg = CreateDialogParamA(action->instance, MAKEINTRESOURCEA(IDD_REGISTER),
                                          action->main_wnd, RegisterDlgProc, 0);
  ShowWindow(state.register_dlg, SW_SHOW);
}

void ShowUserActions(const action_param* action) {
  ForgetResumeLine(action);
  RECT cpp_btn_rect{};
  GetWindowRect(GetDlgItem(action->main_wnd, IDC_CPP_INTERFACE), &cpp_btn_rect);
  const HMENU menu = action->app_state->pi_menu;
  if (menu == nullptr) return;
  TrackPopupMenu(menu, 0, cpp_btn_rect.left, cpp_btn_rect.bottom, 0, action->main_wnd, nullptr);
}

// The quit message alone would leave the dialog's result, the program's exit code, to the system.
void Quit(const action_param* action) {
  EndDialog(action->main_wnd, 0);
  PostQuitMessage(0);
}

struct command_row {
  WORD first;
  WORD last;
  void (*handler)(const action_param*);
};

constexpr command_row kCommands[] = {
    {IDC_PROCESS_LINE, IDC_PROCESS_LINE, ProcessCommandLine},
    {IDC_OPEN, IDC_OPEN, OpenByButton},
    {IDC_CLOSE, IDC_CLOSE, CloseByButton},
    {IDC_ALL_TO_115K, IDC_ALL_TO_115K, AllTo115k},
    {IDC_SELECT_WCF, IDC_SELECT_WCF, SelectByButton},
    {IDC_PROCESS_WCF, IDC_PROCESS_WCF, ProcessFile},
    {IDC_OVERRIDE_NAME, IDC_OVERRIDE_NAME, ApplyOverrideName},
    {IDC_REGISTER_IO, IDC_REGISTER_IO, AccessRegisters},
    {IDC_CPP_INTERFACE, IDC_CPP_INTERFACE, ShowUserActions},
    {IDC_DUMP_REGISTER, IDC_DUMP_REGISTER, Dump},
    {IDC_CARD_READER, IDC_CARD_READER, ReadCards},
    {IDM_EXIT, IDM_EXIT, Quit},
    {IDM_INFO, IDM_INFO, ShowInfo},
    {IDM_SETTINGS, IDM_SETTINGS, SetPort},
    {IDM_OPEN, IDM_OPEN, Open},
    {IDM_CLOSE, IDM_CLOSE, CloseByMenu},
    {IDM_ACCESS_REGISTER, IDM_ACCESS_REGISTER, AccessRegisters},
    {IDM_PROCESS_FILE, IDM_PROCESS_FILE, ProcessFile},
    {IDM_9600_BPS, IDM_9600_BPS, HostTo9600},
    {IDM_115200_BPS, IDM_115200_BPS, HostTo115200},
    {IDM_SAVE_LOG, IDM_SAVE_LOG, log_save},
    {IDM_CLEAR_LOG, IDM_CLEAR_LOG, log_clear},
    {IDM_SELECT_FILE, IDM_SELECT_FILE, SelectCommandFile},
    {IDM_HELP_COMMANDS, IDM_HELP_COMMANDS, ShowCommandHelp},
    {IDM_REAP_THREADS, IDM_REAP_THREADS, ReapThreads},
    {IDM_FIRST_USER_ACTION, IDM_LAST_USER_ACTION, RunUserAction},
};

}  // namespace

INT_PTR RunMainCommand(const action_param* action) {
  const WORD command = LOWORD(action->wparam);
  for (const command_row& row : kCommands) {
    if (command < row.first || command > row.last) continue;
    row.handler(action);
    return TRUE;
  }
  return FALSE;
}

}  // namespace vt63x
