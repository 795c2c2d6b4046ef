// SPDX-License-Identifier: MIT

#include "contactless/anticollision.h"

#include <algorithm>
#include <cstddef>

#include "contactless/command_run.h"
#include "contactless/register_sequence.h"
#include "contactless/wait_callback.h"
#include "frontend/chip_registers.h"

namespace vt63x {
namespace {

constexpr int kLevelBytes = 4;
constexpr int kLevelBits = 32;
constexpr int kAnswerBytes = kLevelBytes + 1;  // with the check byte
constexpr int kAnswerBits = kLevelBits + 8;
constexpr int kCollisionLimit = 32;

constexpr std::uint8_t kNvbBase = 0x20;  // the two bytes of the header
constexpr std::uint8_t kNvbSelect = 0x70;

std::uint8_t CheckByte(const std::uint8_t* uid) {
  return static_cast<std::uint8_t>(uid[0] ^ uid[1] ^ uid[2] ^ uid[3]);
}

// How the known bits of a level divide into bytes.
struct KnownPart {
  int complete_bytes;
  int odd_bits;  // known bits of the byte after these
  int sent_bytes;
};

KnownPart Divide(int known_bits) {
  const int complete = known_bits / 8;
  const int odd = known_bits % 8;
  return {complete, odd, complete + (odd != 0 ? 1 : 0)};
}

struct LevelAnswer {
  std::uint8_t bytes[kAnswerBytes];  // what was not received is 0
  std::uint8_t bits;                 // bits received that were not known before
};

// Sends the known part of the level and receives the rest.
CommandResult AskForRest(Iso14443ACore* self, std::uint8_t select_code, const KnownPart& known,
                         const std::uint8_t* uid, LevelAnswer* answer) {
  std::uint8_t frame[2 + kLevelBytes] = {
      select_code,
      static_cast<std::uint8_t>(kNvbBase + known.complete_bytes * 16 + known.odd_bits)};
  std::copy_n(uid, known.sent_bytes, frame + 2);
  *answer = {};
  single_command_param command = CommandOf(self, kCommandTransceive);
  command.send_buffer = frame;
  command.send_length = static_cast<std::uint16_t>(2 + known.sent_bytes);
  command.receive_buffer = answer->bytes;
  command.receive_length = kAnswerBytes;
  const CommandResult result = RunSingleCommand(&command);
  answer->bits = static_cast<std::uint8_t>(command.receive_length * 8 + command.receive_last_bits -
                                           known.odd_bits);
  return result;
}

// Puts the answer into the identifier and returns the byte that follows it there. The first byte
// of an answer to a partly known byte carries the rest of it: the chip has stored the bits where
// they belong.
std::uint8_t Join(const KnownPart& known, const LevelAnswer& answer, std::uint8_t* uid) {
  const std::uint8_t* next = answer.bytes;
  if (known.odd_bits != 0) uid[known.sent_bytes - 1] |= *next++;
  const int rest = kLevelBytes - known.sent_bytes;
  std::copy_n(next, rest, uid + known.sent_bytes);
  return next[rest];
}

// Framing of a level: the last byte sent has that many bits, and the first bit received goes to
// that bit of the first byte.
int FramingOf(const KnownPart& known) { return known.odd_bits * 16 + known.odd_bits; }

// The passes of a level. A failed register access is in `chip` or in the result.
CommandResult ResolveLevel(Iso14443ACore* self, RegisterSequence& chip, std::uint8_t select_code,
                           int known_bits, std::uint8_t* uid, std::uint8_t* collision) {
  for (int pass = 1; known_bits <= kLevelBits; ++pass) {
    const KnownPart known = Divide(known_bits);
    chip.Write(reg::kBitFraming, FramingOf(known));
    if (!chip.ok()) return {chip.status(), true};
    LevelAnswer answer;
    const CommandResult result = AskForRest(self, select_code, known, uid, &answer);
    const bool collided = result.status == HFL_COLLISION;
    if (collided) *collision |= 0x01;
    if (!collided && result.status != HFL_SUCCESS) return result;
    if (known_bits + answer.bits > kAnswerBits) return {HFL_WRONG_ANSWER_SIZE, false};
    const std::uint8_t check_byte = Join(known, answer, uid);
    known_bits += answer.bits;
    if (!collided) {
      const bool matches = known_bits == kAnswerBits && check_byte == CheckByte(uid);
      return {matches ? HFL_SUCCESS : HFL_CHECK_BYTE, false};
    }
    const int limit = known_bits < kLevelBits ? kCollisionLimit : kCollisionLimit + 1;
    if (pass >= limit) return {HFL_WRONG_ANSWER_SIZE, false};
  }
  return {HFL_INVALID_PARAMETER, false};
}

}  // namespace

HFLSTATUS AnticollisionLoop(Iso14443ACore* self, RegisterControlCore* lower,
                            std::uint8_t select_code, std::uint8_t known_bits, std::uint8_t* uid,
                            std::uint8_t* collision) {
  RegisterSequence chip(lower);
  chip.ClearBits(reg::kTransmitMode, reg::kCrcOn);
  chip.ClearBits(reg::kReceiveMode, reg::kCrcOn);
  chip.Write(reg::kCollision, 0x00);
  if (!chip.ok()) return chip.status();
  const CommandResult result = ResolveLevel(self, chip, select_code, known_bits, uid, collision);
  if (result.access_failed) return result.status;
  chip.Write(reg::kBitFraming, 0x00);
  chip.Write(reg::kCollision, reg::kValuesAfterCollision);
  return chip.ok() ? result.status : chip.status();
}

HFLSTATUS SelectLevel(Iso14443ACore* self, RegisterControlCore* lower, std::uint8_t select_code,
                      const std::uint8_t* uid, std::uint8_t* sak) {
  RegisterSequence chip(lower);
  chip.SetBits(reg::kTransmitMode, reg::kCrcOn);
  chip.SetBits(reg::kReceiveMode, reg::kCrcOn);
  if (!chip.ok()) return chip.status();
  std::uint8_t frame[7] = {select_code, kNvbSelect, uid[0], uid[1], uid[2], uid[3], CheckByte(uid)};
  single_command_param command = CommandOf(self, kCommandTransceive);
  command.send_buffer = frame;
  command.send_length = sizeof frame;
  command.receive_buffer = frame;
  command.receive_length = 1;
  const HFLSTATUS status = ExecuteSingleCommand(&command);
  if (status != HFL_SUCCESS) return status;
  if (command.receive_length != 1 || command.receive_last_bits != 0) return HFL_WRONG_ANSWER_SIZE;
  *sak = frame[0];
  return HFL_SUCCESS;
}

}  // namespace vt63x
