// SPDX-License-Identifier: MIT

#include "shell/command_file.h"

#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "script/runner.h"
#include "shell/file_request.h"
#include "shell/program.h"
#include "shell/resources/resource.h"
#include "shell/state/log.h"
#include "threading/mutex.h"

namespace vt63x {
namespace {

constexpr char kNone[] = "NULL";
constexpr int kReapAttempts = 30;
constexpr UINT kReapPauseMs = 100;

// Read by the threads of a run, written before they start.
action_param thread_param;

// A runner executes nothing before both threads are there, and nothing at all if one is missing.
class StartGate {
 public:
  enum class State { kClosed, kOpen, kCancelled };

  void Set(State state) {
    const LockGuard lock(mutex_);
    state_ = state;
    changed_.NotifyAll();
  }
  bool PassWhenOpen() {
    const LockGuard lock(mutex_);
    while (state_ == State::kClosed) changed_.Wait(mutex_);
    return state_ == State::kOpen;
  }

 private:
  Mutex mutex_;
  Condition changed_;
  State state_ GUARDED_BY(mutex_) = State::kClosed;
} start_gate;

DWORD WINAPI RunWhenAllowed(void* action) {
  return start_gate.PassWhenOpen() ? RunCommandFile(action) : 0;
}

// Main thread: how often the threads of the last run have been looked for, and whether the next run
// waits for their end, which may read thread_param until then.
int reap_attempts = 0;
std::optional<action_param> run_wanted;

bool NoneSelected(const AppState& state) { return std::strcmp(state.wcf_path, kNone) == 0; }

void ShowPath(const AppState& state) {
  SetDlgItemTextA(state.main_wnd, IDC_COMMAND_FILE, state.wcf_path);
}

void AskForFile(AppState& state) {
  char path[MAX_PATH] = "*.wcf";
  const bool chosen = AskFileToOpen(state, "Command File", "*.wcf", path);
  std::memcpy(state.wcf_path, chosen ? path : "NULL", chosen ? sizeof path : sizeof kNone);
  if (chosen) {
    // Its notification runs ApplyOverrideName, which finds the path as it is.
    SetDlgItemTextA(state.main_wnd, IDC_OVERRIDE_NAME, PathBaseName(path).c_str());
  }
  ShowPath(state);
}

bool CanBeRead(const char* path) {
  std::FILE* const file = std::fopen(path, "r");
  if (file == nullptr) return false;
  std::fclose(file);
  return true;
}

void RefuseRun(const action_param* action, const char* reason) {
  log_append(action, ("Error: Cannot process WCF (" + std::string(reason) + ").").c_str(), 1);
}

void CloseThread(HANDLE& thread) {
  CloseHandle(thread);
  thread = nullptr;
}

// False when a thread could not be made.
bool StartRun(AppState& state) {
  start_gate.Set(StartGate::State::kClosed);
  state.script_running = 1;
  state.runner_thread = CreateThread(nullptr, 0, RunWhenAllowed, &thread_param, 0, nullptr);
  if (state.runner_thread == nullptr) {
    state.script_running = 0;
    return false;
  }
  state.processing_thread =
      CreateThread(nullptr, 0, ShowProcessingDialog, &thread_param, 0, nullptr);
  if (state.processing_thread != nullptr) {
    start_gate.Set(StartGate::State::kOpen);
    return true;
  }
  state.script_running = 0;
  start_gate.Set(StartGate::State::kCancelled);
  CloseThread(state.runner_thread);
  return false;
}

bool Reap(HANDLE& thread) {
  if (thread == nullptr) return true;
  DWORD exit_code = STILL_ACTIVE;
  GetExitCodeThread(thread, &exit_code);
  if (exit_code == STILL_ACTIVE) return false;
  CloseThread(thread);
  return true;
}

void LeaveProcessing(HWND dialog) {
  EndDialog(dialog, 0);
  PostMessageA(ProgramState()->main_wnd, WM_COMMAND, IDM_REAP_THREADS, 0);
}

}  // namespace

void SelectCommandFile(const action_param* action) {
  AskForFile(*action->app_state);
  action->app_state->resume_line = 0;
}

void ApplyOverrideName(const action_param* action) {
  AppState& state = *action->app_state;
  // A run reads the path; what the field says then counts with its next change.
  if (NoneSelected(state) || state.script_running != 0) return;
  char new_fname[254];
  GetDlgItemTextA(state.main_wnd, IDC_OVERRIDE_NAME, new_fname, sizeof new_fname);
  // Each key is notified, and more than once; the log hears of it when a name fits no longer.
  static bool fits = true;
  const bool fitted = std::exchange(fits, OverridePath(state.wcf_path, new_fname));
  if (fits) {
    ShowPath(state);
  } else if (fitted) {
    log_append(action, "Error: Override name does not fit into the path (259 characters).", 1);
  }
}

void ProcessCommandFile(const action_param* action) {
  AppState& state = *action->app_state;
  if (state.script_running != 0) {
    RefuseRun(action, "a run is under way");
    return;
  }
  if (NoneSelected(state)) AskForFile(state);
  if (NoneSelected(state)) return;
  if (!CanBeRead(state.wcf_path)) {
    RefuseRun(action, "not found");
    return;
  }
  run_wanted = *action;
  ReapThreads(action);
}

void ReapThreads(const action_param* action) {
  reap_attempts = 0;
  ReapThreadsTimer(action);
}

// A thread that ends its dialog needs this thread meanwhile, so it must not wait.
void ReapThreadsTimer(const action_param* action) {
  AppState& state = *action->app_state;
  const bool runner = Reap(state.runner_thread);
  const bool processing = Reap(state.processing_thread);
  const bool over = (runner && processing) || ++reap_attempts == kReapAttempts;
  if (!over) {
    SetTimer(state.main_wnd, REAP_TIMER, kReapPauseMs, nullptr);
    return;
  }
  KillTimer(state.main_wnd, REAP_TIMER);
  const auto wanted = std::exchange(run_wanted, std::nullopt);
  if (!wanted) return;
  if (!runner || !processing) {
    RefuseRun(action, "the last run has not ended");
    return;
  }
  thread_param = *wanted;
  if (!StartRun(state)) RefuseRun(action, "no thread for it");
}

DWORD WINAPI ShowProcessingDialog(void* parameter) {
  const action_param& action = *static_cast<action_param*>(parameter);
  DialogBoxParamA(action.instance, MAKEINTRESOURCEA(IDD_PROCESSING), action.main_wnd,
                  ProcessingDlgProc, 0);
  action.app_state->processing_dlg = nullptr;
  return 0;
}

INT_PTR CALLBACK ProcessingDlgProc(HWND dialog, UINT message, WPARAM wparam, LPARAM) {
  AppState& state = *ProgramState();
  switch (message) {
    case WM_INITDIALOG:
      state.processing_dlg = dialog;
      // The run may be over already; then nobody else would close the dialog.
      if (state.script_running == 0) LeaveProcessing(dialog);
      return TRUE;
    case WM_COMMAND:
      if (LOWORD(wparam) != IDC_BREAK) return FALSE;
      EnableWindow(GetDlgItem(dialog, IDC_BREAK), FALSE);
      state.script_running = 0;
      return TRUE;
    case WM_CLOSE:
    case WM_QUIT:
      LeaveProcessing(dialog);
      return TRUE;
    default:
      return FALSE;
  }
}

}  // namespace vt63x
