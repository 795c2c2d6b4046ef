// SPDX-License-Identifier: MIT

#include "simulator/serial_port.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vt63x {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes BytesOf(const LineAnswer& answer) {
  return {answer.bytes.begin(), answer.bytes.begin() + static_cast<std::ptrdiff_t>(answer.count)};
}

// A chip at its serial port, with faults.
class Line {
 public:
  explicit Line(const std::vector<std::string>& faults = {}) : port(chip, Parsed(faults)) {}

  // Everything that comes back.
  Bytes Send(const Bytes& bytes) {
    Bytes answers;
    for (const std::uint8_t byte : bytes) {
      const Bytes answer = BytesOf(port.OnByte(byte));
      answers.insert(answers.end(), answer.begin(), answer.end());
    }
    return answers;
  }

  Chip chip;
  ChipSerialPort port;

 private:
  static std::vector<Fault> Parsed(const std::vector<std::string>& texts) {
    std::vector<Fault> faults;
    std::string error;
    for (const std::string& text : texts) faults.push_back(*ParseFault(text, error));
    return faults;
  }
};

TEST(SerialPort, ReadGivesTheValueAndWriteTheAddress) {
  Line line;
  EXPECT_EQ(line.Send({0xB7}), Bytes({0x91}));
  EXPECT_EQ(line.Send({0x15}), Bytes());
  EXPECT_EQ(line.Send({0x0F}), Bytes({0x15}));
  EXPECT_EQ(line.Send({0x95}), Bytes({0x0F}));
  EXPECT_EQ(line.Send({0x7F, 0x12, 0xFF}), Bytes({0x7F, 0x00}));
  EXPECT_EQ(line.Send({0x02, 0xB7, 0x82}), Bytes({0x02, 0xB7}));  // data that looks like a read
  EXPECT_EQ(line.port.reads(), 4u);
  EXPECT_EQ(line.port.writes(), 3u);
}

// What a host sees that lost one byte: the chip takes the next address for data.
TEST(SerialPort, LostByteShiftsTheFollowingAccesses) {
  Line line;
  EXPECT_EQ(line.Send({0x01, /* data lost, next write: */ 0x02, 0x55}), Bytes({0x01}));
  EXPECT_EQ(line.Send({0xB7}), Bytes({0x55}));  // in step again after one access
  EXPECT_EQ(line.chip.Read(0x01), 0x02);
}

TEST(Faults, SilentChipStillCarriesTheAccessOut) {
  Line line({"silence@1+1"});
  EXPECT_EQ(line.Send({0x15, 0x0F}), Bytes());
  EXPECT_EQ(line.Send({0x95}), Bytes({0x0F}));
}

TEST(Faults, WrongEchoConcernsWritesAlone) {
  Line line({"wrong-echo"});
  EXPECT_EQ(line.Send({0xB7}), Bytes({0x91}));
  const Bytes echo = line.Send({0x15, 0x0F});
  ASSERT_EQ(echo.size(), 1u);
  EXPECT_NE(echo[0], 0x15);
  EXPECT_EQ(line.chip.Read(0x15), 0x0F);
}

TEST(Faults, DelaysOfOneAccessAddUp) {
  Line line({"delay=20", "delay=5@2"});
  EXPECT_EQ(line.port.OnByte(0xB7).delay_ms, 20u);
  EXPECT_EQ(line.port.OnByte(0xB7).delay_ms, 25u);
}

TEST(Faults, HangUpWinsOverSilenceAndSilenceOverTheRest) {
  Line line({"rubbish", "wrong-echo", "silence@1+2", "hang-up@2"});
  for (const bool hang_up : {false, true}) {
    const LineAnswer answer = line.port.OnByte(0xB7);
    EXPECT_EQ(answer.count, 0u);
    EXPECT_EQ(answer.hang_up, hang_up);
  }
}

TEST(Faults, RubbishAlwaysDiffersStaysWithinTheAnswerAndRepeats) {
  Line one({"rubbish=5"}), same({"rubbish=5"}), other({"rubbish=6"});
  bool other_differs = false, shortest = false, longest = false;
  for (int access = 0; access < 2000; ++access) {
    const Bytes answer = one.Send({0xB7});
    ASSERT_NE(answer, Bytes({0x91}));
    ASSERT_GE(answer.size(), 1u);
    ASSERT_LE(answer.size(), LineAnswer::kMaxBytes);
    ASSERT_TRUE(answer.size() == 1 || answer.front() == 0x91 || answer.back() == 0x91);
    shortest = shortest || answer.size() == 1;
    longest = longest || answer.size() == LineAnswer::kMaxBytes;
    EXPECT_EQ(same.Send({0xB7}), answer);
    other_differs = other_differs || other.Send({0xB7}) != answer;
  }
  EXPECT_TRUE(other_differs && shortest && longest);
}

}  // namespace
}  // namespace vt63x
