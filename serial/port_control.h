// SPDX-License-Identifier: MIT

#ifndef VT63X_SERIAL_PORT_CONTROL_H
#define VT63X_SERIAL_PORT_CONTROL_H

// The host's serial port: 8 data bits, no parity, one stop bit, no flow control, DTR and RTS off;
// only the bit rate changes. The open handle is AppState::port_handle, copied into the
// SerialBusWrapper, which moves the bytes.
//
// All of these run on the main thread (the headless program's only one), but for SetPortBitRate,
// which the runner thread calls too. Each takes AppState::stack_lock for as long as it touches the
// port. Bit rates are in bits per second.

#include <string>
#include <string_view>

#include "shell/state/app_state.h"

namespace vt63x {

// What to open for a port that is shown as "COM1:" to "COM16:": Windows knows those from COM10 on
// by their long device names only (\\.\COM10).
std::string PortDeviceName(std::string_view shown);

// Opens port_names[port_index] at 9600 bps with a read time-out of 500 ms. On failure the log says
// so and the port stays closed.
void OpenPort(const action_param* action);

// Closes the port, if it is open; the bit rate shown goes back to 9600. Waits of other threads for
// the ring indicator end first, which takes milliseconds; after 1 s the port is closed all the
// same.
void ClosePort(const action_param* action);

// Applies the fixed line settings with another bit rate. Win32 error code, 0 for success.
DWORD SetPortBitRate(const action_param* action, DWORD bit_rate);

// Applies the fixed time-outs: a read returns what is there, waits up to 500 ms for the first byte
// otherwise; writes have none. Win32 error code, 0 for success.
DWORD SetPortTimeouts(const action_param* action);

// Throws away pending bytes in both directions; transfers in progress go on.
BOOL PurgePort(const action_param* action);

// The same for a caller who holds stack_lock and goes on with an access.
BOOL PurgeLockedPort(const AppState& state) REQUIRES(state.stack_lock);

// Host side only; the chip keeps its rate. Both update baudrate_index and the rate shown, and
// return the result of SetPortBitRate.
DWORD SetHostBaud9600(const action_param* action);
DWORD SetHostBaud115200(const action_param* action);

// Chip first (its serial speed register, at the old rate, echo included), then the host. A chip
// that does not take the write leaves the host alone and a line in the log.
void SwitchAllTo115k(const action_param* action);

}  // namespace vt63x

#endif
