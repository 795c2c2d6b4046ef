#include "simulator/simulated_bus.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "frontend/register_control.h"

namespace vt63x {
namespace {

std::vector<Fault> Faults(const std::string& text) {
  std::string error;
  const auto fault = ParseFault(text, error);
  EXPECT_TRUE(fault) << error;
  return fault ? std::vector<Fault>{*fault} : std::vector<Fault>{};
}

// The register stack of the product on a simulated chip.
struct Bench {
  explicit Bench(std::vector<Fault> faults = {}) : bus(chip, std::move(faults)) {
    registers.Init(RegisterControlOpen, &bus);
  }

  HFLSTATUS Set(std::uint8_t address, std::uint8_t data) {
    setreg_param param{address, data, nullptr};
    return registers.SetRegister(&param);
  }
  HFLSTATUS Get(std::uint8_t address) {
    getreg_param param{address, 0, nullptr};
    const HFLSTATUS status = registers.GetRegister(&param);
    value = param.data;
    return status;
  }
  HFLSTATUS ReadByte(std::uint8_t& data) {
    bus_byte_param param{data, nullptr};
    const HFLSTATUS status = bus.ReadByte(&param);
    data = param.data;
    return status;
  }

  Chip chip;
  SimulatedBus bus;
  RegisterControlWrapper registers;
  std::uint8_t value = 0;
};

TEST(SimulatedBus, CarriesEveryValueThroughTheRegisterStack) {
  Bench bench;
  for (unsigned data = 0; data < 256; ++data) {
    ASSERT_EQ(bench.Set(0x15, static_cast<std::uint8_t>(data)), HFL_SUCCESS);
    ASSERT_EQ(bench.Get(0x15), HFL_SUCCESS);
    ASSERT_EQ(bench.value, data);
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

TEST(SimulatedBus, HostAndChipMeetAgainAfterASpeedChange) {
  Bench bench;
  ASSERT_EQ(bench.Set(0x1F, 0x79), HFL_SUCCESS);
  EXPECT_EQ(bench.Get(0x37), HFL_LINK_FAILED);  // the host is still at 9600
  bench.bus.SetHostRate(115200);
  EXPECT_EQ(bench.Get(0x37), HFL_SUCCESS);
  EXPECT_EQ(bench.value, 0x91);
}

TEST(SimulatedBus, HostAtTheWrongRateFailsAndDoesNotHang) {
  for (const std::uint32_t rate : {0u, 14400u, 19200u, 57600u, 115200u, 256000u}) {
    Bench bench;
    bench.bus.SetHostRate(rate);
    EXPECT_EQ(bench.Get(0x37), HFL_LINK_FAILED) << rate;
  }
}

TEST(SimulatedBus, WrongEchoFailsTheWrite) {
  Bench bench(Faults("wrong-echo@2+1"));
  EXPECT_EQ(bench.Set(0x01, 0x0F), HFL_SUCCESS);
  EXPECT_EQ(bench.Set(0x01, 0x0F), HFL_LINK_FAILED);
  EXPECT_EQ(bench.Set(0x01, 0x0F), HFL_SUCCESS);
}

TEST(SimulatedBus, AnswerIsInTimeUpToTheTimeoutOnly) {
  Bench in_time(Faults("delay=500@1+1"));
  EXPECT_EQ(in_time.Get(0x37), HFL_SUCCESS);

  Bench late(Faults("delay=501@1+1"));
  EXPECT_EQ(late.Get(0x37), HFL_LINK_FAILED);
  late.bus.Purge();  // the answer is not there yet
  std::uint8_t data = 0;
  EXPECT_EQ(late.ReadByte(data), HFL_SUCCESS);
  EXPECT_EQ(data, 0x91);
}

TEST(SimulatedBus, LateAnswerShiftsTheReadsAfterIt) {
  Bench bench(Faults("delay=700@1+1"));
  EXPECT_EQ(bench.Get(0x37), HFL_LINK_FAILED);
  EXPECT_EQ(bench.Get(0x1F), HFL_SUCCESS);
  EXPECT_EQ(bench.value, 0x91);  // the answer to the read before
  bench.bus.Purge();
  EXPECT_EQ(bench.Get(0x1F), HFL_SUCCESS);
  EXPECT_EQ(bench.value, 0xEB);
}

TEST(SimulatedBus, NothingWorksAfterTheLineHasHungUp) {
  Bench bench(Faults("hang-up@2"));
  EXPECT_EQ(bench.Get(0x37), HFL_SUCCESS);
  EXPECT_EQ(bench.Get(0x37), HFL_LINK_FAILED);
  EXPECT_TRUE(bench.bus.hung_up());
  bus_byte_param byte{0xB7, nullptr};
  EXPECT_EQ(bench.bus.WriteByte(&byte), HFL_LINK_FAILED);
  EXPECT_EQ(bench.bus.reads(), 2u);
}

TEST(SimulatedBus, UnreadAnswersAreBoundedAndPurged) {
  Bench bench;
  bus_byte_param byte{0xB7, nullptr};
  for (std::size_t count = 0; count < SimulatedBus::kBufferSize + 10; ++count) {
    ASSERT_EQ(bench.bus.WriteByte(&byte), HFL_SUCCESS);
  }
  std::size_t answers = 0;
  for (std::uint8_t data = 0; bench.ReadByte(data) == HFL_SUCCESS;) ++answers;
  EXPECT_EQ(answers, SimulatedBus::kBufferSize);

  bench.bus.WriteByte(&byte);
  bench.bus.Purge();
  std::uint8_t data = 0;
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
