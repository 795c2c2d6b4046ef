// SPDX-License-Identifier: MIT

#include "cli/port_choice.h"

#include <cctype>
#include <charconv>
#include <filesystem>

namespace vt63x {
namespace {

bool StartsWithCom(std::string_view name) {
  constexpr std::string_view kPrefix = "COM";
  if (name.size() < kPrefix.size()) return false;
  for (std::size_t i = 0; i < kPrefix.size(); ++i) {
    if (std::toupper(static_cast<unsigned char>(name[i])) != kPrefix[i]) return false;
  }
  return true;
}

}  // namespace

std::optional<std::uint8_t> ComPortIndex(std::string_view name) {
  if (!StartsWithCom(name)) return {};
  name.remove_prefix(3);
  if (name.ends_with(':')) name.remove_suffix(1);
  std::uint8_t number = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
  if (error != std::errc{} || end != name.data() + name.size()) return {};
  if (number < 1 || number > 16) return {};
  return static_cast<std::uint8_t>(number - 1);
}

bool IsPortName(std::string_view name) {
  constexpr bool kDevicesArePaths = std::filesystem::path::preferred_separator == '/';
  return ComPortIndex(name).has_value() ||
         (kDevicesArePaths && name.find('/') != std::string_view::npos);
}

}  // namespace vt63x
