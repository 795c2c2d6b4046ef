#include "simulator/crc16.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

#include "simulator/air_frame.h"

namespace vt63x {
namespace {

// ISO/IEC 14443-3, Annex B: the CRC behind the data, as sent.
TEST(Crc16, MatchesTheExamplesOfTheStandard) {
  const std::uint8_t zeros[] = {0x00, 0x00, 0xA0, 0x1E};
  const std::uint8_t mixed[] = {0x12, 0x34, 0x26, 0xCF};
  for (const auto& sent : {std::span(zeros), std::span(mixed)}) {
    const AirFrame frame = AirFrame::WithCrcA(sent.first(2));
    EXPECT_TRUE(std::ranges::equal(frame.Bytes(), sent));
    EXPECT_TRUE(AirFrame::OfBytes(sent).EndsWithCrcA());
  }
}

// The published check values of the usual check sums with this polynomial.
TEST(Crc16, MatchesPublishedCheckValues) {
  constexpr std::string_view kDigits = "123456789";
  const std::vector<std::uint8_t> data(kDigits.begin(), kDigits.end());
  EXPECT_EQ(Crc16(data, 0x6363, BitOrder::kLowestFirst), 0xBF05);
  EXPECT_EQ(Crc16(data, 0xFFFF, BitOrder::kLowestFirst), 0x6F91);
  EXPECT_EQ(Crc16(data, 0x0000, BitOrder::kLowestFirst), 0x2189);
  EXPECT_EQ(Crc16(data, 0xFFFF, BitOrder::kHighestFirst), 0x29B1);
  EXPECT_EQ(Crc16(data, 0x0000, BitOrder::kHighestFirst), 0x31C3);
}

TEST(AirFrame, DamageInAnyBitBreaksTheCrc) {
  const std::uint8_t data[] = {0x30, 0x04};
  const AirFrame intact = AirFrame::WithCrcA(data);
  for (std::size_t bit = 0; bit < intact.bit_count; ++bit) {
    AirFrame damaged = intact;
    damaged.bytes[bit / 8] = static_cast<std::uint8_t>(damaged.bytes[bit / 8] ^ (1U << bit % 8));
    EXPECT_FALSE(damaged.EndsWithCrcA()) << bit;
  }
  AirFrame cut = intact;
  cut.Truncate(intact.bit_count - 1);
  EXPECT_FALSE(cut.EndsWithCrcA());
  EXPECT_FALSE(AirFrame{}.EndsWithCrcA());
}

TEST(AirFrame, TooManyBytesAreLeftOut) {
  const AirFrame frame = AirFrame::OfBytes(std::vector<std::uint8_t>(100, 0xFF));
  EXPECT_EQ(frame.ByteCount(), AirFrame::kMaxBytes);
  EXPECT_EQ(frame.bit_count, AirFrame::kMaxBytes * 8);
}

}  // namespace
}  // namespace vt63x
