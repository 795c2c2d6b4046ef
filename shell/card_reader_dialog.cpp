// SPDX-License-Identifier: MIT

#include "shell/card_reader_dialog.h"

#include <cstdio>
#include <cstring>
#include <optional>

#include "shell/card_reader.h"
#include "shell/edit_text.h"
#include "shell/hex_text.h"
#include "shell/log_pane.h"
#include "shell/program.h"
#include "shell/resources/resource.h"
#include "shell/state/log.h"

namespace vt63x {
namespace {

constexpr int kKeyBytes = 6;
constexpr int kDataBytes = 16;
constexpr int kBlocks = 256;

// Survives the dialog; the list shows entry 0 all the same each time it opens.
std::uint8_t reader_block = 0;

// What lives as long as the dialog is open.
struct OpenReader {
  explicit OpenReader(const action_param& dialog_action)
      : action(dialog_action),
        pane(*dialog_action.app_state),
        reader(&action, {[this](const char* line) { reader_log_append(&action, line, 1); },
                         [](HFLSTATUS status) {
                           std::printf("*** ERROR! Status = %04x \n", Digits(status));
                           std::fflush(stdout);
                         },
                         [](HFLSTATUS) {}}) {
    reader.block = reader_block;
  }

  // Statuses are printed as the integers that they widen to.
  static unsigned Digits(HFLSTATUS status) {
    return static_cast<unsigned>(static_cast<int>(status));
  }

