// SPDX-License-Identifier: MIT

#ifndef VT63X_CONTACTLESS_OPERATION_CONTROL_H
#define VT63X_CONTACTLESS_OPERATION_CONTROL_H

// OperationControl configures the chip by meaning: each setting has a group and an attribute in
// it, two byte parameters (16-bit values low byte in param_a, high byte in param_b) and sometimes
// a buffer. operation_settings.cpp lists the registers behind each.
//
//   group, attribute           set                                           get
//   0, 0     version           -                                             param_a
//   1, 3     type A speeds     param_a transmit, param_b receive: 0, 1       -
//   2, 1     serial speed      param_a 0..8                                  -
//   5, 0x11  signal routing    param_a 0, param_b 0x11                       -
//   6, 0     timer             param_a start, param_b restart: 0, 1;         -
//                              buffer: prescaler low, high (0..15), reload low, high
//   6, 1     timer start       param_a 0, 1                                  -
//   6, 2     timer restart     param_a 0, 1                                  -
//   6, 3     timer gating      param_a 0..3                                  -
//   6, 4     timer prescaler   param_a low, param_b high: 0..15              -
//   6, 5     timer reload      param_a low, param_b high                     -
//   6, 6     timer counter     -                                             16 bits
//   7, 0     CRC preset        param_a 0..3                                  -
//   7, 1     CRC result        -                                             16 bits
//   7, 2     CRC bit order     param_a: 1 most significant bit first         -
//   7, 3     CRC of data       param_a length 0..64; buffer: the data;       -
//                              the result comes back in param_a, param_b
//
// Type A speeds above 1 are refused: their modulation width is not settled for any chip version.
// So is a routing with param_b 0. A null buffer where the setting reads one is refused too.

#include <cstdint>

#include "contactless/chip_command.h"
#include "contactless/operation_settings.h"
#include "frontend/register_control.h"
#include "frontend/status.h"

namespace vt63x {

struct OperationControlCore;

struct opp {
  std::uint8_t group;
  std::uint8_t attribute;
  std::uint8_t param_a;  // in or out
  std::uint8_t param_b;  // in or out
  std::uint8_t* buffer;  // only read; may be null where a setting has none
  OperationControlCore* self;
};

// Value of `version` until the chip has been asked. A chip that really answers this is asked again
// each time.
inline constexpr std::uint8_t kVersionUnknown = 0xB1;

struct operation_control_members {
  std::uint8_t version;
  const DefaultRow* default_table;  // of that version; null until the chip has been asked
};

struct OperationControlCore {
  void (*SetWaitCallback)(set_wait_callback_param*);
  // HFL_INVALID_PARAMETER before any access of the setting for what is unknown or out of range
  // (group 1 always leaves the authenticated state first), HFL_NOT_SUPPORTED for what can only be
  // read. The first call that reaches the chip reads its version.
  HFLSTATUS (*SetAttribute)(opp*);
  // HFL_NOT_SUPPORTED for what can only be set. A failing read leaves its byte as it was.
  HFLSTATUS (*GetAttribute)(opp*);
  operation_control_members* members;
  void* owner;
  void* wait_cb_context;
  wait_event_cb wait_cb;
  RegisterControlCore* lower;
};

class OperationControlInterface {
 public:
  virtual void SetWaitCallback(set_wait_callback_param* param) = 0;
  virtual HFLSTATUS SetAttribute(opp* param) = 0;
  virtual HFLSTATUS GetAttribute(opp* param) = 0;

 protected:
  OperationControlInterface() = default;
  ~OperationControlInterface() = default;
  OperationControlInterface(const OperationControlInterface&) = delete;
  OperationControlInterface& operator=(const OperationControlInterface&) = delete;
};

// Fills `core` for use over `lower`, without a wait callback and with the version unknown.
void OperationControlOpen(OperationControlCore* core, operation_control_members* members,
                          RegisterControlCore* lower);
using OperationControlOpenFunction = void (*)(OperationControlCore*, operation_control_members*,
                                              RegisterControlCore*);

class OperationControlWrapper final : public OperationControlInterface, public RegisterControlUser {
 public:
  // Once, before any operation. The port need not be open yet.
  void Init(OperationControlOpenFunction open, RegisterControlInterface* lower_registers);

  void SetWaitCallback(set_wait_callback_param* param) override;
  HFLSTATUS SetAttribute(opp* param) override;
  HFLSTATUS GetAttribute(opp* param) override;

  OperationControlCore core{};
  operation_control_members members{};

 private:
  RegisterControlForwarder forwarder_;
};

}  // namespace vt63x

#endif
