// SPDX-License-Identifier: MIT

#include "simulator/value_block.h"

#include <gtest/gtest.h>

#include <tuple>

#include "block_card_fixture.h"

namespace vt63x {
namespace {

class NumberTest : public BlockCardTest {
 protected:
  // Block 4 holds the number, with 0x11 for its address; a session is open.
  void Hold(std::int32_t value) {
    ASSERT_TRUE(Open(4));
    const auto block = PackValue({value, 0x11});
    ASSERT_TRUE(Write(4, {block.begin(), block.end()}));
  }
  // Both steps; the answer of the second.
  ReaderAnswer Step(std::uint8_t command, const Bytes& amount) {
    EXPECT_TRUE(Send({command, 4}).IsNibble(0xA));
    return Send(amount);
  }
  std::int32_t ValueAt(std::uint8_t block) {
    const Bytes stored = Stored(block);
    const auto value = UnpackValue(BlockView(stored.data(), 16));
    EXPECT_TRUE(value && value->address == 0x11);
    return value ? value->value : 0;
  }
};

TEST_F(NumberTest, ArithmeticIsSilentAndTakesEffectWithTheTransfer) {
  // `result`: none: does not fit
  using Case = std::tuple<std::int32_t, std::uint8_t, Bytes, std::optional<std::int32_t>>;
  constexpr std::int32_t kMin = -0x7FFFFFFF - 1;
  for (const auto& [start, command, amount, result] : {
           Case{100, 0xC0, {0x00, 0x01, 0, 0}, -156},
           Case{-5, 0xC2, {9, 9, 9, 9}, -5},
           Case{0x7FFFFFFE, 0xC1, {1, 0, 0, 0}, 0x7FFFFFFF},
           Case{0x7FFFFFFF, 0xC1, {1, 0, 0, 0}, std::nullopt},
           Case{-0x7FFFFFFF, 0xC0, {1, 0, 0, 0}, kMin},
           Case{kMin, 0xC0, {1, 0, 0, 0}, std::nullopt},
           Case{kMin, 0xC1, {0xFF, 0xFF, 0xFF, 0xFF}, 0x7FFFFFFF},
       }) {
    Hold(start);
    const ReaderAnswer answer = Step(command, amount);
    EXPECT_TRUE(result ? answer.timeout : answer.IsNibble(0x4));
    EXPECT_EQ(ValueAt(4), start);
    if (!result) continue;
    EXPECT_TRUE(Send({0xB0, 6}).IsNibble(0xA));
    EXPECT_EQ(ValueAt(6), result);
    EXPECT_EQ(ValueAt(4), start);
  }
}

TEST_F(NumberTest, LoadedNumberDoesNotOutliveTheSelection) {
  Hold(100);
  EXPECT_TRUE(Step(0xC1, {1, 0, 0, 0}).timeout);
  ASSERT_TRUE(Open(4));
  EXPECT_TRUE(Send({0xB0, 4}).IsNibble(0x4));
  EXPECT_EQ(ValueAt(4), 100);
}

TEST_F(NumberTest, AnyBitThatDisagreesMakesABlockNoNumber) {
  auto block = PackValue({0x12345678, 0x11});
  EXPECT_TRUE(UnpackValue(block));
  for (unsigned bit = 0; bit < 128; ++bit) {
    const auto mask = static_cast<std::uint8_t>(1U << bit % 8);
    block[bit / 8] ^= mask;
    EXPECT_FALSE(UnpackValue(block)) << bit;
    block[bit / 8] ^= mask;
  }
}

}  // namespace
}  // namespace vt63x
