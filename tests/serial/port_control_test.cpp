// SPDX-License-Identifier: MIT

#include "serial/port_control.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/serial/serial_line.h"

namespace vt63x {
namespace {

TEST(PortControlTest, OpenPortStartsAt9600AndReachesTheChip) {
  SerialLine line;
  line.state.baudrate_index = 2;
  OpenPort(&line.action);
  EXPECT_NE(line.state.port_handle, nullptr);
  EXPECT_EQ(line.bus.handle, line.state.port_handle);
  EXPECT_EQ(line.state.baudrate_index, 0);
  EXPECT_EQ(line.view.bit_rates, std::vector<std::string>({"9600"}));
  EXPECT_EQ(line.view.port_states, std::vector<bool>({true}));
  EXPECT_EQ(line.log(), "");
  std::uint8_t data = 0;
  EXPECT_EQ(line.Read(0x37, data), HFL_SUCCESS);
  EXPECT_EQ(data, 0x91);
}

TEST(PortControlTest, PortThatCannotBeOpenedLeavesALineAndStaysClosed) {
  SerialLine line;
  SetEnvironmentVariableA("VT63X_COM3", "/nowhere/at/all");
  OpenPort(&line.action);
  EXPECT_EQ(line.state.port_handle, nullptr);
  EXPECT_EQ(line.log(), "Error opening port - Check and verify (!) settings.\r\n");
  EXPECT_TRUE(line.view.port_states.empty());
  EXPECT_EQ(line.view.failed_port, "COM3:");
  EXPECT_EQ(line.view.port_error, ERROR_FILE_NOT_FOUND);
}

TEST(PortControlTest, PortInUseIsRefusedAndKeepsItsFirstUser) {
  SerialLine first;
  OpenPort(&first.action);
  ProgramState second;
  SerialBusWrapper bus;
  bus.Init(SerialBusOpen);
  second.state.component_ptrs.serial_bus = &bus;
  second.state.port_index = 2;
  OpenPort(&second.action);
  EXPECT_EQ(second.view.port_error, ERROR_ACCESS_DENIED);
  std::uint8_t data = 0;
  EXPECT_EQ(first.Read(0x37, data), HFL_SUCCESS);
}

TEST(PortControlTest, ClosedPortFailsEveryAccessAndCanBeOpenedAgain) {
  SerialLine line;
  OpenPort(&line.action);
  ClosePort(&line.action);
  EXPECT_EQ(line.state.port_handle, nullptr);
  EXPECT_EQ(line.bus.handle, nullptr);
  std::uint8_t data = 0;
  EXPECT_EQ(line.Read(0x37, data), HFL_LINK_FAILED);
  EXPECT_EQ(line.view.port_states, std::vector<bool>({true, false}));
  OpenPort(&line.action);
  EXPECT_EQ(line.Read(0x37, data), HFL_SUCCESS);
}

TEST(PortControlTest, SettingsOfAClosedPortAreRefusedWithTheInvalidHandle) {
  SerialLine line;
  EXPECT_EQ(SetPortBitRate(&line.action, 9600), ERROR_INVALID_HANDLE);
  EXPECT_EQ(SetPortTimeouts(&line.action), ERROR_INVALID_HANDLE);
  EXPECT_FALSE(PurgePort(&line.action));
  EXPECT_EQ(SetHostBaud115200(&line.action), ERROR_INVALID_HANDLE);
  EXPECT_EQ(line.state.baudrate_index, 2);
  ClosePort(&line.action);
  EXPECT_EQ(line.state.baudrate_index, 0);
}

TEST(PortControlTest, HostRateAloneLosesTheChipAndBackFindsIt) {
  SerialLine line;
  OpenPort(&line.action);
  EXPECT_EQ(SetHostBaud115200(&line.action), ERROR_SUCCESS);
  std::uint8_t data = 0;
  EXPECT_EQ(line.Read(0x37, data), HFL_LINK_FAILED);
  EXPECT_EQ(SetHostBaud9600(&line.action), ERROR_SUCCESS);
  PurgePort(&line.action);
  EXPECT_EQ(line.Read(0x37, data), HFL_SUCCESS);
  EXPECT_EQ(SetPortBitRate(&line.action, 0), ERROR_INVALID_PARAMETER);
}

TEST(PortControlTest, ChipAndHostSwitchTogether) {
  SerialLine line;
  OpenPort(&line.action);
  SwitchAllTo115k(&line.action);
  EXPECT_EQ(line.state.baudrate_index, 2);
  EXPECT_EQ(line.view.bit_rates.back(), "115200");
  std::uint8_t data = 0;
  EXPECT_EQ(line.Read(0x1F, data), HFL_SUCCESS);
  EXPECT_EQ(data, 0x79);
  EXPECT_EQ(line.log(), "");
}

TEST(PortControlTest, ChipThatDoesNotAnswerLeavesTheHostAtItsRate) {
  SerialLine line(Misbehaving("silence"));
  OpenPort(&line.action);
  SwitchAllTo115k(&line.action);
  EXPECT_EQ(line.log(), "Error: HFLSTATUS 0x0104 attempting to change Vt63x config!\r\n");
  EXPECT_EQ(line.state.baudrate_index, 0);
}

TEST(PortControlTest, PurgeThrowsAnUnreadAnswerAway) {
  SerialLine line;
  OpenPort(&line.action);
  bus_byte_param read_version{0xB7, nullptr};
  line.bus.WriteByte(&read_version);
  while (line.server.reads() == 0) std::this_thread::yield();
  line.server.Stop();  // by then the answer has been handed over
  EXPECT_TRUE(PurgePort(&line.action));
  bus_byte_param answer{0, nullptr};
  EXPECT_EQ(line.bus.ReadByte(&answer), HFL_LINK_FAILED);
}

}  // namespace
}  // namespace vt63x
