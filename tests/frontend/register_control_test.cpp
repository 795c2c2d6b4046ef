// SPDX-License-Identifier: MIT

#include "frontend/register_control.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <tuple>
#include <vector>

namespace vt63x {
namespace {

// A bus that records what is sent and answers from a queue; -1 in the queue is a read that fails.
class ScriptedBus final : public SerialBusInterface {
 public:
  HFLSTATUS WriteByte(bus_byte_param* param) override {
    if (++transfers == fail_at) return fail_status;
    sent.push_back(param->data);
    return HFL_SUCCESS;
  }
  HFLSTATUS ReadByte(bus_byte_param* param) override {
    ++reads;
    if (++transfers == fail_at) return fail_status;
    if (answers.empty()) return HFL_LINK_FAILED;
    param->data = answers.front();
    answers.pop_front();
    return HFL_SUCCESS;
  }

  std::vector<std::uint8_t> sent;
  std::deque<std::uint8_t> answers;
  int reads = 0;
  int transfers = 0;
  int fail_at = 0;
  HFLSTATUS fail_status = HFL_NOT_READY;
};

using Bytes = std::vector<std::uint8_t>;

class RegisterControlTest : public testing::Test {
 protected:
  RegisterControlTest() { registers.Init(RegisterControlOpen, &bus); }

