#include "simulator/chip.h"

#include <gtest/gtest.h>

#include <vector>

#include "simulator/serial_port.h"

namespace vt63x {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes BytesOf(const LineAnswer& answer) {
  return {answer.bytes.begin(), answer.bytes.begin() + static_cast<std::ptrdiff_t>(answer.count)};
}

TEST(Chip, StartsAt9600BpsWithItsVersion) {
  Chip chip;
  EXPECT_EQ(chip.Read(0x37), 0x91);
  EXPECT_EQ(chip.Read(0x1F), 0xEB);
  EXPECT_TRUE(RatesMatch(chip.SerialRate(), 9600));
}

TEST(Chip, VersionTakesWritesAndKeepsItsValue) {
  Chip chip;
  chip.Write(0x37, 0x55);
  EXPECT_EQ(chip.Read(0x37), 0x91);
  chip.Preset(0x37, 0x92);
  EXPECT_EQ(chip.Read(0x37), 0x92);
}

TEST(Chip, NothingLiesBehindTheLastRegister) {
  Chip chip;
  chip.Write(0x3F, 0xA5);
  EXPECT_EQ(chip.Read(0x3F), 0xA5);
  for (unsigned address = 0x40; address < 0x100; ++address) {
    const auto behind = static_cast<std::uint8_t>(address);
    chip.Write(behind, 0xFF);
    chip.Preset(behind, 0xFF);
    EXPECT_EQ(chip.Read(behind), 0) << address;
  }
  EXPECT_EQ(chip.Read(0x3F), 0xA5);
  EXPECT_EQ(chip.Read(0x00), 0);
}

class SerialPortTest : public testing::Test {
 protected:
  Bytes Send(const Bytes& bytes) {
    Bytes answers;
    for (const std::uint8_t byte : bytes) {
      const Bytes answer = BytesOf(port.OnByte(byte));
      answers.insert(answers.end(), answer.begin(), answer.end());
    }
    return answers;
  }

  Chip chip;
  ChipSerialPort port{chip};
};

TEST_F(SerialPortTest, ReadGivesTheValueAndWriteTheAddress) {
  EXPECT_EQ(Send({0xB7}), Bytes({0x91}));
  EXPECT_EQ(Send({0x15}), Bytes());
  EXPECT_EQ(Send({0x0F}), Bytes({0x15}));
  EXPECT_EQ(Send({0x95}), Bytes({0x0F}));
  EXPECT_EQ(Send({0x7F, 0x12, 0xFF}), Bytes({0x7F, 0x00}));
  EXPECT_EQ(port.reads(), 3u);
  EXPECT_EQ(port.writes(), 2u);
}

TEST_F(SerialPortTest, DataOfAWriteMayLookLikeARead) {
  EXPECT_EQ(Send({0x02, 0xB7, 0x82}), Bytes({0x02, 0xB7}));
}

// What a host sees that lost one byte: the chip takes the next address for data.
TEST_F(SerialPortTest, LostByteShiftsTheFollowingAccesses) {
  EXPECT_EQ(Send({0x01, /* data lost, next write: */ 0x02, 0x55}), Bytes({0x01}));
  EXPECT_EQ(Send({0xB7}), Bytes({0x55}));  // in step again after one access
  EXPECT_EQ(chip.Read(0x01), 0x02);
  EXPECT_EQ(chip.Read(0x55), 0);
}

TEST_F(SerialPortTest, EchoOfASpeedChangeLeavesAtTheOldRate) {
  Send({0x1F});
  const LineAnswer echo = port.OnByte(0x79);
  EXPECT_EQ(BytesOf(echo), Bytes({0x1F}));
  EXPECT_TRUE(RatesMatch(echo.rate, 9600));
  EXPECT_TRUE(RatesMatch(port.BitRate(), 115200));
  EXPECT_TRUE(RatesMatch(port.OnByte(0xB7).rate, 115200));
}

TEST_F(SerialPortTest, AnswerNamesTheAccessItBelongsTo) {
  EXPECT_FALSE(port.OnByte(0x01).access);
  const auto write = port.OnByte(0x22).access;
  const auto read = port.OnByte(0x81).access;
  ASSERT_TRUE(write && read);
  EXPECT_EQ(write->number, 1u);
  EXPECT_TRUE(write->is_write);
  EXPECT_EQ(write->value, 0x22);
  EXPECT_EQ(read->number, 2u);
  EXPECT_FALSE(read->is_write);
  EXPECT_EQ(read->address, 0x01);
  EXPECT_EQ(read->value, 0x22);
}

}  // namespace
}  // namespace vt63x
