// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_LOG_PANE_H
#define VT63X_SHELL_LOG_PANE_H

#include <cstddef>
#include <cstdint>

#include "shell/state/app_state.h"

namespace vt63x {

// An edit that shows the log. Showing what was added costs the same however long the log is; the
// whole text is put in anew only when the log began anew or somebody typed into the edit. Main
// thread. No lock is held while the edit is talked to.
class LogPane {
 public:
  explicit LogPane(AppState& state) : state_(state) {}

  // The edit to show the log in from now on.
  void Attach(HWND edit);

  // Brings the edit up to date, with the caret at the end of the text.
  void Refresh();

 private:
  AppState& state_;
  HWND edit_ = nullptr;
  std::uint32_t generation_ = 0;  // of the text that the edit shows
  std::size_t length_ = 0;        // and how much of it; 0: the edit may hold anything
};

}  // namespace vt63x

#endif
