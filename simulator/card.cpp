// SPDX-License-Identifier: MIT

#include "simulator/card.h"

#include <algorithm>

namespace vt63x {
namespace {

constexpr std::uint8_t kReqA = 0x26;
constexpr std::uint8_t kWupA = 0x52;
constexpr std::uint8_t kSelectCodes[] = {0x93, 0x95, 0x97};
constexpr std::uint8_t kSelectNvb = 0x70;
constexpr std::uint8_t kLowestNvb = 0x20;
constexpr std::uint8_t kHighestNvb = 0x67;
constexpr std::uint8_t kCascadeBit = 0x04;
constexpr std::uint8_t kHalt[] = {0x50, 0x00};

// Bits of a frame that its second byte announces: whole bytes in the high half, more bits in the
// low one.
std::size_t AnnouncedBits(std::uint8_t nvb) { return (nvb >> 4) * 8U + (nvb & 0x0FU); }

}  // namespace

Card::Card(const CardIdentifier& identifier, std::uint8_t atqa, std::uint8_t sak)
    : identifier_(identifier), atqa_(atqa), sak_(sak) {}

std::array<std::uint8_t, 2> Card::Atqa() const {
  const std::size_t size_code = identifier_.LevelCount() - 1;
  return {static_cast<std::uint8_t>(atqa_ | (size_code << 6)), 0};
}

std::optional<AirFrame> Card::OnFrame(const AirFrame& frame) {
  const bool short_frame = frame.bit_count == 7;
  const bool damaged = !frame.parity_ok || frame.enciphered != InSession();
  if (short_frame && !damaged) return OnShortFrame(frame.bytes[0]);
  if (state_ == State::kActive && !damaged) return OnActive(frame);
  if (state_ == State::kReady && !damaged && frame.bit_count >= 16 &&
      frame.bytes[0] == kSelectCodes[level_]) {
    return frame.bytes[1] == kSelectNvb ? OnSelect(frame) : OnAnticollision(frame);
  }
  FallBack();
  return std::nullopt;
}

std::optional<AirFrame> Card::OnShortFrame(std::uint8_t code) {
  const bool wakes = (state_ == State::kIdle && (code == kReqA || code == kWupA)) ||
                     (state_ == State::kHalt && code == kWupA);
  if (!wakes) {
    FallBack();
    return std::nullopt;
  }
  starred_ = state_ == State::kHalt;
  level_ = 0;
  Enter(State::kReady);
  return AirFrame::OfBytes(Atqa());
}

std::array<std::uint8_t, 5> Card::LevelWithCheckByte() const {
  const CardIdentifier::Level level = identifier_.LevelBytes(level_);
  return {level[0], level[1], level[2], level[3], CheckByteOf(level)};
}

// The bits of the level that the reader has left out, when those it has sent are this card's.
std::optional<AirFrame> Card::OnAnticollision(const AirFrame& frame) {
  const std::uint8_t nvb = frame.bytes[1];
  const bool valid = nvb >= kLowestNvb && nvb <= kHighestNvb && (nvb & 0x0F) < 8;
  const AirFrame own = AirFrame::OfBytes(LevelWithCheckByte());
  const std::size_t known = valid ? AnnouncedBits(nvb) - 16 : 0;
  bool matches = valid && frame.bit_count == known + 16;
  for (std::size_t bit = 0; matches && bit < known; ++bit) {
    matches = frame.Bit(16 + bit) == own.Bit(bit);
  }
  if (!matches) {
    FallBack();
    return std::nullopt;
  }
  AirFrame answer;
  for (std::size_t bit = known; bit < own.bit_count; ++bit) answer.AppendBit(own.Bit(bit));
  return answer;
}

std::optional<AirFrame> Card::OnSelect(const AirFrame& frame) {
  const auto own = LevelWithCheckByte();
  const bool matches = frame.ByteCount() == 9 && frame.EndsWithCrcA() &&
                       std::equal(own.begin(), own.end(), frame.bytes.begin() + 2);
  if (!matches) {
    FallBack();
    return std::nullopt;
  }
  ++level_;
  const bool last = level_ == identifier_.LevelCount();
  if (last) Enter(State::kActive);
  const std::uint8_t sak[] = {last ? sak_ : kCascadeBit};
  return AirFrame::WithCrcA(sak);
}

std::optional<AirFrame> Card::OnActive(const AirFrame& frame) {
  if (!frame.EndsWithCrcA() || frame.ByteCount() < 3) {
    FallBack();
    return std::nullopt;
  }
  const std::span<const std::uint8_t> data = frame.BytesBeforeCrc();
  if (std::ranges::equal(data, kHalt)) {
    Halt();
    return std::nullopt;
  }
  const bool enciphered = InSession();
  CardReply reply = OnCommand(data);
  switch (reply.kind) {
    case CardReply::Kind::kData:
      break;
    case CardReply::Kind::kAcknowledge:
      reply.frame = AirFrame::OfBits(kAcknowledge, 4);
      break;
    case CardReply::Kind::kRefusal:
      reply.frame = AirFrame::OfBits(kRefusal, 4);
      FallBack();
      break;
    case CardReply::Kind::kSilence:
      return std::nullopt;
    case CardReply::Kind::kNotUnderstood:
      FallBack();
      return std::nullopt;
  }
  reply.frame.enciphered = enciphered;
  return reply.frame;
}

bool Card::OnKeyClaim(const KeyClaim& claim) {
  const bool accepted = state_ == State::kActive && claim.enciphered == InSession() &&
                        claim.identifier == identifier_.LevelBytes(0) && AcceptsKey(claim);
  if (!accepted) FallBack();
  return accepted;
}

CardReply Card::OnCommand(std::span<const std::uint8_t>) { return {}; }

bool Card::AcceptsKey(const KeyClaim&) { return false; }

void Card::Enter(State state) {
  const bool deselected = state_ == State::kActive && state != State::kActive;
  state_ = state;
  if (deselected) OnDeselect();
}

void Card::FallBack() {
  if (state_ == State::kReady || state_ == State::kActive) {
    Enter(starred_ ? State::kHalt : State::kIdle);
  }
  starred_ = false;
}

void Card::Halt() {
  Enter(State::kHalt);
  starred_ = false;
}

void Card::PowerOff() {
  Enter(State::kIdle);
  starred_ = false;
}

const char* StateName(Card::State state, bool starred) {
  switch (state) {
    case Card::State::kIdle:
      return "idle";
    case Card::State::kReady:
      return starred ? "ready*" : "ready";
    case Card::State::kActive:
      return starred ? "active*" : "active";
    case Card::State::kHalt:
      return "halt";
  }
  return "?";
}

}  // namespace vt63x
