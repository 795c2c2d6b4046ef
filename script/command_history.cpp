// SPDX-License-Identifier: MIT

#include "script/command_history.h"

#include <algorithm>
#include <cstdio>

namespace vt63x {
namespace {

// An index beyond the end, as 0 minus 1 is, goes to `wrapped`.
const char* Shown(AppState& state, std::uint32_t wrapped) {
  if (state.cmd_history.empty()) return nullptr;
  if (state.history_index >= state.cmd_history.size()) state.history_index = wrapped;
  return state.cmd_history[state.history_index].data();
}

std::uint32_t LastIndex(const AppState& state) {
  return static_cast<std::uint32_t>(state.cmd_history.size()) - 1;
}

}  // namespace

void HistoryStore(AppState& state, const char* line) {
  history_entry entry{};
  std::snprintf(entry.data(), entry.size(), "%s", line);
  auto& history = state.cmd_history;
  const auto equal = std::find(history.begin(), history.end(), entry);
  if (equal != history.end()) {
    history.erase(equal);
  } else if (history.size() == HISTORY_SIZE) {
    history.erase(history.begin());
  }
  history.push_back(entry);
  state.history_index = LastIndex(state);
}

const char* HistoryBack(AppState& state) {
  if (state.history_browse != 0) {
    --state.history_index;
  } else {
    ++state.history_browse;
  }
  return Shown(state, LastIndex(state));
}

const char* HistoryForward(AppState& state) {
  ++state.history_index;
  ++state.history_browse;
  return Shown(state, 0);
}

}  // namespace vt63x
