// SPDX-License-Identifier: MIT

#ifndef VT63X_CONTACTLESS_WAIT_CALLBACK_H
#define VT63X_CONTACTLESS_WAIT_CALLBACK_H

#include "contactless/chip_command.h"

namespace vt63x {

// The slot SetWaitCallback of a component whose record is a Core.
template <typename Core>
void StoreWaitCallback(set_wait_callback_param* param) {
  Core* const core = static_cast<Core*>(param->self);
  core->wait_cb = param->callback;
  core->wait_cb_context = param->context;
}

// The wrappers' way to that slot. It calls nothing below, so the forwarder needs no owner.
template <typename Core>
void CallSetWaitCallback(Core& core, set_wait_callback_param* param) {
  void* const callers_self = param->self;
  param->self = &core;
  core.SetWaitCallback(param);
  param->self = callers_self;
}

// A chip command of that component without anything to send or to receive yet.
template <typename Core>
single_command_param CommandOf(const Core* core, std::uint8_t command) {
  return {
      core->lower, core->wait_cb, core->wait_cb_context, command, 1, 0, nullptr, 0, nullptr, 0, 0};
}

}  // namespace vt63x

#endif