  ScriptedBus bus;
  RegisterControlWrapper registers;
  RegisterControlCore* const garbage = reinterpret_cast<RegisterControlCore*>(0x1234);
};

TEST_F(RegisterControlTest, ReadSendsAddressWithTopBitAndKeepsCallersSelf) {
  bus.answers = {0x91};
  getreg_param param{0x37, 0, garbage};
  EXPECT_EQ(registers.GetRegister(&param), HFL_SUCCESS);
  EXPECT_EQ(bus.sent, Bytes({0xB7}));
  EXPECT_EQ(param.data, 0x91);
  EXPECT_EQ(param.self, garbage);
}

TEST_F(RegisterControlTest, FailedReadLeavesZeroAndFailedWriteLeavesDataAlone) {
  getreg_param read_fails{0x01, 0x55, nullptr};
  EXPECT_EQ(registers.GetRegister(&read_fails), HFL_LINK_FAILED);
  EXPECT_EQ(read_fails.data, 0);

  bus.fail_at = bus.transfers + 1;
  getreg_param write_fails{0x01, 0x55, nullptr};
  EXPECT_EQ(registers.GetRegister(&write_fails), HFL_NOT_READY);
  EXPECT_EQ(write_fails.data, 0x55);
}

TEST_F(RegisterControlTest, WriteClearsTopBitOfAddressAndChecksTheEcho) {
  bus.answers = {0x01};
  setreg_param param{0x81, 0x0F, garbage};
  EXPECT_EQ(registers.SetRegister(&param), HFL_SUCCESS);
  EXPECT_EQ(bus.sent, Bytes({0x01, 0x0F}));
  EXPECT_EQ(param.self, garbage);
}

TEST_F(RegisterControlTest, WrongEchoTakesTwoMoreBytesOffTheLineAndAMissingOneNone) {
  setreg_param param{0x01, 0x0F, nullptr};
  EXPECT_EQ(registers.SetRegister(&param), HFL_LINK_FAILED);
  EXPECT_EQ(bus.reads, 1);
  bus.answers = {0x02, 0x01, 0x01, 0x77};
  EXPECT_EQ(registers.SetRegister(&param), HFL_LINK_FAILED);
  EXPECT_EQ(bus.reads, 1 + 3);
  EXPECT_EQ(bus.answers.size(), 1u);
}

TEST_F(RegisterControlTest, ModifySetsOrClearsTheMaskAndAlwaysWritesBack) {
  using Case = std::tuple<std::uint8_t, std::uint8_t, std::uint8_t, std::uint8_t>;
  for (const auto& [old_value, mask, set, new_value] :
       {Case{0x3F, 0x20, 0, 0x1F}, Case{0x80, 0x03, 1, 0x83}, Case{0x10, 0x10, 0xFF, 0x10},
        Case{0x5A, 0x00, 1, 0x5A}, Case{0xFF, 0xFF, 0, 0x00}}) {
    bus.sent.clear();
    bus.answers = {old_value, 0x01};
    modify_param param{0x01, mask, set, garbage};
    EXPECT_EQ(registers.ModifyRegister(&param), HFL_SUCCESS);
    EXPECT_EQ(bus.sent, Bytes({0x81, 0x01, new_value}));
    EXPECT_EQ(param.self, garbage);
  }
}

TEST_F(RegisterControlTest, MultipleAccessesGoToOneAddressAndStopAtTheFirstFailure) {
  const Bytes values = {0x0A, 0x0B, 0x0C};
  bus.answers = {0x09, 0x08, 0, 0, 0x09};  // the second echo is wrong
  setmulti_param set{0x09, 3, values.data(), nullptr};
  EXPECT_EQ(registers.SetRegisterMultiple(&set), HFL_LINK_FAILED);
  EXPECT_EQ(bus.sent, Bytes({0x09, 0x0A, 0x09, 0x0B}));

  bus.sent.clear();
  bus.answers = {0x11, 0x22};
  Bytes read(4, 0xEE);
  getmulti_param get{0x09, 4, read.data(), nullptr};
  EXPECT_EQ(registers.GetRegisterMultiple(&get), HFL_LINK_FAILED);
  EXPECT_EQ(read, Bytes({0x11, 0x22, 0xEE, 0xEE}));
  EXPECT_EQ(bus.sent, Bytes({0x89, 0x89, 0x89}));
}

TEST_F(RegisterControlTest, MultipleAccessOfNothingAndOfMoreThan255Bytes) {
  setmulti_param set{0x09, 0, nullptr, nullptr};
  getmulti_param get{0x09, 0, nullptr, nullptr};
  EXPECT_EQ(registers.SetRegisterMultiple(&set), HFL_SUCCESS);
  EXPECT_EQ(registers.GetRegisterMultiple(&get), HFL_SUCCESS);
  EXPECT_EQ(bus.transfers, 0);
  Bytes read(300, 0);
  bus.answers.assign(300, 0x42);
  get = {0x09, 300, read.data(), nullptr};
  EXPECT_EQ(registers.GetRegisterMultiple(&get), HFL_SUCCESS);
  EXPECT_EQ(std::count(read.begin(), read.end(), 0x42), 300);
}

// Every operation, with the bus failing at each of its transfers in turn.
TEST_F(RegisterControlTest, AnyFailingTransferEndsTheOperationWithItsStatus) {
  setreg_param set{0x01, 0x5A, nullptr};
  getreg_param get{0x01, 0, nullptr};
  modify_param modify{0x01, 0x01, 1, nullptr};
  using Case = std::tuple<int, std::function<HFLSTATUS()>, std::deque<std::uint8_t>>;
  for (const auto& [transfers, operation, answers] :
       {Case{3, [&] { return registers.SetRegister(&set); }, {0x01}},
        Case{2, [&] { return registers.GetRegister(&get); }, {0x01}},
        Case{5, [&] { return registers.ModifyRegister(&modify); }, {0x00, 0x01}}}) {
    for (int position = 1; position <= transfers; ++position) {
      bus.transfers = 0;
      bus.fail_at = position;
      bus.answers = answers;
      EXPECT_EQ(operation(), HFL_NOT_READY) << "transfer " << position << " of " << transfers;
      EXPECT_EQ(bus.transfers, position);
    }
  }
}

// A component sees below it only a record with slots: two users may share one lower wrapper, each
// through its own forwarder.
TEST_F(RegisterControlTest, ForwarderReachesTheWrapperOfItsOwner) {
  RegisterControlUser user;
  user.lower = &registers;
  RegisterControlForwarder forwarder;
  forwarder.owner = &user;
  EXPECT_EQ(forwarder.members, nullptr);
  EXPECT_EQ(forwarder.lower, nullptr);

  bus.answers = {0x91};
  getreg_param param{0x37, 0, &forwarder};
  EXPECT_EQ(forwarder.GetRegister(&param), HFL_SUCCESS);
  EXPECT_EQ(param.data, 0x91);
  EXPECT_EQ(param.self, &forwarder);
}

}  // namespace
}  // namespace vt63x
