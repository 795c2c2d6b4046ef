// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_ACCESS_CONDITIONS_H
#define VT63X_SIMULATOR_ACCESS_CONDITIONS_H

// Who may do what with the blocks of a card's sector. Each of its four blocks has three condition
// bits C1, C2, C3, kept twice in the sector's trailer, as they are and inverted:
//
//             bits 7 to 4                 bits 3 to 0
//   byte 6    inverted C2                 inverted C1       bit 3 (7) belongs to the trailer,
//   byte 7    C1                          inverted C3       bit 0 (4) to the first block
//   byte 8    C3                          C2
//
// The trailer itself is key A in bytes 0 to 5, these three bytes, a byte for anything, and key B
// in bytes 10 to 15. Pure functions.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace vt63x {

inline constexpr std::size_t kBlockSize = 16;
inline constexpr unsigned kBlocksPerSector = 4;
using BlockView = std::span<const std::uint8_t, kBlockSize>;

// Which keys open something: a sum of these.
using KeySet = std::uint8_t;
inline constexpr KeySet kNever = 0;
inline constexpr KeySet kKeyA = 1;
inline constexpr KeySet kKeyB = 2;
inline constexpr KeySet kEither = kKeyA | kKeyB;

struct DataConditions {
  KeySet read, write, increment, decrement;  // decrement also stands for restore and transfer
};

// Key A is never read.
struct TrailerConditions {
  KeySet key_a_write, bits_read, bits_write, key_b_read, key_b_write;
};

// 4 * C1 + 2 * C2 + C3 of block 0 to 3 of the sector, or nothing when the two copies of any bit of
// the sector disagree.
std::optional<unsigned> ConditionOf(BlockView trailer, unsigned block);

// `condition` is 0 to 7.
const DataConditions& DataConditionsOf(unsigned condition);
const TrailerConditions& TrailerConditionsOf(unsigned condition);

}  // namespace vt63x

#endif
