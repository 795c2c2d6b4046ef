// SPDX-License-Identifier: MIT

#include "shell/programming_interface.h"

#include "contactless/card_memory.h"
#include "contactless/iso14443a.h"
#include "serial/port_control.h"
#include "shell/card_reader.h"
#include "shell/resources/resource.h"
#include "shell/state/log.h"

namespace vt63x {
namespace {

constexpr std::uint8_t kSelectLevel1 = 0x93;  // ISO/IEC 14443-3, 6.5.2
constexpr std::uint8_t kRead = 0x30;
constexpr std::uint8_t kSampleBlock = 5;

using user_buffer = std::uint8_t[64];

// One card operation under the stack's lock; what came of it is not looked at.
template <typename Operation>
void Locked(AppState& state, const Operation& operation) {
  const LockGuard lock(state.stack_lock);
  operation(state.component_ptrs);
}

// Wakes a card, selects it twice and halts it. ATQA in bytes 0 and 1, identifier from byte 2 on.
void ActivateCard(const action_param* action, user_buffer& buffer) {
  AppState& state = *action->app_state;
  log_append(action, "Sample Action 2", 1);
  req_p request{REQUEST_WUPA, buffer, nullptr};
  sel_p select{};
  select.select_code = kSelectLevel1;
  select.uid = buffer + 2;
  hlt_p halt{};
  Locked(state, [&](component_pointers& stack) { stack.iso14443a->Request(&request); });
  Locked(state, [&](component_pointers& stack) { stack.iso14443a->AnticollisionSelect(&select); });
  select.select_code = kSelectLevel1;
  select.bit_count = 32;
  Locked(state, [&](component_pointers& stack) { stack.iso14443a->Select(&select); });
  Locked(state, [&](component_pointers& stack) { stack.iso14443a->Halt(&halt); });
}

void ReadBlock(const action_param* action, user_buffer& buffer) {
  log_append(action, "Sample Action 1", 1);
  ostrel_p read{};
  read.command = kRead;
  read.address = kSampleBlock;
  read.data = buffer;
  Locked(*action->app_state,
         [&](component_pointers& stack) { stack.card_memory->CardCommand(&read); });
}

struct user_action {
  WORD command;
  const char* item;
  void (*run)(const action_param*, user_buffer&);  // null: answered as unknown
};

constexpr user_action kActions[] = {
    {50500, "Ostrel Reader", nullptr},
    {50501, "Action &2", ActivateCard},
    {50502, "Action &3", ReadBlock},
};

}  // namespace

// Each at the top, so that the last of the table comes first.
void FillUserActions(const action_param* action) {
  for (const user_action& entry : kActions) {
    InsertMenuA(action->app_state->pi_menu, 0, MF_BYPOSITION | MF_STRING, entry.command,
                entry.item);
  }
}

void RunUserAction(const action_param* action) {
  user_buffer buffer = {};
  if (action->app_state->port_handle == nullptr) {
    log_append(action, "Error: Cannot perform user action with closed RS 232 port.", 1);
    return;
  }
  PurgePort(action);
  for (const user_action& entry : kActions) {
    if (entry.command != LOWORD(action->wparam) || entry.run == nullptr) continue;
    entry.run(action, buffer);
    return;
  }
  log_append(action, "Unknown Command Recognised by Programming Interface.", 1);
}

}  // namespace vt63x
