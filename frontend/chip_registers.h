// SPDX-License-Identifier: MIT

#ifndef VT63X_FRONTEND_CHIP_REGISTERS_H
#define VT63X_FRONTEND_CHIP_REGISTERS_H

// The chip's registers as the component stack uses them: addresses (6 bits, as the serial protocol
// carries them) and the bits that it sets, clears or looks at. The simulated chip has a list of its
// own, so that each checks the other. Registers without a name here are written by number, as parts
// of a setting whose single registers mean nothing to the stack.

#include <cstdint>

namespace vt63x::reg {

inline constexpr std::uint8_t kCommand = 0x01;
inline constexpr std::uint8_t kCommandMask = 0x0F;  // the command code
inline constexpr std::uint8_t kReceiverOff = 0x20;

// Communication interrupts: 0x01 timer, 0x02 error, 0x10 idle, 0x20 receive complete, 0x40 transmit
// complete. In a write to a request register bit 0x80 says whether the marked bits are set or
// cleared.
inline constexpr std::uint8_t kCommIrqEnable = 0x02;
inline constexpr std::uint8_t kDivIrqEnable = 0x03;
inline constexpr std::uint8_t kCommIrqRequest = 0x04;
inline constexpr std::uint8_t kDivIrqRequest = 0x05;
inline constexpr std::uint8_t kTimerIrq = 0x01;

inline constexpr std::uint8_t kError = 0x06;
inline constexpr std::uint8_t kProtocolError = 0x01;
inline constexpr std::uint8_t kParityError = 0x02;
inline constexpr std::uint8_t kCrcError = 0x04;
inline constexpr std::uint8_t kCollisionError = 0x08;
inline constexpr std::uint8_t kOverflowError = 0x10;
inline constexpr std::uint8_t kTemperatureError = 0x40;
inline constexpr std::uint8_t kWriteError = 0x80;

inline constexpr std::uint8_t kCoprocessorStatus = 0x07;
inline constexpr std::uint8_t kCrcReady = 0x20;
inline constexpr std::uint8_t kCryptoStatus = 0x08;
inline constexpr std::uint8_t kCryptoActive = 0x08;

inline constexpr std::uint8_t kFifoData = 0x09;   // reading takes a byte out
inline constexpr std::uint8_t kFifoLevel = 0x0A;  // bytes
inline constexpr std::uint8_t kFlushFifo = 0x80;
inline constexpr std::uint8_t kControl = 0x0C;
inline constexpr std::uint8_t kLastBitsMask = 0x07;  // valid bits of the last byte; 0: all
inline constexpr std::uint8_t kBitFraming = 0x0D;
inline constexpr std::uint8_t kStartSending = 0x80;
inline constexpr std::uint8_t kCollision = 0x0E;
inline constexpr std::uint8_t kValuesAfterCollision = 0x80;

inline constexpr std::uint8_t kMode = 0x11;
inline constexpr std::uint8_t kCrcHighestFirst = 0x80;
inline constexpr std::uint8_t kCrcPresetMask = 0x03;
inline constexpr std::uint8_t kTransmitMode = 0x12;
inline constexpr std::uint8_t kReceiveMode = 0x13;
inline constexpr std::uint8_t kCrcOn = 0x80;
inline constexpr std::uint8_t kModeKept = 0x08;  // what a change of speed leaves as it is
inline constexpr std::uint8_t kAntenna = 0x14;
inline constexpr std::uint8_t kAntennaOn = 0x03;

inline constexpr std::uint8_t kSerialSpeed = 0x1F;
inline constexpr std::uint8_t kSpeed115200 = 0x79;

inline constexpr std::uint8_t kCrcHigh = 0x21;
inline constexpr std::uint8_t kCrcLow = 0x22;
inline constexpr std::uint8_t kModulationWidth = 0x24;

inline constexpr std::uint8_t kTimerMode = 0x2A;
inline constexpr std::uint8_t kTimerAutomaticStart = 0x80;
inline constexpr std::uint8_t kTimerGatingMask = 0x60;
inline constexpr std::uint8_t kTimerRestart = 0x10;
inline constexpr std::uint8_t kPrescalerHighMask = 0x0F;  // bits 8 to 11 of the prescaler
inline constexpr std::uint8_t kPrescalerLow = 0x2B;
inline constexpr std::uint8_t kReloadHigh = 0x2C;
inline constexpr std::uint8_t kReloadLow = 0x2D;
inline constexpr std::uint8_t kCounterHigh = 0x2E;
inline constexpr std::uint8_t kCounterLow = 0x2F;
inline constexpr std::uint8_t kVersion = 0x37;

}  // namespace vt63x::reg

#endif
