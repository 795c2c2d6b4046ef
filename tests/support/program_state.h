// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_SUPPORT_PROGRAM_STATE_H
#define VT63X_TESTS_SUPPORT_PROGRAM_STATE_H

#include <string>
#include <vector>

#include "shell/state/app_state.h"
#include "tests/support/recording_view.h"

namespace vt63x {

// AppState with a log buffer and a recording view, as start-up would leave it.
struct ProgramState {
  ProgramState() : log_buffer(LOG_CAPACITY, '\0') {
    state.log_buf = log_buffer.data();
    state.view = &view;
    action.app_state = &state;
  }

  std::string log() const { return state.log_buf; }
  // The log's last line, without its line end.
  std::string last_line() const {
    std::string text = log();
    if (text.ends_with("\r\n")) text.resize(text.size() - 2);
    return text.substr(text.rfind('\n') + 1);
  }

  std::vector<char> log_buffer;
  RecordingView view;
  AppState state;
  action_param action{};
};

}  // namespace vt63x

#endif
