// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_PLATFORM_OVERLAPPED_CALL_H
#define VT63X_TESTS_PLATFORM_OVERLAPPED_CALL_H

// The record and event of one overlapped operation, calls made with them, and settings of a port.
// Knows nothing but <windows.h>.

#include <windows.h>

#include <string>

namespace vt63x {

// The last error of a call that returned FALSE, 0 for one that returned TRUE.
inline DWORD ErrorOf(BOOL result) { return result != FALSE ? ERROR_SUCCESS : GetLastError(); }

struct OverlappedCall {
  OverlappedCall() { record.hEvent = CreateEventA(nullptr, TRUE, FALSE, nullptr); }
  ~OverlappedCall() { CloseHandle(record.hEvent); }
  OverlappedCall(const OverlappedCall&) = delete;
  OverlappedCall& operator=(const OverlappedCall&) = delete;

  DWORD Wait(DWORD timeout_ms = INFINITE) { return WaitForSingleObject(record.hEvent, timeout_ms); }

  // Error of the operation; `bytes` holds what it moved.
  DWORD Result(HANDLE port, BOOL wait = FALSE) {
    return ErrorOf(GetOverlappedResult(port, &record, &bytes, wait));
  }

  OVERLAPPED record{};
  DWORD bytes = 0;
};

// What a read of up to `length` bytes brought, waited for without limit.
struct ReadOutcome {
  DWORD error = ERROR_SUCCESS;
  std::string data;
};

inline ReadOutcome ReadPort(HANDLE port, DWORD length) {
  OverlappedCall call;
  ReadOutcome outcome;
  outcome.data.resize(length);
  outcome.error = ErrorOf(ReadFile(port, outcome.data.data(), length, nullptr, &call.record));
  if (outcome.error == ERROR_IO_PENDING) call.Wait();
  if (outcome.error == ERROR_SUCCESS || outcome.error == ERROR_IO_PENDING) {
    outcome.error = call.Result(port);
  }
  outcome.data.resize(call.bytes);
  return outcome;
}

inline DWORD WritePort(HANDLE port, const std::string& data) {
  OverlappedCall call;
  const auto length = static_cast<DWORD>(data.size());
  const DWORD error = ErrorOf(WriteFile(port, data.data(), length, nullptr, &call.record));
  if (error != ERROR_IO_PENDING) return error;
  call.Wait();
  return call.Result(port);
}

// Read time-outs that wait for the first byte; write time-out in ms or 0 for the default.
inline COMMTIMEOUTS FirstByteWithin(DWORD read_ms, DWORD write_ms = 0) {
  return {MAXDWORD, MAXDWORD, read_ms, 0, write_ms};
}

inline DCB SettingsWithRate(DWORD bit_rate) {
  DCB settings{};
  settings.DCBlength = sizeof(DCB);
  settings.BaudRate = bit_rate;
  settings.fBinary = 1;
  settings.ByteSize = 8;
  return settings;
}

}  // namespace vt63x

#endif
