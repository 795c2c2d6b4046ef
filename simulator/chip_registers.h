// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_CHIP_REGISTERS_H
#define VT63X_SIMULATOR_CHIP_REGISTERS_H

// Addresses and bits of the registers that the simulated chip does something with. The list is the
// simulator's own, in a namespace of its own: nothing of it comes from the stack that it checks.

#include <cstdint>

namespace vt63x::simulated {

inline constexpr std::uint8_t kCommandRegister = 0x01;
inline constexpr std::uint8_t kCommandMask = 0x0F;
inline constexpr std::uint8_t kPowerDown = 0x10;
inline constexpr std::uint8_t kReceiverOff = 0x20;

inline constexpr std::uint8_t kIdleCommand = 0x0;
inline constexpr std::uint8_t kCrcCommand = 0x3;
inline constexpr std::uint8_t kTransmitCommand = 0x4;
inline constexpr std::uint8_t kReceiveCommand = 0x8;
inline constexpr std::uint8_t kTransceiveCommand = 0xC;
inline constexpr std::uint8_t kAuthenticateCommand = 0xE;
inline constexpr std::uint8_t kSoftResetCommand = 0xF;

inline constexpr std::uint8_t kRequestEnableRegister = 0x02;
inline constexpr std::uint8_t kSecondEnableRegister = 0x03;
inline constexpr std::uint8_t kRequestRegister = 0x04;
inline constexpr std::uint8_t kTimerRequest = 0x01;
inline constexpr std::uint8_t kErrorRequest = 0x02;
inline constexpr std::uint8_t kLowAlertRequest = 0x04;
inline constexpr std::uint8_t kHighAlertRequest = 0x08;
inline constexpr std::uint8_t kIdleRequest = 0x10;
inline constexpr std::uint8_t kReceivedRequest = 0x20;
inline constexpr std::uint8_t kTransmittedRequest = 0x40;
inline constexpr std::uint8_t kSetRequests = 0x80;  // in a write; else the marked bits are cleared
inline constexpr std::uint8_t kSecondRequestRegister = 0x05;
inline constexpr std::uint8_t kCrcRequest = 0x04;

inline constexpr std::uint8_t kErrorRegister = 0x06;
inline constexpr std::uint8_t kProtocolError = 0x01;
inline constexpr std::uint8_t kParityError = 0x02;
inline constexpr std::uint8_t kCrcError = 0x04;
inline constexpr std::uint8_t kCollisionError = 0x08;
inline constexpr std::uint8_t kOverflowError = 0x10;

inline constexpr std::uint8_t kStatusRegister = 0x07;
inline constexpr std::uint8_t kLowAlert = 0x01;
inline constexpr std::uint8_t kHighAlert = 0x02;
inline constexpr std::uint8_t kTimerRunning = 0x08;
inline constexpr std::uint8_t kRequestPending = 0x10;
inline constexpr std::uint8_t kCrcReady = 0x20;
inline constexpr std::uint8_t kCrcOk = 0x40;
inline constexpr std::uint8_t kSecondStatusRegister = 0x08;
inline constexpr std::uint8_t kCryptoActive = 0x08;

inline constexpr std::uint8_t kFifoDataRegister = 0x09;
inline constexpr std::uint8_t kFifoLevelRegister = 0x0A;
inline constexpr std::uint8_t kFlushFifo = 0x80;
inline constexpr std::uint8_t kWaterLevelRegister = 0x0B;
inline constexpr std::uint8_t kControlRegister = 0x0C;
inline constexpr std::uint8_t kLastBitsMask = 0x07;
inline constexpr std::uint8_t kFramingRegister = 0x0D;
inline constexpr std::uint8_t kStartSend = 0x80;
inline constexpr std::uint8_t kCollisionRegister = 0x0E;
inline constexpr std::uint8_t kValuesAfterCollision = 0x80;
inline constexpr std::uint8_t kPositionNotValid = 0x20;

inline constexpr std::uint8_t kModeRegister = 0x11;
inline constexpr std::uint8_t kCrcHighestFirst = 0x80;
inline constexpr std::uint8_t kCrcPresetMask = 0x03;
inline constexpr std::uint8_t kTransmitModeRegister = 0x12;
inline constexpr std::uint8_t kReceiveModeRegister = 0x13;
inline constexpr std::uint8_t kCrcEnable = 0x80;
inline constexpr std::uint8_t kSpeedMask = 0x70;  // 0: 106 kbit/s, the only speed of the cards
inline constexpr std::uint8_t kAntennaRegister = 0x14;
inline constexpr std::uint8_t kAntennaOn = 0x03;  // either bit

inline constexpr std::uint8_t kSerialSpeedRegister = 0x1F;

inline constexpr std::uint8_t kCrcHighRegister = 0x21;
inline constexpr std::uint8_t kCrcLowRegister = 0x22;
inline constexpr std::uint8_t kTimerModeRegister = 0x2A;
inline constexpr std::uint8_t kTimerAutomaticStart = 0x80;
inline constexpr std::uint8_t kTimerRestart = 0x10;
inline constexpr std::uint8_t kPrescalerHighMask = 0x0F;
inline constexpr std::uint8_t kPrescalerLowRegister = 0x2B;
inline constexpr std::uint8_t kReloadHighRegister = 0x2C;
inline constexpr std::uint8_t kReloadLowRegister = 0x2D;
inline constexpr std::uint8_t kCounterHighRegister = 0x2E;
inline constexpr std::uint8_t kCounterLowRegister = 0x2F;
inline constexpr std::uint8_t kVersionRegister = 0x37;

}  // namespace vt63x::simulated

#endif
