// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_SIM_OPTIONS_H
#define VT63X_SIMULATOR_SIM_OPTIONS_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/air_faults.h"
#include "simulator/card_options.h"
#include "simulator/faults.h"

namespace vt63x {

// What vt63x-sim was asked to do.
struct SimOptions {
  bool pace = false;
  std::vector<Fault> faults;
  std::vector<std::pair<std::uint8_t, std::uint8_t>> registers;  // address, value to start with
  std::vector<CardOption> cards;
  std::vector<AirFault> air_faults;
  bool control = false;
  std::string port;                  // empty: a line of its own
  std::string rfc2217;               // empty: that is a pseudo terminal
  std::string link;                  // empty: none
  std::string trace;                 // empty: none
  std::vector<std::string> command;  // empty: serve until a signal
};

inline constexpr int kExitUsage = 2;

// Whether lines of its own, pseudo terminals and access servers, are there for this system; the
// build says so.
inline constexpr bool kHasOwnLines = VT63X_HAS_OWN_LINES != 0;

// Prints help or a complaint itself and then gives nothing, with the exit code of the program, 0
// or kExitUsage, in `exit_code`.
std::optional<SimOptions> ParseSimOptions(int argc, char** argv, int& exit_code);

}  // namespace vt63x

#endif
