// SPDX-License-Identifier: MIT

#ifndef VT63X_FRONTEND_STATUS_H
#define VT63X_FRONTEND_STATUS_H

// The status of every component operation: 0 is success, every other value an error named below.
// Callers compare a status with 0 or with one of these constants and print it as four hexadecimal
// digits. A status passes up through the layers unchanged.
//
// The high byte groups the values (0x00 reported by the chip while it runs a command, 0x01
// parameters and link, 0x02 the card's answer, 0x05 anticollision data, 0x7E the host); nothing
// relies on the grouping.

#include <cstdint>

namespace vt63x {

using HFLSTATUS = std::int16_t;

inline constexpr HFLSTATUS HFL_SUCCESS = 0x0000;

// The chip's timer ran out before a card answered.
inline constexpr HFLSTATUS HFL_NO_ANSWER = 0x0001;
// Error register bit 0x04, except the short answer of HFL_SHORT_ANSWER.
inline constexpr HFLSTATUS HFL_CRC_ERROR = 0x0002;
// Error register bit 0x02 and none of 0x01, 0x04, 0x10, 0x40, 0x80.
inline constexpr HFLSTATUS HFL_PARITY_ERROR = 0x0003;
// Anticollision: known and received bits exceed 40. Select: not exactly one complete byte.
inline constexpr HFLSTATUS HFL_WRONG_ANSWER_SIZE = 0x0004;
// Error register bit 0x08 and none of 0x01, 0x04, 0x10, 0x40, 0x80.
inline constexpr HFLSTATUS HFL_COLLISION = 0x0006;
// The answer does not fit the receive buffer, or there is nothing to send.
inline constexpr HFLSTATUS HFL_BUFFER_SIZE = 0x0007;
// Error register bit 0x10, or more data than a card command carries.
inline constexpr HFLSTATUS HFL_OVERFLOW = 0x0009;
// Error register bit 0x01, or an answer to a request that is not two complete bytes.
inline constexpr HFLSTATUS HFL_PROTOCOL_ERROR = 0x000B;
// The error register is not 0 but holds no bit with a status of its own.
inline constexpr HFLSTATUS HFL_CHIP_ERROR = 0x000C;
// Error register bit 0x80; wins over every other bit.
inline constexpr HFLSTATUS HFL_WRITE_ERROR = 0x000D;

inline constexpr HFLSTATUS HFL_INVALID_PARAMETER = 0x0101;
inline constexpr HFLSTATUS HFL_NOT_SUPPORTED = 0x0102;
inline constexpr HFLSTATUS HFL_UNKNOWN_COMMAND = 0x0103;
// A write that moved no byte, a read without a byte within the port's time-out, or an echo that
// is not the address written.
inline constexpr HFLSTATUS HFL_LINK_FAILED = 0x0104;
// An acknowledge frame that is malformed, or an answer of the wrong kind.
inline constexpr HFLSTATUS HFL_UNEXPECTED_ANSWER = 0x0105;

// The crypto-active bit is off after an authentication.
inline constexpr HFLSTATUS HFL_AUTHENTICATION_FAILED = 0x0201;
// Error register bit 0x04 with a single byte of 4 or 8 valid bits: a card's acknowledge frame.
inline constexpr HFLSTATUS HFL_SHORT_ANSWER = 0x0202;
// The card answered with a refusal.
inline constexpr HFLSTATUS HFL_CARD_REFUSED = 0x0203;

// The check byte of an identifier level does not match its four bytes.
inline constexpr HFLSTATUS HFL_CHECK_BYTE = 0x0501;

// The event for a transfer could not be created.
inline constexpr HFLSTATUS HFL_NO_EVENT = 0x7E02;
// The wait for a transfer failed, or the component is not ready.
inline constexpr HFLSTATUS HFL_NOT_READY = 0x7E03;
// Error register bit 0x40: the chip is too hot.
inline constexpr HFLSTATUS HFL_TEMPERATURE = 0x7E04;

}  // namespace vt63x

#endif
