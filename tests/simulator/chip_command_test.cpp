// SPDX-License-Identifier: MIT

// What the chip's commands do.

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <string>
#include <tuple>

#include "simulator/serial_speed.h"
#include "test_reader.h"

namespace vt63x {
namespace {

// Results as published for the usual check sums; the empty one is the preset.
TEST(ChipCrc, CommandUsesPresetAndBitOrder) {
  using Case = std::tuple<std::uint8_t, const char*, int>;
  constexpr const char* kDigits = "123456789";
  for (const auto& [mode, data, crc] :
       {Case{0x00, "", 0x0000}, Case{0x01, "", 0x6363}, Case{0x00, kDigits, 0x2189},
        Case{0x01, kDigits, 0xBF05}, Case{0x03, kDigits, 0x6F91}, Case{0x80, kDigits, 0x31C3},
        Case{0x83, kDigits, 0x29B1}}) {
    Chip chip;
    chip.Write(0x11, mode);
    chip.Write(0x04, 0x7F);
    for (const char byte : std::string(data)) chip.Write(0x09, static_cast<std::uint8_t>(byte));
    Play(chip, "01=03 05?04 04?10/10 01?00 07?20/20 0A?00");
    EXPECT_EQ(chip.Read(0x21) << 8 | chip.Read(0x22), crc) << unsigned{mode};
  }
}

class ChipCommandTest : public testing::Test, protected ReaderBench {
 protected:
  ChipCommandTest() : ReaderBench({"01020304"}) {}

  // A request for cards.
  void Transmit() { Play(chip, "0D=07 04=7F 0A=80 09=26 01=04"); }
  ReaderAnswer Receive() {
    reader.Load({});
    chip.Write(0x01, 0x08);
    return reader.Wait(0x21);
  }
};

TEST_F(ChipCommandTest, TransceiveWaitsForTheStartBitAndRepeatsWithIt) {
  Play(chip, "04=7F 0A=80 09=26 0D=87 04?00 0A?01");  // means nothing to other commands
  reader.Request();
  Play(chip, "0D=07 01=0C 04=7F 0A=80 09=26 04?00");
  Play(chip, "0D=87 0D?07");  // unexpected: the card is ready
  EXPECT_TRUE(reader.Wait(0x21).timeout);
  Play(chip, "01?0C 04=7F 0A=80 09=26 0D=87");
  EXPECT_TRUE(reader.Wait(0x21).Is({0x04, 0x00}));
  EXPECT_TRUE(reader.Transceive({}).timeout) << "nothing to send";
}

TEST_F(ChipCommandTest, TransmitEndsInIdleAndReceiveFindsTheAnswerOnce) {
  Transmit();
  Play(chip, "01?00 04?50/70 0A?00");
  EXPECT_TRUE(Receive().Is({0x04, 0x00}));
  EXPECT_TRUE(Receive().timeout);
}

TEST_F(ChipCommandTest, AnswerToATransmitIsGoneWithTheFieldAndWithTheNextFrame) {
  Transmit();
  Play(chip, "14=80 14=83");
  EXPECT_TRUE(Receive().timeout);
  Transmit();
  EXPECT_TRUE(reader.Transceive({0x26}, 0x07).timeout);  // unexpected: the card is ready
  EXPECT_TRUE(Receive().timeout);
}

TEST_F(ChipCommandTest, ReceiverThatIsOffAndOtherSpeedsHearNothing) {
  for (const std::string change : {"01=2C", "12=10", "13=10"}) {
    field.Switch(false);
    reader.SetUp();
    Play(chip, "12=00 13=00 01=0C 04=7F 0A=80 09=26 " + change + " 0D=87");
    EXPECT_TRUE(reader.Wait(0x21).timeout) << change;
  }
}

TEST_F(ChipCommandTest, ReceivedCrcIsTakenOffTestedAndReported) {
  chip.Write(0x11, 0x83);  // the preset of the CRC command: frames carry CRC_A all the same
  ASSERT_TRUE(reader.Activate());
  EXPECT_EQ(chip.Read(0x07) & 0x40, 0x40);
  chip.Write(0x13, 0x00);
  ASSERT_TRUE(reader.Authenticate(0x60, 4, kKey, {1, 2, 3, 4}));
  const ReaderAnswer raw = reader.Transceive({0x30, 4});
  ASSERT_EQ(raw.bytes.size(), 18u);
  EXPECT_TRUE(AirFrame::OfBytes(raw.bytes).EndsWithCrcA());
  chip.Write(0x13, 0x80);
  EXPECT_TRUE(reader.Transceive({0x30, 4}).Is(Bytes(16, 0)));
  SetAirFault("crc@1+1");
  EXPECT_EQ(reader.Transceive({0x30, 4}), (ReaderAnswer{false, Bytes(16, 0), 0, 0x04}));
  EXPECT_EQ(chip.Read(0x07) & 0x40, 0x00);
}

TEST_F(ChipCommandTest, AuthenticationWithTooFewBytesIsAnErrorAndEnds) {
  ASSERT_TRUE(reader.Activate());
  reader.Load(Bytes(11, 0x60));
  chip.Write(0x01, 0x0E);
  Play(chip, "06?01 04?12/12 01?00");
}

TEST_F(ChipCommandTest, SoftResetRestoresEverythingButTheVersion) {
  ASSERT_TRUE(reader.Activate());
  chip.Preset(0x37, 0x92);
  for (const std::uint8_t address : Bytes{0x02, 0x09, 0x0D, 0x11, 0x15, 0x1F, 0x2A, 0x2D, 0x3F}) {
    chip.Write(address, 0x55);
  }
  chip.Write(0x01, 0x0F);
  Chip fresh;
  fresh.Preset(0x37, 0x92);
  for (std::uint8_t address = 0; address < Chip::kRegisterCount; ++address) {
    EXPECT_EQ(chip.Read(address), fresh.Read(address)) << unsigned{address};
  }
  EXPECT_TRUE(RatesMatch(chip.SerialRate(), 9600));
  EXPECT_EQ(field.cards()[0]->state(), Card::State::kIdle);
  EXPECT_FALSE(field.is_on());
}

// Under the sanitizers: nothing that a host writes gets the chip or its cards out of bounds.
TEST(ChipTraffic, RandomAccessesStayWithinBounds) {
  std::mt19937 random(11);
  ReaderBench bench({"01020304", "01020304050607:ostrel-page", "0102030405060708090A"});
  Chip& chip = bench.chip;
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
