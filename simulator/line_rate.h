// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_LINE_RATE_H
#define VT63X_SIMULATOR_LINE_RATE_H

// Line settings of a pseudo terminal, got and set through its master. Apart from everything else
// because the kernel's records, which alone know arbitrary bit rates, clash with <termios.h>.

#include <cstdint>

namespace vt63x {

// Bit rate that the client has set, bits per second; 0 when the line is switched off or gone.
std::uint32_t LineRate(int master_fd);

// Eight bits without parity, nothing echoed, translated or held back, at `bits_per_second`. False
// with errno on failure.
bool MakeLineRaw(int master_fd, std::uint32_t bits_per_second);

}  // namespace vt63x

#endif
