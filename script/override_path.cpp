// SPDX-License-Identifier: MIT

// Which part of a command file's path the user names.

#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>

#include "script/runner.h"

namespace vt63x {
namespace {

struct path_parts {
  std::string_view folder;  // with drive and final separator
  std::string_view base;
  std::string_view extension;  // with its full stop
};

path_parts Split(std::string_view path) {
  const bool drives = std::filesystem::path::preferred_separator != '/';
  const std::size_t separator = path.find_last_of(drives ? "/\\:" : "/");
  const std::size_t name = separator == std::string_view::npos ? 0 : separator + 1;
  std::size_t stop = path.rfind('.');
  if (stop == std::string_view::npos || stop < name) stop = path.size();
  return {path.substr(0, name), path.substr(name, stop - name), path.substr(stop)};
}

}  // namespace

bool OverridePath(char (&path)[MAX_PATH], const char* base_name) {
  const path_parts parts = Split(path);
  std::string changed(parts.folder);
  changed += base_name;
  changed += parts.extension;
  if (changed.size() >= sizeof path) return false;
  std::memcpy(path, changed.c_str(), changed.size() + 1);
  return true;
}

std::string PathBaseName(const char* path) { return std::string(Split(path).base); }

}  // namespace vt63x
