#ifndef VT63X_SIMULATOR_SERVE_PTY_H
#define VT63X_SIMULATOR_SERVE_PTY_H

#include "simulator/sim_options.h"

namespace vt63x {

// vt63x-sim on a pseudo terminal of its own, for as long as it is wanted or as a command runs; for
// systems that have such terminals. The exit code of the program.
int ServePty(const SimOptions& options);

}  // namespace vt63x

#endif
