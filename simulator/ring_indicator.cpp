// SPDX-License-Identifier: MIT

#include "simulator/ring_indicator.h"

#include <charconv>
#include <sstream>

namespace vt63x {
namespace {

constexpr char kUsage[] = "error: ring on, ring off, or ring pulse and 1 to 60000 milliseconds\n";

}  // namespace

bool IsRingCommand(std::string_view line) {
  std::string word;
  std::istringstream(std::string(line)) >> word;
  return word == "ring";
}

std::string RunRingCommand(RingIndicator* ring, std::string_view line) {
  std::istringstream words{std::string(line)};
  std::string name, action, length, more;
  words >> name >> action >> length >> more;
  std::uint32_t milliseconds = 0;
  const char* const end = length.data() + length.size();
  const auto [stop, code] = std::from_chars(length.data(), end, milliseconds);
  const bool is_length = code == std::errc{} && stop == end && milliseconds >= 1 &&
                         milliseconds <= RingIndicator::kMaxPulseMs;
  const bool is_level = (action == "on" || action == "off") && length.empty();
  const bool is_pulse = action == "pulse" && is_length && more.empty();
  if (!is_level && !is_pulse) return kUsage;
  if (ring == nullptr) return "error: this line has no ring indicator, one with --rfc2217 has\n";
  if (is_pulse) {
    ring->PulseRing(milliseconds);
  } else {
    ring->SetRing(action == "on");
  }
  return "ok\n";
}

}  // namespace vt63x
