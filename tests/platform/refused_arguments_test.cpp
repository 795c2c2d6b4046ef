// What is outside the subset fails loudly.

#include <gtest/gtest.h>

#include "overlapped_call.h"
#include "scripted_line.h"

namespace vt63x {
namespace {

TEST(RefusedArguments, FormsOfEventsAndThreadsThatAreNotThere) {
  SECURITY_ATTRIBUTES security{};
  const auto routine = [](void*) -> DWORD { return 0; };
  const HANDLE refused[] = {
      CreateEventA(&security, TRUE, FALSE, nullptr),
      CreateEventA(nullptr, FALSE, FALSE, nullptr),
      CreateEventA(nullptr, TRUE, TRUE, nullptr),
      CreateEventA(nullptr, TRUE, FALSE, "name"),
      CreateThread(&security, 0, routine, nullptr, 0, nullptr),
      CreateThread(nullptr, 4096, routine, nullptr, 0, nullptr),
      CreateThread(nullptr, 0, nullptr, nullptr, 0, nullptr),
      CreateThread(nullptr, 0, routine, nullptr, 4, nullptr),
  };
  for (const HANDLE handle : refused) EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(RefusedArguments, FormsOfOpeningThatAreNotThere) {
  constexpr DWORD kBoth = GENERIC_READ | GENERIC_WRITE;
  SECURITY_ATTRIBUTES security{};
  struct Case {
    const char* name;
    DWORD access, share;
    SECURITY_ATTRIBUTES* security;
    DWORD disposition, flags;
    HANDLE form;
    DWORD error;
  };
  const Case cases[] = {
      {nullptr, kBoth, 0, nullptr, OPEN_EXISTING, 0, nullptr, ERROR_INVALID_PARAMETER},
      {"COM1:", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr, ERROR_INVALID_PARAMETER},
      {"COM1:", kBoth, 1, nullptr, OPEN_EXISTING, 0, nullptr, ERROR_INVALID_PARAMETER},
      {"COM1:", kBoth, 0, &security, OPEN_EXISTING, 0, nullptr, ERROR_INVALID_PARAMETER},
      {"COM1:", kBoth, 0, nullptr, 2, 0, nullptr, ERROR_INVALID_PARAMETER},
      {"COM1:", kBoth, 0, nullptr, OPEN_EXISTING, 0x80, nullptr, ERROR_INVALID_PARAMETER},
      {"COM1:", kBoth, 0, nullptr, OPEN_EXISTING, 0, &security, ERROR_INVALID_PARAMETER},
      {"COM17:", kBoth, 0, nullptr, OPEN_EXISTING, 0, nullptr, ERROR_FILE_NOT_FOUND},
      {"/dev/null", kBoth, 0, nullptr, OPEN_EXISTING, 0, nullptr, ERROR_FILE_NOT_FOUND},
  };
  for (const Case& c : cases) {
    SetLastError(0xDEADBEEF);
    EXPECT_EQ(CreateFileA(c.name, c.access, c.share, c.security, c.disposition, c.flags, c.form),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), c.error);
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

TEST(RefusedArguments, RefusalOfTheLineIsPassedOn) {
  ScriptedPort port;
  port.script->configure_error = ERROR_INVALID_PARAMETER;
  DCB settings{};
  settings.DCBlength = sizeof(DCB);
  settings.BaudRate = 3'999'999;
  settings.fBinary = 1;
  settings.ByteSize = 8;
  EXPECT_EQ(ErrorOf(SetCommState(port.handle, &settings)), ERROR_INVALID_PARAMETER);
}

TEST(RefusedArguments, ModemStatusAndPurgeReachTheLine) {
  ScriptedPort port;
  port.script->modem_status = MS_RING_ON | MS_CTS_ON;
  DWORD status = 0;
  EXPECT_EQ(GetCommModemStatus(port.handle, &status), TRUE);
  EXPECT_EQ(status, MS_RING_ON | MS_CTS_ON);
  EXPECT_EQ(PurgeComm(port.handle, PURGE_TXCLEAR), TRUE);
  EXPECT_EQ(PurgeComm(port.handle, PURGE_RXCLEAR), TRUE);
  EXPECT_EQ(port.script->calls,
            std::vector<std::string>({"ModemStatus", "PurgeOutput", "PurgeInput"}));
}

}  // namespace
}  // namespace vt63x
