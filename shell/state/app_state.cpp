// SPDX-License-Identifier: MIT

#include "shell/state/app_state.h"

#include <cstdio>

namespace vt63x {

AppState::AppState()
    : baudrate_texts{"9600", "19200", "115200"},
      wcf_path{"NULL"},
      reg_addr_text{"00"},
      reg_value_text{"00"},
      config_path{} {
  int number = 0;
  for (auto& name : port_names) std::snprintf(name, sizeof name, "COM%d:", ++number);
}

}  // namespace vt63x
