// SPDX-License-Identifier: MIT

#include "shell/main_view.h"

#include <chrono>
#include <system_error>

#include "shell/file_request.h"
#include "shell/main_window.h"
#include "shell/resources/resource.h"
#include "shell/state/log.h"

namespace vt63x {
namespace {

// The eye takes about 30 pictures a second.
constexpr std::int64_t kShowEveryMs = 30;

std::int64_t NowMs() {
  using std::chrono::steady_clock;
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             steady_clock::now().time_since_epoch())
      .count();
}

}  // namespace

MainWindowView::MainWindowView(AppState& state)
    : state_(state), main_thread_(GetCurrentThreadId()), pane_(state) {}

void MainWindowView::WindowReady() { pane_.Attach(GetDlgItem(state_.main_wnd, IDC_LOG)); }

void MainWindowView::LogAppended(std::string_view, bool) {
  if (OnMainThread()) {
    ShowLog();
  } else if (!log_posted_.exchange(true)) {
    PostMessageA(state_.main_wnd, WM_SHOW_LOG, 0, 0);
  }
}

void MainWindowView::LogCleared() { LogAppended({}, false); }

void MainWindowView::ShowLog() {
  // What is appended from here on asks for itself.
  log_posted_ = false;
  pane_.Refresh();
  last_shown_ms_ = NowMs();
}

void MainWindowView::ShowLogInTurn() {
  const std::int64_t elapsed = NowMs() - last_shown_ms_;
  if (elapsed >= kShowEveryMs) {
    ShowLog();
  } else {
    SetTimer(state_.main_wnd, SHOW_LOG_TIMER, static_cast<UINT>(kShowEveryMs - elapsed), nullptr);
  }
}

void MainWindowView::ShowLogTimer() {
  KillTimer(state_.main_wnd, SHOW_LOG_TIMER);
  ShowLog();
}

bool MainWindowView::ReadLogPane(char* buffer, std::size_t size) {
  if (!OnMainThread()) {
    SendMessageA(state_.main_wnd, WM_READ_LOG, size, reinterpret_cast<LPARAM>(buffer));
    return true;
  }
  if (log_posted_) ShowLog();
  GetDlgItemTextA(state_.main_wnd, IDC_LOG, buffer, static_cast<int>(size));
  return true;
}

bool MainWindowView::AskLogFile(char (&path)[MAX_PATH]) {
  return AskFileToSave(state_, "Log Text File", "*.txt", path);
}

void MainWindowView::LogNotSaved(const char* path, int error) {
  const action_param action{state_.main_wnd, state_.main_wnd, state_.instance, 0, 0, &state_};
  const std::string reason = std::generic_category().message(error);
  log_append(&action,
             ("Error: Cannot save the log in " + std::string(path) + ": " + reason).c_str(), 1);
}

void MainWindowView::ShowBitRate(const char* text) {
  if (OnMainThread()) {
    SetDlgItemTextA(state_.main_wnd, IDC_BIT_RATE, text);
    return;
  }
  {
    const LockGuard lock(rate_lock_);
    rate_ = text;
  }
  PostMessageA(state_.main_wnd, WM_SHOW_RATE, 0, 0);
}

void MainWindowView::ShowPostedRate() {
  std::string rate;
  {
    const LockGuard lock(rate_lock_);
    rate = rate_;
  }
  SetDlgItemTextA(state_.main_wnd, IDC_BIT_RATE, rate.c_str());
}

void MainWindowView::ShowPortOpen(bool open) { ShowPortState(state_, open); }

// The dialog may open only now: it then finds script_running cleared and closes itself.
void MainWindowView::ScriptEnded(ScriptEnd, const script_totals&) {
  const HWND dialog = state_.processing_dlg;
  if (dialog != nullptr) PostMessageA(dialog, WM_CLOSE, 0, 0);
}

}  // namespace vt63x
