// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_MAIN_VIEW_H
#define VT63X_SHELL_MAIN_VIEW_H

#include <atomic>
#include <cstdint>
#include <string>

#include "shell/log_pane.h"
#include "shell/state/app_state.h"
#include "threading/mutex.h"

namespace vt63x {

// Messages that the view posts to the main window for what happens on other threads.
inline constexpr UINT WM_SHOW_LOG = WM_APP + 1;
inline constexpr UINT WM_SHOW_RATE = WM_APP + 2;
// Sent to it: reads the log pane into the buffer lParam of wParam characters.
inline constexpr UINT WM_READ_LOG = WM_APP + 3;

// Shows in the main window what the layers below report. On the main thread at once; from the
// runner thread by a posted message, several changes by one, so that the runner never waits for the
// window. The window then shows the log at most every 30 ms, and the last line always.
class MainWindowView : public MainView {
 public:
  explicit MainWindowView(AppState& state);

  void LogAppended(std::string_view text, bool newline) override;
  void LogCleared() override;
  bool ReadLogPane(char* buffer, std::size_t size) override;
  bool AskLogFile(char (&path)[MAX_PATH]) override;
  void LogNotSaved(const char* path, int error) override;
  void ShowBitRate(const char* text) override;
  void ShowPortOpen(bool open) override;
  void ScriptEnded(ScriptEnd end, const script_totals& totals) override;

  // Main thread: the log pane exists; WM_SHOW_LOG, WM_SHOW_RATE and the timer that SHOW_LOG_TIMER
  // names arrived.
  void WindowReady();
  void ShowLogInTurn();
  void ShowLogTimer();
  void ShowPostedRate();

  static constexpr UINT_PTR SHOW_LOG_TIMER = 1;

 private:
  bool OnMainThread() const { return GetCurrentThreadId() == main_thread_; }
  void ShowLog();

  AppState& state_;
  const DWORD main_thread_;
  LogPane pane_;
  std::atomic<bool> log_posted_ = false;
  std::int64_t last_shown_ms_ = 0;  // main thread
  Mutex rate_lock_;
  std::string rate_ GUARDED_BY(rate_lock_);
};

}  // namespace vt63x

#endif
