// SPDX-License-Identifier: MIT

// Names, settings, time-outs and error numbers: values in, values out.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <set>
#include <tuple>
#include <vector>

#include "overlapped_call.h"
#include "platform/kernel/errno_map.h"
#include "platform/kernel/event.h"
#include "platform/kernel/handle_table.h"
#include "platform/kernel/port_name.h"
#include "platform/kernel/timeout_plan.h"
#include "platform/kernel/tty_settings.h"

namespace vt63x::kernel {
namespace {

using std::chrono::milliseconds;

TEST(PortName, NumberOfEveryFormAndOfNoOther) {
  const std::pair<const char*, int> cases[] = {
      {"COM1:", 1},  {"COM1", 1},   {"COM9:", 9}, {"COM16:", 16}, {"com3", 3},  {"COM0:", 0},
      {"COM17:", 0}, {"COM01", 0},  {"COM", 0},   {"COM:", 0},    {"", 0},      {":", 0},
      {"COM1::", 0}, {"COM1 :", 0}, {"LPT1", 0},  {"XCOM1", 0},   {"COM1x", 0}, {"/dev/ttyS0", 0},
  };
  for (const auto& [name, number] : cases) EXPECT_EQ(PortNumber(name), number) << name;
}

TEST(PortName, DeviceIsTheVariableOrTheUartOneBelow) {
  EXPECT_EQ(PortVariable(16), "VT63X_COM16");
  EXPECT_EQ(PortDevice(1, nullptr), "/dev/ttyS0");
  EXPECT_EQ(PortDevice(16, ""), "/dev/ttyS15");
  EXPECT_EQ(PortDevice(3, "/dev/ttyUSB0"), "/dev/ttyUSB0");
}

TEST(ErrnoMap, DeviceThatDoesNotAnswerIsAbsentAtOpeningAndGoneInUse) {
  EXPECT_EQ(OpenError(EIO), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(UseError(EIO), ERROR_DEVICE_NOT_CONNECTED);
  EXPECT_EQ(OpenError(EBUSY), ERROR_ACCESS_DENIED);
  EXPECT_EQ(OpenError(EACCES), ERROR_PRIVILEGE_NOT_HELD);
  EXPECT_EQ(UseError(EDOM), ERROR_GEN_FAILURE);
}

TEST(TimeoutPlan, ReadFormsAndTheirNeighbours) {
  // `wanted`: for a read of 3 bytes
  using Case = std::tuple<DWORD, DWORD, DWORD, bool, DWORD, std::int64_t>;
  constexpr std::int64_t kNone = -1;
  const Case cases[] = {
      {MAXDWORD, 0, 0, true, 0, 0},
      {MAXDWORD, MAXDWORD, 1, true, 1, 1},
      {MAXDWORD, MAXDWORD, MAXDWORD - 1, true, 1, MAXDWORD - 1},
      {MAXDWORD, MAXDWORD, MAXDWORD, false, 0, 0},
      {MAXDWORD, MAXDWORD, 0, false, 0, 0},
      {MAXDWORD, 0, 500, false, 0, 0},
      {0, 0, 0, true, 3, kNone},
      {0, 10, 7, true, 3, 37},
      {0, MAXDWORD, MAXDWORD, true, 3, MAXDWORD},  // cut to the longest limit
      {1, 0, 0, false, 0, 0},
      {MAXDWORD - 1, MAXDWORD, 500, false, 0, 0},
  };
  for (const auto& [interval, multiplier, constant, supported, wanted, limit_ms] : cases) {
    const COMMTIMEOUTS timeouts{interval, multiplier, constant, 0, 0};
    SCOPED_TRACE(testing::Message() << interval << " " << multiplier << " " << constant);
    EXPECT_EQ(IsSupported(timeouts), supported);
    if (!supported) continue;
    const TransferPlan plan = PlanRead(timeouts, 3);
    EXPECT_EQ(plan.wanted, wanted);
    EXPECT_EQ(plan.limit ? plan.limit->count() : kNone, limit_ms);
    EXPECT_EQ(PlanRead(timeouts, 0).wanted, 0u);
  }
}

TEST(TimeoutPlan, WriteAlwaysHasALimit) {
  EXPECT_EQ(PlanWrite({0, 0, 0, 0, 0}, 9).limit, milliseconds(5000));
  EXPECT_EQ(PlanWrite({0, 0, 0, 2, 5}, 9).limit, milliseconds(23));
  EXPECT_EQ(PlanWrite({0, 0, 0, MAXDWORD, MAXDWORD}, MAXDWORD).limit, kLongestLimit);
  EXPECT_EQ(PlanWrite({0, 0, 0, 0, 0}, 9).wanted, 9u);
}

TEST(TtySettings, EveryOtherBitOfTheSettingsIsRefused) {
  const DCB good = SettingsWithRate(9600);
  for (std::size_t bit = 0; bit < 8 * sizeof(DCB); ++bit) {
    const std::size_t at = bit / 8;
    if (at >= offsetof(DCB, BaudRate) && at < offsetof(DCB, BaudRate) + sizeof(DWORD)) continue;
    unsigned char bytes[sizeof(DCB)];
    std::memcpy(bytes, &good, sizeof bytes);
    bytes[at] = static_cast<unsigned char>(bytes[at] ^ (1 << bit % 8));
    DCB spoilt;
    std::memcpy(&spoilt, bytes, sizeof bytes);
    EXPECT_FALSE(IsSupported(spoilt)) << "bit " << bit;
  }
  EXPECT_FALSE(IsSupported(SettingsWithRate(0)));
  EXPECT_TRUE(IsSupported(SettingsWithRate(1)));
  EXPECT_TRUE(IsSupported(SettingsWithRate(kHighestBitRate)));
  EXPECT_FALSE(IsSupported(SettingsWithRate(kHighestBitRate + 1)));
}

TEST(TtySettings, RawKeepsTheRateAndNothingElse) {
  termios2 settings{};
  settings.c_iflag = IXON | ICRNL | ISTRIP;
  settings.c_oflag = OPOST;
  settings.c_lflag = ICANON | ECHO | ISIG;
  settings.c_cflag = B57600 | (B57600 << IBSHIFT) | CS7 | PARENB | CSTOPB | CRTSCTS | HUPCL;
  MakeRaw(&settings);
  EXPECT_EQ(settings.c_iflag, 0u);
  EXPECT_EQ(settings.c_oflag, 0u);
  EXPECT_EQ(settings.c_lflag, 0u);
  EXPECT_EQ(settings.c_cflag, tcflag_t{B57600 | (B57600 << IBSHIFT) | CS8 | CREAD | CLOCAL});
  EXPECT_EQ(settings.c_cc[VMIN], 0);
  EXPECT_EQ(settings.c_cc[VTIME], 1);
}

TEST(TtySettings, RateIsAConstantWhereThereIsOneAndANumberElsewhere) {
  for (const auto& [rate, constant] :
       {std::pair<DWORD, tcflag_t>{14400, BOTHER}, {57600, B57600}}) {
    termios2 settings{};
    settings.c_cflag = B38400 | (B38400 << IBSHIFT) | CS8;
    SetBitRate(&settings, rate);
    EXPECT_EQ(settings.c_cflag, constant | (constant << IBSHIFT) | CS8) << rate;
    EXPECT_EQ(settings.c_ispeed, rate);
  }
}

TEST(TtySettings, RateToleranceEndsAtThreePercent) {
  EXPECT_TRUE(IsCloseTo(9888, 9600));
  EXPECT_FALSE(IsCloseTo(9889, 9600));
  EXPECT_TRUE(IsCloseTo(9312, 9600));
  EXPECT_FALSE(IsCloseTo(9311, 9600));
  EXPECT_FALSE(IsCloseTo(MAXDWORD, 4000000));
}

TEST(HandleTable, NoValueComesTwiceAndStaleOnesReachNothing) {
  HandleTable table;
  std::set<HANDLE> seen{nullptr, INVALID_HANDLE_VALUE};
  HANDLE stale = nullptr;
  for (int round = 0; round < 1000; ++round) {
    const HANDLE handle = table.Add(std::make_shared<Event>());
    EXPECT_TRUE(seen.insert(handle).second);
    EXPECT_EQ(table.Find(stale), nullptr);
    EXPECT_EQ(table.Remove(stale), nullptr);
    EXPECT_NE(table.Remove(handle), nullptr);
    stale = handle;
  }
}

TEST(HandleTable, FullTableRefusesAndRecovers) {
  HandleTable table;
  const auto object = std::make_shared<Event>();
  std::vector<HANDLE> handles;
  for (std::size_t i = 0; i < HandleTable::kCapacity; ++i) handles.push_back(table.Add(object));
  EXPECT_NE(handles.back(), nullptr);
  EXPECT_EQ(table.Add(object), nullptr);
  table.Remove(handles[100]);
  EXPECT_NE(table.Add(object), nullptr);
}

}  // namespace
}  // namespace vt63x::kernel
