// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_CHIP_H
#define VT63X_SIMULATOR_CHIP_H

// The simulated chip, seen from inside its serial interface: a file of 64 registers, each of which
// behaves as its row of the behaviour table in chip.cpp says, the commands (chip_commands.cpp), and
// the cards in front of its antenna.
//
// What is decided here:
//
//  - Commands take no time. CRC, transmit and an accepted authentication end in idle; transceive
//    and receive stay until another command is written. Codes without a command do nothing.
//  - The start bit of the framing register counts in the write that carries it, while the command
//    is transceive, and always reads 0: sending is over when the write is. So a transceive can be
//    repeated by setting the bit again.
//  - An answer is there as soon as the frame is sent. The answer to a transmit waits for the next
//    receive, until something else is sent or the field goes off.
//  - With automatic start the timer runs from the end of a transmission, and from the start of a
//    receive or authentication, to the first bit of an answer. Gating is stored and does nothing.
//  - A command replaces the errors of the last one, but for a FIFO overflow, which a flush or a
//    write to the error register clears.
//  - With the values after a collision kept, all bits are delivered. With those values cleared the
//    reception ends with the first collision: the bits before it are delivered and the colliding
//    bit as 1, so that a reader who sends back what it got singles out the cards that have 1 there,
//    and every pass adds at least one bit.
//  - The first byte of a reception starts at the receive alignment, and the count of valid bits in
//    its last byte includes those skipped. The collision position counts the same way, from 1, with
//    0 for bit 32.
//  - Received bytes whose CRC is to be tested lose their last two, right or wrong; answers with
//    less than two complete bytes are delivered as they are, with a CRC error.
//  - Frames carry CRC_A whatever the preset, which is for the CRC command alone. With the highest
//    bit first the preset is taken as it stands.
//  - No cipher: see card.h. Refused keys turn the session off.
//  - The field is on with either antenna bit, unless the chip is in power down. A receiver that is
//    off hears nothing. Cards understand 106 kbit/s only.
//  - Soft reset restores the power-up values of all registers but the version, and with them the
//    serial speed; the field goes off.
//
// Not locked: one thread at a time. Neither reading nor writing ever fails.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "simulator/chip_clock.h"
#include "simulator/chip_fifo.h"
#include "simulator/chip_timer.h"
#include "simulator/field.h"

namespace vt63x {

inline constexpr std::uint8_t kChipVersion = 0x91;

class Chip {
 public:
  static constexpr std::size_t kRegisterCount = 64;

  // Every register holds its power-up value. Time passes through accesses alone.
  Chip();
  // `clock` is the caller's and outlives the chip.
  explicit Chip(ChipClock& clock);
  Chip(const Chip&) = delete;
  Chip& operator=(const Chip&) = delete;

  // `address` is 0x00 to 0x7F. Behind the last register, 0x40 to 0x7F, there is nothing: reads
  // give 0 and writes have no effect.
  std::uint8_t Read(std::uint8_t address);
  void Write(std::uint8_t address, std::uint8_t value);

  // Makes `value` what the register holds, as if the chip had been built so: nothing is refused
  // and nothing is set off. `address` is 0x00 to 0x3F; any other has no effect, nor has any of the
  // FIFO, first status and counter registers, which hold nothing of their own.
  void Preset(std::uint8_t address, std::uint8_t value);

  // Bit rate of the serial interface as the registers stand, in bits per second.
  std::uint32_t SerialRate() const;

  Field& field() { return field_; }
  const Field& field() const { return field_; }

 private:
  struct Behaviour {
    std::uint8_t power_up = 0;
    std::uint8_t (Chip::*read)(std::uint8_t address) = &Chip::ReadStored;
    void (Chip::*write)(std::uint8_t address, std::uint8_t value) = &Chip::WriteStored;
  };
  using BehaviourTable = std::array<Behaviour, kRegisterCount>;
  static constexpr BehaviourTable MakeBehaviours();
  static const BehaviourTable kBehaviours;

  std::uint8_t ReadStored(std::uint8_t address);
  std::uint8_t ReadStatus(std::uint8_t address);
  std::uint8_t ReadFifo(std::uint8_t address);
  std::uint8_t ReadFifoLevel(std::uint8_t address);
  std::uint8_t ReadCounter(std::uint8_t address);
  void WriteStored(std::uint8_t address, std::uint8_t value);
  void IgnoreWrite(std::uint8_t address, std::uint8_t value);
  void WriteCommand(std::uint8_t address, std::uint8_t value);
  void WriteRequests(std::uint8_t address, std::uint8_t value);
  void WriteErrors(std::uint8_t address, std::uint8_t value);
  void WriteSecondStatus(std::uint8_t address, std::uint8_t value);
  void WriteFifo(std::uint8_t address, std::uint8_t value);
  void WriteFifoLevel(std::uint8_t address, std::uint8_t value);
  void WriteFraming(std::uint8_t address, std::uint8_t value);
  void WriteCollision(std::uint8_t address, std::uint8_t value);
  void WriteAntenna(std::uint8_t address, std::uint8_t value);

  // In chip_commands.cpp.
  void RunCommand(std::uint8_t command);
  void CalculateCrc();
  void Transmit();
  void Transceive();
  void Receive();
  void Authenticate();
  void Reset();
  AirFrame TakeFrameToSend();
  std::optional<Reception> Send();
  void Deliver(const Reception& reception);
  void EndAtCollision(Reception& reception);
  void TestCrc(AirFrame& frame);
  void FillFifo(const AirFrame& frame);
  void EndCommand();
  void StartTimer();

  void BeginAccess(unsigned bits_on_line);
  void PowerUp();
  void SwitchField();
  void UpdateAlerts();
  std::uint8_t Alerts() const;
  bool Has(std::uint8_t address, std::uint8_t bits) const {
    return (registers_[address] & bits) != 0;
  }
  void SetBits(std::uint8_t address, unsigned bits);
  void ClearBits(std::uint8_t address, unsigned bits);

  LineTimeClock line_time_;
  ChipClock& clock_;
  std::int64_t now_ = 0;
  std::array<std::uint8_t, kRegisterCount> registers_{};
  ChipFifo fifo_;
  ChipTimer timer_;
  Field field_;
  std::optional<Reception> unheard_;  // the answer to a transmit
  std::uint8_t alerts_ = 0;           // as they were after the last access
};

}  // namespace vt63x

#endif
