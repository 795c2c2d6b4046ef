// Last error, events and what happens with handles that are none.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>
#include <thread>

namespace {

constexpr DWORD kUntouched = 0xDEADBEEF;

HANDLE NewEvent() { return CreateEventA(nullptr, TRUE, FALSE, nullptr); }

TEST(Win32LastError, BelongsToTheThread) {
  SetLastError(kUntouched);
  std::thread other([] { SetLastError(5); });
  other.join();
  EXPECT_EQ(GetLastError(), kUntouched);
}

TEST(Win32LastError, IsLeftAloneBySuccessAndByTimeOut) {
  const HANDLE event = NewEvent();
  SetLastError(kUntouched);
  EXPECT_EQ(WaitForSingleObject(event, 0), DWORD{WAIT_TIMEOUT});
  EXPECT_EQ(CloseHandle(event), TRUE);
  EXPECT_EQ(GetLastError(), kUntouched);
}

TEST(Win32Event, WaitLastsAsLongAsAsked) {
  const HANDLE event = NewEvent();
  ASSERT_NE(event, nullptr);
  LARGE_INTEGER frequency, start, end;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&start);
  EXPECT_EQ(WaitForSingleObject(event, 30), DWORD{WAIT_TIMEOUT});
  QueryPerformanceCounter(&end);
  const LONGLONG ms = (end.QuadPart - start.QuadPart) * 1000 / frequency.QuadPart;
  EXPECT_GE(ms, 29);
  EXPECT_LT(ms, 5000);
  CloseHandle(event);
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
    DCB settings{};
    settings.DCBlength = sizeof settings;
    settings.BaudRate = 9600;
    settings.fBinary = 1;
    settings.ByteSize = 8;
    COMMTIMEOUTS timeouts{MAXDWORD, 0, 0, 0, 0};
    DWORD count = 0;
    char byte = 0;
    OVERLAPPED record{};
    record.hEvent = NewEvent();
    SetLastError(kUntouched);
    ExpectInvalid(SetCommState(handle, &settings), "SetCommState");
    ExpectInvalid(SetCommTimeouts(handle, &timeouts), "SetCommTimeouts");
    ExpectInvalid(PurgeComm(handle, PURGE_RXCLEAR), "PurgeComm");
    ExpectInvalid(GetCommModemStatus(handle, &count), "GetCommModemStatus");
    ExpectInvalid(SetCommMask(handle, EV_RING), "SetCommMask");
    ExpectInvalid(WaitCommEvent(handle, &count, &record), "WaitCommEvent");
    ExpectInvalid(ReadFile(handle, &byte, 1, &count, &record), "ReadFile");
    ExpectInvalid(WriteFile(handle, &byte, 1, &count, &record), "WriteFile");
    CloseHandle(record.hEvent);
  }
};

TEST_F(Win32InvalidHandle, NullAndGarbageAreRefusedByEveryCall) {
  for (const HANDLE handle :
       {HANDLE{nullptr}, reinterpret_cast<HANDLE>(std::uintptr_t{0xABCDE0})}) {
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

TEST_F(Win32InvalidHandle, ClosedEventIsGone) {
  const HANDLE event = NewEvent();
  EXPECT_EQ(CloseHandle(event), TRUE);
  ExpectInvalid(CloseHandle(event), "CloseHandle");
  EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_FAILED);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
}

}  // namespace
