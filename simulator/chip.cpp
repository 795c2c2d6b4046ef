// SPDX-License-Identifier: MIT

#include "simulator/chip.h"

#include "simulator/chip_registers.h"
#include "simulator/serial_speed.h"

namespace vt63x {

using namespace simulated;

namespace {

// On the serial line, start and stop bits included; the answer counts.
constexpr unsigned kReadBits = 20;
constexpr unsigned kWriteBits = 30;

}  // namespace

// A register that is not named here starts at 0 and holds what was last written to it.
constexpr Chip::BehaviourTable Chip::MakeBehaviours() {
  BehaviourTable table{};
  table[kCommandRegister] = {kReceiverOff, &Chip::ReadStored, &Chip::WriteCommand};
  table[kRequestRegister] = {kIdleRequest | kLowAlertRequest, &Chip::ReadStored,
                             &Chip::WriteRequests};
  table[kSecondRequestRegister] = {0, &Chip::ReadStored, &Chip::WriteRequests};
  table[kErrorRegister] = {0, &Chip::ReadStored, &Chip::WriteErrors};
  table[kStatusRegister] = {kCrcReady, &Chip::ReadStatus, &Chip::IgnoreWrite};
  table[kSecondStatusRegister] = {0, &Chip::ReadStored, &Chip::WriteSecondStatus};
  table[kFifoDataRegister] = {0, &Chip::ReadFifo, &Chip::WriteFifo};
  table[kFifoLevelRegister] = {0, &Chip::ReadFifoLevel, &Chip::WriteFifoLevel};
  table[kWaterLevelRegister].power_up = 0x08;
  table[kControlRegister] = {0, &Chip::ReadStored, &Chip::IgnoreWrite};
  table[kFramingRegister] = {0, &Chip::ReadStored, &Chip::WriteFraming};
  table[kCollisionRegister] = {kValuesAfterCollision | kPositionNotValid, &Chip::ReadStored,
                               &Chip::WriteCollision};
  table[kModeRegister].power_up = 0x3D;  // the preset 0x6363
  table[kAntennaRegister] = {0x80, &Chip::ReadStored, &Chip::WriteAntenna};
  table[kSerialSpeedRegister].power_up = kSerialSpeedAtPowerUp;
  table[kCrcHighRegister] = {0xFF, &Chip::ReadStored, &Chip::IgnoreWrite};
  table[kCrcLowRegister] = {0xFF, &Chip::ReadStored, &Chip::IgnoreWrite};
  table[kCounterHighRegister] = {0, &Chip::ReadCounter, &Chip::IgnoreWrite};
  table[kCounterLowRegister] = {0, &Chip::ReadCounter, &Chip::IgnoreWrite};
  table[kVersionRegister] = {kChipVersion, &Chip::ReadStored, &Chip::IgnoreWrite};
  return table;
}

constinit const Chip::BehaviourTable Chip::kBehaviours = Chip::MakeBehaviours();

Chip::Chip() : Chip(line_time_) {}

Chip::Chip(ChipClock& clock) : clock_(clock) {
  registers_[kVersionRegister] = kChipVersion;
  PowerUp();
}

std::uint8_t Chip::Read(std::uint8_t address) {
  BeginAccess(kReadBits);
  if (address >= kRegisterCount) return 0;
  const std::uint8_t value = (this->*kBehaviours[address].read)(address);
  UpdateAlerts();
  return value;
}

void Chip::Write(std::uint8_t address, std::uint8_t value) {
  BeginAccess(kWriteBits);
  if (address >= kRegisterCount) return;
  (this->*kBehaviours[address].write)(address, value);
  UpdateAlerts();
}

std::uint32_t Chip::SerialRate() const { return BitRateOf(registers_[kSerialSpeedRegister]); }

void Chip::Preset(std::uint8_t address, std::uint8_t value) {
  if (address >= kRegisterCount) return;
  registers_[address] = value;
  SwitchField();
}

void Chip::BeginAccess(unsigned bits_on_line) {
  constexpr std::int64_t kSecondNs = 1'000'000'000;
  now_ = clock_.AfterAccess(bits_on_line * kSecondNs / SerialRate());
  if (timer_.TakeExpiry(now_)) SetBits(kRequestRegister, kTimerRequest);
}

void Chip::PowerUp() {
  for (std::size_t address = 0; address < kRegisterCount; ++address) {
    if (address != kVersionRegister) registers_[address] = kBehaviours[address].power_up;
  }
  fifo_.Clear();
  timer_ = {};
  SwitchField();
  alerts_ = Alerts();
}

std::uint8_t Chip::ReadStored(std::uint8_t address) { return registers_[address]; }

// Two bits are remembered, the others are the state of things.
std::uint8_t Chip::ReadStatus(std::uint8_t) {
  unsigned status = registers_[kStatusRegister] & (kCrcReady | kCrcOk);
  status |= Alerts();
  if (timer_.running()) status |= kTimerRunning;
  const unsigned pending = (registers_[kRequestRegister] & registers_[kRequestEnableRegister]) |
                           (registers_[kSecondRequestRegister] & registers_[kSecondEnableRegister]);
  if ((pending & 0x7F) != 0) status |= kRequestPending;
  return static_cast<std::uint8_t>(status);
}

std::uint8_t Chip::ReadFifo(std::uint8_t) { return fifo_.Pop(); }

std::uint8_t Chip::ReadFifoLevel(std::uint8_t) { return fifo_.level(); }

std::uint8_t Chip::ReadCounter(std::uint8_t address) {
  const unsigned counter = timer_.Counter(now_);
  return static_cast<std::uint8_t>(address == kCounterHighRegister ? counter >> 8 : counter & 0xFF);
}

void Chip::WriteStored(std::uint8_t address, std::uint8_t value) { registers_[address] = value; }

void Chip::IgnoreWrite(std::uint8_t, std::uint8_t) {}

void Chip::WriteCommand(std::uint8_t address, std::uint8_t value) {
  registers_[address] = value;
  SwitchField();
  RunCommand(value & kCommandMask);
}

void Chip::WriteRequests(std::uint8_t address, std::uint8_t value) {
  const unsigned bits = value & 0x7FU;
  if ((value & kSetRequests) != 0) {
    SetBits(address, bits);
  } else {
    ClearBits(address, bits);
  }
}

// Errors can be cleared and not made.
void Chip::WriteErrors(std::uint8_t address, std::uint8_t value) {
  registers_[address] = registers_[address] & value;
}

// A session can be ended and not begun.
void Chip::WriteSecondStatus(std::uint8_t address, std::uint8_t value) {
  const unsigned session = registers_[address] & value & kCryptoActive;
  registers_[address] = static_cast<std::uint8_t>((value & ~unsigned{kCryptoActive}) | session);
}

void Chip::WriteFifo(std::uint8_t, std::uint8_t value) {
  if (fifo_.Push(value)) return;
  SetBits(kErrorRegister, kOverflowError);
  SetBits(kRequestRegister, kErrorRequest);
}

void Chip::WriteFifoLevel(std::uint8_t, std::uint8_t value) {
  if ((value & kFlushFifo) == 0) return;
  fifo_.Clear();
  ClearBits(kErrorRegister, kOverflowError);
}

void Chip::WriteFraming(std::uint8_t address, std::uint8_t value) {
  registers_[address] = static_cast<std::uint8_t>(value & ~kStartSend);
  const bool armed = (registers_[kCommandRegister] & kCommandMask) == kTransceiveCommand;
  if ((value & kStartSend) != 0 && armed) Transceive();
}

void Chip::WriteCollision(std::uint8_t address, std::uint8_t value) {
  ClearBits(address, kValuesAfterCollision);
  SetBits(address, value & kValuesAfterCollision);
}

void Chip::WriteAntenna(std::uint8_t address, std::uint8_t value) {
  registers_[address] = value;
  SwitchField();
}

void Chip::SwitchField() {
  field_.Switch(Has(kAntennaRegister, kAntennaOn) && !Has(kCommandRegister, kPowerDown));
  if (!field_.is_on()) unheard_.reset();
}

std::uint8_t Chip::Alerts() const {
  const unsigned water = registers_[kWaterLevelRegister] & 0x3FU;
  unsigned alerts = 0;
  if (fifo_.level() <= water) alerts |= kLowAlert;
  if (ChipFifo::kSize - fifo_.level() <= water) alerts |= kHighAlert;
  return static_cast<std::uint8_t>(alerts);
}

// An alert that was not there before is also a request.
void Chip::UpdateAlerts() {
  const std::uint8_t alerts = Alerts();
  const unsigned risen = alerts & ~unsigned{alerts_};
  if ((risen & kLowAlert) != 0) SetBits(kRequestRegister, kLowAlertRequest);
  if ((risen & kHighAlert) != 0) SetBits(kRequestRegister, kHighAlertRequest);
  alerts_ = alerts;
}

void Chip::SetBits(std::uint8_t address, unsigned bits) {
  registers_[address] = static_cast<std::uint8_t>(registers_[address] | bits);
}

void Chip::ClearBits(std::uint8_t address, unsigned bits) {
  registers_[address] = static_cast<std::uint8_t>(registers_[address] & ~bits);
}

}  // namespace vt63x
