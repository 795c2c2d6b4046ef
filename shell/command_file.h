// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_COMMAND_FILE_H
#define VT63X_SHELL_COMMAND_FILE_H

// The window side of command files: choosing one, retargeting it to another file of its folder, and
// its run on a thread of its own behind a dialog with a Break button. Main thread, but for the
// thread procedure.

#include <windows.h>

#include "shell/state/app_state.h"

namespace vt63x {

// Asks for the file. It becomes wcf_path ("NULL" when the user cancels), and the next run starts
// with its first line.
void SelectCommandFile(const action_param* action);

// Puts the name typed into the override field in place of the file's. A name that does not fit is
// refused, with a line in the log, and the path stays.
void ApplyOverrideName(const action_param* action);

// Starts a run of wcf_path, after asking for a file when none is selected; at once, or when the
// threads of the last run have ended. Does nothing while a run is under way.
void ProcessCommandFile(const action_param* action);

// Closes the handles of a run's threads once they have ended, now or within 3 s: while they have
// not, the main window's timer REAP_TIMER asks for ReapThreadsTimer every 100 ms.
void ReapThreads(const action_param* action);
void ReapThreadsTimer(const action_param* action);
inline constexpr UINT_PTR REAP_TIMER = 2;

// Thread procedure: shows the dialog of a run until it ends; the parameter is an action_param.
DWORD WINAPI ShowProcessingDialog(void* action);
INT_PTR CALLBACK ProcessingDlgProc(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

}  // namespace vt63x

#endif
