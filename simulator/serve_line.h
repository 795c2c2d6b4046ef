// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_SERVE_LINE_H
#define VT63X_SIMULATOR_SERVE_LINE_H

#include "simulator/sim_options.h"

namespace vt63x {

// vt63x-sim on a line of its own, a pseudo terminal or an access server's port, for as long as it
// is wanted or as a command runs. The exit code of the program.
int ServeLine(const SimOptions& options);

}  // namespace vt63x

#endif
