// SPDX-License-Identifier: MIT

#include "simulator/serial_port.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "test_reader.h"

namespace vt63x {
namespace {

// A chip at its serial port, with faults.
class Line {
 public:
  explicit Line(const std::vector<std::string>& faults = {}) : port(chip, Parsed(faults)) {}

  // Everything that comes back.
  Bytes Send(const Bytes& bytes) {
    Bytes answers;
    for (const std::uint8_t byte : bytes) {
      const LineAnswer answer = port.OnByte(byte);
      answers.insert(answers.end(), answer.bytes.begin(),
                     answer.bytes.begin() + static_cast<std::ptrdiff_t>(answer.count));
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
  using Exchange = std::tuple<Bytes, Bytes>;
  Line line;
  for (const auto& [sent, answer] :
       {Exchange{{0xB7}, {0x91}}, Exchange{{0x15}, {}}, Exchange{{0x0F}, {0x15}},
        Exchange{{0x95}, {0x0F}}, Exchange{{0x7F, 0x12, 0xFF}, {0x7F, 0x00}},
        Exchange{{0x02, 0xB7, 0x82}, {0x02, 0xB7}},  // data that looks like a read
        // A host that lost the byte behind 01: the chip takes the next address for data, and is in
        // step again after one access.
        Exchange{{0x01, 0x02, 0x55}, {0x01}}, Exchange{{0xB7, 0x81}, {0x55, 0x02}}}) {
    EXPECT_EQ(line.Send(sent), answer);
  }
  EXPECT_EQ(line.port.reads(), 5u);
  EXPECT_EQ(line.port.writes(), 5u);
}

TEST(Faults, SilentChipStillCarriesTheAccessOut) {
  Line line({"silence@1+1"});
  EXPECT_EQ(line.Send({0x15, 0x0F, 0x95}), Bytes({0x0F}));
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
