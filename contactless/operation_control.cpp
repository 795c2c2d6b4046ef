// SPDX-License-Identifier: MIT

#include "contactless/operation_control.h"

#include "contactless/register_sequence.h"
#include "contactless/wait_callback.h"
#include "frontend/chip_registers.h"
#include "frontend/wrapper_call.h"

namespace vt63x {
namespace {

constexpr std::uint8_t kTypeAGroup = 1;
constexpr std::uint8_t kCrcGroup = 7;
constexpr std::uint8_t kCrcResult = 1;
constexpr std::uint8_t kHighestPrescalerHigh = 15;

HFLSTATUS GetAttribute(opp* param) {
  const Reading* const reading = FindReading(param->group, param->attribute);
  if (reading == nullptr) return StatusWithoutReading(param->group, param->attribute);
  const bool has_high_byte = reading->high_address != kNoRegister;
  RegisterSequence chip(param->self->lower);
  if (has_high_byte) {
    const std::uint8_t high = chip.Read(reading->high_address);
    if (!chip.ok()) return chip.status();
    param->param_b = high;
  }
  const std::uint8_t low = chip.Read(reading->low_address);
  if (!chip.ok()) return chip.status();
  param->param_a = low;
  if (!has_high_byte) param->param_b = 0;
  return HFL_SUCCESS;
}

HFLSTATUS LearnVersion(OperationControlCore* self) {
  operation_control_members* const members = self->members;
  if (members->version != kVersionUnknown) return HFL_SUCCESS;
  RegisterSequence chip(self->lower);
  const std::uint8_t version = chip.Read(reg::kVersion);
  if (!chip.ok()) return chip.status();
  members->version = version;
  members->default_table = TypeADefaults(version);
  return HFL_SUCCESS;
}

bool InRange(std::uint8_t value, ByteRange range) {
  return value >= range.lowest && value <= range.highest;
}

bool ParametersFit(const Setting& setting, const opp& param) {
  if (!InRange(param.param_a, setting.param_a)) return false;
  if (!InRange(param.param_b, setting.param_b)) return false;
  if (setting.reads_timer_buffer) {
    return param.buffer != nullptr && param.buffer[1] <= kHighestPrescalerHigh;
  }
  const bool sends_buffer = setting.sequel == Sequel::kCrcCalculation && param.param_a > 0;
  return !sends_buffer || param.buffer != nullptr;
}

std::uint8_t ValueOf(AttributeSource source, const opp& param) {
  switch (source) {
    case AttributeSource::kNone:
      return 0;
    case AttributeSource::kParamA:
      return param.param_a;
    case AttributeSource::kParamB:
      return param.param_b;
    case AttributeSource::kBuffer0:
      return param.buffer[0];
    case AttributeSource::kBuffer1:
      return param.buffer[1];
    case AttributeSource::kBuffer2:
      return param.buffer[2];
    case AttributeSource::kBuffer3:
      return param.buffer[3];
    case AttributeSource::kSpeedCode:
      return SpeedCode(param.param_a);
  }
  return 0;
}

void Carry(const RegisterAction& action, std::uint8_t value, RegisterSequence& chip) {
  switch (action.access) {
    case AttributeAccess::kWrite:
      return chip.Write(action.address, action.constant | value);
    case AttributeAccess::kMerge:
      return chip.Merge(action.address, action.mask, action.constant | (value << action.shift));
    case AttributeAccess::kSwitch:
      return chip.Modify(action.address, action.mask, value == 1 ? 1 : 0);
  }
}

void SetModulation(const opp& param, RegisterSequence& chip) {
  chip.Write(reg::kModulationWidth, param.param_a == 1 ? 0x15 : 0x26);
  if (param.param_a == 1) return;
  for (const DefaultRow* row = param.self->members->default_table; row->address != kEndOfDefaults;
       ++row) {
    chip.Merge(row->address, row->keep, row->set);
  }
}

HFLSTATUS CalculateCrc(opp* param) {
  single_command_param command = CommandOf(param->self, kCommandCalculateCrc);
  command.send_buffer = param->buffer;
  command.send_length = param->param_a;
  const HFLSTATUS status = ExecuteSingleCommand(&command);
  if (status != HFL_SUCCESS) return status;
  opp result{kCrcGroup, kCrcResult, 0, 0, nullptr, param->self};
  const HFLSTATUS read_status = GetAttribute(&result);
  param->param_a = result.param_a;
  param->param_b = result.param_b;
  return read_status;
}

HFLSTATUS SetAttribute(opp* param) {
  const HFLSTATUS version_status = LearnVersion(param->self);
  if (version_status != HFL_SUCCESS) return version_status;
  RegisterSequence chip(param->self->lower);
  if (param->group == kTypeAGroup) chip.ClearBits(reg::kCryptoStatus, reg::kCryptoActive);
  if (!chip.ok()) return chip.status();
  const Setting* const setting = FindSetting(param->group, param->attribute);
  if (setting == nullptr) return StatusWithoutSetting(param->group, param->attribute);
  if (!ParametersFit(*setting, *param)) return HFL_INVALID_PARAMETER;
  for (const RegisterAction& action : setting->actions) {
    Carry(action, ValueOf(action.source, *param), chip);
  }
  if (setting->sequel == Sequel::kTypeAModulation) SetModulation(*param, chip);
  if (setting->sequel == Sequel::kCrcCalculation) return CalculateCrc(param);
  return chip.status();
}

}  // namespace

void OperationControlOpen(OperationControlCore* core, operation_control_members* members,
                          RegisterControlCore* lower) {
  core->SetWaitCallback = StoreWaitCallback<OperationControlCore>;
  core->SetAttribute = SetAttribute;
  core->GetAttribute = GetAttribute;
  core->members = members;
  core->wait_cb_context = nullptr;
  core->wait_cb = nullptr;
  core->lower = lower;
  members->version = kVersionUnknown;
  members->default_table = nullptr;
}

void OperationControlWrapper::Init(OperationControlOpenFunction open,
                                   RegisterControlInterface* lower_registers) {
  open(&core, &members, &forwarder_);
  lower = lower_registers;
}

void OperationControlWrapper::SetWaitCallback(set_wait_callback_param* param) {
  CallSetWaitCallback(core, param);
}

HFLSTATUS OperationControlWrapper::SetAttribute(opp* param) {
  forwarder_.owner = static_cast<RegisterControlUser*>(this);
  return CallSlot(core, core.SetAttribute, param);
}

HFLSTATUS OperationControlWrapper::GetAttribute(opp* param) {
  forwarder_.owner = static_cast<RegisterControlUser*>(this);
  return CallSlot(core, core.GetAttribute, param);
}

}  // namespace vt63x
