// SPDX-License-Identifier: MIT

// Ports by Win32 calls alone, with a chip that answers on COM1: and nothing on COM8:. A chip
// answers the byte 0xB7 (read register 0x37) with 0x91.

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "chip_on_com1.h"
#include "overlapped_call.h"

namespace vt63x {
namespace {

constexpr char kReadVersion[] = "\xB7";
constexpr char kVersion[] = "\x91";

HANDLE Open(const char* name) {
  return CreateFileA(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                     FILE_FLAG_OVERLAPPED, nullptr);
}

class Win32Port : public testing::Test {
 protected:
  Win32Port() {
    SetEnvironmentVariableA("VT63X_COM8", "/nonexistent");
    port_ = Open("COM1:");
    EXPECT_NE(port_, INVALID_HANDLE_VALUE) << GetLastError();
    DCB settings = SettingsWithRate(9600);
    EXPECT_EQ(ErrorOf(SetCommState(port_, &settings)), ERROR_SUCCESS);
    SetTimeouts(FirstByteWithin(5000));
  }
  ~Win32Port() override { CloseHandle(port_); }

  void SetTimeouts(COMMTIMEOUTS timeouts) {
    EXPECT_EQ(ErrorOf(SetCommTimeouts(port_, &timeouts)), ERROR_SUCCESS);
  }

  ChipOnCom1 chip_;
  HANDLE port_ = nullptr;
};

TEST_F(Win32Port, ByteGoesThereAndItsAnswerComesBack) {
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(WritePort(port_, kReadVersion), ERROR_SUCCESS);
    const ReadOutcome answer = ReadPort(port_, 1);
    EXPECT_EQ(answer.error, ERROR_SUCCESS);
    EXPECT_EQ(answer.data, kVersion);
  }
  EXPECT_EQ(chip_.accesses(), 20u);
}

TEST_F(Win32Port, PendingReadIsIncompleteUntilItsByteComes) {
  for (const bool wait_for_result : {false, true}) {
    OverlappedCall read;
    char byte = 0;
    EXPECT_EQ(ErrorOf(ReadFile(port_, &byte, 1, nullptr, &read.record)), ERROR_IO_PENDING);
    EXPECT_EQ(read.Wait(0), DWORD{WAIT_TIMEOUT});
    EXPECT_EQ(read.Wait(20), DWORD{WAIT_TIMEOUT});
    EXPECT_EQ(read.Result(port_), ERROR_IO_INCOMPLETE);
    EXPECT_EQ(WritePort(port_, kReadVersion), ERROR_SUCCESS);
    if (!wait_for_result) {
      EXPECT_EQ(read.Wait(5000), DWORD{WAIT_OBJECT_0});
    }
    EXPECT_EQ(read.Result(port_, wait_for_result), ERROR_SUCCESS);
    EXPECT_EQ(read.Wait(0), DWORD{WAIT_OBJECT_0});
    EXPECT_EQ(read.bytes, 1u);
    EXPECT_EQ(byte, '\x91');
  }
}

TEST_F(Win32Port, PurgeThrowsUnreadBytesAway) {
  EXPECT_EQ(WritePort(port_, kReadVersion), ERROR_SUCCESS);
  for (int i = 0; i < 500 && chip_.accesses() == 0; ++i) Sleep(5);
  Sleep(50);  // for the answer
  EXPECT_EQ(ErrorOf(PurgeComm(port_, PURGE_RXCLEAR | PURGE_TXCLEAR)), ERROR_SUCCESS);
  SetTimeouts({MAXDWORD, 0, 0, 0, 0});
  EXPECT_EQ(ReadPort(port_, 1).data, "");
}

// Interval MAXDWORD and the rest 0: what is there and no waiting.
TEST_F(Win32Port, ReadWithoutWaitingTakesWhatIsThere) {
  SetTimeouts({MAXDWORD, 0, 0, 0, 0});
  const ReadOutcome nothing = ReadPort(port_, 4);
  EXPECT_EQ(nothing.error, ERROR_SUCCESS);
  EXPECT_EQ(nothing.data, "");
  EXPECT_EQ(WritePort(port_, std::string(3, kReadVersion[0])), ERROR_SUCCESS);
  for (int i = 0; i < 500 && chip_.accesses() < 3; ++i) Sleep(5);
  Sleep(50);
  EXPECT_EQ(ReadPort(port_, 2).data, "\x91\x91");
  EXPECT_EQ(ReadPort(port_, 4).data, "\x91");
}

// The time-outs of the program: the first byte within so many milliseconds.
TEST_F(Win32Port, ReadEndsEmptyWhenNothingCameInTime) {
  SetTimeouts(FirstByteWithin(30));
  OverlappedCall read;
  char byte = 0;
  EXPECT_EQ(ErrorOf(ReadFile(port_, &byte, 1, nullptr, &read.record)), ERROR_IO_PENDING);
  EXPECT_EQ(read.Wait(2000), DWORD{WAIT_OBJECT_0});
  EXPECT_EQ(read.Result(port_), ERROR_SUCCESS);
  EXPECT_EQ(read.bytes, 0u);
}

TEST_F(Win32Port, IsOpenedOnce) {
  EXPECT_EQ(Open("COM1:"), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
}

TEST_F(Win32Port, MissingOneIsNotFound) {
  for (const char* name : {"COM8:", "COM8"}) {
    SetLastError(0);
    EXPECT_EQ(Open(name), INVALID_HANDLE_VALUE) << name;
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND}) << name;
  }
}

