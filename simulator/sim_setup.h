// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_SIM_SETUP_H
#define VT63X_SIMULATOR_SIM_SETUP_H

// What vt63x-sim does on whichever line it serves.

#include "simulator/access_trace.h"
#include "simulator/chip.h"
#include "simulator/complain.h"
#include "simulator/sim_options.h"

namespace vt63x {

// Of the program when the line, the trace or the file of a card could not be had.
inline constexpr int kExitNoDevice = 3;

// Registers, cards and faults in the air as asked for, and the trace opened. False, having
// complained, on failure.
bool SetUp(const SimOptions& options, Chip& chip, AccessTrace& trace);

// At the end: complains of what cards could not store.
void ReportStoreErrors(const Field& field);

}  // namespace vt63x

#endif
