// SPDX-License-Identifier: MIT

#include "shell/register_dialog.h"

#include <cstdio>

#include "frontend/register_control.h"
#include "serial/port_control.h"
#include "shell/edit_text.h"
#include "shell/hex_text.h"
#include "shell/program.h"
#include "shell/resources/resource.h"
#include "shell/state/log.h"

namespace vt63x {
namespace {

constexpr int kLongestEntry = 9;
constexpr int kFontEdits[] = {IDC_ADDRESS, IDC_VALUE, IDC_BINARY, IDC_RESULT};

struct hex_entry {
  char text[kLongestEntry + 1];
  std::uint8_t error = 0;
  std::uint8_t value = 0;
};

hex_entry ReadEntry(HWND dialog, int id) {
  hex_entry entry{};
  GetDlgItemTextA(dialog, id, entry.text, sizeof entry.text);
  entry.value = HexTextToByte(entry.text, &entry.error);
  return entry;
}

void ShowBinary(HWND dialog, std::uint8_t value) {
  char text[9];
  ByteToBinaryText(value, text);
  SetDlgItemTextA(dialog, IDC_BINARY, text);
}

void AddressTyped(const action_param* action) {
  const hex_entry entry = ReadEntry(action->dialog_wnd, IDC_ADDRESS);
  if (entry.error != 0) CorrectText(action->dialog_wnd, IDC_ADDRESS, entry.text);
}

void ValueTyped(const action_param* action) {
  const hex_entry entry = ReadEntry(action->dialog_wnd, IDC_VALUE);
  ShowBinary(action->dialog_wnd, entry.value);
  if (entry.error != 0) CorrectText(action->dialog_wnd, IDC_VALUE, entry.text);
}

void ShowResult(const action_param* action, const char* line) {
  SetDlgItemTextA(action->dialog_wnd, IDC_RESULT, line);
  if (action->app_state->reg_log_enabled != 0) log_append(action, line, 1);
}

// Statuses are printed as the integers that they widen to.
unsigned Digits(HFLSTATUS status) { return static_cast<unsigned>(static_cast<int>(status)); }

template <typename Access>
HFLSTATUS PurgeAndAccess(AppState& state, const Access& access) {
  const LockGuard lock(state.stack_lock);
  PurgeLockedPort(state);
  return access(*state.component_ptrs.register_control);
}

void Set(const action_param* action) {
  const std::uint8_t address = ReadEntry(action->dialog_wnd, IDC_ADDRESS).value;
  const std::uint8_t value = ReadEntry(action->dialog_wnd, IDC_VALUE).value;
  setreg_param param{address, value, nullptr};
  const HFLSTATUS status = PurgeAndAccess(
      *action->app_state, [&](RegisterControlInterface& chip) { return chip.SetRegister(&param); });
  char line[80];
  std::snprintf(line, sizeof line, "SR: %02X %02X                      // (Status: 0x%04X)",
                unsigned{address}, unsigned{value}, Digits(status));
  ShowResult(action, line);
}

// A read that fails shows 00: what the chip sent before is no value of the register.
void Get(const action_param* action) {
  const std::uint8_t address = ReadEntry(action->dialog_wnd, IDC_ADDRESS).value;
  getreg_param param{address, 0, nullptr};
  const HFLSTATUS status = PurgeAndAccess(
      *action->app_state, [&](RegisterControlInterface& chip) { return chip.GetRegister(&param); });
  const unsigned value = status == HFL_SUCCESS ? param.data : 0U;
  char text[3];
  std::snprintf(text, sizeof text, "%02X", value);
  SetDlgItemTextA(action->dialog_wnd, IDC_VALUE, text);
  ShowBinary(action->dialog_wnd, static_cast<std::uint8_t>(value));
  char line[80];
  std::snprintf(line, sizeof line, "GR: %02X          // data == %02X  // (Status: 0x%04X)",
                unsigned{address}, value, Digits(status));
  ShowResult(action, line);
}

void EnableLog(const action_param* action) {
  const bool checked = IsDlgButtonChecked(action->dialog_wnd, IDC_LOG_ENABLE) == BST_CHECKED;
  action->app_state->reg_log_enabled = checked ? 1 : 0;
}

void Close(const action_param* action) {
  AppState& state = *action->app_state;
  GetDlgItemTextA(action->dialog_wnd, IDC_ADDRESS, state.reg_addr_text, sizeof state.reg_addr_text);
  GetDlgItemTextA(action->dialog_wnd, IDC_VALUE, state.reg_value_text, sizeof state.reg_value_text);
  DestroyWindow(action->dialog_wnd);
  state.register_dlg = nullptr;
}

void Init(const action_param* action) {
  AppState& state = *action->app_state;
  const HWND dialog = action->dialog_wnd;
  for (const int id : kFontEdits) {
    if (state.log_font == nullptr) break;
    SendDlgItemMessageA(dialog, id, WM_SETFONT, reinterpret_cast<WPARAM>(state.log_font), TRUE);
  }
  CheckDlgButton(dialog, IDC_LOG_ENABLE, state.reg_log_enabled > 0 ? BST_CHECKED : BST_UNCHECKED);
  SetDlgItemTextA(dialog, IDC_ADDRESS, state.reg_addr_text);
  SetDlgItemTextA(dialog, IDC_VALUE, state.reg_value_text);
}

struct command_row {
  WORD command;
  void (*handler)(const action_param*);
};

constexpr command_row kCommands[] = {
    {IDC_ADDRESS, AddressTyped},
    {IDC_VALUE, ValueTyped},
    {IDC_SET, Set},
    {IDC_GET, Get},
    {IDC_LOG_ENABLE, EnableLog},
    {IDC_CLEAR_LOG, log_clear},
    {IDC_REGISTER_QUIT, Close},
};

INT_PTR Command(const action_param* action) {
  for (const command_row& row : kCommands) {
    if (row.command != LOWORD(action->wparam)) continue;
    row.handler(action);
    return TRUE;
  }
  return FALSE;
}

}  // namespace

INT_PTR CALLBACK RegisterDlgProc(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  AppState& state = *ProgramState();
  const action_param action{state.main_wnd, dialog, state.instance, lparam, wparam, &state};
  switch (message) {
    case WM_INITDIALOG:
      Init(&action);
      return TRUE;
    case WM_COMMAND:
      return Command(&action);
    case WM_CLOSE:
      Close(&action);
      return TRUE;
    default:
      return FALSE;
  }
}

}  // namespace vt63x
