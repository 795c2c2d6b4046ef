// SPDX-License-Identifier: MIT

// vt63x-sim: a simulated chip on a serial line.

#include "simulator/serve_line.h"
#include "simulator/serve_port.h"
#include "simulator/sim_options.h"

int main(int argc, char** argv) {
  int exit_code = 0;
  const auto options = vt63x::ParseSimOptions(argc, argv, exit_code);
  if (!options) return exit_code;
  if constexpr (vt63x::kHasOwnLines) {
    if (options->port.empty()) return vt63x::ServeLine(*options);
  }
  return vt63x::ServePort(*options);
}
