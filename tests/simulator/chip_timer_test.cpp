// SPDX-License-Identifier: MIT

#include "simulator/chip_timer.h"

#include <gtest/gtest.h>

#include "test_reader.h"

namespace vt63x {
namespace {

// A clock that the test sets.
class SetClock final : public ChipClock {
 public:
  std::int64_t AfterAccess(std::int64_t) override { return now_ns; }
  std::int64_t now_ns = 0;
};

class ChipTimerTest : public testing::Test {
 protected:
  ChipTimerTest() {
    chip.Write(0x14, 0x83);
    chip.Write(0x01, 0x00);
  }
  // A transmission; by default the timer takes 24 steps of 15 periods of 13.56 MHz.
  void Send(std::uint8_t timer_mode, std::uint8_t prescaler = 7, std::uint8_t reload_high = 0,
            std::uint8_t reload_low = 23) {
    chip.Write(0x2A, timer_mode);
    chip.Write(0x2B, prescaler);
    chip.Write(0x2C, reload_high);
    chip.Write(0x2D, reload_low);
    chip.Write(0x04, 0x7F);
    chip.Write(0x09, 0x26);
    chip.Write(0x01, 0x0C);
    chip.Write(0x0D, 0x87);
  }
  bool Expired() { return (chip.Read(0x04) & 0x01) != 0; }
  bool Running() { return (chip.Read(0x07) & 0x08) != 0; }
  std::uint8_t Counter() { return chip.Read(0x2F); }

  static constexpr std::int64_t kDurationNs = 26'548;  // and a bit
  static constexpr std::int64_t kStepNs = 1'107;
  SetClock clock;
  Chip chip{clock};
};

TEST_F(ChipTimerTest, ExpiresAfterReloadPlusOneStepsAndNotBefore) {
  Send(0x80);
  EXPECT_TRUE(Running());
  EXPECT_EQ(Counter(), 23);
  clock.now_ns = kStepNs;
  EXPECT_EQ(Counter(), 22);
  clock.now_ns = kDurationNs;
  EXPECT_EQ(Counter(), 0);
  EXPECT_FALSE(Expired());
  ++clock.now_ns;
  EXPECT_TRUE(Expired());
  EXPECT_FALSE(Running());
  chip.Write(0x04, 0x01);
  clock.now_ns += 10 * kDurationNs;
  EXPECT_FALSE(Expired());
}

TEST_F(ChipTimerTest, WithAutomaticRestartItExpiresAgain) {
  Send(0x90);
  for (int round = 0; round < 3; ++round) {
    clock.now_ns += kDurationNs + 1;
    EXPECT_TRUE(Expired());
    EXPECT_TRUE(Running());
    EXPECT_EQ(Counter(), 23);
    chip.Write(0x04, 0x01);
    EXPECT_FALSE(Expired());
  }
}

TEST_F(ChipTimerTest, WithoutAutomaticStartOrAfterAnAnswerItDoesNotRun) {
  for (const bool answered : {false, true}) {
    if (answered) chip.field().Add(CardNamed("01020304"));
    Send(answered ? 0x80 : 0x00);
    EXPECT_FALSE(Running());
    clock.now_ns += 10 * kDurationNs;
    EXPECT_FALSE(Expired());
  }
}

TEST_F(ChipTimerTest, LongestSettingIsCountedInFull) {
  Send(0x8F, 0xFF, 0xFF, 0xFF);
  EXPECT_EQ(chip.Read(0x2E), 0xFF);
  clock.now_ns = 39'587'417'109;  // 8191 * 65536 periods
  EXPECT_FALSE(Expired());
  ++clock.now_ns;
  EXPECT_TRUE(Expired());
}

// Time passes with the accesses: 100 ms at 9600 bps are about 48 reads.
TEST(LineTime, PollingEndsAfterWhatItWouldTakeOnTheLine) {
  ReaderBench bench;
  std::uint8_t address = 0x2A;
  for (const std::uint8_t value : Bytes{0x82, 0xA6, 0x03, 0xE8}) bench.chip.Write(address++, value);
  bench.reader.Load({});
  bench.chip.Write(0x01, 0x08);
  int polls = 0;
  while ((bench.chip.Read(0x04) & 0x21) == 0 && polls < 1000) ++polls;
  EXPECT_GE(polls, 46);
  EXPECT_LE(polls, 49);
}

}  // namespace
}  // namespace vt63x
