// SPDX-License-Identifier: MIT

#include "contactless/exchange.h"

#include "contactless/register_sequence.h"
#include "contactless/wait_callback.h"
#include "frontend/chip_registers.h"
#include "frontend/wrapper_call.h"

namespace vt63x {
namespace {

constexpr std::uint16_t kAuthenticationLength = 12;

bool Ready(const ExchangeCore* self) { return *self->members != 0; }

HFLSTATUS Transceive(transceive_param* param) {
  if (!Ready(param->self)) return HFL_NOT_READY;
  single_command_param command = CommandOf(param->self, kCommandTransceive);
  command.send_buffer = param->send_buffer;
  command.send_length = param->send_length;
  command.receive_buffer = param->receive_buffer;
  command.receive_length = param->receive_length;
  const HFLSTATUS status = ExecuteSingleCommand(&command);
  param->receive_length = command.receive_length;
  param->receive_last_bits = command.receive_last_bits;
  return status;
}

HFLSTATUS Transmit(transmit_param* param) {
  if (!Ready(param->self)) return HFL_NOT_READY;
  single_command_param command = CommandOf(param->self, kCommandTransmit);
  command.send_buffer = param->data;
  command.send_length = param->length;
  return ExecuteSingleCommand(&command);
}

HFLSTATUS Receive(receive_param* param) {
  if (!Ready(param->self)) return HFL_NOT_READY;
  single_command_param command = CommandOf(param->self, kCommandReceive);
  command.receive_buffer = param->receive_buffer;
  command.receive_length = param->receive_length;
  const HFLSTATUS status = ExecuteSingleCommand(&command);
  param->receive_length = command.receive_length;
  param->receive_last_bits = command.receive_last_bits;
  return status;
}

HFLSTATUS Authenticate(transmit_param* param) {
  if (!Ready(param->self)) return HFL_NOT_READY;
  if (param->length != kAuthenticationLength) return HFL_INVALID_PARAMETER;
  single_command_param command = CommandOf(param->self, kCommandAuthenticate);
  command.send_buffer = param->data;
  command.send_length = param->length;
  const HFLSTATUS status = ExecuteSingleCommand(&command);
  if (status != HFL_SUCCESS) return status;
  RegisterSequence chip(param->self->lower);
  const bool encrypts = (chip.Read(reg::kCryptoStatus) & reg::kCryptoActive) != 0;
  if (!chip.ok()) return chip.status();
  return encrypts ? HFL_SUCCESS : HFL_AUTHENTICATION_FAILED;
}

}  // namespace

void ExchangeOpen(ExchangeCore* core, std::uint8_t* members, RegisterControlCore* lower,
                  std::uint8_t /*flag*/) {
  core->SetWaitCallback = StoreWaitCallback<ExchangeCore>;
  core->Transceive = Transceive;
  core->Transmit = Transmit;
  core->Receive = Receive;
  core->Authenticate = Authenticate;
  core->members = members;
  core->wait_cb_context = nullptr;
  core->wait_cb = nullptr;
  core->lower = lower;
  *members = 1;
}

void ExchangeWrapper::Init(ExchangeOpenFunction open, RegisterControlInterface* lower_registers,
                           std::uint8_t flag) {
  open(&core, &members, &forwarder_, flag);
  lower = lower_registers;
}

void ExchangeWrapper::SetWaitCallback(set_wait_callback_param* param) {
  CallSetWaitCallback(core, param);
}

HFLSTATUS ExchangeWrapper::Transceive(transceive_param* param) {
  forwarder_.owner = static_cast<RegisterControlUser*>(this);
  return CallSlot(core, core.Transceive, param);
}

HFLSTATUS ExchangeWrapper::Transmit(transmit_param* param) {
  forwarder_.owner = static_cast<RegisterControlUser*>(this);
  return CallSlot(core, core.Transmit, param);
}

HFLSTATUS ExchangeWrapper::Receive(receive_param* param) {
  forwarder_.owner = static_cast<RegisterControlUser*>(this);
  return CallSlot(core, core.Receive, param);
}

HFLSTATUS ExchangeWrapper::Authenticate(transmit_param* param) {
  forwarder_.owner = static_cast<RegisterControlUser*>(this);
  return CallSlot(core, core.Authenticate, param);
}

}  // namespace vt63x
