// SPDX-License-Identifier: MIT

#ifndef VT63X_FRONTEND_SERIAL_BUS_INTERFACE_H
#define VT63X_FRONTEND_SERIAL_BUS_INTERFACE_H

// The component model, shown on its bottom layer.
//
// Every layer of chip access is a component: a plain record of operation slots (function pointers)
// and a few pointers, filled by an open function. A slot takes one pointer to its parameter record
// and returns an HFLSTATUS; the record's last field `self` names the component record that
// executes the call, and a caller never has to fill it.
//
//   SomeWrapper            owns the component record; its virtual operation i puts the record
//     | slot i             into `self`, calls slot i and puts the old `self` back
//   Some component
//     | slot j of `lower`
//   LowerForwarder         a record shaped like the lower component's, inside the wrapper;
//     | virtual j          its `owner` is the wrapper, which knows the lower interface
//   LowerInterface         whatever implements it: the lower wrapper, or a simulator
//
// A stack is used by one thread at a time; nothing here locks. Wrappers are never copied.

#include <cstdint>

#include "frontend/status.h"

namespace vt63x {

struct SerialBusCore;

// Parameter record of both operations of SerialBus.
struct bus_byte_param {
  std::uint8_t data;  // WriteByte: the byte to send; ReadByte: the byte received
  SerialBusCore* self;
};

// SerialBus moves single bytes between the host and the chip.
struct SerialBusCore {
  HFLSTATUS (*WriteByte)(bus_byte_param*);
  HFLSTATUS (*ReadByte)(bus_byte_param*);
  void* members;  // state of the component; null in a forwarder
  void* owner;    // forwarders only: the wrapper that calls down through it
};

// What a bus offers to the layer above. Statuses: 0, HFL_LINK_FAILED when the byte was not sent or
// none came within the line's time-out (`data` then stays as it was), HFL_NO_EVENT, HFL_NOT_READY.
class SerialBusInterface {
 public:
  virtual HFLSTATUS WriteByte(bus_byte_param* param) = 0;
  virtual HFLSTATUS ReadByte(bus_byte_param* param) = 0;

 protected:
  SerialBusInterface() = default;
  ~SerialBusInterface() = default;
  SerialBusInterface(const SerialBusInterface&) = delete;
  SerialBusInterface& operator=(const SerialBusInterface&) = delete;
};

}  // namespace vt63x

#endif
