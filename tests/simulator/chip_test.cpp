// SPDX-License-Identifier: MIT

// The chip's registers, its FIFO and its interrupt requests.

#include "simulator/chip.h"

#include <gtest/gtest.h>

#include <vector>

#include "simulator/serial_speed.h"

namespace vt63x {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(Chip, StartsAt9600BpsWithAVersionThatTakesWritesAndKeepsItsValue) {
  Chip chip;
  EXPECT_TRUE(RatesMatch(chip.SerialRate(), 9600));
  chip.Write(0x37, 0x55);
  EXPECT_EQ(chip.Read(0x37), 0x91);
  chip.Preset(0x37, 0x92);
  EXPECT_EQ(chip.Read(0x37), 0x92);
}

TEST(Chip, NothingLiesBehindTheLastRegister) {
  Chip chip;
  chip.Write(0x3F, 0xA5);
  for (unsigned address = 0x40; address < 0x100; ++address) {
    const auto behind = static_cast<std::uint8_t>(address);
    chip.Write(behind, 0xFF);
    chip.Preset(behind, 0xFF);
    EXPECT_EQ(chip.Read(behind), 0) << address;
  }
  EXPECT_EQ(chip.Read(0x3F), 0xA5);
  EXPECT_EQ(chip.Read(0x00), 0);
}

TEST(ChipFifo, HoldsSixtyFourBytesAndReportsTheNext) {
  Chip chip;
  for (unsigned byte = 0; byte < 64; ++byte) {
    chip.Write(0x09, static_cast<std::uint8_t>(byte + 1));
    ASSERT_EQ(chip.Read(0x0A), byte + 1);
  }
  EXPECT_EQ(chip.Read(0x06), 0);
  chip.Write(0x09, 0xFF);
  EXPECT_EQ(chip.Read(0x06), 0x10);
  EXPECT_NE(chip.Read(0x04) & 0x02, 0);
  EXPECT_EQ(chip.Read(0x0A), 64);
  for (unsigned byte = 0; byte < 64; ++byte) ASSERT_EQ(chip.Read(0x09), byte + 1);
  EXPECT_EQ(chip.Read(0x09), 0);  // empty
  EXPECT_EQ(chip.Read(0x0A), 0);
  chip.Write(0x09, 0x01);
  chip.Write(0x0A, 0x7F);
  EXPECT_EQ(chip.Read(0x06), 0x10);  // that was no flush
  chip.Write(0x0A, 0x80);
  EXPECT_EQ(chip.Read(0x06), 0);
  EXPECT_EQ(chip.Read(0x0A), 0);
}

TEST(ChipFifo, AlertsFollowTheWaterLevelAndAreRequestedOnce) {
  Chip chip;
  chip.Write(0x0B, 3);
  struct Step {
    int added;
    std::uint8_t alerts, high_request;
  };
  for (const Step& step : {Step{3, 1, 0}, {1, 0, 0}, {56, 0, 0}, {1, 2, 8}}) {
    for (int count = 0; count < step.added; ++count) chip.Write(0x09, 0);
    EXPECT_EQ(chip.Read(0x07) & 0x03, step.alerts) << step.added;
    EXPECT_EQ(chip.Read(0x04) & 0x08, step.high_request) << step.added;
  }
  chip.Write(0x04, 0x0C);
  chip.Write(0x09, 0);
  EXPECT_EQ(chip.Read(0x04) & 0x0C, 0x00);  // the alert was there before
  chip.Write(0x0A, 0x80);
  EXPECT_EQ(chip.Read(0x04) & 0x0C, 0x04);
}

struct WriteAndRead {
  std::uint8_t written, read;
};

TEST(ChipRequests, WritesSetOrClearTheMarkedBitsAlone) {
  for (const std::uint8_t address : Bytes{0x04, 0x05}) {
    Chip chip;
    for (const auto& [written, read] :
         {WriteAndRead{0x7F, 0x00}, {0x80 | 0x35, 0x35}, {0x80 | 0x02, 0x37}, {0x21, 0x16}}) {
      chip.Write(address, written);
      EXPECT_EQ(chip.Read(address), read);
    }
  }
}

TEST(ChipRequests, PendingShowsOnlyWhatIsEnabled) {
  Chip chip;
  chip.Write(0x04, 0x7F);
  chip.Write(0x04, 0x80 | 0x20);
  EXPECT_EQ(chip.Read(0x07) & 0x10, 0x00);
  chip.Write(0x02, 0x20);
  EXPECT_EQ(chip.Read(0x07) & 0x10, 0x10);
  chip.Write(0x04, 0x20);
  EXPECT_EQ(chip.Read(0x07) & 0x10, 0x00);
}

TEST(ChipStatus, ErrorsAndSessionCanBeClearedAndNotMade) {
  Chip chip;
  chip.Preset(0x06, 0x8C);
  for (const auto& [written, read] : {WriteAndRead{0x0F, 0x0C}, {0x00, 0x00}, {0xFF, 0x00}}) {
    chip.Write(0x06, written);
    EXPECT_EQ(chip.Read(0x06), read);
  }
  chip.Write(0x08, 0xFF);
  EXPECT_EQ(chip.Read(0x08) & 0x08, 0x00);
  chip.Preset(0x08, 0x08);
  for (const auto& [written, read] : {WriteAndRead{0x08, 0x08}, {0x00, 0x00}}) {
    chip.Write(0x08, written);
    EXPECT_EQ(chip.Read(0x08), read);
  }
}

}  // namespace
}  // namespace vt63x
