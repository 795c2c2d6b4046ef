// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_ACCESS_OBSERVER_H
#define VT63X_SIMULATOR_ACCESS_OBSERVER_H

#include "simulator/line_answer.h"

namespace vt63x {

// Sees every access as it is carried out, on the thread that serves; must not wait.
class AccessObserver {
 public:
  virtual void OnAccess(const LineAnswer& answer) = 0;

 protected:
  AccessObserver() = default;
  ~AccessObserver() = default;
  AccessObserver(const AccessObserver&) = delete;
  AccessObserver& operator=(const AccessObserver&) = delete;
};

}  // namespace vt63x

#endif
