// SPDX-License-Identifier: MIT

#include "simulator/simulated_bus.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "frontend/register_control.h"

namespace vt63x {
namespace {

// The register stack of the product on a simulated chip.
struct Bench {
  explicit Bench(const std::string& fault = "silence@1000000") : bus(chip, {Parsed(fault)}) {
    registers.Init(RegisterControlOpen, &bus);
  }
  static Fault Parsed(const std::string& text) {
    std::string error;
    return *ParseFault(text, error);
  }

  HFLSTATUS Set(std::uint8_t address, std::uint8_t data) {
    setreg_param param{address, data, nullptr};
    return registers.SetRegister(&param);
  }
  // What a register holds; nothing when the link has failed.
  std::optional<int> Get(std::uint8_t address) {
    getreg_param param{address, 0, nullptr};
    const HFLSTATUS status = registers.GetRegister(&param);
    EXPECT_TRUE(status == HFL_SUCCESS || status == HFL_LINK_FAILED);
    return status == HFL_SUCCESS ? std::optional<int>(param.data) : std::nullopt;
  }
  HFLSTATUS ReadByte(std::uint8_t& data) {
    bus_byte_param param{data, nullptr};
    const HFLSTATUS status = bus.ReadByte(&param);
    data = param.data;
    return status;
  }
  HFLSTATUS WriteByte(std::uint8_t data) {
    bus_byte_param param{data, nullptr};
    return bus.WriteByte(&param);
  }

  Chip chip;
  SimulatedBus bus;
  RegisterControlWrapper registers;
};

TEST(SimulatedBus, CarriesEveryValueThroughTheRegisterStack) {
  Bench bench;
  for (unsigned data = 0; data < 256; ++data) {
    ASSERT_EQ(bench.Set(0x15, static_cast<std::uint8_t>(data)), HFL_SUCCESS);
    ASSERT_EQ(bench.Get(0x15), data);
  }
  modify_param modify{0x15, 0x0F, 0, nullptr};
  EXPECT_EQ(bench.registers.ModifyRegister(&modify), HFL_SUCCESS);
  EXPECT_EQ(bench.chip.Read(0x15), 0xF0);
  EXPECT_EQ(bench.bus.reads(), 257u);
  EXPECT_EQ(bench.bus.writes(), 257u);
}

TEST(SimulatedBus, ReadWithoutAnswerFailsAndLeavesTheDataAlone) {
  Bench bench;
  std::uint8_t data = 0x5A;
  EXPECT_EQ(bench.ReadByte(data), HFL_LINK_FAILED);
  EXPECT_EQ(data, 0x5A);
}

TEST(SimulatedBus, HostAtAnotherRateFailsAndMeetsTheChipAgain) {
  for (const std::uint32_t rate : {0u, 14400u, 19200u, 57600u, 115200u, 256000u}) {
    Bench bench;
    bench.bus.SetHostRate(rate);
    EXPECT_FALSE(bench.Get(0x37)) << rate;
  }
  Bench bench;
  ASSERT_EQ(bench.Set(0x1F, 0x79), HFL_SUCCESS);
  EXPECT_FALSE(bench.Get(0x37));  // the host is still at 9600
  bench.bus.SetHostRate(115200);
  EXPECT_EQ(bench.Get(0x37), 0x91);
}

TEST(SimulatedBus, AnswerIsInTimeUpToTheTimeoutAndALaterOneShiftsTheReadsAfterIt) {
  EXPECT_EQ(Bench("delay=500@1+1").Get(0x37), 0x91);
  Bench late("delay=501@1+1");
  EXPECT_FALSE(late.Get(0x37));
  late.bus.Purge();  // the answer is not there yet
  std::uint8_t data = 0;
  EXPECT_EQ(late.ReadByte(data), HFL_SUCCESS);
  EXPECT_EQ(data, 0x91);
  Bench later("delay=700@1+1");
  EXPECT_FALSE(later.Get(0x37));
  EXPECT_EQ(later.Get(0x1F), 0x91);  // the answer to the read before
  later.bus.Purge();
  EXPECT_EQ(later.Get(0x1F), 0xEB);
}

TEST(SimulatedBus, NothingWorksAfterTheLineHasHungUp) {
  Bench bench("hang-up@2");
  EXPECT_EQ(bench.Get(0x37), 0x91);
  EXPECT_FALSE(bench.Get(0x37));
  EXPECT_TRUE(bench.bus.hung_up());
  EXPECT_EQ(bench.WriteByte(0xB7), HFL_LINK_FAILED);
  EXPECT_EQ(bench.bus.reads(), 2u);
}

TEST(SimulatedBus, UnreadAnswersAreBoundedAndPurged) {
  Bench bench;
  for (std::size_t count = 0; count < SimulatedBus::kBufferSize + 10; ++count) {
    ASSERT_EQ(bench.WriteByte(0xB7), HFL_SUCCESS);
  }
  std::size_t answers = 0;
  std::uint8_t data = 0;
  while (bench.ReadByte(data) == HFL_SUCCESS) ++answers;
  EXPECT_EQ(answers, SimulatedBus::kBufferSize);

  bench.WriteByte(0xB7);
  bench.bus.Purge();
  EXPECT_EQ(bench.ReadByte(data), HFL_LINK_FAILED);
}

TEST(SimulatedBus, RecordingHoldsTheBytesInOrderAndNoMoreThanAsked) {
  Bench bench;
  bench.Get(0x37);
  bench.bus.StartRecording(4);
  bench.Set(0x01, 0x0F);
  bench.Get(0x01);
  const std::vector<RecordedByte> expected = {
      {true, 0x01}, {true, 0x0F}, {false, 0x01}, {true, 0x81}};
  EXPECT_EQ(bench.bus.recording(), expected);
}

}  // namespace
}  // namespace vt63x
