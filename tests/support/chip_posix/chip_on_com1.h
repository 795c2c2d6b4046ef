// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_SUPPORT_CHIP_ON_COM1_H
#define VT63X_TESTS_SUPPORT_CHIP_ON_COM1_H

#include <windows.h>

#include <cstdint>
#include <string>

#include "simulator/pty_server.h"

namespace vt63x {

// A fresh chip with the card 5A3C1E78 in its field behind COM1:, gone with the object.
class ChipOnCom1 {
 public:
  ChipOnCom1() : server_(WithCard()) {
    SetEnvironmentVariableA("VT63X_COM1", server_.path().c_str());
  }

  // Register accesses that the chip has carried out.
  std::uint64_t accesses() const { return server_.reads() + server_.writes(); }

 private:
  static PtyServer::Options WithCard() {
    PtyServer::Options options;
    std::string error;
    options.cards.push_back(*ParseCardOption("5A3C1E78", error));
    return options;
  }

  PtyServer server_;
};

}  // namespace vt63x

#endif
