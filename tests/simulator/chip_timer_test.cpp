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
  // A transmission; the timer takes 24 steps of 15 periods of 13.56 MHz.
  void Send(const std::string& timer = "2A=80 2B=07 2C=00 2D=17") {
    Play(chip, "14=83 01=00 " + timer + " 04=7F 09=26 01=0C 0D=87");
  }

  static constexpr std::int64_t kDurationNs = 26'548;  // and a bit
  static constexpr std::int64_t kStepNs = 1'107;
  SetClock clock;
  Chip chip{clock};
};

// 04 shows whether it has expired, 07 whether it runs, 2F the counter.
TEST_F(ChipTimerTest, ExpiresAfterReloadPlusOneStepsAndNotBefore) {
  Send();
  Play(chip, "07?08/08 2F?17");
  clock.now_ns = kStepNs;
  Play(chip, "2F?16");
  clock.now_ns = kDurationNs;
  Play(chip, "2F?00 04?00/01");
  ++clock.now_ns;
  Play(chip, "04?01/01 07?00/08 04=01");
  clock.now_ns += 10 * kDurationNs;
  Play(chip, "04?00/01");
}

TEST_F(ChipTimerTest, WithAutomaticRestartItExpiresAgain) {
  Send("2A=90 2B=07 2C=00 2D=17");
  for (int round = 0; round < 3; ++round) {
    clock.now_ns += kDurationNs + 1;
    Play(chip, "04?01/01 07?08/08 2F?17 04=01 04?00/01");
  }
}

TEST_F(ChipTimerTest, WithoutAutomaticStartOrAfterAnAnswerItDoesNotRun) {
  for (const bool answered : {false, true}) {
    if (answered) chip.field().Add(CardNamed("01020304"));
    Send(answered ? "2A=80 2B=07 2C=00 2D=17" : "2A=00 2B=07 2C=00 2D=17");
    Play(chip, "07?00/08");
    clock.now_ns += 10 * kDurationNs;
    Play(chip, "04?00/01");
  }
}

TEST_F(ChipTimerTest, LongestSettingIsCountedInFull) {
  Send("2A=8F 2B=FF 2C=FF 2D=FF");
  Play(chip, "2E?FF");
  clock.now_ns = 39'587'417'109;  // 8191 * 65536 periods
  Play(chip, "04?00/01");
  ++clock.now_ns;
  Play(chip, "04?01/01");
}

// Time passes with the accesses: 100 ms at 9600 bps are about 48 reads.
TEST(LineTime, PollingEndsAfterWhatItWouldTakeOnTheLine) {
  ReaderBench bench;
  Play(bench.chip, "2A=82 2B=A6 2C=03 2D=E8 04=7F 0A=80 01=08");
  int polls = 0;
  while ((bench.chip.Read(0x04) & 0x21) == 0 && polls < 1000) ++polls;
  EXPECT_GE(polls, 46);
  EXPECT_LE(polls, 49);
}

}  // namespace
}  // namespace vt63x
