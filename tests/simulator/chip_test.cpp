// SPDX-License-Identifier: MIT

// The chip's registers, its FIFO and its interrupt requests.

#include "simulator/chip.h"

#include <gtest/gtest.h>

#include <string>

#include "simulator/serial_speed.h"
#include "test_reader.h"

namespace vt63x {
namespace {

TEST(Chip, StartsAt9600BpsWithAVersionThatTakesWritesAndKeepsItsValue) {
  Chip chip;
  EXPECT_TRUE(RatesMatch(chip.SerialRate(), 9600));
  Play(chip, "37=55 37?91");
  chip.Preset(0x37, 0x92);
  Play(chip, "37?92");
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
  Play(chip, "3F?A5 00?00");
}

TEST(ChipFifo, HoldsSixtyFourBytesAndReportsTheNext) {
  Chip chip;
  for (unsigned byte = 0; byte < 64; ++byte) {
    chip.Write(0x09, static_cast<std::uint8_t>(byte + 1));
    ASSERT_EQ(chip.Read(0x0A), byte + 1);
  }
  Play(chip, "06?00 09=FF 06?10 04?02/02 0A?40");
  for (unsigned byte = 0; byte < 64; ++byte) ASSERT_EQ(chip.Read(0x09), byte + 1);
  Play(chip, "09?00 0A?00");                          // empty
  Play(chip, "09=01 0A=7F 06?10 0A=80 06?00 0A?00");  // 7F is no flush
}

TEST(ChipFifo, AlertsFollowTheWaterLevelAndAreRequestedOnce) {
  Chip chip;
  Play(chip, "0B=03 09=00 09=00 09=00 07?01/03 04?00/08 09=00 07?00/03 04?00/08");
  for (int count = 0; count < 56; ++count) chip.Write(0x09, 0);
  Play(chip, "07?00/03 04?00/08 09=00 07?02/03 04?08/08");
  Play(chip, "04=0C 09=00 04?00/0C");  // the alert was there before
  Play(chip, "0A=80 04?04/0C");
}

TEST(ChipRequests, WritesSetOrClearTheMarkedBitsAloneAndPendingShowsWhatIsEnabled) {
  Chip chip;
  for (const std::string at : {"04", "05"}) {
    Play(chip, at + "=7F " + at + "?00 " + at + "=B5 " + at + "?35 " + at + "=82 " + at + "?37 " +
                   at + "=21 " + at + "?16");
  }
  Play(chip, "05=7F 04=7F 04=A0 07?00/10 02=20 07?10/10 04=20 07?00/10");
}

TEST(ChipStatus, ErrorsAndSessionCanBeClearedAndNotMade) {
  Chip chip;
  chip.Preset(0x06, 0x8C);
  Play(chip, "06=0F 06?0C 06=00 06?00 06=FF 06?00 08=FF 08?00/08");
  chip.Preset(0x08, 0x08);
  Play(chip, "08=08 08?08 08=00 08?00");
}

}  // namespace
}  // namespace vt63x
