// SPDX-License-Identifier: MIT

#include "serial/port_control.h"

#include <cstdio>

#include "frontend/chip_registers.h"
#include "frontend/register_control.h"
#include "serial/serial_bus.h"
#include "shell/state/log.h"

namespace vt63x {
namespace {

constexpr DWORD kReadTimeoutMs = 500;
constexpr DWORD kRingWaitsAwaitedMs = 1000;

// Index into baudrate_texts of the two rates that the window can show.
constexpr std::uint8_t kIndex9600 = 0;
constexpr std::uint8_t kIndex115200 = 2;

DCB LineSettings(DWORD bit_rate) {
  DCB dcb{};
  dcb.DCBlength = sizeof dcb;
  dcb.BaudRate = bit_rate;
  dcb.fBinary = 1;
  dcb.fDtrControl = DTR_CONTROL_DISABLE;
  dcb.fRtsControl = RTS_CONTROL_DISABLE;
  dcb.ByteSize = 8;
  dcb.Parity = NOPARITY;
  dcb.StopBits = ONESTOPBIT;
  return dcb;
}

DWORD ApplyBitRate(const AppState& state, DWORD bit_rate) REQUIRES(state.stack_lock) {
  DCB dcb = LineSettings(bit_rate);
  SetLastError(ERROR_SUCCESS);
  SetCommState(state.port_handle, &dcb);
  return GetLastError();
}

void ShowHostRate(AppState& state, std::uint8_t index) {
  state.baudrate_index = index;
  if (state.view != nullptr) state.view->ShowBitRate(state.baudrate_texts[index]);
}

void UsePort(AppState& state, HANDLE port) {
  const LockGuard lock(state.stack_lock);
  state.port_handle = port;
}

void HandToBus(AppState& state) REQUIRES(state.stack_lock) {
  *static_cast<HANDLE*>(state.component_ptrs.serial_bus->core.members) = state.port_handle;
}

// From all who use it under stack_lock; the caller closes the handle.
HANDLE TakePortAway(AppState& state) {
  const LockGuard lock(state.stack_lock);
  const HANDLE port = state.port_handle;
  state.port_handle = nullptr;
  HandToBus(state);
  return port;
}

// Those that look at the line find their port gone; one that waits in the driver ends with a new
// event mask.
void EndRingWaits(const AppState& state, HANDLE port) {
  for (DWORD ms = 0; state.port_handle.in_use() && ms < kRingWaitsAwaitedMs; ++ms) {
    SetCommMask(port, 0);
    Sleep(1);
  }
}

}  // namespace

std::string PortDeviceName(std::string_view shown) {
  constexpr std::size_t kLongestShort = sizeof "COM9:" - 1;
  if (shown.size() <= kLongestShort) return std::string(shown);
  if (shown.ends_with(':')) shown.remove_suffix(1);
  return R"(\\.\)" + std::string(shown);
}

void OpenPort(const action_param* action) {
  AppState& state = *action->app_state;
  const char* const name = state.port_names[state.port_index];
  const HANDLE port = CreateFileA(PortDeviceName(name).c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                                  nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
  if (port == INVALID_HANDLE_VALUE) {  // NOLINT(performance-no-int-to-ptr)
    const DWORD error = GetLastError();
    UsePort(state, nullptr);
    log_append(action, "Error opening port - Check and verify (!) settings.", 1);
    if (state.view != nullptr) state.view->PortOpenFailed(name, error);
    return;
  }
  UsePort(state, port);
  const DWORD rate_error = SetHostBaud9600(action);
  const DWORD timeout_error = SetPortTimeouts(action);
  const DWORD error = rate_error != ERROR_SUCCESS ? rate_error : timeout_error;
  if (error != ERROR_SUCCESS && state.view != nullptr) state.view->PortSettingsRefused(name, error);
  {
    // The bus learns of a port only when it is set up.
    const LockGuard lock(state.stack_lock);
    HandToBus(state);
  }
  if (state.view != nullptr) state.view->ShowPortOpen(true);
}

void ClosePort(const action_param* action) {
  AppState& state = *action->app_state;
  const HANDLE port = TakePortAway(state);
  if (port != nullptr) {
    EndRingWaits(state, port);
    CloseHandle(port);
  }
  if (state.view != nullptr) state.view->ShowPortOpen(false);
  SetHostBaud9600(action);
}

DWORD SetPortBitRate(const action_param* action, DWORD bit_rate) {
  AppState& state = *action->app_state;
  const LockGuard lock(state.stack_lock);
  return ApplyBitRate(state, bit_rate);
}

DWORD SetPortTimeouts(const action_param* action) {
  AppState& state = *action->app_state;
  COMMTIMEOUTS cto{};
  cto.ReadIntervalTimeout = MAXDWORD;
  cto.ReadTotalTimeoutMultiplier = MAXDWORD;
  cto.ReadTotalTimeoutConstant = kReadTimeoutMs;
  const LockGuard lock(state.stack_lock);
  SetLastError(ERROR_SUCCESS);
  SetCommTimeouts(state.port_handle, &cto);
  return GetLastError();
}

BOOL PurgePort(const action_param* action) {
  AppState& state = *action->app_state;
  const LockGuard lock(state.stack_lock);
  return PurgeLockedPort(state);
}

BOOL PurgeLockedPort(const AppState& state) {
  return PurgeComm(state.port_handle, PURGE_TXCLEAR | PURGE_RXCLEAR);
}

DWORD SetHostBaud9600(const action_param* action) {
  ShowHostRate(*action->app_state, kIndex9600);
  return SetPortBitRate(action, 9600);
}

DWORD SetHostBaud115200(const action_param* action) {
  ShowHostRate(*action->app_state, kIndex115200);
  return SetPortBitRate(action, 115200);
}

void SwitchAllTo115k(const action_param* action) {
  AppState& state = *action->app_state;
  setreg_param param{reg::kSerialSpeed, reg::kSpeed115200, nullptr};
  HFLSTATUS status = HFL_SUCCESS;
  {
    // One sequence: an access between the two switches would find chip and host apart.
    const LockGuard lock(state.stack_lock);
    status = state.component_ptrs.register_control->SetRegister(&param);
    if (status == HFL_SUCCESS) ApplyBitRate(state, 115200);
  }
  if (status == HFL_SUCCESS) {
    ShowHostRate(state, kIndex115200);
    return;
  }
  char line[80];
  std::snprintf(line, sizeof line, "Error: HFLSTATUS 0x%04X attempting to change Vt63x config!",
                static_cast<unsigned>(status));
  log_append(action, line, 1);
}

}  // namespace vt63x
