// SPDX-License-Identifier: MIT

// Sizes and offsets that programs and drivers agree on without a header between them. The values of
// constants are compared with the system's own when this is built for Windows.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

static_assert(sizeof(void*) == 8);
static_assert(sizeof(BOOL) == 4 && sizeof(BYTE) == 1 && sizeof(WORD) == 2 && sizeof(DWORD) == 4);
static_assert(sizeof(UINT) == 4 && sizeof(LONG) == 4 && sizeof(LONGLONG) == 8);
static_assert(sizeof(HANDLE) == 8 && sizeof(ULONG_PTR) == 8 && sizeof(SIZE_T) == 8);
static_assert(sizeof(WPARAM) == 8 && sizeof(LPARAM) == 8 && sizeof(LRESULT) == 8);
static_assert(static_cast<DWORD>(-1) > 0 && static_cast<LONG>(-1) < 0 && static_cast<BYTE>(-1) > 0);

static_assert(sizeof(LARGE_INTEGER) == 8 && offsetof(LARGE_INTEGER, QuadPart) == 0 &&
              offsetof(LARGE_INTEGER, u.HighPart) == 4);
static_assert(sizeof(SECURITY_ATTRIBUTES) == 24 &&
              offsetof(SECURITY_ATTRIBUTES, bInheritHandle) == 16);
static_assert(sizeof(OVERLAPPED) == 32 && offsetof(OVERLAPPED, Internal) == 0 &&
              offsetof(OVERLAPPED, InternalHigh) == 8 && offsetof(OVERLAPPED, hEvent) == 24);
static_assert(sizeof(DCB) == 28 && offsetof(DCB, DCBlength) == 0 && offsetof(DCB, BaudRate) == 4 &&
              offsetof(DCB, wReserved) == 12 && offsetof(DCB, XonLim) == 14 &&
              offsetof(DCB, XoffLim) == 16 && offsetof(DCB, ByteSize) == 18 &&
              offsetof(DCB, Parity) == 19 && offsetof(DCB, StopBits) == 20 &&
              offsetof(DCB, XonChar) == 21 && offsetof(DCB, XoffChar) == 22 &&
              offsetof(DCB, ErrorChar) == 23 && offsetof(DCB, EofChar) == 24 &&
              offsetof(DCB, EvtChar) == 25 && offsetof(DCB, wReserved1) == 26);
static_assert(sizeof(COMMTIMEOUTS) == 20 && offsetof(COMMTIMEOUTS, ReadIntervalTimeout) == 0 &&
              offsetof(COMMTIMEOUTS, ReadTotalTimeoutMultiplier) == 4 &&
              offsetof(COMMTIMEOUTS, ReadTotalTimeoutConstant) == 8 &&
              offsetof(COMMTIMEOUTS, WriteTotalTimeoutMultiplier) == 12 &&
              offsetof(COMMTIMEOUTS, WriteTotalTimeoutConstant) == 16);
static_assert(sizeof(RECT) == 16 && offsetof(RECT, bottom) == 12);
static_assert(sizeof(POINT) == 8 && offsetof(POINT, y) == 4);
static_assert(sizeof(MSG) == 48 && offsetof(MSG, pt) == 36);
static_assert(sizeof(MINMAXINFO) == 40 && offsetof(MINMAXINFO, ptMaxTrackSize) == 32);
static_assert(sizeof(OPENFILENAMEA) == 152 && offsetof(OPENFILENAMEA, lpstrFile) == 48 &&
              offsetof(OPENFILENAMEA, nMaxFile) == 56 && offsetof(OPENFILENAMEA, Flags) == 96);

static_assert(LOWORD(0x12345678) == 0x5678 && HIWORD(0x12345678) == 0x1234);
static_assert(MAKELONG(0x5678, 0x9234) == static_cast<LONG>(0x92345678));
static_assert(MAKEWPARAM(5, 0x8000) == 0x80000005U && MAKELPARAM(0xFFFF, 0xFFFF) == 0xFFFFFFFF);

std::uint32_t FlagWord(const DCB& settings) {
  std::uint32_t word = 0;
  std::memcpy(&word, reinterpret_cast<const char*>(&settings) + 8, sizeof word);
  return word;
}

TEST(Win32Layout, SettingsFlagsSitAtTheirBits) {
  const std::pair<void (*)(DCB&), std::uint32_t> cases[] = {
      {[](DCB& d) { d.fBinary = 1; }, 0x1},
      {[](DCB& d) { d.fParity = 1; }, 0x2},
      {[](DCB& d) { d.fOutxCtsFlow = 1; }, 0x4},
      {[](DCB& d) { d.fOutxDsrFlow = 1; }, 0x8},
      {[](DCB& d) { d.fDtrControl = 3; }, 0x30},
      {[](DCB& d) { d.fDsrSensitivity = 1; }, 0x40},
      {[](DCB& d) { d.fTXContinueOnXoff = 1; }, 0x80},
      {[](DCB& d) { d.fOutX = 1; }, 0x100},
      {[](DCB& d) { d.fInX = 1; }, 0x200},
      {[](DCB& d) { d.fErrorChar = 1; }, 0x400},
      {[](DCB& d) { d.fNull = 1; }, 0x800},
      {[](DCB& d) { d.fRtsControl = 3; }, 0x3000},
      {[](DCB& d) { d.fAbortOnError = 1; }, 0x4000},
  };
  for (const auto& [set, word] : cases) {
    DCB settings{};
    set(settings);
    EXPECT_EQ(FlagWord(settings), word);
  }
}

TEST(Win32Layout, InvalidHandleIsMinusOne) {
  EXPECT_EQ(reinterpret_cast<std::intptr_t>(INVALID_HANDLE_VALUE), -1);
}

}  // namespace
