// SPDX-License-Identifier: MIT

#include "simulator/card_identifier.h"

#include <algorithm>
#include <charconv>

namespace vt63x {

std::optional<CardIdentifier> CardIdentifier::Parse(std::string_view text, std::string& error) {
  const std::string quoted = "'" + std::string(text) + "'";
  if (text.find_first_not_of("0123456789ABCDEFabcdef") != std::string_view::npos) {
    error = "the identifier " + quoted + " is not made of hexadecimal digits";
    return std::nullopt;
  }
  if (text.size() != 8 && text.size() != 14 && text.size() != 20) {
    error = "the identifier " + quoted + " has " + std::to_string(text.size()) +
            " digits, not 8, 14 or 20";
    return std::nullopt;
  }
  CardIdentifier identifier;
  identifier.size_ = text.size() / 2;
  for (std::size_t index = 0; index < identifier.size_; ++index) {
    const char* const pair = text.data() + 2 * index;
    std::from_chars(pair, pair + 2, identifier.bytes_[index], 16);
  }
  const std::size_t levels = identifier.LevelCount();
  if (levels < kMaxLevels && identifier.LevelBytes(levels - 1)[0] == kCascadeTag) {
    error = "the last four bytes of the identifier " + quoted + " begin with the cascade tag 88";
    return std::nullopt;
  }
  return identifier;
}

CardIdentifier::Level CardIdentifier::LevelBytes(std::size_t level) const {
  const std::uint8_t* const part = bytes_.data() + 3 * level;
  if (level + 1 == LevelCount()) return {part[0], part[1], part[2], part[3]};
  return {kCascadeTag, part[0], part[1], part[2]};
}

std::string CardIdentifier::Text() const { return HexText(bytes()); }

std::string HexText(std::span<const std::uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0F];
  }
  return text;
}

}  // namespace vt63x
