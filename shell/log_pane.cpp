// SPDX-License-Identifier: MIT

#include "shell/log_pane.h"

#include <cstring>
#include <string>

namespace vt63x {

void LogPane::Attach(HWND edit) {
  edit_ = edit;
  length_ = 0;
  SendMessageA(edit, EM_SETLIMITTEXT, LOG_CAPACITY, 0);
}

void LogPane::Refresh() {
  if (edit_ == nullptr || state_.log_buf == nullptr) return;
  const bool typed_into = SendMessageA(edit_, EM_GETMODIFY, 0, 0) != 0;
  std::string text;
  bool whole = false;
  std::size_t end = 0;
  {
    const LockGuard lock(state_.log_lock);
    end = std::strlen(state_.log_buf);
    whole = typed_into || length_ == 0 || generation_ != state_.log_generation || end < length_;
    text.assign(state_.log_buf + (whole ? 0 : length_), state_.log_buf + end);
    generation_ = state_.log_generation;
  }
  if (whole) {
    SendMessageA(edit_, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
  } else if (!text.empty()) {
    SendMessageA(edit_, EM_SETSEL, length_, static_cast<LPARAM>(length_));
    SendMessageA(edit_, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(text.c_str()));
    SendMessageA(edit_, EM_SETMODIFY, FALSE, 0);
  }
  length_ = end;
  const std::size_t caret = end == 0 ? 0 : end - 1;
  SendMessageA(edit_, EM_SETSEL, caret, static_cast<LPARAM>(caret));
  SendMessageA(edit_, EM_SCROLLCARET, 0, 0);
}

}  // namespace vt63x
