// SPDX-License-Identifier: MIT

#include "shell/register_dump.h"

#include <cstdio>

#include "frontend/register_control.h"
#include "shell/state/log.h"

namespace vt63x {
namespace {

constexpr std::uint8_t kFifoData = 0x09;
constexpr std::uint8_t kVersion = 0x37;
constexpr int kRows = 4;
constexpr int kColumns = 16;

HFLSTATUS Write(AppState& state, std::uint8_t address, std::uint8_t data) {
  setreg_param param{address, data, nullptr};
  const LockGuard lock(state.stack_lock);
  return state.component_ptrs.register_control->SetRegister(&param);
}

HFLSTATUS Read(AppState& state, std::uint8_t address, std::uint8_t& data) {
  getreg_param param{address, 0, nullptr};
  const LockGuard lock(state.stack_lock);
  const HFLSTATUS status = state.component_ptrs.register_control->GetRegister(&param);
  data = param.data;
  return status;
}

// "P0 " and sixteen cells, an extra blank in the middle and two at the end: 53 characters.
HFLSTATUS FormatRow(AppState& state, int row, char (&line)[100]) {
  int length = std::snprintf(line, sizeof line, "P%d ", row);
  for (int column = 0; column < kColumns; ++column) {
    const auto address = static_cast<std::uint8_t>(row * kColumns + column);
    char* const cell = line + length;
    if (address == kFifoData) {
      length += std::snprintf(cell, 4, "xx ");
    } else {
      std::uint8_t data = 0;
      const HFLSTATUS status = Read(state, address, data);
      if (status != HFL_SUCCESS) return status;
      length += std::snprintf(cell, 4, "%02x ", data);
    }
    const bool gap_follows = column == kColumns / 2 - 1 || column == kColumns - 1;
    if (gap_follows) line[length++] = ' ';
  }
  line[length] = '\0';
  return HFL_SUCCESS;
}

}  // namespace

HFLSTATUS DumpRegisters(const action_param* action) {
  AppState& state = *action->app_state;
  char line[100];
  Write(state, kVersion, 0x00);
  Sleep(1);
  const HFLSTATUS status = Write(state, 0x00, 0x00);
  if (status != HFL_SUCCESS) {
    std::snprintf(line, sizeof line, "Writing Error on register 0x%02X: HFLSTATUS 0x%04X!", 0,
                  static_cast<unsigned>(status));
    log_append(action, line, 1);
  }
  log_append(action, "Registersetting : ", 1);
  log_append(action, "    0  1  2  3  4  5  6  7   8  9  A  B  C  D  E  F", 1);
  for (int row = 0; row < kRows; ++row) {
    const HFLSTATUS read_status = FormatRow(state, row, line);
    if (read_status != HFL_SUCCESS) return read_status;
    log_append(action, line, 1);
  }
  return status;
}

}  // namespace vt63x
