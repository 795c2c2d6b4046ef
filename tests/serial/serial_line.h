// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_SERIAL_SERIAL_LINE_H
#define VT63X_TESTS_SERIAL_SERIAL_LINE_H

#include <string>

#include "frontend/register_control.h"
#include "serial/port_control.h"
#include "serial/serial_bus.h"
#include "simulator/pty_server.h"
#include "tests/support/program_state.h"

namespace vt63x {

// A chip that misbehaves, as vt63x-sim --fault writes it.
inline PtyServer::Options Misbehaving(const char* fault) {
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

}  // namespace vt63x

#endif
