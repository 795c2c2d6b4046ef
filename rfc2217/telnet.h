// SPDX-License-Identifier: MIT

#ifndef VT63X_RFC2217_TELNET_H
#define VT63X_RFC2217_TELNET_H

// The bytes between a program and the serial port of an access server: telnet (RFC 854, 855) with
// the option that carries a port's settings and modem lines (RFC 2217). Both ends are built on
// this; it knows neither sockets nor ports.
//
// Data travels as it is, 0xFF doubled. 0xFF followed by anything else begins a command.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace vt63x::rfc2217 {

using Bytes = std::span<const std::uint8_t>;

// RFC 854, "TELNET COMMAND STRUCTURE".
enum class Negotiation : std::uint8_t { kWill = 251, kWont = 252, kDo = 253, kDont = 254 };

inline constexpr std::uint8_t kOptionBinary = 0;           // RFC 856
inline constexpr std::uint8_t kOptionSuppressGoAhead = 3;  // RFC 858
inline constexpr std::uint8_t kOptionComPort = 44;         // RFC 2217, section 2

// Commands to the access server (RFC 2217, section 3). Its answers and notices are 100 above.
enum class ComPort : std::uint8_t {
  kSignature = 0,
  kSetBaudRate = 1,  // 4 bytes, the highest first, bits per second; 0 asks for the rate
  kSetDataSize = 2,  // 5 to 8
  kSetParity = 3,    // kNoParity
  kSetStopSize = 4,  // kOneStopBit
  kSetControl = 5,   // one of kControl...
  kNotifyLineState = 6,
  kNotifyModemState = 7,  // from the server only: bits of kModem...
  kFlowSuspend = 8,
  kFlowResume = 9,
  kSetLineStateMask = 10,
  kSetModemStateMask = 11,  // which bits to be told of
  kPurgeData = 12,          // one of kPurge...
};
inline constexpr std::uint8_t kFromServer = 100;

inline constexpr std::uint8_t kNoParity = 1;
inline constexpr std::uint8_t kOneStopBit = 1;
inline constexpr std::uint8_t kControlNoFlow = 1;
inline constexpr std::uint8_t kControlDtrOff = 9;
inline constexpr std::uint8_t kControlRtsOff = 12;
inline constexpr std::uint8_t kPurgeInput =
    1;  // received by the server, not yet sent to the client
inline constexpr std::uint8_t kPurgeOutput = 2;  // received from the client, not yet on the line

// Bits of a modem state: those of a UART's modem status register.
inline constexpr std::uint8_t kModemRing = 0x40;
inline constexpr std::uint8_t kModemRingEnded = 0x04;  // the ring indicator went off since the last

// Append to `out` what goes on the wire.
void AppendData(std::string& out, Bytes data);
void AppendNegotiation(std::string& out, Negotiation what, std::uint8_t option);
void AppendComPort(std::string& out, std::uint8_t command, Bytes value);
void AppendComPort(std::string& out, std::uint8_t command, std::uint8_t value);
// With the rate as four bytes, the highest first.
void AppendBaudRate(std::string& out, std::uint8_t command, std::uint32_t bits_per_second);

// The rate in the four bytes of a value; 0 when it is not four bytes long.
std::uint32_t BaudRateOf(Bytes value);

// What the other end means; called by Decoder::Take.
class Listener {
 public:
  virtual void OnData(Bytes data) = 0;
  virtual void OnNegotiation(Negotiation what, std::uint8_t option) = 0;
  virtual void OnComPort(std::uint8_t command, Bytes value) = 0;

 protected:
  Listener() = default;
  ~Listener() = default;
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
};

// Takes bytes as they arrive, cut anywhere. Whatever comes, it neither fails nor grows: commands
// that mean nothing here are left out, options' texts longer than kMaxText are too.
class Decoder {
 public:
  static constexpr std::size_t kMaxText = 64;

  void Take(Bytes bytes, Listener& listener);

 private:
  enum class State { kData, kCommand, kOption, kText, kTextCommand };

  void TakeCommand(std::uint8_t byte);
  void TakeTextCommand(std::uint8_t byte, Listener& listener);
  void AddToText(std::uint8_t byte);

  State state_ = State::kData;
  Negotiation negotiation_ = Negotiation::kWill;
  std::array<std::uint8_t, kMaxText> text_{};  // option, command, value
  std::size_t length_ = 0;                     // of it; more than kMaxText: too long
};

}  // namespace vt63x::rfc2217

#endif
