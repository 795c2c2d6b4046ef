// SPDX-License-Identifier: MIT

#ifndef VT63X_FRONTEND_WRAPPER_CALL_H
#define VT63X_FRONTEND_WRAPPER_CALL_H

#include "frontend/status.h"

namespace vt63x {

// The one way in which a wrapper calls a slot of its own component record: `self` names the record
// for the duration of the call and holds the caller's value again afterwards.
template <typename Core, typename Param>
HFLSTATUS CallSlot(Core& core, HFLSTATUS (*slot)(Param*), Param* param) {
  Core* const callers_self = param->self;
  param->self = &core;
  const HFLSTATUS status = slot(param);
  param->self = callers_self;
  return status;
}

}  // namespace vt63x

#endif
