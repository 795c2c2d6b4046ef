// SPDX-License-Identifier: MIT

#include "contactless/card_memory.h"

#include <algorithm>
#include <iterator>

#include "frontend/wrapper_call.h"

namespace vt63x {
namespace {

constexpr std::uint16_t kReceiveCapacity = 32;
constexpr std::uint8_t kMaxData = 16;
constexpr std::uint16_t kKeyAndUid = 10;

enum class Kind : std::uint8_t { kExchange, kTwoStep, kRestore, kAuthenticate };

// What a card command does with the caller's length before it starts.
enum class Length : std::uint8_t { kExact, kCleared, kIgnored };

struct CommandRow {
  std::uint8_t code;
  Kind kind;
  Length length;
  std::uint8_t data_bytes;
  std::uint8_t answer_flags;
};

constexpr CommandRow kCommands[] = {
    {0x30, Kind::kExchange, Length::kCleared, 0, kAnswerData},                       // read
    {0x60, Kind::kAuthenticate, Length::kIgnored, 10, 0},                            // key A
    {0x61, Kind::kAuthenticate, Length::kIgnored, 10, 0},                            // key B
    {0xA0, Kind::kTwoStep, Length::kExact, 16, kAnswerAcknowledge},                  // write
    {0xA2, Kind::kExchange, Length::kExact, 4, kAnswerAcknowledge},                  // write page
    {0xB0, Kind::kExchange, Length::kCleared, 0, kAnswerAcknowledge},                // transfer
    {0xC0, Kind::kTwoStep, Length::kExact, 4, kAnswerAcknowledge | kAnswerSilence},  // decrement
    {0xC1, Kind::kTwoStep, Length::kExact, 4, kAnswerSilence},                       // increment
    {0xC2, Kind::kRestore, Length::kIgnored, 4, kAnswerSilence},                     // restore
};

// The acknowledge byte: a nibble, which the chip may deliver in both halves. Bits 0x02 and 0x08
// acknowledge, bits 0x01 and 0x04 alone refuse.
HFLSTATUS StatusOfAcknowledge(std::uint8_t byte) {
  const int high = byte >> 4;
  const int low = byte & 0x0F;
  if (high != 0 && high != low) return HFL_UNEXPECTED_ANSWER;
  if ((byte & 0x0A) != 0) return HFL_SUCCESS;
  if ((byte & 0x05) != 0) return HFL_CARD_REFUSED;
  return HFL_UNEXPECTED_ANSWER;
}

HFLSTATUS End(ostrel_p* param, HFLSTATUS status) {
  param->length = 0;
  return status;
}

HFLSTATUS TakeData(ostrel_p* param, const std::uint8_t* bytes, std::uint16_t count) {
  if ((param->answer_flags & kAnswerData) == 0) return End(param, HFL_UNEXPECTED_ANSWER);
  if (count > kMaxData) return End(param, HFL_BUFFER_SIZE);
  if (count > 0 && param->data == nullptr) return End(param, HFL_BUFFER_SIZE);
  std::copy_n(bytes, count, param->data);
  param->length = static_cast<std::uint8_t>(count);
  return HFL_SUCCESS;
}

HFLSTATUS TakeShortAnswer(ostrel_p* param, const std::uint8_t* bytes, std::uint16_t count) {
  const bool expected = (param->answer_flags & kAnswerAcknowledge) != 0;
  if (!expected || count != 1) return End(param, HFL_UNEXPECTED_ANSWER);
  return End(param, StatusOfAcknowledge(bytes[0]));
}

HFLSTATUS TakeSilence(ostrel_p* param) {
  const bool allowed = (param->answer_flags & kAnswerSilence) != 0;
  return End(param, allowed ? HFL_SUCCESS : HFL_NO_ANSWER);
}

// `param->length` is at most kMaxData. Returns the bytes of the frame.
std::uint16_t BuildFrame(const ostrel_p& param, std::uint8_t* frame) {
  std::uint8_t* end = frame;
  if (param.command != 0) {
    *end++ = param.command;
    *end++ = param.address;
  }
  if (param.data != nullptr) end = std::copy_n(param.data, param.length, end);
  return static_cast<std::uint16_t>(end - frame);
}

HFLSTATUS CardExchange(ostrel_p* param) {
  if (param->length > kMaxData) return End(param, HFL_OVERFLOW);
  std::uint8_t* const buffer = param->self->members->trxbuffer;
  const std::uint16_t frame_length = BuildFrame(*param, buffer);
  if (frame_length == 0) return End(param, HFL_BUFFER_SIZE);
  ExchangeCore* const exchange = param->self->lower;
  transceive_param frame{buffer, frame_length, buffer, kReceiveCapacity, 0, exchange};
  const HFLSTATUS status = exchange->Transceive(&frame);
  switch (status) {
    case HFL_SUCCESS:
      return TakeData(param, buffer, frame.receive_length);
    case HFL_SHORT_ANSWER:
      return TakeShortAnswer(param, buffer, frame.receive_length);
    case HFL_NO_ANSWER:
      return TakeSilence(param);
    default:
      return status;
  }
}

HFLSTATUS CardTwoStepCommand(ostrel_p* param) {
  ostrel_p command{param->command, param->address, nullptr, 0, kAnswerAcknowledge, param->self};
  HFLSTATUS status = CardExchange(&command);
  if (status == HFL_SUCCESS) {
    ostrel_p data{0, 0, param->data, param->length, param->answer_flags, param->self};
    status = CardExchange(&data);
  }
  return End(param, status);
}

HFLSTATUS Restore(ostrel_p* param) {
  std::uint8_t value[4] = {};
  param->data = value;
  param->length = sizeof value;
  const HFLSTATUS status = CardTwoStepCommand(param);
  param->data = nullptr;
  return End(param, status);
}

HFLSTATUS Authenticate(ostrel_p* param) {
  if (param->data == nullptr) return HFL_INVALID_PARAMETER;
  std::uint8_t* const buffer = param->self->members->trxbuffer;
  buffer[0] = param->command;
  buffer[1] = param->address;
  std::copy_n(param->data, kKeyAndUid, buffer + 2);
  ExchangeCore* const exchange = param->self->lower;
  transmit_param authenticate{buffer, 2 + kKeyAndUid, exchange};
  return exchange->Authenticate(&authenticate);
}

HFLSTATUS CardCommand(ostrel_p* param) {
  const auto row = std::find_if(std::begin(kCommands), std::end(kCommands),
                                [param](const CommandRow& r) { return r.code == param->command; });
  if (row == std::end(kCommands)) return End(param, HFL_UNKNOWN_COMMAND);
  if (row->length == Length::kExact && param->length != row->data_bytes) {
    return HFL_INVALID_PARAMETER;
  }
  if (row->length == Length::kCleared) param->length = 0;
  param->answer_flags = row->answer_flags;
  switch (row->kind) {
    case Kind::kExchange:
      return CardExchange(param);
    case Kind::kTwoStep:
      return CardTwoStepCommand(param);
    case Kind::kRestore:
      return Restore(param);
    case Kind::kAuthenticate:
      return Authenticate(param);
  }
  return HFL_UNKNOWN_COMMAND;
}

template <typename Param>
ExchangeInterface* ExchangeBelow(const Param* param) {
  return static_cast<CardMemoryWrapper*>(param->self->owner)->lower;
}

}  // namespace

void CardMemoryOpen(CardMemoryCore* core, card_memory_members* members, ExchangeCore* lower,
                    std::uint8_t* trxbuffer) {
  core->CardExchange = CardExchange;
  core->CardTwoStepCommand = CardTwoStepCommand;
  core->CardCommand = CardCommand;
  core->members = members;
  core->lower = lower;
  members->trxbuffer = trxbuffer;
}

ExchangeForwarder::ExchangeForwarder() : ExchangeCore{} {
  Transceive = [](transceive_param* param) { return ExchangeBelow(param)->Transceive(param); };
  Authenticate = [](transmit_param* param) { return ExchangeBelow(param)->Authenticate(param); };
}

void CardMemoryWrapper::Init(ExchangeInterface* lower_exchange, std::uint8_t* trxbuffer) {
  CardMemoryOpen(&core, &members, &forwarder_, trxbuffer);
  lower = lower_exchange;
}

HFLSTATUS CardMemoryWrapper::CardExchange(ostrel_p* param) {
  forwarder_.owner = this;
  return CallSlot(core, core.CardExchange, param);
}

HFLSTATUS CardMemoryWrapper::CardTwoStepCommand(ostrel_p* param) {
  forwarder_.owner = this;
  return CallSlot(core, core.CardTwoStepCommand, param);
}

HFLSTATUS CardMemoryWrapper::CardCommand(ostrel_p* param) {
  forwarder_.owner = this;
  return CallSlot(core, core.CardCommand, param);
}

}  // namespace vt63x
