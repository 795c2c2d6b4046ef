// SPDX-License-Identifier: MIT

#include "serial/port_control.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "frontend/register_control.h"
#include "serial/serial_bus.h"
#include "simulator/pty_server.h"
#include "tests/support/program_state.h"

namespace vt63x {
namespace {

// A chip that misbehaves, as vt63x-sim --fault writes it.
PtyServer::Options Misbehaving(const char* fault) {
  std::string error;
  PtyServer::Options options;
  options.faults.push_back(ParseFault(fault, error).value());
  return options;
}

// The program's state with its bus and register control, and COM3: on a simulated chip.
struct SerialLine : ProgramState {
  explicit SerialLine(const PtyServer::Options& options = {}) : server(options) {
    bus.Init(SerialBusOpen);
    registers.Init(RegisterControlOpen, &bus);
    state.component_ptrs.serial_bus = &bus;
    state.component_ptrs.register_control = &registers;
    state.port_index = 2;
    SetEnvironmentVariableA("VT63X_COM3", server.path().c_str());
  }
  ~SerialLine() {
    ClosePort(&action);
    SetEnvironmentVariableA("VT63X_COM3", nullptr);
  }

  HFLSTATUS Read(std::uint8_t address, std::uint8_t& data) {
    getreg_param param{address, 0, nullptr};
    const HFLSTATUS status = registers.GetRegister(&param);
    data = param.data;
    return status;
  }
  HFLSTATUS Write(std::uint8_t address, std::uint8_t data) {
    setreg_param param{address, data, nullptr};
    return registers.SetRegister(&param);
  }

  PtyServer server;
  SerialBusWrapper bus;
  RegisterControlWrapper registers;
};

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

// Windows finds no COM10 under its short name.
TEST(PortControlTest, TwoDigitPortsAreOpenedByTheirLongNames) {
  EXPECT_EQ(PortDeviceName("COM1:"), "COM1:");
  EXPECT_EQ(PortDeviceName("COM9:"), "COM9:");
  EXPECT_EQ(PortDeviceName("COM10:"), R"(\\.\COM10)");
  EXPECT_EQ(PortDeviceName("COM16:"), R"(\\.\COM16)");
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

double ElapsedMs(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

TEST(SerialBusTest, WithoutAPortBothOperationsFailAndTouchNothing) {
  SerialBusWrapper bus;
  bus.Init(SerialBusOpen);
  SerialBusCore* const garbage = reinterpret_cast<SerialBusCore*>(0x10);
  bus_byte_param param{0x55, garbage};
  EXPECT_EQ(bus.WriteByte(&param), HFL_LINK_FAILED);
  EXPECT_EQ(bus.ReadByte(&param), HFL_LINK_FAILED);
  EXPECT_EQ(param.data, 0x55);
  EXPECT_EQ(param.self, garbage);
}

TEST(SerialBusTest, ReadGivesUpAfterHalfASecondNotBefore) {
  SerialLine line;
  OpenPort(&line.action);
  bus_byte_param param{0x55, nullptr};
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(line.bus.ReadByte(&param), HFL_LINK_FAILED);
  EXPECT_GE(ElapsedMs(start), 499.0);
  EXPECT_LT(ElapsedMs(start), 20'000.0);
  EXPECT_EQ(param.data, 0x55);
}

TEST(SerialBusTest, BytesGoOutInOrderAndAnswersWaitInTheDriver) {
  SerialLine line;
  OpenPort(&line.action);
  for (const int byte : {0x2A, 0x17, 0xAA, 0xB7}) {
    bus_byte_param param{static_cast<std::uint8_t>(byte), nullptr};
    EXPECT_EQ(line.bus.WriteByte(&param), HFL_SUCCESS);
  }
  for (const int expected : {0x2A, 0x17, 0x91}) {
    bus_byte_param param{0, nullptr};
    EXPECT_EQ(line.bus.ReadByte(&param), HFL_SUCCESS);
    EXPECT_EQ(param.data, expected);
  }
}

TEST(SerialBusTest, LineThatGoesAwayFailsEveryAccessAtOnce) {
  SerialLine line(Misbehaving("hang-up@2"));
  OpenPort(&line.action);
  std::uint8_t data = 0;
  EXPECT_EQ(line.Read(0x37, data), HFL_SUCCESS);
  EXPECT_EQ(line.Read(0x37, data), HFL_LINK_FAILED);
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(line.Read(0x37, data), HFL_LINK_FAILED);
  EXPECT_LT(ElapsedMs(start), 20'000.0) << "a time-out each would take 500 s";
}

}  // namespace
}  // namespace vt63x
