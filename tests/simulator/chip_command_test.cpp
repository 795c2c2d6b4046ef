// The chip's commands, its FIFO and its interrupt requests.

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <string>

#include "test_reader.h"

namespace vt63x {
namespace {

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
  EXPECT_EQ(chip.Read(0x06), 0x10);
  chip.Write(0x0A, 0x7F);
  EXPECT_EQ(chip.Read(0x06), 0x10);  // that was no flush
  chip.Write(0x09, 0x01);
  chip.Write(0x0A, 0x80);
  EXPECT_EQ(chip.Read(0x06), 0);
  EXPECT_EQ(chip.Read(0x0A), 0);
}

TEST(ChipFifo, AlertsFollowTheWaterLevelAndAreRequestedOnce) {
  Chip chip;
  chip.Write(0x0B, 3);
  const auto fill = [&](int count) {
    for (; count > 0; --count) chip.Write(0x09, 0);
  };
  fill(3);
  EXPECT_EQ(chip.Read(0x07) & 0x03, 0x01);
  fill(1);
  EXPECT_EQ(chip.Read(0x07) & 0x03, 0x00);
  fill(56);
  EXPECT_EQ(chip.Read(0x07) & 0x03, 0x00);
  EXPECT_EQ(chip.Read(0x04) & 0x08, 0x00);
  fill(1);
  EXPECT_EQ(chip.Read(0x07) & 0x03, 0x02);
  EXPECT_EQ(chip.Read(0x04) & 0x08, 0x08);
  chip.Write(0x04, 0x0C);
  fill(1);
  EXPECT_EQ(chip.Read(0x04) & 0x0C, 0x00);  // the alert was there before
  chip.Write(0x0A, 0x80);
  EXPECT_EQ(chip.Read(0x04) & 0x0C, 0x04);
}

TEST(ChipRequests, WritesSetOrClearTheMarkedBitsAlone) {
  for (const std::uint8_t address : Bytes{0x04, 0x05}) {
    Chip chip;
    chip.Write(address, 0x7F);
    EXPECT_EQ(chip.Read(address), 0x00);
    chip.Write(address, 0x80 | 0x35);
    EXPECT_EQ(chip.Read(address), 0x35);
    chip.Write(address, 0x80 | 0x02);
    EXPECT_EQ(chip.Read(address), 0x37);
    chip.Write(address, 0x21);
    EXPECT_EQ(chip.Read(address), 0x16);
    chip.Write(address, 0x00);
    EXPECT_EQ(chip.Read(address), 0x16);
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
  chip.Write(0x06, 0x0F);
  EXPECT_EQ(chip.Read(0x06), 0x0C);
  chip.Write(0x06, 0x00);
  EXPECT_EQ(chip.Read(0x06), 0x00);
  chip.Write(0x08, 0xFF);
  EXPECT_EQ(chip.Read(0x08) & 0x08, 0x00);
  chip.Preset(0x08, 0x08);
  chip.Write(0x08, 0x08);
  EXPECT_EQ(chip.Read(0x08), 0x08);
  chip.Write(0x08, 0x00);
  EXPECT_EQ(chip.Read(0x08), 0x00);
}

// Results as published for the usual check sums; the empty one is the preset.
TEST(ChipCrc, CommandUsesPresetAndBitOrder) {
  struct Case {
    std::uint8_t mode;
    std::uint16_t empty, digits;
  };
  for (const Case& c :
       {Case{0x00, 0x0000, 0x2189}, Case{0x01, 0x6363, 0xBF05}, Case{0x03, 0xFFFF, 0x6F91},
        Case{0x80, 0x0000, 0x31C3}, Case{0x83, 0xFFFF, 0x29B1}}) {
    Chip chip;
    chip.Write(0x11, c.mode);
    for (const bool empty : {true, false}) {
      chip.Write(0x04, 0x7F);
      chip.Write(0x05, 0x7F);
      for (const char digit : std::string(empty ? "" : "123456789")) {
        chip.Write(0x09, static_cast<std::uint8_t>(digit));
      }
      chip.Write(0x01, 0x03);
      EXPECT_EQ(chip.Read(0x05), 0x04);
      EXPECT_EQ(chip.Read(0x04) & 0x10, 0x10);
      EXPECT_EQ(chip.Read(0x01), 0x00);
      EXPECT_EQ(chip.Read(0x07) & 0x20, 0x20);
      EXPECT_EQ(chip.Read(0x0A), 0);
      EXPECT_EQ(chip.Read(0x21) << 8 | chip.Read(0x22), empty ? c.empty : c.digits)
          << unsigned{c.mode};
    }
  }
}

class ChipCommandTest : public testing::Test {
 protected:
  ChipCommandTest() { chip.field().Add(CardNamed("01020304")); }

  Chip chip;
  TestReader reader{chip};
};

TEST_F(ChipCommandTest, TransceiveWaitsForTheStartBitAndRepeatsWithIt) {
  reader.Request();
  chip.Write(0x0D, 0x07);
  chip.Write(0x01, 0x0C);
  reader.Load({0x26});
  EXPECT_EQ(chip.Read(0x04), 0x00);
  chip.Write(0x0D, 0x87);  // unexpected: the card is ready
  EXPECT_EQ(chip.Read(0x0D), 0x07);
  EXPECT_TRUE(reader.Wait(0x21).timeout);
  EXPECT_EQ(chip.Read(0x01), 0x0C);
  reader.Load({0x26});
  chip.Write(0x0D, 0x87);
  EXPECT_TRUE(reader.Wait(0x21).Is({0x04, 0x00}));
}

TEST_F(ChipCommandTest, StartBitMeansNothingToOtherCommands) {
  chip.Write(0x01, 0x00);
  reader.Load({0x26});
  chip.Write(0x0D, 0x87);
  EXPECT_EQ(chip.Read(0x04), 0x00);
  EXPECT_EQ(chip.Read(0x0A), 1);
}

TEST_F(ChipCommandTest, NothingToSendEndsWithTheTimer) {
  EXPECT_TRUE(reader.Transceive({}).timeout);
}

TEST_F(ChipCommandTest, TransmitEndsInIdleAndReceiveFindsTheAnswerOnce) {
  reader.Crc(false);
  chip.Write(0x0D, 0x07);
  reader.Load({0x26});
  chip.Write(0x01, 0x04);
  EXPECT_EQ(chip.Read(0x01), 0x00);
  EXPECT_EQ(chip.Read(0x04) & 0x70, 0x50);
  EXPECT_EQ(chip.Read(0x0A), 0);
  reader.Load({});
  chip.Write(0x01, 0x08);
  EXPECT_TRUE(reader.Wait(0x21).Is({0x04, 0x00}));
  reader.Load({});
  chip.Write(0x01, 0x08);
  EXPECT_TRUE(reader.Wait(0x21).timeout);
}

TEST_F(ChipCommandTest, AnswerToATransmitIsGoneWithTheFieldAndWithTheNextFrame) {
  for (const bool field_off : {true, false}) {
    chip.Write(0x0D, 0x07);
    reader.Load({0x26});
    chip.Write(0x01, 0x04);
    if (field_off) {
      chip.Write(0x14, 0x80);
      chip.Write(0x14, 0x83);
    } else {
      EXPECT_TRUE(reader.Transceive({0x26}, 0x07).timeout);  // unexpected: the card is ready
    }
    reader.Load({});
    chip.Write(0x01, 0x08);
    EXPECT_TRUE(reader.Wait(0x21).timeout) << field_off;
  }
}

TEST_F(ChipCommandTest, ReceiverThatIsOffAndOtherSpeedsHearNothing) {
  struct Case {
    std::uint8_t address, value;
  };
  for (const Case& c : {Case{0x01, 0x2C}, Case{0x12, 0x10}, Case{0x13, 0x10}}) {
    chip.field().Switch(false);
    reader.SetUp();
    chip.Write(0x12, 0);
    chip.Write(0x13, 0);
    chip.Write(0x01, 0x0C);
    reader.Load({0x26});
    chip.Write(c.address, c.value);
    chip.Write(0x0D, 0x87);
    EXPECT_TRUE(reader.Wait(0x21).timeout) << unsigned{c.address};
  }
}

TEST_F(ChipCommandTest, ReceivedCrcIsTakenOffTestedAndReported) {
  ASSERT_TRUE(reader.Activate());
  EXPECT_EQ(chip.Read(0x07) & 0x40, 0x40);
  chip.Write(0x12, 0x80);
  chip.Write(0x13, 0x00);
  ASSERT_TRUE(reader.Authenticate(0x60, 4, {0x3C, 0x9A, 0x5E, 0x71, 0xB2, 0xD4}, {1, 2, 3, 4}));
  const ReaderAnswer raw = reader.Transceive({0x30, 4});
  ASSERT_EQ(raw.bytes.size(), 18u);
  EXPECT_TRUE(AirFrame::OfBytes(raw.bytes).EndsWithCrcA());
  chip.Write(0x13, 0x80);
  EXPECT_TRUE(reader.Transceive({0x30, 4}).Is(Bytes(16, 0)));
  std::string error;
  chip.field().faults().Set(*ParseAirFault("crc@1+1", error));
  const ReaderAnswer wrong = reader.Transceive({0x30, 4});
  EXPECT_EQ(wrong.error, 0x04);
  EXPECT_EQ(wrong.bytes.size(), 16u);
  EXPECT_EQ(chip.Read(0x07) & 0x40, 0x00);
}

// Otherwise a reader that sets the preset for the CRC command could not reach cards any more.
TEST_F(ChipCommandTest, FramesCarryCrcAWhateverThePreset) {
  chip.Write(0x11, 0x83);
  EXPECT_TRUE(reader.Activate());
}

TEST_F(ChipCommandTest, AuthenticationWithTooFewBytesIsAnErrorAndEnds) {
  ASSERT_TRUE(reader.Activate());
  reader.Load(Bytes(11, 0x60));
  chip.Write(0x01, 0x0E);
  EXPECT_EQ(chip.Read(0x06), 0x01);
  EXPECT_EQ(chip.Read(0x04) & 0x12, 0x12);
  EXPECT_EQ(chip.Read(0x01), 0x00);
}

TEST_F(ChipCommandTest, SoftResetRestoresEverythingButTheVersion) {
  ASSERT_TRUE(reader.Activate());
  chip.Preset(0x37, 0x92);
  for (const std::uint8_t address : Bytes{0x02, 0x0D, 0x11, 0x15, 0x1F, 0x2A, 0x2D, 0x3F}) {
    chip.Write(address, 0x55);
  }
  chip.Write(0x09, 0x55);
  chip.Write(0x01, 0x0F);
  Chip fresh;
  for (std::uint8_t address = 0; address < Chip::kRegisterCount; ++address) {
    if (address == 0x37) continue;
    EXPECT_EQ(chip.Read(address), fresh.Read(address)) << unsigned{address};
  }
  EXPECT_EQ(chip.Read(0x37), 0x92);
  EXPECT_TRUE(RatesMatch(chip.SerialRate(), 9600));
  EXPECT_EQ(chip.field().cards()[0]->state(), Card::State::kIdle);
  EXPECT_FALSE(chip.field().is_on());
}

// Under the sanitizers: nothing that a host writes gets the chip or its cards out of bounds.
TEST(ChipTraffic, RandomAccessesStayWithinBounds) {
  std::mt19937 random(11);
  Chip chip;
  for (const char* uid : {"01020304", "01020304050607:ostrel-page", "0102030405060708090A"}) {
    chip.field().Add(CardNamed(uid));
  }
  constexpr std::uint8_t kCodes[] = {0x26, 0x52, 0x93, 0x20, 0x70, 0x30, 0x60, 0xA0, 0xC1};
  for (int access = 0; access < 200'000; ++access) {
    const auto address = static_cast<std::uint8_t>(random() % 0x18);
    const auto any = static_cast<std::uint8_t>(random());
    chip.Write(address, random() % 2 == 0 ? any : kCodes[random() % std::size(kCodes)]);
    chip.Read(static_cast<std::uint8_t>(random() % 0x80));
    if (access % 8 == 0) chip.Write(0x01, 0x0C);
    if (access % 8 == 0) chip.Write(0x14, 0x83);
    ASSERT_LE(chip.Read(0x0A), ChipFifo::kSize);
  }
}

}  // namespace
}  // namespace vt63x
