// SPDX-License-Identifier: MIT

// What the chip's commands do.

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>
#include <vector>

#include "simulator/chip.h"
#include "simulator/chip_registers.h"
#include "simulator/crc16.h"

namespace vt63x {

using namespace simulated;

namespace {

// By the low bits of the mode register.
constexpr std::uint16_t kCrcPresets[] = {0x0000, 0x6363, 0xA671, 0xFFFF};

constexpr std::size_t kClaimSize = 12;

// Command, block, six bytes of the key, the card's first four bytes.
KeyClaim ClaimFrom(const std::vector<std::uint8_t>& bytes) {
  constexpr std::uint8_t kWithKeyB = 0x61;
  KeyClaim claim;
  claim.key_b = bytes[0] == kWithKeyB;
  claim.block = bytes[1];
  std::copy_n(bytes.begin() + 2, claim.key.size(), claim.key.begin());
  std::copy_n(bytes.begin() + 8, claim.identifier.size(), claim.identifier.begin());
  return claim;
}

// From which bit of the first byte on a reception is stored.
unsigned AlignmentOf(std::uint8_t framing) { return (framing >> 4) & 0x07U; }

}  // namespace

void Chip::RunCommand(std::uint8_t command) {
  struct Row {
    std::uint8_t command;
    void (Chip::*run)();
  };
  // Transceive starts with the start bit, idle has nothing to do.
  static constexpr Row kRows[] = {
      {kCrcCommand, &Chip::CalculateCrc}, {kTransmitCommand, &Chip::Transmit},
      {kReceiveCommand, &Chip::Receive},  {kAuthenticateCommand, &Chip::Authenticate},
      {kSoftResetCommand, &Chip::Reset},
  };
  const auto* const row = std::ranges::find(kRows, command, &Row::command);
  if (row != std::end(kRows)) (this->*row->run)();
}

void Chip::CalculateCrc() {
  const std::uint8_t mode = registers_[kModeRegister];
  const BitOrder order =
      (mode & kCrcHighestFirst) != 0 ? BitOrder::kHighestFirst : BitOrder::kLowestFirst;
  const std::uint16_t crc = Crc16(fifo_.TakeAll(), kCrcPresets[mode & kCrcPresetMask], order);
  registers_[kCrcHighRegister] = static_cast<std::uint8_t>(crc >> 8);
  registers_[kCrcLowRegister] = static_cast<std::uint8_t>(crc & 0xFF);
  SetBits(kStatusRegister, kCrcReady);
  SetBits(kSecondRequestRegister, kCrcRequest);
  EndCommand();
}

void Chip::Transmit() {
  unheard_ = Send();
  EndCommand();
}

void Chip::Transceive() {
  const auto reception = Send();
  if (reception && !Has(kCommandRegister, kReceiverOff)) Deliver(*reception);
}

void Chip::Receive() {
  StartTimer();
  if (!unheard_ || Has(kCommandRegister, kReceiverOff)) return;
  const Reception reception = *std::exchange(unheard_, std::nullopt);
  Deliver(reception);
}

void Chip::Authenticate() {
  const std::vector<std::uint8_t> bytes = fifo_.TakeAll();
  ClearBits(kErrorRegister, static_cast<unsigned>(~kOverflowError));
  unheard_.reset();
  const bool in_session = Has(kSecondStatusRegister, kCryptoActive);
  ClearBits(kSecondStatusRegister, kCryptoActive);
  if (bytes.size() < kClaimSize) {
    SetBits(kErrorRegister, kProtocolError);
    SetBits(kRequestRegister, kErrorRequest);
    EndCommand();
    return;
  }
  StartTimer();
  KeyClaim claim = ClaimFrom(bytes);
  claim.enciphered = in_session;
  const bool heard = !Has(kTransmitModeRegister, kSpeedMask) && field_.Claim(claim) &&
                     !Has(kReceiveModeRegister, kSpeedMask) && !Has(kCommandRegister, kReceiverOff);
  if (!heard) return;
  timer_.Stop(now_);
  SetBits(kSecondStatusRegister, kCryptoActive);
  EndCommand();
}

void Chip::Reset() { PowerUp(); }

AirFrame Chip::TakeFrameToSend() {
  AirFrame frame = AirFrame::OfBytes(fifo_.TakeAll());
  const unsigned last_bits = registers_[kFramingRegister] & kLastBitsMask;
  const bool incomplete = last_bits != 0 && frame.bit_count != 0;
  if (incomplete) frame.Truncate(frame.bit_count - 8 + last_bits);
  if (!incomplete && frame.bit_count != 0 && Has(kTransmitModeRegister, kCrcEnable)) {
    frame.AppendCrcA();
  }
  // At another speed the cards take nothing in but noise.
  if (Has(kTransmitModeRegister, kSpeedMask)) frame.parity_ok = false;
  frame.enciphered = Has(kSecondStatusRegister, kCryptoActive);
  return frame;
}

// What the cards answer to what is in the FIFO. Nothing to send is no frame.
std::optional<Reception> Chip::Send() {
  unheard_.reset();
  ClearBits(kErrorRegister, static_cast<unsigned>(~kOverflowError));
  const AirFrame frame = TakeFrameToSend();
  std::optional<Reception> reception;
  if (frame.bit_count != 0) reception = field_.Exchange(frame);
  SetBits(kRequestRegister, kTransmittedRequest);
  StartTimer();
  if (Has(kReceiveModeRegister, kSpeedMask)) reception.reset();
  return reception;
}

void Chip::Deliver(const Reception& reception) {
  Reception received = reception;
  timer_.Stop(now_);
  ClearBits(kErrorRegister, static_cast<unsigned>(~kOverflowError));
  ClearBits(kCollisionRegister, 0x1F);
  SetBits(kCollisionRegister, kPositionNotValid);
  if (received.collision) EndAtCollision(received);
  if (!received.frame.parity_ok) SetBits(kErrorRegister, kParityError);
  if (Has(kReceiveModeRegister, kCrcEnable)) TestCrc(received.frame);
  FillFifo(received.frame);
  SetBits(kRequestRegister, kReceivedRequest);
  if (registers_[kErrorRegister] != 0) SetBits(kRequestRegister, kErrorRequest);
}

void Chip::EndAtCollision(Reception& reception) {
  const std::size_t bit = *reception.collision;
  SetBits(kErrorRegister, kCollisionError);
  const std::size_t position = bit + 1 + AlignmentOf(registers_[kFramingRegister]);
  if (position <= 32) {
    ClearBits(kCollisionRegister, kPositionNotValid);
    SetBits(kCollisionRegister, position % 32);
  }
  if (!Has(kCollisionRegister, kValuesAfterCollision)) reception.frame.Truncate(bit + 1);
}

void Chip::TestCrc(AirFrame& frame) {
  const bool right = frame.EndsWithCrcA();
  ClearBits(kStatusRegister, kCrcOk);
  SetBits(right ? kStatusRegister : kErrorRegister, right ? kCrcOk : kCrcError);
  if (frame.IsWhole() && frame.ByteCount() >= 2) frame.Truncate(frame.bit_count - 16);
}

void Chip::FillFifo(const AirFrame& frame) {
  AirFrame aligned;
  for (unsigned skipped = AlignmentOf(registers_[kFramingRegister]); skipped > 0; --skipped) {
    aligned.AppendBit(false);
  }
  for (std::size_t bit = 0; bit < frame.bit_count; ++bit) aligned.AppendBit(frame.Bit(bit));
  for (const std::uint8_t byte : aligned.Bytes()) {
    if (!fifo_.Push(byte)) SetBits(kErrorRegister, kOverflowError);
  }
  ClearBits(kControlRegister, kLastBitsMask);
  SetBits(kControlRegister, aligned.bit_count % 8);
}

void Chip::EndCommand() {
  ClearBits(kCommandRegister, kCommandMask);
  SetBits(kRequestRegister, kIdleRequest);
}

void Chip::StartTimer() {
  const std::uint8_t mode = registers_[kTimerModeRegister];
  if ((mode & kTimerAutomaticStart) == 0) return;
  ChipTimer::Settings settings;
  settings.prescaler = static_cast<std::uint16_t>((mode & kPrescalerHighMask) << 8 |
                                                  registers_[kPrescalerLowRegister]);
  settings.reload = static_cast<std::uint16_t>(registers_[kReloadHighRegister] << 8 |
                                               registers_[kReloadLowRegister]);
  settings.restarts = (mode & kTimerRestart) != 0;
  timer_.Start(settings, now_);
}

}  // namespace vt63x
