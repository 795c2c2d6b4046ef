// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_COMPLAIN_H
#define VT63X_SIMULATOR_COMPLAIN_H

#include <cstdio>
#include <string>

namespace vt63x {

// A line for the user of vt63x-sim on standard error; from any thread.
inline void Complain(const std::string& text) {
  std::fprintf(stderr, "vt63x-sim: %s\n", text.c_str());
}

}  // namespace vt63x

#endif
