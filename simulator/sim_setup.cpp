// SPDX-License-Identifier: MIT

#include "simulator/sim_setup.h"

#include <string>

namespace vt63x {

bool SetUp(const SimOptions& options, Chip& chip, AccessTrace& trace) {
  for (const auto& [address, value] : options.registers) chip.Preset(address, value);
  for (const AirFault& fault : options.air_faults) chip.field().faults().Set(fault);
  std::string error;
  if ((options.trace.empty() || trace.Open(options.trace, error)) &&
      FillField(chip.field(), options.cards, error)) {
    return true;
  }
  Complain(error);
  return false;
}

void ReportStoreErrors(const Field& field) {
  for (const std::string& error : StoreErrors(field)) Complain(error);
}

}  // namespace vt63x
