// SPDX-License-Identifier: MIT

#include "shell/card_reader.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "contactless/card_memory.h"
#include "contactless/chip_command.h"
#include "contactless/iso14443a.h"
#include "contactless/operation_control.h"
#include "frontend/chip_registers.h"
#include "frontend/register_control.h"
#include "serial/port_control.h"
#include "shell/hex_text.h"

namespace vt63x {
namespace {

// The chip's timer steps at 13.56 MHz / (2 * 0x2A5 + 1), about 0.1 ms; it runs reload + 1 steps.
constexpr std::uint8_t kPrescalerLow = 0xA5;
constexpr std::uint8_t kPrescalerHigh = 0x02;
constexpr std::uint8_t kActivationReload = 0x03;
constexpr std::uint8_t kReadReload = 0x32;
constexpr std::uint8_t kWriteReload = 0x64;

// Groups and attributes of OperationControl.
constexpr std::uint8_t kTypeAGroup = 1;
constexpr std::uint8_t kTypeASpeeds = 3;
constexpr std::uint8_t kTimerGroup = 6;
constexpr std::uint8_t kTimerFullSetUp = 0;
constexpr std::uint8_t kTimerAutomaticStart = 1;
constexpr std::uint8_t kTimerPrescaler = 4;
constexpr std::uint8_t kTimerReload = 5;

constexpr std::uint8_t kAntennaOff = 0x80;

constexpr std::uint8_t kSelectLevel1 = 0x93;

constexpr std::uint8_t kCardRead = 0x30;
constexpr std::uint8_t kCardAuthenticateB = 0x61;
constexpr std::uint8_t kCardWrite = 0xA0;
constexpr std::uint8_t kCardWritePage = 0xA2;

unsigned Digits(HFLSTATUS status) { return static_cast<unsigned>(static_cast<int>(status)); }

// A result line in its 100 characters.
struct Line {
  char text[100];
};

template <typename... Arguments>
Line Format(const char* format, Arguments... arguments) {
  Line line;
  std::snprintf(line.text, sizeof line.text, format, arguments...);
  return line;
}

struct HexText {
  char digits[33];
};

HexText Hex(const std::uint8_t* bytes, int count) {
  HexText text;
  BytesToHexText(text.digits, bytes, count);
  return text;
}

// One access sequence on the stack.
template <typename Access>
HFLSTATUS Locked(const action_param* action, const Access& access) {
  const LockGuard lock(action->app_state->stack_lock);
  return access(action->app_state->component_ptrs);
}

HFLSTATUS SetAttribute(const action_param* action, opp attribute) {
  return Locked(action, [&](const component_pointers& stack) {
    return stack.operation_control->SetAttribute(&attribute);
  });
}

HFLSTATUS SetRegister(const action_param* action, std::uint8_t address, std::uint8_t data) {
  setreg_param param{address, data, nullptr};
  return Locked(action, [&](const component_pointers& stack) {
    return stack.register_control->SetRegister(&param);
  });
}

HFLSTATUS ModifyRegister(const action_param* action, std::uint8_t address, std::uint8_t mask,
                         std::uint8_t set) {
  modify_param param{address, mask, set, nullptr};
  return Locked(action, [&](const component_pointers& stack) {
    return stack.register_control->ModifyRegister(&param);
  });
}

// One step of the set-up: a setting of the chip, or a register.
struct SetUpStep {
  enum class Kind : std::uint8_t { kWrite, kSetBits, kClearBits, kAttribute };
  Kind kind;
  std::uint8_t first;   // register, or group of the setting
  std::uint8_t second;  // value or bits, or attribute
  std::uint8_t param_a = 0;
  std::uint8_t param_b = 0;
};

// Type A set-up of a chip that has just been reset: antenna, speeds, timer, receiver. The timer
// then runs 100 ms.
using Kind = SetUpStep::Kind;
constexpr SetUpStep kSetUpSteps[] = {
    {Kind::kWrite, reg::kAntenna, kAntennaOff},
    {Kind::kAttribute, kTypeAGroup, kTypeASpeeds, 0, 0},
    {Kind::kSetBits, reg::kAntenna, reg::kAntennaOn},
    {Kind::kAttribute, kTimerGroup, kTimerAutomaticStart, 1, 0},
    {Kind::kAttribute, kTimerGroup, kTimerPrescaler, 0xA6, 0x02},
    {Kind::kAttribute, kTimerGroup, kTimerReload, 0xE8, 0x03},
    {Kind::kClearBits, reg::kCommand, reg::kReceiverOff},
};

HFLSTATUS Carry(const action_param* action, const SetUpStep& step) {
  switch (step.kind) {
    case Kind::kWrite:
      return SetRegister(action, step.first, step.second);
    case Kind::kSetBits:
      return ModifyRegister(action, step.first, step.second, 1);
    case Kind::kClearBits:
      return ModifyRegister(action, step.first, step.second, 0);
    case Kind::kAttribute:
      return SetAttribute(action,
                          {step.first, step.second, step.param_a, step.param_b, nullptr, nullptr});
  }
  return HFL_INVALID_PARAMETER;
}

}  // namespace

int IdentifierBytes(const std::uint8_t* uid, std::uint8_t bit_count, std::uint8_t* identifier) {
  if (bit_count != 32 && bit_count != 64 && bit_count != 96) return 0;
  const int levels = bit_count / 32;
  int count = 0;
  for (int level = 0; level < levels; ++level) {
    // All levels but the last start with the cascade tag.
    const int first = level < levels - 1 ? 1 : 0;
    for (int i = first; i < 4; ++i) identifier[count++] = uid[4 * level + i];
  }
  return count;
}

CardReader::CardReader(const action_param* action, Output output)
    : action_(action), output_(std::move(output)) {}

HFLSTATUS CardReader::SetUp() {
  SetRegister(action_, reg::kCommand, kCommandSoftReset);
  if (action_->app_state->baudrate_index != 0) {
    SetHostBaud9600(action_);
    SwitchAllTo115k(action_);
  }
  HFLSTATUS first = HFL_SUCCESS;
  for (const SetUpStep& step : kSetUpSteps) {
    const HFLSTATUS status = Carry(action_, step);
    if (status == HFL_SUCCESS) continue;
    output_.set_up_failed(status);
    if (first == HFL_SUCCESS) first = status;
  }
  return first;
}

void CardReader::SetTimer(std::uint8_t* buffer, std::uint8_t reload) {
  const std::uint8_t timer[4] = {kPrescalerLow, kPrescalerHigh, reload, 0x00};
  std::memcpy(buffer, timer, sizeof timer);
  const HFLSTATUS status =
      SetAttribute(action_, {kTimerGroup, kTimerFullSetUp, 1, 0, buffer, nullptr});
  if (status == HFL_SUCCESS) return;
  output_.line(Format("Timeout Setting Errornous(Status: 0x%04X", Digits(status)).text);
  output_.timer_failed(status);
}

void CardReader::SetTimer(std::uint8_t reload) {
  std::uint8_t buffer[4];
  SetTimer(buffer, reload);
}

HFLSTATUS CardReader::Request(std::uint8_t request_code) {
  SetTimer(kActivationReload);
  req_p param{request_code, atqa, nullptr};
  const HFLSTATUS status = Locked(
      action_, [&](const component_pointers& stack) { return stack.iso14443a->Request(&param); });
  output_.line(Format("Request(0x%02X, 0x%02X%02X) --> Status: 0x%04X", request_code, atqa[0],
                      atqa[1], Digits(status))
                   .text);
  return status;
}

HFLSTATUS CardReader::AnticollisionSelect() {
  SetTimer(kActivationReload);
  sel_p param{kSelectLevel1, uid, 0, 0, 0, nullptr};
  const HFLSTATUS status = Locked(action_, [&](const component_pointers& stack) {
    return stack.iso14443a->AnticollisionSelect(&param);
  });
  sak = param.sak;
  bit_count = param.bit_count;
  collision = param.collision;
  LogSelection(status);
  return status;
}

void CardReader::LogSelection(HFLSTATUS status) {
  std::uint8_t identifier[10];
  const int count = IdentifierBytes(uid, bit_count, identifier);
  if (count == 0) {
    output_.line(
        Format("Anticollision/Select(0x93, 0x00, 0x00000000) --> Status: 0x%04X", Digits(status))
            .text);
    return;
  }
  output_.line(Format("Anticollision/Select(0x93, 0x%02X, 0x%s) --> Status: 0x%04X", sak,
                      Hex(identifier, count).digits, Digits(status))
                   .text);
}

// A halted card says nothing; the timer runs 5 ms for that, and 100 ms afterwards, as it was.
HFLSTATUS CardReader::Halt() {
  SetAttribute(action_, {kTimerGroup, kTimerReload, 0x32, 0x00, nullptr, nullptr});
  hlt_p param{nullptr};
  const HFLSTATUS status = Locked(
      action_, [&](const component_pointers& stack) { return stack.iso14443a->Halt(&param); });
  output_.line(Format("Halt(0x50, 0x00) --> Status: 0x%04X", Digits(status)).text);
  SetAttribute(action_, {kTimerGroup, kTimerReload, 0xE8, 0x03, nullptr, nullptr});
  return status;
}

HFLSTATUS CardReader::CardCommand(std::uint8_t command, std::uint8_t* data, std::uint8_t length) {
  ostrel_p param{command, block, data, length, 0, nullptr};
  return Locked(action_, [&](const component_pointers& stack) {
    return stack.card_memory->CardCommand(&param);
  });
}

HFLSTATUS CardReader::Authenticate(std::uint8_t command, const std::uint8_t* key) {
  SetTimer(kWriteReload);
  std::uint8_t data[10];
  std::memcpy(data, key, 6);
  std::memcpy(data + 6, uid, 4);
  const HFLSTATUS status = CardCommand(command, data, sizeof data);
  output_.line(Format("Authentication Key%c(0x%02X, 0x%s) --> Status: 0x%04X",
                      command == kCardAuthenticateB ? 'B' : 'A', block, Hex(key, 6).digits,
                      Digits(status))
                   .text);
  return status;
}

HFLSTATUS CardReader::Read(std::uint8_t* data) {
  std::fill_n(data, 16, std::uint8_t{0});
  SetTimer(data, kReadReload);
  const HFLSTATUS status = CardCommand(kCardRead, data, 0);
  output_.line(
      Format("Read(0x%02X, 0x%s) --> Status: 0x%04X", block, Hex(data, 16).digits, Digits(status))
          .text);
  return status;
}

HFLSTATUS CardReader::WriteData(const char* name, std::uint8_t command, const std::uint8_t* data,
                                std::uint8_t length) {
  SetTimer(kWriteReload);
  std::uint8_t copy[16];
  std::memcpy(copy, data, length);
  const HFLSTATUS status = CardCommand(command, copy, length);
  output_.line(Format("%s(0x%02X, 0x%s) --> Status: 0x%04X", name, block, Hex(data, length).digits,
                      Digits(status))
                   .text);
  return status;
}

HFLSTATUS CardReader::Write(const std::uint8_t* data) {
  return WriteData("Write", kCardWrite, data, 16);
}

HFLSTATUS CardReader::WritePage(const std::uint8_t* data) {
  return WriteData("WritePG", kCardWritePage, data, 4);
}

HFLSTATUS CardReader::Value(std::uint8_t command, std::uint32_t operand) {
  struct Row {
    const char* name;
    std::uint8_t command;
    std::uint8_t length;
  };
  static constexpr Row kRows[] = {
      {"Decrement", 0xC0, 4}, {"Increment", 0xC1, 4}, {"Restore", 0xC2, 0}, {"Transfer", 0xB0, 0}};
  const Row* const row = std::find_if(std::begin(kRows), std::end(kRows),
                                      [&](const Row& r) { return r.command == command; });
  if (row == std::end(kRows)) return HFL_UNKNOWN_COMMAND;
  SetTimer(kWriteReload);
  std::uint8_t data[4];  // low byte first
  for (int i = 0; i < 4; ++i) data[i] = static_cast<std::uint8_t>(operand >> (8 * i));
  const HFLSTATUS status = CardCommand(command, data, row->length);
  output_.line(
      (row->length != 0
           ? Format("%s(0x%02X, %u) --> Status: 0x%04X", row->name, block, operand, Digits(status))
           : Format("%s(0x%02X) --> Status: 0x%04X", row->name, block, Digits(status)))
          .text);
  return status;
}

}  // namespace vt63x
