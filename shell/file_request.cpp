// SPDX-License-Identifier: MIT

#include "shell/file_request.h"

#include <string>

namespace vt63x {
namespace {

// Description and pattern, each with a terminator, and another one at the end.
std::string FilterOf(const char* description, const char* pattern) {
  std::string filter(description);
  filter += '\0';
  filter += pattern;
  filter += '\0';
  return filter;
}

OPENFILENAMEA RequestFor(const AppState& state, const std::string& filter, char (&path)[MAX_PATH]) {
  OPENFILENAMEA ofn{};
  ofn.lStructSize = sizeof ofn;
  ofn.hwndOwner = state.main_wnd;
  ofn.hInstance = state.instance;
  ofn.lpstrFilter = filter.c_str();
  ofn.lpstrFile = path;
  ofn.nMaxFile = sizeof path;
  ofn.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST;
  return ofn;
}

}  // namespace

bool AskFileToOpen(const AppState& state, const char* description, const char* pattern,
                   char (&path)[MAX_PATH]) {
  const std::string filter = FilterOf(description, pattern);
  OPENFILENAMEA ofn = RequestFor(state, filter, path);
  return GetOpenFileNameA(&ofn) != FALSE;
}

bool AskFileToSave(const AppState& state, const char* description, const char* pattern,
                   char (&path)[MAX_PATH]) {
  const std::string filter = FilterOf(description, pattern);
  OPENFILENAMEA ofn = RequestFor(state, filter, path);
  return GetSaveFileNameA(&ofn) != FALSE;
}

}  // namespace vt63x
