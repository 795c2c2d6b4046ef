// SPDX-License-Identifier: MIT

// What is outside the subset fails loudly.

#include <gtest/gtest.h>

#include "overlapped_call.h"
#include "scripted_line.h"

namespace vt63x {
namespace {

// The last error where no handle came back.
DWORD RefusalOf(HANDLE handle) {
  return handle == nullptr || handle == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
}

TEST(RefusedArguments, FormsOfObjectsThatAreNotThere) {
  constexpr DWORD kBoth = GENERIC_READ | GENERIC_WRITE;
  constexpr DWORD kOpen = OPEN_EXISTING;
  SECURITY_ATTRIBUTES security{};
  const auto routine = [](void*) -> DWORD { return 0; };
  SetLastError(0xDEADBEEF);
  const DWORD errors[] = {
      RefusalOf(CreateEventA(&security, TRUE, FALSE, nullptr)),
      RefusalOf(CreateEventA(nullptr, FALSE, FALSE, nullptr)),
      RefusalOf(CreateEventA(nullptr, TRUE, TRUE, nullptr)),
      RefusalOf(CreateEventA(nullptr, TRUE, FALSE, "name")),
      RefusalOf(CreateThread(&security, 0, routine, nullptr, 0, nullptr)),
      RefusalOf(CreateThread(nullptr, 4096, routine, nullptr, 0, nullptr)),
      RefusalOf(CreateThread(nullptr, 0, nullptr, nullptr, 0, nullptr)),
      RefusalOf(CreateThread(nullptr, 0, routine, nullptr, 4, nullptr)),
      RefusalOf(CreateFileA(nullptr, kBoth, 0, nullptr, kOpen, 0, nullptr)),
      RefusalOf(CreateFileA("COM1:", GENERIC_READ, 0, nullptr, kOpen, 0, nullptr)),
      RefusalOf(CreateFileA("COM1:", kBoth, 1, nullptr, kOpen, 0, nullptr)),
      RefusalOf(CreateFileA("COM1:", kBoth, 0, &security, kOpen, 0, nullptr)),
      RefusalOf(CreateFileA("COM1:", kBoth, 0, nullptr, 2, 0, nullptr)),
      RefusalOf(CreateFileA("COM1:", kBoth, 0, nullptr, kOpen, 0x80, nullptr)),
      RefusalOf(CreateFileA("COM1:", kBoth, 0, nullptr, kOpen, 0, &security)),
  };
  for (const DWORD& error : errors) {
    EXPECT_EQ(error, ERROR_INVALID_PARAMETER) << "row " << &error - errors;
  }
}

TEST(RefusedArguments, PortCallsWithValuesThatAreNotThere) {
  ScriptedPort port;
  const HANDLE h = port.handle;
  COMMTIMEOUTS interval{5, 0, 0, 0, 0};
  OverlappedCall call;
  OVERLAPPED no_event{};
  OVERLAPPED bad_event{};
  bad_event.hEvent = h;
  DWORD count = 0;
  char byte = 0;
  const std::pair<DWORD, DWORD> results[] = {
      {ErrorOf(SetCommState(h, nullptr)), ERROR_INVALID_PARAMETER},
      {ErrorOf(SetCommTimeouts(h, nullptr)), ERROR_INVALID_PARAMETER},
      {ErrorOf(SetCommTimeouts(h, &interval)), ERROR_INVALID_PARAMETER},
      {ErrorOf(GetCommModemStatus(h, nullptr)), ERROR_INVALID_PARAMETER},
      {ErrorOf(PurgeComm(h, 0)), ERROR_INVALID_PARAMETER},
      {ErrorOf(PurgeComm(h, PURGE_RXABORT)), ERROR_INVALID_PARAMETER},
      {ErrorOf(PurgeComm(h, PURGE_RXCLEAR | PURGE_TXABORT)), ERROR_INVALID_PARAMETER},
      {ErrorOf(SetCommMask(h, EV_RING | 1)), ERROR_INVALID_PARAMETER},
      {ErrorOf(WaitCommEvent(h, nullptr, &call.record)), ERROR_INVALID_PARAMETER},
      {ErrorOf(WaitCommEvent(h, &count, nullptr)), ERROR_INVALID_PARAMETER},
      {ErrorOf(ReadFile(h, nullptr, 1, &count, &call.record)), ERROR_INVALID_PARAMETER},
      {ErrorOf(ReadFile(h, &byte, 1, &count, nullptr)), ERROR_INVALID_PARAMETER},
      {ErrorOf(ReadFile(h, &byte, 1, &count, &no_event)), ERROR_INVALID_PARAMETER},
      {ErrorOf(ReadFile(h, &byte, 1, &count, &bad_event)), ERROR_INVALID_HANDLE},
      {ErrorOf(WriteFile(h, &byte, 1, &count, &no_event)), ERROR_INVALID_PARAMETER},
      {ErrorOf(GetOverlappedResult(h, nullptr, &count, FALSE)), ERROR_INVALID_PARAMETER},
      {WaitForSingleObject(h, 0), WAIT_FAILED},
  };
  for (const auto& result : results) {
    EXPECT_EQ(result.first, result.second) << "row " << &result - results;
  }
  EXPECT_EQ(port.script->calls, std::vector<std::string>());
}

TEST(RefusedArguments, CallsThatAreThereReachTheLineAndItsRefusalIsPassedOn) {
  ScriptedPort port;
  port.script->modem_status = MS_RING_ON | MS_CTS_ON;
  port.script->configure_error = ERROR_INVALID_PARAMETER;
  DWORD status = 0;
  DCB settings = SettingsWithRate(3'999'999);
  EXPECT_EQ(GetCommModemStatus(port.handle, &status), TRUE);
  EXPECT_EQ(status, MS_RING_ON | MS_CTS_ON);
  EXPECT_EQ(PurgeComm(port.handle, PURGE_TXCLEAR), TRUE);
  EXPECT_EQ(PurgeComm(port.handle, PURGE_RXCLEAR), TRUE);
  EXPECT_EQ(ErrorOf(SetCommState(port.handle, &settings)), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(port.script->calls,
            std::vector<std::string>({"ModemStatus", "PurgeOutput", "PurgeInput", "Configure"}));
}

}  // namespace
}  // namespace vt63x
