// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_TTY_SETTINGS_H
#define VT63X_PLATFORM_KERNEL_TTY_SETTINGS_H

// Line settings as values: which settings a port takes, and how they look in the terminal record
// of the system. Nothing here touches a device.
//
// The record with free bit rates (termios2) is declared by <asm/termbits.h> alone, which excludes
// <termios.h>: a file that includes this header cannot include that one.

#include <asm/termbits.h>
#include <windows.h>

#include <chrono>

namespace vt63x::kernel {

inline constexpr DWORD kHighestBitRate = 4'000'000;

// How long a blocking read of the raw device waits for its first byte; the driver counts tenths of
// a second.
inline constexpr std::chrono::milliseconds kDriverReadSpan{100};

// 8 data bits, no parity, one stop bit, no flow control, DTR and RTS off, and nothing else set.
bool IsSupported(const DCB& settings);

// Bytes pass unchanged in both directions, 8 bits without parity and one stop bit, modem lines
// neither obeyed nor dropped at close. A blocking read ends with the first bytes or after
// kDriverReadSpan; a non-blocking one says that there is nothing. The bit rate stays.
void MakeRaw(termios2* settings);

// By its constant where the system has one, which every driver knows, and by number otherwise.
void SetBitRate(termios2* settings, DWORD bit_rate);

// Whether a rate that a device set is within 3 % of what was asked for: half of what 8 data bits
// with start and stop bit can bear, the other half being the peer's.
bool IsCloseTo(DWORD actual, DWORD wanted);

}  // namespace vt63x::kernel

#endif
