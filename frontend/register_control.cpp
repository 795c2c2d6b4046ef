// SPDX-License-Identifier: MIT

#include "frontend/register_control.h"

#include "frontend/wrapper_call.h"

namespace vt63x {
namespace {

constexpr std::uint8_t kReadFlag = 0x80;
constexpr std::uint8_t kAddressMask = 0x7F;

HFLSTATUS Send(SerialBusCore* bus, std::uint8_t byte) {
  bus_byte_param wbp{byte, bus};
  return bus->WriteByte(&wbp);
}

HFLSTATUS SetRegister(setreg_param* param) {
  SerialBusCore* const bus = param->self->lower;
  const std::uint8_t address = param->address & kAddressMask;
  HFLSTATUS status = Send(bus, address);
  if (status != HFL_SUCCESS) return status;
  status = Send(bus, param->data);
  if (status != HFL_SUCCESS) return status;
  bus_byte_param rbp{0, bus};
  status = bus->ReadByte(&rbp);
  if (status != HFL_SUCCESS) return status;
  if (rbp.data == address) return HFL_SUCCESS;
  // The chip is out of step by up to two bytes, a value and an echo: take them off the line.
  bus->ReadByte(&rbp);
  bus->ReadByte(&rbp);
  return HFL_LINK_FAILED;
}

HFLSTATUS GetRegister(getreg_param* param) {
  SerialBusCore* const bus = param->self->lower;
  const HFLSTATUS status = Send(bus, param->address | kReadFlag);
  if (status != HFL_SUCCESS) return status;
  bus_byte_param rbp{0, bus};
  const HFLSTATUS read_status = bus->ReadByte(&rbp);
  param->data = rbp.data;
  return read_status;
}

HFLSTATUS ModifyRegister(modify_param* param) {
  getreg_param get{param->address, 0, param->self};
  const HFLSTATUS status = GetRegister(&get);
  if (status != HFL_SUCCESS) return status;
  const int value = param->set != 0 ? get.data | param->mask : get.data & ~param->mask;
  setreg_param set{param->address, static_cast<std::uint8_t>(value), param->self};
  return SetRegister(&set);
}

HFLSTATUS SetRegisterMultiple(setmulti_param* param) {
  for (unsigned index = 0; index < param->length; ++index) {
    setreg_param set{param->address, param->buffer[index], param->self};
    const HFLSTATUS status = SetRegister(&set);
    if (status != HFL_SUCCESS) return status;
  }
  return HFL_SUCCESS;
}

HFLSTATUS GetRegisterMultiple(getmulti_param* param) {
  for (unsigned index = 0; index < param->length; ++index) {
    getreg_param get{param->address, 0, param->self};
    const HFLSTATUS status = GetRegister(&get);
    if (status != HFL_SUCCESS) return status;
    param->buffer[index] = get.data;
  }
  return HFL_SUCCESS;
}

// What the wrapper that calls down through a forwarder has below it.
SerialBusInterface* BusBelow(const bus_byte_param* param) {
  return static_cast<RegisterControlWrapper*>(param->self->owner)->lower;
}

template <typename Param>
RegisterControlInterface* RegistersBelow(const Param* param) {
  return static_cast<RegisterControlUser*>(param->self->owner)->lower;
}

}  // namespace

void RegisterControlOpen(RegisterControlCore* core, std::uint8_t* members, SerialBusCore* lower) {
  core->SetRegister = SetRegister;
  core->GetRegister = GetRegister;
  core->ModifyRegister = ModifyRegister;
  core->SetRegisterMultiple = SetRegisterMultiple;
  core->GetRegisterMultiple = GetRegisterMultiple;
  core->members = members;
  core->lower = lower;
  *members = 0;
}

SerialBusForwarder::SerialBusForwarder() : SerialBusCore{} {
  WriteByte = [](bus_byte_param* param) { return BusBelow(param)->WriteByte(param); };
  ReadByte = [](bus_byte_param* param) { return BusBelow(param)->ReadByte(param); };
}

RegisterControlForwarder::RegisterControlForwarder() : RegisterControlCore{} {
  SetRegister = [](setreg_param* p) { return RegistersBelow(p)->SetRegister(p); };
  GetRegister = [](getreg_param* p) { return RegistersBelow(p)->GetRegister(p); };
  ModifyRegister = [](modify_param* p) { return RegistersBelow(p)->ModifyRegister(p); };
  SetRegisterMultiple = [](setmulti_param* p) { return RegistersBelow(p)->SetRegisterMultiple(p); };
  GetRegisterMultiple = [](getmulti_param* p) { return RegistersBelow(p)->GetRegisterMultiple(p); };
}

void RegisterControlWrapper::Init(RegisterControlOpenFunction open, SerialBusInterface* lower_bus) {
  open(&core, &members, &forwarder_);
  lower = lower_bus;
}

HFLSTATUS RegisterControlWrapper::SetRegister(setreg_param* param) {
  forwarder_.owner = this;
  return CallSlot(core, core.SetRegister, param);
}

HFLSTATUS RegisterControlWrapper::GetRegister(getreg_param* param) {
  forwarder_.owner = this;
  return CallSlot(core, core.GetRegister, param);
}

HFLSTATUS RegisterControlWrapper::ModifyRegister(modify_param* param) {
  forwarder_.owner = this;
  return CallSlot(core, core.ModifyRegister, param);
}

HFLSTATUS RegisterControlWrapper::SetRegisterMultiple(setmulti_param* param) {
  forwarder_.owner = this;
  return CallSlot(core, core.SetRegisterMultiple, param);
}

HFLSTATUS RegisterControlWrapper::GetRegisterMultiple(getmulti_param* param) {
  forwarder_.owner = this;
  return CallSlot(core, core.GetRegisterMultiple, param);
}

}  // namespace vt63x