TEST_F(Win32Port, SettingsThatNoLineHasAreRefused) {
  DCB settings = SettingsWithRate(9600);
  settings.ByteSize = 3;
  EXPECT_EQ(ErrorOf(SetCommState(port_, &settings)), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(WritePort(port_, kReadVersion), ERROR_SUCCESS);
  EXPECT_EQ(ReadPort(port_, 1).data, kVersion);
}

TEST_F(Win32Port, SettingsAndTimeoutsChangeWhileItIsOpen) {
  for (const DWORD rate : {115200u, 9600u}) {
    DCB settings = SettingsWithRate(rate);
    EXPECT_EQ(ErrorOf(SetCommState(port_, &settings)), ERROR_SUCCESS);
  }
  for (const DWORD ms : {1u, 100u, 5000u}) SetTimeouts(FirstByteWithin(ms, 100));
  EXPECT_EQ(WritePort(port_, kReadVersion), ERROR_SUCCESS);
  EXPECT_EQ(ReadPort(port_, 1).data, kVersion);
}

// Whoever asks for another event has waited enough for the first.
TEST_F(Win32Port, ChangeOfTheEventMaskEndsAWaitForAnEvent) {
  EXPECT_EQ(ErrorOf(SetCommMask(port_, EV_RING)), ERROR_SUCCESS);
  OverlappedCall wait;
  DWORD events = 0xDEADBEEF;
  EXPECT_EQ(ErrorOf(WaitCommEvent(port_, &events, &wait.record)), ERROR_IO_PENDING);
  EXPECT_EQ(wait.Wait(20), DWORD{WAIT_TIMEOUT});
  EXPECT_EQ(ErrorOf(SetCommMask(port_, 0)), ERROR_SUCCESS);
  EXPECT_EQ(wait.Wait(2000), DWORD{WAIT_OBJECT_0});
  EXPECT_EQ(wait.Result(port_), ERROR_SUCCESS);
  EXPECT_EQ(events, 0u);
}

TEST_F(Win32Port, LineWithoutModemLinesHasThemOff) {
  DWORD status = 0xDEADBEEF;
  EXPECT_EQ(ErrorOf(GetCommModemStatus(port_, &status)), ERROR_SUCCESS);
  EXPECT_EQ(status, 0u);
}

TEST_F(Win32Port, ClosedOneIsNone) {
  const HANDLE port = port_;
  EXPECT_EQ(CloseHandle(port), TRUE);
  EXPECT_EQ(WritePort(port, "x"), ERROR_INVALID_HANDLE);
  EXPECT_EQ(ReadPort(port, 1).error, ERROR_INVALID_HANDLE);
  EXPECT_EQ(ErrorOf(CloseHandle(port)), ERROR_INVALID_HANDLE);
  port_ = Open("COM1:");
  EXPECT_NE(port_, INVALID_HANDLE_VALUE) << "cannot be opened again: " << GetLastError();
}

}  // namespace
}  // namespace vt63x
