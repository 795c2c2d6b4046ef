// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_CARD_IDENTIFIER_H
#define VT63X_SIMULATOR_CARD_IDENTIFIER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vt63x {

inline constexpr std::uint8_t kCascadeTag = 0x88;

// What a card is known by: 4, 7 or 10 bytes. It reaches the reader in one, two or three cascade
// levels of four bytes, all but the last of which begin with the cascade tag.
class CardIdentifier {
 public:
  using Level = std::array<std::uint8_t, 4>;
  static constexpr std::size_t kMaxLevels = 3;

  // From 8, 14 or 20 hexadecimal digits. Nothing, and in `error` a line without full stop, for
  // any other text and for an identifier of one or two levels whose last one would begin with the
  // cascade tag and so look as if another one followed.
  static std::optional<CardIdentifier> Parse(std::string_view text, std::string& error);

  std::span<const std::uint8_t> bytes() const { return {bytes_.data(), size_}; }
  std::size_t LevelCount() const { return (size_ - 1) / 3; }
  // `level` is 0 to LevelCount() - 1.
  Level LevelBytes(std::size_t level) const;
  // Upper-case hexadecimal digits.
  std::string Text() const;

  bool operator==(const CardIdentifier&) const = default;

 private:
  std::array<std::uint8_t, 10> bytes_{};
  std::size_t size_ = 4;
};

// The check byte of a level.
constexpr std::uint8_t CheckByteOf(const CardIdentifier::Level& level) {
  return static_cast<std::uint8_t>(level[0] ^ level[1] ^ level[2] ^ level[3]);
}

// Upper-case hexadecimal digits, two a byte.
std::string HexText(std::span<const std::uint8_t> bytes);

}  // namespace vt63x

#endif
