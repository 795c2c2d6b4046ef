// SPDX-License-Identifier: MIT

#ifndef VT63X_SERIAL_SERIAL_BUS_H
#define VT63X_SERIAL_SERIAL_BUS_H

// SerialBus on a real port: one overlapped transfer of one byte per call, waited for at once.
//
// A read waits as long as the port's time-outs say (500 ms, serial/port_control.h), and a write
// until the port has taken the byte. Nothing is pending when an operation returns, and nothing is
// buffered here. Used from one thread at a time, under AppState::stack_lock.

#include <windows.h>

#include "frontend/serial_bus_interface.h"

namespace vt63x {

// Fills `core`; `handle` is where the component finds the port. It stays null until port control
// puts an open port there; operations without one return HFL_LINK_FAILED.
void SerialBusOpen(SerialBusCore* core, HANDLE* handle);
using SerialBusOpenFunction = void (*)(SerialBusCore*, HANDLE*);

class SerialBusWrapper final : public SerialBusInterface {
 public:
  // Once, before any operation.
  void Init(SerialBusOpenFunction open);

  HFLSTATUS WriteByte(bus_byte_param* param) override;
  HFLSTATUS ReadByte(bus_byte_param* param) override;

  HANDLE handle = nullptr;  // an overlapped port; not owned
  SerialBusCore core{};
};

}  // namespace vt63x

#endif
