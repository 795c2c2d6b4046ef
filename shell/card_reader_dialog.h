// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_CARD_READER_DIALOG_H
#define VT63X_SHELL_CARD_READER_DIALOG_H

#include <windows.h>

#include "shell/state/app_state.h"

namespace vt63x {

// Drives a card in front of the chip, one operation a button. Opening it resets the chip and sets
// it up for type A. Main thread.
INT_PTR CALLBACK CardReaderDlgProc(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

// log_append and log_clear for the dialog's own pane. The buffer is that of the main log, so the
// main window's pane shows what is left of it at its own next line.
void reader_log_append(const action_param* action, const char* text, int newline);
void reader_log_clear(const action_param* action);

}  // namespace vt63x

#endif
