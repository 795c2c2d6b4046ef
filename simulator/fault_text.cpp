// SPDX-License-Identifier: MIT

#include "simulator/fault_text.h"

#include <charconv>

namespace vt63x {

bool ParseFaultRange(std::optional<std::string_view> text, std::string_view event,
                     FaultRange& range, std::string& error) {
  if (!text) return true;
  const std::optional<std::string_view> count_text = CutAt(*text, '+');
  const std::string name(event);
  const auto first = ParseNumber(*text, 1, FaultRange::kAll);
  if (!first) {
    error = "the first " + name + " concerned is " + Quoted(*text) + ", not a number from 1 up";
    return false;
  }
  range.first = *first;
  if (!count_text) return true;
  const auto count = ParseNumber(*count_text, 1, FaultRange::kAll);
  if (!count) {
    error = "the count is " + Quoted(*count_text) + ", not a number from 1 up";
    return false;
  }
  range.count = *count;
  return true;
}

std::optional<std::uint64_t> ParseNumber(std::string_view text, std::uint64_t low,
                                         std::uint64_t high) {
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, code] = std::from_chars(text.data(), end, number);
  if (code != std::errc{} || stop != end || number < low || number > high) return std::nullopt;
  return number;
}

std::optional<std::string_view> CutAt(std::string_view& text, char mark) {
  const std::size_t position = text.find(mark);
  if (position == std::string_view::npos) return std::nullopt;
  const std::string_view rest = text.substr(position + 1);
  text = text.substr(0, position);
  return rest;
}

std::string Quoted(std::string_view text) { return std::string(1, '\'').append(text) += '\''; }

}  // namespace vt63x
