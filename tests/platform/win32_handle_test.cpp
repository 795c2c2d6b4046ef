// SPDX-License-Identifier: MIT

// Last error, events and what happens with handles that are none.

#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "overlapped_call.h"

namespace {

constexpr DWORD kUntouched = 0xDEADBEEF;

HANDLE NewEvent() { return CreateEventA(nullptr, TRUE, FALSE, nullptr); }

TEST(Win32LastError, BelongsToTheThread) {
  std::atomic<int> set = 0;
  // Each sets its own, and looks at it when both have.
  const auto set_and_look = [&](DWORD error, DWORD& seen) {
    SetLastError(error);
    ++set;
    while (set != 2) continue;
    seen = GetLastError();
  };
  DWORD seen_by_other = 0;
  DWORD seen_here = 0;
  std::thread other([&] { set_and_look(5, seen_by_other); });
  set_and_look(kUntouched, seen_here);
  other.join();
  EXPECT_EQ(seen_by_other, 5u);
  EXPECT_EQ(seen_here, kUntouched);
}

TEST(Win32LastError, IsLeftAloneBySuccessAndByTimeOut) {
  const HANDLE event = NewEvent();
  SetLastError(kUntouched);
  EXPECT_EQ(WaitForSingleObject(event, 0), DWORD{WAIT_TIMEOUT});
  EXPECT_EQ(CloseHandle(event), TRUE);
  EXPECT_EQ(GetLastError(), kUntouched);
}

class Win32InvalidHandle : public testing::Test {
 protected:
  void ExpectInvalid(BOOL result, const char* call) {
    EXPECT_EQ(result, FALSE) << call;
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE}) << call;
    SetLastError(kUntouched);
  }

  // Every function that takes a port.
  void ExpectNoPort(HANDLE handle) {
    DCB settings = vt63x::SettingsWithRate(9600);
    COMMTIMEOUTS timeouts{MAXDWORD, 0, 0, 0, 0};
    DWORD count = 0;
    char byte = 0;
    vt63x::OverlappedCall call;
    SetLastError(kUntouched);
    ExpectInvalid(SetCommState(handle, &settings), "SetCommState");
    ExpectInvalid(SetCommTimeouts(handle, &timeouts), "SetCommTimeouts");
    ExpectInvalid(PurgeComm(handle, PURGE_RXCLEAR), "PurgeComm");
    ExpectInvalid(GetCommModemStatus(handle, &count), "GetCommModemStatus");
    ExpectInvalid(SetCommMask(handle, EV_RING), "SetCommMask");
    ExpectInvalid(WaitCommEvent(handle, &count, &call.record), "WaitCommEvent");
    ExpectInvalid(ReadFile(handle, &byte, 1, &count, &call.record), "ReadFile");
    ExpectInvalid(WriteFile(handle, &byte, 1, &count, &call.record), "WriteFile");
  }
};

TEST_F(Win32InvalidHandle, IsRefusedByEveryCall) {
  const HANDLE closed = NewEvent();
  EXPECT_EQ(CloseHandle(closed), TRUE);
  for (const HANDLE handle :
       {HANDLE{nullptr}, reinterpret_cast<HANDLE>(std::uintptr_t{0xABCDE0}), closed}) {
    ExpectNoPort(handle);
    DWORD code = 0;
    ExpectInvalid(GetExitCodeThread(handle, &code), "GetExitCodeThread");
    ExpectInvalid(CloseHandle(handle), "CloseHandle");
    EXPECT_EQ(WaitForSingleObject(handle, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
  }
  ExpectNoPort(INVALID_HANDLE_VALUE);
}

TEST_F(Win32InvalidHandle, EventIsNeitherPortNorThread) {
  const HANDLE event = NewEvent();
  ExpectNoPort(event);
  DWORD code = 0;
  ExpectInvalid(GetExitCodeThread(event, &code), "GetExitCodeThread");
  EXPECT_EQ(CloseHandle(event), TRUE);
}

LONGLONG Milliseconds() {
  LARGE_INTEGER frequency, count;
  EXPECT_NE(QueryPerformanceFrequency(&frequency), FALSE);
  EXPECT_NE(QueryPerformanceCounter(&count), FALSE);
  return count.QuadPart / (frequency.QuadPart / 1000);
}

TEST(Win32Time, SleepAndWaitAreNotCutShort) {
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  const LONGLONG start = Milliseconds();
  Sleep(0);
  Sleep(25);
  EXPECT_GE(Milliseconds() - start, 24);
  EXPECT_EQ(WaitForSingleObject(event, 30), DWORD{WAIT_TIMEOUT});
  EXPECT_GE(Milliseconds() - start, 54);
  EXPECT_LT(Milliseconds() - start, 5000);
  CloseHandle(event);
}

TEST(Win32Directory, CopiesOnlyWhatFitsAndSaysWhatIsNeeded) {
  const std::string expected = std::filesystem::current_path().string();
  const auto length = static_cast<DWORD>(expected.size());
  char path[MAX_PATH];
  std::memset(path, '#', sizeof path);
  EXPECT_EQ(GetCurrentDirectoryA(0, nullptr), length + 1);
  EXPECT_EQ(GetCurrentDirectoryA(length, path), length + 1);
  EXPECT_EQ(path[length], '#');  // nothing written behind a buffer that is too small
  EXPECT_EQ(GetCurrentDirectoryA(length + 1, path), length);
  EXPECT_EQ(std::string(path), expected);
  EXPECT_EQ(path[length + 1], '#');
}

TEST(Win32Environment, NameWithoutMeaningIsRefused) {
  EXPECT_NE(SetEnvironmentVariableA("VT63X_TEST_VARIABLE", "1"), FALSE);
  EXPECT_NE(SetEnvironmentVariableA("VT63X_TEST_VARIABLE", nullptr), FALSE);
  EXPECT_EQ(SetEnvironmentVariableA("VT63X=TEST", "1"), FALSE);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
}

}  // namespace