  const action_param action;
  LogPane pane;
  CardReader reader;
};

std::optional<OpenReader> open_reader;

LRESULT Send(const OpenReader& open, int id, UINT message, WPARAM wparam, LPARAM lparam) {
  return SendDlgItemMessageA(open.action.dialog_wnd, id, message, wparam, lparam);
}

// `count` bytes from the pairs of digits in the edit; beyond its text they are 0.
template <std::size_t Count>
void ReadBytes(const OpenReader& open, int id, std::uint8_t (&bytes)[Count]) {
  char text[2 * Count + 2] = {};
  GetDlgItemTextA(open.action.dialog_wnd, id, text, sizeof text);
  for (std::size_t i = 0; i < Count; ++i) {
    const bool beyond = 2 * i >= std::strlen(text);
    bytes[i] = beyond ? std::uint8_t{0} : HexPairToByte(text + 2 * i);
  }
}

void Request(OpenReader& open) {
  const bool first = Send(open, IDC_REQUEST_CODE, CB_GETCURSEL, 0, 0) == 0;
  open.reader.Request(first ? REQUEST_REQA : REQUEST_WUPA);
}

void AnticollisionSelect(OpenReader& open) { open.reader.AnticollisionSelect(); }

void RequestAndSelect(OpenReader& open) {
  Request(open);
  AnticollisionSelect(open);
}

void Halt(OpenReader& open) { open.reader.Halt(); }

void Authenticate(OpenReader& open, int edit, std::uint8_t command) {
  std::uint8_t key[kKeyBytes];
  ReadBytes(open, edit, key);
  open.reader.Authenticate(command, key);
}

void AuthenticateA(OpenReader& open) { Authenticate(open, IDC_KEY_A, 0x60); }
void AuthenticateB(OpenReader& open) { Authenticate(open, IDC_KEY_B, 0x61); }

void Read(OpenReader& open) {
  std::uint8_t data[kDataBytes];
  open.reader.Read(data);
  char text[2 * kDataBytes + 1];
  BytesToHexText(text, data, kDataBytes);
  SetDlgItemTextA(open.action.dialog_wnd, IDC_DATA, text);
}

void Write(OpenReader& open) {
  std::uint8_t data[kDataBytes];
  ReadBytes(open, IDC_DATA, data);
  open.reader.Write(data);
}

void WritePage(OpenReader& open) {
  std::uint8_t data[kDataBytes];
  ReadBytes(open, IDC_DATA, data);
  open.reader.WritePage(data);
}

void ChooseBlock(OpenReader& open) {
  reader_block = static_cast<std::uint8_t>(Send(open, IDC_BLOCK, CB_GETCURSEL, 0, 0));
  open.reader.block = reader_block;
}

// One character more than the edit is for is taken away as soon as it is there.
template <std::size_t Longest>
void KeepShort(const OpenReader& open, int id) {
  char text[Longest + 2];
  GetDlgItemTextA(open.action.dialog_wnd, id, text, sizeof text);
  if (std::strlen(text) <= Longest) return;
  text[Longest] = '\0';
  CorrectText(open.action.dialog_wnd, id, text);
}

void KeepKeyA(OpenReader& open) { KeepShort<2 * kKeyBytes>(open, IDC_KEY_A); }
void KeepKeyB(OpenReader& open) { KeepShort<2 * kKeyBytes>(open, IDC_KEY_B); }
void KeepData(OpenReader& open) { KeepShort<2 * kDataBytes>(open, IDC_DATA); }

void Nothing(OpenReader&) {}

void InsertAt(const OpenReader& open, int list, int position, const char* text) {
  Send(open, list, CB_INSERTSTRING, static_cast<WPARAM>(position), reinterpret_cast<LPARAM>(text));
}

void FillLists(const OpenReader& open) {
  InsertAt(open, IDC_REQUEST_CODE, 0, "0x26 (REQA)");
  InsertAt(open, IDC_REQUEST_CODE, 1, "0x52 (WUPA)");
  Send(open, IDC_REQUEST_CODE, CB_SETCURSEL, 0, 0);
  for (int block = 0; block < kBlocks; ++block) {
    char text[8];
    std::snprintf(text, sizeof text, block % 3 == 0 ? "00%d" : "%d", block);
    InsertAt(open, IDC_BLOCK, block, text);
  }
  Send(open, IDC_BLOCK, CB_SETCURSEL, 0, 0);
}

void Init(const action_param* action) {
  OpenReader& open = open_reader.emplace(*action);
  const AppState& state = *action->app_state;
  open.pane.Attach(GetDlgItem(action->dialog_wnd, IDC_READER_LOG));
  if (state.log_font != nullptr) {
    Send(open, IDC_READER_LOG, WM_SETFONT, reinterpret_cast<WPARAM>(state.log_font), TRUE);
  } else {
    log_append(action, "ERROR: Cannot create monospace font!", 1);
  }
  FillLists(open);
  SetDlgItemTextA(action->dialog_wnd, IDC_KEY_A, DEFAULT_KEY_TEXT);
  SetDlgItemTextA(action->dialog_wnd, IDC_KEY_B, DEFAULT_KEY_TEXT);
  SetDlgItemTextA(action->dialog_wnd, IDC_DATA, "00000000000000000000000000000000");
  reader_log_clear(action);
  open.reader.SetUp();
  SetFocus(GetDlgItem(action->dialog_wnd, IDC_REQUEST));
}

void Close(const action_param* action) {
  reader_log_clear(action);
  EndDialog(action->dialog_wnd, static_cast<INT_PTR>(action->wparam));
}

struct command_row {
  WORD command;
  void (*handler)(OpenReader&);
};

constexpr command_row kCommands[] = {
    {IDC_REQUEST, Request},
    {IDC_ANTICOLLISION, AnticollisionSelect},
    {IDC_REQUEST_SELECT, RequestAndSelect},
    {IDC_HALT, Halt},
    {IDC_AUTHENTICATE_A, AuthenticateA},
    {IDC_AUTHENTICATE_B, AuthenticateB},
    {IDC_READ, Read},
    {IDC_WRITE, Write},
    {IDC_WRITE_PAGE, WritePage},
    {IDC_BLOCK, ChooseBlock},
    {IDC_KEY_A, KeepKeyA},
    {IDC_KEY_B, KeepKeyB},
    {IDC_DATA, KeepData},
    {IDC_REQUEST_CODE, Nothing},
};

INT_PTR Command(const action_param* action) {
  if (LOWORD(action->wparam) == IDC_READER_EXIT) {
    Close(action);
    return TRUE;
  }
  for (const command_row& row : kCommands) {
    if (row.command != LOWORD(action->wparam)) continue;
    // Notifications also come while the dialog is made and taken down.
    if (open_reader) row.handler(*open_reader);
    return TRUE;
  }
  return FALSE;
}

}  // namespace

void reader_log_append(const action_param* action, const char* text, int newline) {
  log_buffer_append(*action->app_state, text, newline != 0);
  if (open_reader) open_reader->pane.Refresh();
}

void reader_log_clear(const action_param* action) {
  log_buffer_clear(*action->app_state);
  if (open_reader) open_reader->pane.Refresh();
}

INT_PTR CALLBACK CardReaderDlgProc(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  AppState& state = *ProgramState();
  const action_param action{state.main_wnd, dialog, state.instance, lparam, wparam, &state};
  switch (message) {
    case WM_INITDIALOG:
      Init(&action);
      return FALSE;  // the focus has been set
    case WM_COMMAND:
      return Command(&action);
    case WM_CLOSE:
      Close(&action);
      return TRUE;
    case WM_DESTROY:
      open_reader.reset();
      return TRUE;
    default:
      return FALSE;
  }
}

}  // namespace vt63x
