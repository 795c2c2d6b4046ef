// SPDX-License-Identifier: MIT

#include "shell/state/log.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

namespace vt63x {
namespace {

// An append that would make the log this long or longer empties it first: room for the text, a
// line end and the terminator is then always left.
constexpr std::size_t kClearAt = 99'997;
constexpr std::size_t kLongestText = LOG_CAPACITY - sizeof "\r\n";

// log_length saves the walk over the text. A text that was put into log_buf by hand is followed
// when it is empty or longer than the log was; whoever makes the log shorter sets log_length.
std::size_t TextLength(const AppState& state) REQUIRES(state.log_lock) {
  const char* const text = state.log_buf;
  const std::size_t length = state.log_length;
  if (text[0] == '\0') return 0;
  if (length > 0 && text[length] == '\0' && text[length - 1] != '\0') return length;
  return strnlen(text, LOG_CAPACITY - 1);
}

void SetText(AppState& state, std::size_t position, const char* text, std::size_t length)
    REQUIRES(state.log_lock) {
  if (position == 0) ++state.log_generation;
  std::memcpy(state.log_buf + position, text, length);
  state.log_buf[position + length] = '\0';
  state.log_length = position + length;
}

int WriteText(const char* path, const std::string& text) {
  std::FILE* const file = std::fopen(path, "ab+");
  if (file == nullptr) return errno;
  errno = 0;
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  const int write_error = written ? 0 : errno;
  const bool closed = std::fclose(file) == 0;
  if (write_error != 0) return write_error;
  return closed ? 0 : errno;
}

// What the user typed into the pane becomes part of the log. The pane belongs to the main thread,
// so it is read with the log unlocked; a line that another thread adds meanwhile must not be lost.
void TakeTextOfPane(AppState& state) {
  constexpr int kAttempts = 5;
  std::string pane(LOG_CAPACITY, '\0');
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    std::pair<std::uint32_t, std::size_t> before;
    {
      const LockGuard lock(state.log_lock);
      before = {state.log_generation, TextLength(state)};
    }
    if (!state.view->ReadLogPane(pane.data(), pane.size())) return;
    const LockGuard lock(state.log_lock);
    if (before != std::pair{state.log_generation, TextLength(state)}) continue;
    SetText(state, 0, pane.c_str(), std::strlen(pane.c_str()));
    return;
  }
}

}  // namespace

bool log_buffer_append(AppState& state, const char* text, bool newline) {
  if (state.log_buf == nullptr) return false;
  const std::size_t length = std::strlen(text);
  const LockGuard lock(state.log_lock);
  const std::size_t end = TextLength(state);
  const bool full = end + length >= kClearAt;
  SetText(state, full ? 0 : end, text, std::min(length, kLongestText));
  if (newline) SetText(state, state.log_length, "\r\n", 2);
  return full;
}

void log_buffer_clear(AppState& state) {
  if (state.log_buf == nullptr) return;
  const LockGuard lock(state.log_lock);
  SetText(state, 0, "", 0);
}

void log_append(const action_param* action, const char* text, int newline) {
  AppState& state = *action->app_state;
  if (state.log_buf == nullptr) return;
  const bool cleared = log_buffer_append(state, text, newline != 0);
  if (state.view == nullptr) return;
  if (cleared) state.view->LogCleared();
  state.view->LogAppended(text, newline != 0);
}

void log_clear(const action_param* action) {
  AppState& state = *action->app_state;
  if (state.log_buf == nullptr) return;
  log_buffer_clear(state);
  if (state.view != nullptr) state.view->LogCleared();
}

void log_save(const action_param* action) {
  AppState& state = *action->app_state;
  if (state.log_buf == nullptr || state.view == nullptr) return;
  char path[MAX_PATH] = "*.txt";
  if (!state.view->AskLogFile(path)) return;
  TakeTextOfPane(state);
  log_append_to_file(action, path);
}

void log_append_to_file(const action_param* action, const char* path) {
  AppState& state = *action->app_state;
  if (state.log_buf == nullptr) return;
  std::string text;
  {
    const LockGuard lock(state.log_lock);
    text.assign(state.log_buf, TextLength(state));
  }
  const int error = WriteText(path, text);
  if (error != 0 && state.view != nullptr) state.view->LogNotSaved(path, error);
}

}  // namespace vt63x
