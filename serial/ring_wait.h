// SPDX-License-Identifier: MIT

#ifndef VT63X_SERIAL_RING_WAIT_H
#define VT63X_SERIAL_RING_WAIT_H

// Waits for the board's ring-indicator line on the open port. Both block the calling thread for
// about `timeout_ms` milliseconds at most, less when the view breaks off, and return 1 when the
// condition came and 0 when it did not; a failure (no port, no modem lines, a port that is closed
// meanwhile) counts as not. They
// take no lock: the modem lines have nothing to do with the bytes on the line. One thread at a
// time.

#include "shell/state/app_state.h"

namespace vt63x {

// Samples the line every millisecond until it has the level (0: off, else on). A time-out of 0 is
// one sample: 1 if the line is on, whatever level was asked for.
std::uint32_t WaitRingLevel(const action_param* action, std::uint8_t level,
                            std::uint16_t timeout_ms);

// Waits for the driver's ring event. Afterwards nothing is pending on the port, and its event mask
// stays at the ring event.
std::uint32_t WaitRingEdge(const action_param* action, std::uint16_t timeout_ms);

}  // namespace vt63x

#endif
