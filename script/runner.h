// SPDX-License-Identifier: MIT

#ifndef VT63X_SCRIPT_RUNNER_H
#define VT63X_SCRIPT_RUNNER_H

// The run of a command file, without windows or threads of its own.

#include <windows.h>

#include <string>

#include "script/command_file.h"
#include "script/line_parser.h"

namespace vt63x {

// Runs AppState::wcf_path; `action` is an action_param that stays as it is for the run. Its form is
// that of a thread procedure; the result is 0. The caller sets script_running to 1 before, and
// clears it to break the run off before its next line; the run clears it at its end and tells the
// view. resume_line is the number of lines skipped at the start; BRK leaves its own line's number
// there, every other executed line but a jump leaves 0.
//
// The file is read and decoded when the run starts; a change to it shows in the next run.
DWORD WINAPI RunCommandFile(void* action);

// The lines of `file` from resume_line on, as RunCommandFile executes them, with the break checked
// before each.
ScriptEnd RunLines(LineParser& parser, const CommandFile& file);

// Retargets the path of a command file to another file of its folder with its extension:
// `base_name` takes the place of the file's name up to the last full stop. False, and the path as
// it was, when the new one would not fit.
bool OverridePath(char (&path)[MAX_PATH], const char* base_name);

// The name of the file without folder and extension.
std::string PathBaseName(const char* path);

}  // namespace vt63x

#endif
