// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_REGISTER_DUMP_H
#define VT63X_SHELL_REGISTER_DUMP_H

#include "frontend/status.h"
#include "shell/state/app_state.h"

namespace vt63x {

// Logs the chip's 64 registers as four rows of sixteen, the FIFO data register as "xx": reading it
// would take a byte out. Writes 0x00 to registers 0x37 and 0x00 first; a failure of the second is
// logged. A read that fails ends the dump without its row and without a message. The result is the
// status of the last access that failed, 0 when none did; the first write is not looked at.
HFLSTATUS DumpRegisters(const action_param* action);

}  // namespace vt63x

#endif
