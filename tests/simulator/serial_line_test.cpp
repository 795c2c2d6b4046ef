// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <tuple>

#include "simulator/line_pace.h"
#include "simulator/serial_speed.h"
#include "simulator/uart.h"

namespace vt63x {
namespace {

constexpr std::optional<std::uint8_t> kNothing;

TEST(SerialSpeed, EveryCodeIsNearItsNominalRate) {
  struct SpeedCode {
    std::uint8_t code;
    std::uint32_t nominal;
  };
  for (const auto& [code, nominal] : {SpeedCode{0xEB, 9600},
                                      {0xCB, 19200},
                                      {0xAB, 38400},
                                      {0x9A, 57600},
                                      {0x79, 115200},
                                      {0x5A, 230400},
                                      {0x3A, 460800},
                                      {0x1C, 921600},
                                      {0x14, 1288000}}) {
    EXPECT_TRUE(RatesMatch(BitRateOf(code), nominal)) << nominal;
  }
}

TEST(SerialSpeed, EveryRegisterValueGivesARate) {
  EXPECT_EQ(BitRateOf(0x00), 27'120'000u);
  EXPECT_EQ(BitRateOf(0x1F), 847'500u);  // 27.12 MHz / 32
  EXPECT_EQ(BitRateOf(0x20), 821'818u);  // 27.12 MHz / 33
  EXPECT_EQ(BitRateOf(0xFF), 6621u);     // 27.12 MHz / (64 * 64)
}

TEST(SerialSpeed, RatesMatchUpToThreePercentInEitherDirection) {
  EXPECT_TRUE(RatesMatch(10'000, 10'300));
  EXPECT_FALSE(RatesMatch(10'000, 10'301));
  EXPECT_TRUE(RatesMatch(10'300, 10'000));
  EXPECT_FALSE(RatesMatch(10'301, 10'000));
  EXPECT_FALSE(RatesMatch(0, 0));
  EXPECT_TRUE(RatesMatch(0xFFFFFFFF, 0xFFFFFFFF));
}

TEST(Uart, ByteCrossesIntactWithinTheTolerance) {
  for (const std::uint32_t receiver : {9600u, 9888u, 9320u, 9900u, 9300u}) {
    for (unsigned byte = 0; byte < 256; ++byte) {
      const auto sent = static_cast<std::uint8_t>(byte);
      EXPECT_EQ(HearByte(sent, 9600, receiver), sent) << receiver;
    }
  }
}

TEST(Uart, ByteBetweenDifferentRatesIsWhatTheSamplesShow) {
  using Case = std::tuple<std::uint8_t, std::uint32_t, std::uint32_t, std::optional<std::uint8_t>>;
  for (const auto& [sent, sender, receiver, heard] : {
           // Twelve times faster than the receiver: its start bit falls on data bit 5, the rest on
           // idle line.
           Case{0xDF, 115200, 9600, 0xFF},
           Case{0x20, 115200, 9600, kNothing},
           // Twelve times slower: the whole frame falls into the start bit, stop bit included.
           Case{0xFF, 9600, 115200, kNothing},
           Case{0x00, 9600, 115200, kNothing},
           // Twice as fast: the samples fall on line bits 1, 3, 5, 7, then 9 and beyond. 0x55 is
           // high in line bits 1, 3, 5, 7: no start bit; 0xAA is low there.
           Case{0x55, 115200, 57600, kNothing},
           Case{0xAA, 115200, 57600, 0xF8},
           // Half as fast: the samples fall on line bits 0, 0, 1, 1, 2, 2, 3, 3, 4, 4.
           Case{0x0A, 57600, 115200, 0x98},
           Case{0x0F, 57600, 115200, 0xFE},
       }) {
    EXPECT_EQ(HearByte(sent, sender, receiver), heard)
        << int{sent} << " from " << sender << " to " << receiver;
  }
}

TEST(Uart, LineThatIsSwitchedOffCarriesNothing) {
  EXPECT_EQ(HearByte(0x55, 0, 9600), kNothing);
  EXPECT_EQ(HearByte(0x55, 9600, 0), kNothing);
  EXPECT_EQ(HearByte(0x00, 0xFFFFFFFF, 1), kNothing);  // idle line long before the first sample
  EXPECT_EQ(HearByte(0x00, 1, 0xFFFFFFFF), kNothing);
}

constexpr std::int64_t kMs = 1'000'000;

TEST(LinePace, BytesOfOneDirectionFollowEachOtherAndDirectionsOverlap) {
  LinePace pace(true);
  EXPECT_EQ(pace.CompleteAt(7, 0), 7);  // switched off, which does not stop the clock
  EXPECT_EQ(pace.CompleteAt(100 * kMs, 10'000), 101 * kMs);
  EXPECT_EQ(pace.CompleteAt(100 * kMs, 10'000), 102 * kMs);  // handed over at once
  EXPECT_EQ(pace.CompleteAt(105 * kMs, 10'000), 106 * kMs);  // after a pause
  EXPECT_EQ(pace.DeliverAt(101 * kMs, 5'000, 0), 103 * kMs);
  EXPECT_EQ(pace.DeliverAt(102 * kMs, 5'000, 0), 105 * kMs);
  EXPECT_EQ(pace.DeliverAt(106 * kMs, 5'000, 10), 118 * kMs);
}

TEST(LinePace, WithoutPaceOnlyDelaysTakeTimeAndAnswersKeepTheirOrder) {
  LinePace pace(false);
  EXPECT_EQ(pace.CompleteAt(100, 9600), 100);
  EXPECT_EQ(pace.DeliverAt(100, 9600, 0), 100);
  EXPECT_EQ(pace.DeliverAt(100, 9600, 3), 100 + 3 * kMs);
  EXPECT_EQ(pace.DeliverAt(200, 9600, 0), 100 + 3 * kMs);
}

}  // namespace
}  // namespace vt63x
