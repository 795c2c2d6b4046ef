// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_FAULT_TEXT_H
#define VT63X_SIMULATOR_FAULT_TEXT_H

// What the texts of options have in common.

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace vt63x {

// A run of events, each known by its number, counted from 1.
struct FaultRange {
  static constexpr std::uint64_t kAll = std::numeric_limits<std::uint64_t>::max();

  std::uint64_t first = 1;
  std::uint64_t count = kAll;

  bool Concerns(std::uint64_t event) const { return event >= first && event - first < count; }
};

// FIRST[+COUNT], both at least 1; no text at all is every event. `event` names one event in the
// line for the user, without full stop, that goes into `error` when there is something else.
bool ParseFaultRange(std::optional<std::string_view> text, std::string_view event,
                     FaultRange& range, std::string& error);

// Decimal digits and nothing else, within [low, high].
std::optional<std::uint64_t> ParseNumber(std::string_view text, std::uint64_t low,
                                         std::uint64_t high);

// Cuts `text` at the first `mark`: what follows it, or nothing when there is no mark.
std::optional<std::string_view> CutAt(std::string_view& text, char mark);

std::string Quoted(std::string_view text);

}  // namespace vt63x

#endif
