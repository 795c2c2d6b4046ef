// SPDX-License-Identifier: MIT

// Sizes, offsets and values that programs and drivers agree on without a header between them.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

static_assert(sizeof(void*) == 8);
static_assert(sizeof(BOOL) == 4 && sizeof(BYTE) == 1 && sizeof(WORD) == 2 && sizeof(DWORD) == 4);
static_assert(sizeof(UINT) == 4 && sizeof(LONG) == 4 && sizeof(LONGLONG) == 8);
static_assert(sizeof(HANDLE) == 8 && sizeof(ULONG_PTR) == 8 && sizeof(SIZE_T) == 8);
static_assert(sizeof(WPARAM) == 8 && sizeof(LPARAM) == 8 && sizeof(LRESULT) == 8);
static_assert(static_cast<DWORD>(-1) > 0 && static_cast<LONG>(-1) < 0 && static_cast<BYTE>(-1) > 0);

static_assert(sizeof(LARGE_INTEGER) == 8 && offsetof(LARGE_INTEGER, QuadPart) == 0);
static_assert(offsetof(LARGE_INTEGER, u.HighPart) == 4);
static_assert(sizeof(SECURITY_ATTRIBUTES) == 24);
static_assert(offsetof(SECURITY_ATTRIBUTES, bInheritHandle) == 16);

static_assert(sizeof(OVERLAPPED) == 32 && offsetof(OVERLAPPED, Internal) == 0);
static_assert(offsetof(OVERLAPPED, InternalHigh) == 8 && offsetof(OVERLAPPED, hEvent) == 24);

static_assert(sizeof(DCB) == 28 && offsetof(DCB, DCBlength) == 0 && offsetof(DCB, BaudRate) == 4);
static_assert(offsetof(DCB, wReserved) == 12 && offsetof(DCB, XonLim) == 14);
static_assert(offsetof(DCB, XoffLim) == 16 && offsetof(DCB, ByteSize) == 18);
static_assert(offsetof(DCB, Parity) == 19 && offsetof(DCB, StopBits) == 20);
static_assert(offsetof(DCB, XonChar) == 21 && offsetof(DCB, XoffChar) == 22);
static_assert(offsetof(DCB, ErrorChar) == 23 && offsetof(DCB, EofChar) == 24);
static_assert(offsetof(DCB, EvtChar) == 25 && offsetof(DCB, wReserved1) == 26);

static_assert(sizeof(COMMTIMEOUTS) == 20 && offsetof(COMMTIMEOUTS, ReadIntervalTimeout) == 0);
static_assert(offsetof(COMMTIMEOUTS, ReadTotalTimeoutMultiplier) == 4);
static_assert(offsetof(COMMTIMEOUTS, ReadTotalTimeoutConstant) == 8);
static_assert(offsetof(COMMTIMEOUTS, WriteTotalTimeoutMultiplier) == 12);
static_assert(offsetof(COMMTIMEOUTS, WriteTotalTimeoutConstant) == 16);

static_assert(FALSE == 0 && TRUE == 1 && MAX_PATH == 260);
static_assert(MAXDWORD == 0xFFFFFFFF && INFINITE == 0xFFFFFFFF);
static_assert(GENERIC_READ == 0x80000000 && GENERIC_WRITE == 0x40000000);
static_assert(OPEN_EXISTING == 3 && FILE_FLAG_OVERLAPPED == 0x40000000);
static_assert(NOPARITY == 0 && ONESTOPBIT == 0);
static_assert(DTR_CONTROL_DISABLE == 0 && RTS_CONTROL_DISABLE == 0);
static_assert(PURGE_TXABORT == 1 && PURGE_RXABORT == 2);
static_assert(PURGE_TXCLEAR == 4 && PURGE_RXCLEAR == 8);
static_assert(MS_CTS_ON == 0x10 && MS_DSR_ON == 0x20 && MS_RING_ON == 0x40 && MS_RLSD_ON == 0x80);
static_assert(EV_RING == 0x100);
static_assert(WAIT_OBJECT_0 == 0 && WAIT_TIMEOUT == 258 && WAIT_FAILED == 0xFFFFFFFF);
static_assert(STATUS_PENDING == 0x103 && STILL_ACTIVE == 259);
static_assert(ERROR_INVALID_FUNCTION == 1 && ERROR_NOT_SUPPORTED == 50);
static_assert(ERROR_SUCCESS == 0 && ERROR_FILE_NOT_FOUND == 2 && ERROR_ACCESS_DENIED == 5);
static_assert(ERROR_INVALID_HANDLE == 6 && ERROR_NOT_ENOUGH_MEMORY == 8);
static_assert(ERROR_BAD_COMMAND == 22 && ERROR_GEN_FAILURE == 31);
static_assert(ERROR_INVALID_PARAMETER == 87 && ERROR_SEM_TIMEOUT == 121 && ERROR_BUSY == 170);
static_assert(ERROR_OPERATION_ABORTED == 995 && ERROR_IO_INCOMPLETE == 996);
static_assert(ERROR_BAD_NETPATH == 53 && ERROR_CONNECTION_REFUSED == 1225);
static_assert(ERROR_HOST_UNREACHABLE == 1232);
static_assert(ERROR_IO_PENDING == 997 && ERROR_DEVICE_NOT_CONNECTED == 1167);

std::uint32_t FlagWord(const DCB& settings) {
  std::uint32_t word = 0;
  std::memcpy(&word, reinterpret_cast<const char*>(&settings) + 8, sizeof word);
  return word;
}

TEST(Win32Layout, SettingsFlagsSitAtTheirBits) {
  struct Case {
    const char* name;
    void (*set)(DCB&);
    std::uint32_t word;
  };
  const Case cases[] = {
      {"fBinary", [](DCB& d) { d.fBinary = 1; }, 0x0001},
      {"fParity", [](DCB& d) { d.fParity = 1; }, 0x0002},
      {"fOutxCtsFlow", [](DCB& d) { d.fOutxCtsFlow = 1; }, 0x0004},
      {"fOutxDsrFlow", [](DCB& d) { d.fOutxDsrFlow = 1; }, 0x0008},
      {"fDtrControl", [](DCB& d) { d.fDtrControl = 3; }, 0x0030},
      {"fDsrSensitivity", [](DCB& d) { d.fDsrSensitivity = 1; }, 0x0040},
      {"fTXContinueOnXoff", [](DCB& d) { d.fTXContinueOnXoff = 1; }, 0x0080},
      {"fOutX", [](DCB& d) { d.fOutX = 1; }, 0x0100},
      {"fInX", [](DCB& d) { d.fInX = 1; }, 0x0200},
      {"fErrorChar", [](DCB& d) { d.fErrorChar = 1; }, 0x0400},
      {"fNull", [](DCB& d) { d.fNull = 1; }, 0x0800},
      {"fRtsControl", [](DCB& d) { d.fRtsControl = 3; }, 0x3000},
      {"fAbortOnError", [](DCB& d) { d.fAbortOnError = 1; }, 0x4000},
  };
  for (const Case& c : cases) {
    DCB settings{};
    c.set(settings);
    EXPECT_EQ(FlagWord(settings), c.word) << c.name;
  }
}

TEST(Win32Layout, InvalidHandleIsMinusOne) {
  EXPECT_EQ(reinterpret_cast<std::intptr_t>(INVALID_HANDLE_VALUE), -1);
}

}  // namespace
