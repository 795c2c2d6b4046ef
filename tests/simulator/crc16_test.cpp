// SPDX-License-Identifier: MIT

#include "simulator/crc16.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "simulator/air_frame.h"

namespace vt63x {
namespace {

// ISO/IEC 14443-3, Annex B: the CRC behind the data, as sent.
TEST(CrcA, MatchesTheExamplesOfTheStandard) {
  const std::uint8_t zeros[] = {0x00, 0x00, 0xA0, 0x1E};
  const std::uint8_t mixed[] = {0x12, 0x34, 0x26, 0xCF};
  for (const auto& sent : {std::span(zeros), std::span(mixed)}) {
    const AirFrame frame = AirFrame::WithCrcA(sent.first(2));
    EXPECT_TRUE(std::ranges::equal(frame.Bytes(), sent));
  }
}

TEST(CrcA, DamageInAnyBitBreaksIt) {
  const std::uint8_t data[] = {0x30, 0x04};
  AirFrame frame = AirFrame::WithCrcA(data);
  for (std::size_t bit = 0; bit < frame.bit_count; ++bit) {
    const auto mask = static_cast<std::uint8_t>(1U << bit % 8);
    frame.bytes[bit / 8] ^= mask;
    EXPECT_FALSE(frame.EndsWithCrcA()) << bit;
    frame.bytes[bit / 8] ^= mask;
  }
  EXPECT_TRUE(frame.EndsWithCrcA());
  frame.Truncate(frame.bit_count - 1);
  EXPECT_FALSE(frame.EndsWithCrcA());
  EXPECT_FALSE(AirFrame{}.EndsWithCrcA());
}

TEST(AirFrame, TooManyBytesAreLeftOut) {
  const AirFrame frame = AirFrame::OfBytes(std::vector<std::uint8_t>(100, 0xFF));
  EXPECT_EQ(frame.bit_count, AirFrame::kMaxBytes * 8);
}

}  // namespace
}  // namespace vt63x
