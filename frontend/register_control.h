// SPDX-License-Identifier: MIT

#ifndef VT63X_FRONTEND_REGISTER_CONTROL_H
#define VT63X_FRONTEND_REGISTER_CONTROL_H

// Register access over the chip's serial host interface. On the line:
//
//   read    host: address | 0x80                 chip: value
//   write   host: address & 0x7F, then data      chip: address & 0x7F (echo)
//
// There is no framing, checksum or retry. Registers are 0x00 to 0x3F; the range is not checked.
// Bus statuses (HFL_LINK_FAILED, HFL_NO_EVENT, HFL_NOT_READY) pass up unchanged from the first
// transfer that fails.

#include <cstdint>

#include "frontend/serial_bus_interface.h"
#include "frontend/status.h"

namespace vt63x {

struct RegisterControlCore;

struct setreg_param {
  std::uint8_t address;
  std::uint8_t data;
  RegisterControlCore* self;
};

struct getreg_param {
  std::uint8_t address;
  std::uint8_t data;  // out: the value; 0 after a failed read, untouched after a failed write
  RegisterControlCore* self;
};

struct modify_param {
  std::uint8_t address;
  std::uint8_t mask;  // the bits to change
  std::uint8_t set;   // non-zero sets them, 0 clears them
  RegisterControlCore* self;
};

struct setmulti_param {
  std::uint8_t address;
  std::uint16_t length;        // bytes, any value; callers move at most 255
  const std::uint8_t* buffer;  // the values to write, in order, all to `address`
  RegisterControlCore* self;
};

struct getmulti_param {
  std::uint8_t address;
  std::uint16_t length;  // bytes, any value; `buffer` has room for them
  std::uint8_t* buffer;  // out: the values read from `address`, in order
  RegisterControlCore* self;
};

struct RegisterControlCore {
  HFLSTATUS (*SetRegister)(setreg_param*);
  HFLSTATUS (*GetRegister)(getreg_param*);
  // Reads, changes and writes back, also when the value stays the same.
  HFLSTATUS (*ModifyRegister)(modify_param*);
  // These two stop at the first access that fails.
  HFLSTATUS (*SetRegisterMultiple)(setmulti_param*);
  HFLSTATUS (*GetRegisterMultiple)(getmulti_param*);
  std::uint8_t* members;  // one byte, 0, for which no operation has a use; null in a forwarder
  void* owner;            // forwarders only: the wrapper, as a RegisterControlUser
  SerialBusCore* lower;   // null in a forwarder
};

class RegisterControlInterface {
 public:
  virtual HFLSTATUS SetRegister(setreg_param* param) = 0;
  virtual HFLSTATUS GetRegister(getreg_param* param) = 0;
  virtual HFLSTATUS ModifyRegister(modify_param* param) = 0;
  virtual HFLSTATUS SetRegisterMultiple(setmulti_param* param) = 0;
  virtual HFLSTATUS GetRegisterMultiple(getmulti_param* param) = 0;

 protected:
  RegisterControlInterface() = default;
  ~RegisterControlInterface() = default;
  RegisterControlInterface(const RegisterControlInterface&) = delete;
  RegisterControlInterface& operator=(const RegisterControlInterface&) = delete;
};

// Fills `core` for use over `lower` and sets the members byte to 0.
void RegisterControlOpen(RegisterControlCore* core, std::uint8_t* members, SerialBusCore* lower);
using RegisterControlOpenFunction = void (*)(RegisterControlCore*, std::uint8_t*, SerialBusCore*);

// RegisterControl's way down: `owner` is the RegisterControlWrapper.
struct SerialBusForwarder : SerialBusCore {
  SerialBusForwarder();
};

class RegisterControlWrapper final : public RegisterControlInterface {
 public:
  // Once, before any operation. The port need not be open yet.
  void Init(RegisterControlOpenFunction open, SerialBusInterface* lower_bus);

  HFLSTATUS SetRegister(setreg_param* param) override;
  HFLSTATUS GetRegister(getreg_param* param) override;
  HFLSTATUS ModifyRegister(modify_param* param) override;
  HFLSTATUS SetRegisterMultiple(setmulti_param* param) override;
  HFLSTATUS GetRegisterMultiple(getmulti_param* param) override;

  SerialBusInterface* lower = nullptr;
  RegisterControlCore core{};
  std::uint8_t members = 0;

 private:
  SerialBusForwarder forwarder_;
};

// Base of the wrappers above RegisterControl, so that one forwarder serves them all.
struct RegisterControlUser {
  RegisterControlInterface* lower = nullptr;
};

// The way down of a component above RegisterControl: `owner` is its wrapper, converted to
// RegisterControlUser*.
struct RegisterControlForwarder : RegisterControlCore {
  RegisterControlForwarder();
};

}  // namespace vt63x

#endif
