// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WIN32_TYPES_H
#define VT63X_PLATFORM_WIN32_TYPES_H

// Types, structures and constants of the Win32 subset, with the values of 64-bit Windows.

#include <cstddef>
#include <cstdint>

// Calling conventions mean nothing on x86-64 outside Windows.
#define WINAPI
#define CALLBACK

using BOOL = int;
using BYTE = unsigned char;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = unsigned int;
using LONG = std::int32_t;
using LONGLONG = std::int64_t;
using ULONG_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using SIZE_T = std::size_t;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using LPVOID = void*;
using LPCVOID = const void*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPDWORD = DWORD*;

#define FALSE 0
#define TRUE 1

// Handles. Kernel handles are opaque numbers that are never reused for another object while the
// program runs, so a stale one gives ERROR_INVALID_HANDLE instead of reaching a stranger.
using HANDLE = void*;
using HINSTANCE = struct HINSTANCE__*;
using HWND = struct HWND__*;
using HMENU = struct HMENU__*;
using HFONT = struct HFONT__*;
using WNDPROC = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);

#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))

union LARGE_INTEGER {
  struct {
    DWORD LowPart;
    LONG HighPart;
  } u;
  LONGLONG QuadPart;
};

struct SECURITY_ATTRIBUTES {
  DWORD nLength;
  LPVOID lpSecurityDescriptor;
  BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

// Internal holds STATUS_PENDING while the operation runs and the Win32 error afterwards
// (Windows keeps an NTSTATUS there; no caller may look at either), InternalHigh the bytes moved.
struct OVERLAPPED {
  ULONG_PTR Internal;
  ULONG_PTR InternalHigh;
  union {
    struct {
      DWORD Offset;
      DWORD OffsetHigh;
    } s;
    LPVOID Pointer;
  } u;
  HANDLE hEvent;
};
using LPOVERLAPPED = OVERLAPPED*;

// Line settings of a serial port. BaudRate is in bits per second.
struct DCB {
  DWORD DCBlength;
  DWORD BaudRate;
  DWORD fBinary : 1;
  DWORD fParity : 1;
  DWORD fOutxCtsFlow : 1;
  DWORD fOutxDsrFlow : 1;
  DWORD fDtrControl : 2;
  DWORD fDsrSensitivity : 1;
  DWORD fTXContinueOnXoff : 1;
  DWORD fOutX : 1;
  DWORD fInX : 1;
  DWORD fErrorChar : 1;
  DWORD fNull : 1;
  DWORD fRtsControl : 2;
  DWORD fAbortOnError : 1;
  DWORD fDummy2 : 17;
  WORD wReserved;
  WORD XonLim;
  WORD XoffLim;
  BYTE ByteSize;
  BYTE Parity;
  BYTE StopBits;
  char XonChar;
  char XoffChar;
  char ErrorChar;
  char EofChar;
  char EvtChar;
  WORD wReserved1;
};

// Time-outs of a serial port, in milliseconds.
struct COMMTIMEOUTS {
  DWORD ReadIntervalTimeout;
  DWORD ReadTotalTimeoutMultiplier;
  DWORD ReadTotalTimeoutConstant;
  DWORD WriteTotalTimeoutMultiplier;
  DWORD WriteTotalTimeoutConstant;
};

using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(LPVOID);
using PHANDLER_ROUTINE = BOOL(WINAPI*)(DWORD);

#define MAX_PATH 260
#define MAXDWORD 0xffffffffU
#define INFINITE 0xffffffffU

#define GENERIC_READ 0x80000000U
#define GENERIC_WRITE 0x40000000U
#define OPEN_EXISTING 3U
#define FILE_FLAG_OVERLAPPED 0x40000000U

#define NOPARITY 0
#define ONESTOPBIT 0
#define DTR_CONTROL_DISABLE 0
#define RTS_CONTROL_DISABLE 0

#define PURGE_TXABORT 0x0001U
#define PURGE_RXABORT 0x0002U
#define PURGE_TXCLEAR 0x0004U
#define PURGE_RXCLEAR 0x0008U

#define MS_CTS_ON 0x0010U
#define MS_DSR_ON 0x0020U
#define MS_RING_ON 0x0040U
#define MS_RLSD_ON 0x0080U

#define EV_RING 0x0100U

#define CTRL_C_EVENT 0U
#define CTRL_CLOSE_EVENT 2U
#define CTRL_SHUTDOWN_EVENT 6U

#define WAIT_OBJECT_0 0U
#define WAIT_TIMEOUT 258U
#define WAIT_FAILED 0xffffffffU
#define STATUS_PENDING 0x00000103U
#define STILL_ACTIVE 259U

#define ERROR_SUCCESS 0U
#define ERROR_INVALID_FUNCTION 1U
#define ERROR_FILE_NOT_FOUND 2U
#define ERROR_ACCESS_DENIED 5U
#define ERROR_INVALID_HANDLE 6U
#define ERROR_NOT_ENOUGH_MEMORY 8U
#define ERROR_BAD_COMMAND 22U
#define ERROR_GEN_FAILURE 31U
#define ERROR_NOT_SUPPORTED 50U
#define ERROR_BAD_NETPATH 53U
#define ERROR_INVALID_PARAMETER 87U
#define ERROR_SEM_TIMEOUT 121U
#define ERROR_BUSY 170U
#define ERROR_OPERATION_ABORTED 995U
#define ERROR_IO_INCOMPLETE 996U
#define ERROR_IO_PENDING 997U
#define ERROR_DEVICE_NOT_CONNECTED 1167U
#define ERROR_CONNECTION_REFUSED 1225U
#define ERROR_HOST_UNREACHABLE 1232U
#define ERROR_PRIVILEGE_NOT_HELD 1314U

#endif
