// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_SERVE_PORT_H
#define VT63X_SIMULATOR_SERVE_PORT_H

#include "simulator/sim_options.h"

namespace vt63x {

// vt63x-sim on the port `options.port`; until SIGINT or SIGTERM, or until the line has gone. The
// exit code of the program.
int ServePort(const SimOptions& options);

}  // namespace vt63x

#endif
