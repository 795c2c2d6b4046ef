// SPDX-License-Identifier: MIT

#include "shell/configuration_file.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>

namespace vt63x {
namespace {

constexpr char kFileName[] = "wps_start.cfg";
constexpr std::uint8_t kLargestIndexRead = 8;

}  // namespace

void BuildConfigPath(AppState& state) {
  char directory[MAX_PATH];
  const DWORD length = GetCurrentDirectoryA(sizeof directory, directory);
  state.config_path[0] = '\0';
  if (length == 0 || length >= sizeof directory) return;
  const std::string path = std::string(directory) +
                           static_cast<char>(std::filesystem::path::preferred_separator) +
                           kFileName;
  if (path.size() < sizeof state.config_path) path.copy(state.config_path, path.size());
}

void ReadConfiguration(AppState& state) {
  std::FILE* const file = std::fopen(kFileName, "r");
  state.port_index = 0;
  if (file == nullptr) return;
  const int character = std::fgetc(file);
  std::fclose(file);
  state.port_index = std::min(static_cast<std::uint8_t>(character - '0'), kLargestIndexRead);
}

void WriteConfiguration(const AppState& state) {
  const char* const path = state.config_path[0] == '\0' ? kFileName : state.config_path;
  std::FILE* const file = std::fopen(path, "w");
  if (file == nullptr) return;
  std::fprintf(file, "%u", static_cast<unsigned>(state.port_index));
  std::fclose(file);
}

}  // namespace vt63x
