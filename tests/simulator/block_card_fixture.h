// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_SIMULATOR_BLOCK_CARD_FIXTURE_H
#define VT63X_TESTS_SIMULATOR_BLOCK_CARD_FIXTURE_H

#include <gtest/gtest.h>

#include <array>

#include "simulator/block_card.h"
#include "test_reader.h"

namespace vt63x {

inline constexpr Key kOtherKey = {0xB0, 0xB1, 0xB2, 0xB3, 0xB4, 0xB5};

// A block card alone in the field, and what a reader does with it.
class BlockCardTest : public testing::Test, protected ReaderBench {
 protected:
  explicit BlockCardTest(const char* name = "01020304")
      : ReaderBench({name}), card(static_cast<BlockCard*>(field.cards()[0].get())) {}

  // From anywhere: selected, and the key accepted.
  bool Open(std::uint8_t block, const Key& key = kKey, std::uint8_t command = 0x60) {
    const auto levels = reader.Activate(0x52);
    const auto again = levels ? levels : reader.Activate(0x52);  // the first one was unexpected
    return again && reader.Authenticate(command, block, key, *again);
  }
  ReaderAnswer Send(const Bytes& bytes) { return reader.Transceive(bytes); }
  bool Write(std::uint8_t block, const Bytes& content) {
    return Send({0xA0, block}).IsNibble(0xA) && Send(content).IsNibble(0xA);
  }
  Bytes Stored(std::size_t block) const {
    const auto bytes = card->memory().subspan(16 * block, 16);
    return {bytes.begin(), bytes.end()};
  }
  // The three condition bits of the four blocks of a sector, as its trailer holds them.
  static Bytes Trailer(const std::array<unsigned, 4>& conditions) {
    unsigned c1 = 0, c2 = 0, c3 = 0;
    for (unsigned block = 0; block < 4; ++block) {
      c1 |= (conditions[block] >> 2 & 1) << block;
      c2 |= (conditions[block] >> 1 & 1) << block;
      c3 |= (conditions[block] & 1) << block;
    }
    Bytes trailer(kKey.begin(), kKey.end());
    for (const unsigned byte : {(~c2 & 15) << 4 | (~c1 & 15), c1 << 4 | (~c3 & 15), c3 << 4 | c2}) {
      trailer.push_back(static_cast<std::uint8_t>(byte));
    }
    trailer.push_back(0x69);
    trailer.insert(trailer.end(), kOtherKey.begin(), kOtherKey.end());
    return trailer;
  }

  BlockCard* card;
  const Bytes data = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
};

}  // namespace vt63x

#endif
