// SPDX-License-Identifier: MIT

#include "contactless/iso14443a.h"

#include <algorithm>

#include "contactless/anticollision.h"
#include "contactless/command_run.h"
#include "contactless/register_sequence.h"
#include "contactless/wait_callback.h"
#include "frontend/chip_registers.h"
#include "frontend/wrapper_call.h"

namespace vt63x {
namespace {

constexpr std::uint8_t kShortFrame = 0x07;  // bit framing: 7 bits of the only byte

constexpr int kLevels = 3;
constexpr int kLevelBytes = 4;
constexpr int kLevelBits = 32;
constexpr std::uint8_t kCascade = 0x04;  // SAK: the identifier goes on with the next level

bool Ready(const Iso14443ACore* self) { return *self->members != 0; }

std::uint8_t SelectCodeOf(const sel_p& param, int level) {
  if (level == 1) return 0x95;
  if (level == 2) return 0x97;
  return param.select_code;
}

HFLSTATUS Request(req_p* param) {
  if (!Ready(param->self)) return HFL_NOT_READY;
  RegisterSequence chip(param->self->lower);
  chip.ClearBits(reg::kCryptoStatus, reg::kCryptoActive);
  chip.Write(reg::kCollision, reg::kValuesAfterCollision);
  chip.ClearBits(reg::kTransmitMode, reg::kCrcOn);
  chip.ClearBits(reg::kReceiveMode, reg::kCrcOn);
  chip.Write(reg::kBitFraming, kShortFrame);
  if (!chip.ok()) return chip.status();

  single_command_param command = CommandOf(param->self, kCommandTransceive);
  command.send_buffer = &param->request_code;
  command.send_length = 1;
  command.receive_buffer = param->atqa;
  command.receive_length = 2;
  const CommandResult result = RunSingleCommand(&command);
  HFLSTATUS status = result.status;
  if (status != HFL_SUCCESS && status != HFL_COLLISION) {
    std::fill_n(param->atqa, 2, std::uint8_t{0});
  } else if (command.receive_length != 2 || command.receive_last_bits != 0) {
    status = HFL_PROTOCOL_ERROR;
  }
  if (result.access_failed) return status;
  chip.Write(reg::kBitFraming, 0x00);
  return chip.ok() ? status : chip.status();
}

HFLSTATUS AnticollisionSelect(sel_p* param) {
  Iso14443ACore* const self = param->self;
  if (!Ready(self)) return HFL_NOT_READY;
  int known_bits = param->bit_count;
  for (int level = 0; level < kLevels; ++level) {
    const std::uint8_t select_code = SelectCodeOf(*param, level);
    std::uint8_t* const uid = param->uid + level * kLevelBytes;
    const int known_here = std::min(known_bits, kLevelBits);
    known_bits -= known_here;
    if (known_here < kLevelBits) {
      const HFLSTATUS status =
          AnticollisionLoop(self, self->lower, select_code, static_cast<std::uint8_t>(known_here),
                            uid, &param->collision);
      if (status != HFL_SUCCESS) return status;
    }
    const HFLSTATUS status = SelectLevel(self, self->lower, select_code, uid, &param->sak);
    if (status != HFL_SUCCESS) return status;
    param->bit_count = static_cast<std::uint8_t>(kLevelBits * (level + 1));
    if ((param->sak & kCascade) == 0) break;
  }
  return HFL_SUCCESS;
}

HFLSTATUS Select(sel_p* param) {
  Iso14443ACore* const self = param->self;
  if (!Ready(self)) return HFL_NOT_READY;
  if (param->bit_count % kLevelBits != 0) return HFL_INVALID_PARAMETER;
  const int levels = param->bit_count / kLevelBits;
  if (levels > kLevels) return HFL_INVALID_PARAMETER;
  for (int level = 0; level < levels; ++level) {
    const HFLSTATUS status = SelectLevel(self, self->lower, SelectCodeOf(*param, level),
                                         param->uid + level * kLevelBytes, &param->sak);
    if (status != HFL_SUCCESS) return status;
  }
  return HFL_SUCCESS;
}

HFLSTATUS Halt(hlt_p* param) {
  if (!Ready(param->self)) return HFL_NOT_SUPPORTED;
  constexpr std::uint8_t kHaltFrame[] = {0x50, 0x00};
  single_command_param command = CommandOf(param->self, kCommandTransceive);
  command.send_buffer = kHaltFrame;
  command.send_length = sizeof kHaltFrame;
  const HFLSTATUS status = ExecuteSingleCommand(&command);
  return status == HFL_NO_ANSWER ? HFL_SUCCESS : status;
}

}  // namespace

void Iso14443AOpen(Iso14443ACore* core, std::uint8_t* members, RegisterControlCore* lower,
                   std::uint8_t ready) {
  core->SetWaitCallback = StoreWaitCallback<Iso14443ACore>;
  core->Request = Request;
  core->AnticollisionSelect = AnticollisionSelect;
  core->Select = Select;
  core->Halt = Halt;
  core->members = members;
  core->wait_cb_context = nullptr;
  core->wait_cb = nullptr;
  core->lower = lower;
  *members = ready;
}

void Iso14443AWrapper::Init(Iso14443AOpenFunction open, RegisterControlInterface* lower_registers,
                            std::uint8_t ready) {
  open(&core, &members, &forwarder_, ready);
  lower = lower_registers;
}

void Iso14443AWrapper::SetWaitCallback(set_wait_callback_param* param) {
  CallSetWaitCallback(core, param);
}

HFLSTATUS Iso14443AWrapper::Request(req_p* param) {
  forwarder_.owner = static_cast<RegisterControlUser*>(this);
  return CallSlot(core, core.Request, param);
}

HFLSTATUS Iso14443AWrapper::AnticollisionSelect(sel_p* param) {
  forwarder_.owner = static_cast<RegisterControlUser*>(this);
  return CallSlot(core, core.AnticollisionSelect, param);
}

HFLSTATUS Iso14443AWrapper::Select(sel_p* param) {
  forwarder_.owner = static_cast<RegisterControlUser*>(this);
  return CallSlot(core, core.Select, param);
}

HFLSTATUS Iso14443AWrapper::Halt(hlt_p* param) {
  forwarder_.owner = static_cast<RegisterControlUser*>(this);
  return CallSlot(core, core.Halt, param);
}

}  // namespace vt63x
