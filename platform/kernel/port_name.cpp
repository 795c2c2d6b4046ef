// SPDX-License-Identifier: MIT

#include "platform/kernel/port_name.h"

#include <strings.h>

namespace vt63x::kernel {
namespace {

constexpr std::string_view kPrefix = "COM";
constexpr std::string_view kDevicePrefix = R"(\\.\)";
constexpr int kPorts = 16;

}  // namespace

int PortNumber(std::string_view name) {
  if (name.starts_with(kDevicePrefix)) {
    name.remove_prefix(kDevicePrefix.size());
  } else if (name.ends_with(':')) {
    name.remove_suffix(1);
  }
  for (int number = 1; number <= kPorts; ++number) {
    const std::string known = std::string(kPrefix) + std::to_string(number);
    if (name.size() == known.size() && strncasecmp(name.data(), known.data(), name.size()) == 0) {
      return number;
    }
  }
  return 0;
}

std::string PortVariable(int number) { return "VT63X_COM" + std::to_string(number); }

std::string PortDevice(int number, const char* variable) {
  if (variable != nullptr && *variable != '\0') return variable;
  return "/dev/ttyS" + std::to_string(number - 1);
}

}  // namespace vt63x::kernel
