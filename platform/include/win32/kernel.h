// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WIN32_KERNEL_H
#define VT63X_PLATFORM_WIN32_KERNEL_H

// Functions of the Win32 subset that have nothing to do with windows: serial ports, events,
// threads, time, the last error. Any thread may call any of them. A BOOL result of FALSE leaves
// the reason in the calling thread's last error.
//
// Common to all: a handle that is closed, was never given out or belongs to another kind of
// object gives ERROR_INVALID_HANDLE; a flag or value outside the list gives
// ERROR_INVALID_PARAMETER.

#include "win32/types.h"

extern "C" {

// --- last error, one per thread ---

DWORD WINAPI GetLastError();
void WINAPI SetLastError(DWORD error);

// --- handles ---

// Closes a port, an event or a thread handle. Closing a port breaks off what is pending on it
// (ERROR_OPERATION_ABORTED), and the device is free when the call returns: it waits the moment
// that a thread inside the device takes to leave, 0.1 s as a rule and 1 s at most. Closing a
// thread handle leaves the thread running.
// Difference: closing the event of a pending operation breaks the operation off without a result;
// its record and buffer are not touched again, and a thread that waits for the event gets
// WAIT_FAILED.
BOOL WINAPI CloseHandle(HANDLE object);

// --- events ---

// Unnamed manual-reset events, initially off, default security: (null, TRUE, FALSE, null) is the
// one form there is. Only the completion of an overlapped operation switches an event on; beginning
// one switches it off. Null on failure.
HANDLE WINAPI CreateEventA(LPSECURITY_ATTRIBUTES security, BOOL manual_reset, BOOL initial_state,
                           LPCSTR name);

// Waits for an event or for the end of a thread, `timeout_ms` milliseconds or INFINITE.
// WAIT_OBJECT_0, WAIT_TIMEOUT or WAIT_FAILED. A port operation makes progress in whichever thread
// waits for its event or asks for its result, so that a byte costs no thread switch.
DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD timeout_ms);

// --- threads ---

// Starts a thread at once (flags 0, default stack and security). Null on failure.
HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES security, SIZE_T stack_size,
                           LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD flags,
                           LPDWORD thread_id);

// Ends the calling thread, which CreateThread must have started; any other aborts the program.
// Difference: the destructors of the thread's stack run.
[[noreturn]] void WINAPI ExitThread(DWORD exit_code);

// STILL_ACTIVE (259) while the thread runs.
BOOL WINAPI GetExitCodeThread(HANDLE thread, LPDWORD exit_code);

// --- time ---

// Blocks for at least `timeout_ms` milliseconds; a signal does not cut it short.
void WINAPI Sleep(DWORD timeout_ms);

// Monotonic clock; the frequency is 1,000,000,000 per second. Neither fails.
BOOL WINAPI QueryPerformanceFrequency(LARGE_INTEGER* frequency);
BOOL WINAPI QueryPerformanceCounter(LARGE_INTEGER* count);

// --- process ---

// Never 0; not given to another thread while this one lives.
DWORD WINAPI GetCurrentThreadId();

// Ends the program at once, whatever its threads do; no destructor runs.
[[noreturn]] void WINAPI ExitProcess(UINT exit_code);

// From now on `handler`, on a thread of its own, is told of what would end the program from
// outside, as CTRL_C_EVENT (SIGINT), CTRL_CLOSE_EVENT (SIGHUP) or CTRL_SHUTDOWN_EVENT (SIGTERM);
// FALSE from it lets the signal do what it does without a handler. A signal that is ignored stays
// so. Differences: there is one handler, given once (`add` TRUE), by the program's first thread
// before it makes another, because threads made earlier would take the signals; a program that
// handles its end also sees a write fail when nobody reads the pipe, where SIGPIPE would end it.
BOOL WINAPI SetConsoleCtrlHandler(PHANDLER_ROUTINE handler, BOOL add);

// Copies the current directory, without a final separator. Returns its length, or the size needed
// with the terminator when `size` is too small, or 0 on failure.
DWORD WINAPI GetCurrentDirectoryA(DWORD size, LPSTR buffer);

// Sets an environment variable of this process, or removes it (`value` null). Not while another
// thread opens a port.
BOOL WINAPI SetEnvironmentVariableA(LPCSTR name, LPCSTR value);

// --- serial ports ---

// Opens "COM1:" to "COM16:" (the colon may be missing), and nothing else: GENERIC_READ |
// GENERIC_WRITE, no sharing, OPEN_EXISTING, FILE_FLAG_OVERLAPPED or 0. COMn is the device that the
// environment variable VT63X_COMn names, else (unset or empty) /dev/ttyS(n-1). The line is held
// exclusively, what it received before is thrown away, and no modem line is moved.
// INVALID_HANDLE_VALUE on failure: ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED (in use),
// ERROR_PRIVILEGE_NOT_HELD (no right to the device), ERROR_INVALID_PARAMETER (not a serial line).
// Difference: a fresh port has the line settings that it had before and time-outs that read what
// is there without waiting.
HANDLE WINAPI CreateFileA(LPCSTR name, DWORD access, DWORD share_mode,
                          LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
                          HANDLE template_file);

// Bit rate 1 to 4,000,000 bps; 8 data bits, no parity, one stop bit, no flow control, DTR and RTS
// off, every other field 0; anything else, or a rate the line cannot come within 3 % of,
// ERROR_INVALID_PARAMETER with the line as it was.
BOOL WINAPI SetCommState(HANDLE port, DCB* settings);

// Three forms of read time-outs: interval MAXDWORD with the rest 0 (return what is there);
// interval MAXDWORD, multiplier MAXDWORD, constant 1 to MAXDWORD-1 (wait that many ms for the
// first byte); interval 0 (wait for all bytes, for multiplier * bytes + constant ms, without limit
// if both are 0).
// Difference: a write time-out of 0 means 5 s, not for ever, so that a line that takes nothing
// cannot hold a thread; the write then completes with ERROR_SEM_TIMEOUT.
BOOL WINAPI SetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts);

// PURGE_RXCLEAR and PURGE_TXCLEAR; operations in progress go on.
BOOL WINAPI PurgeComm(HANDLE port, DWORD flags);

// MS_*_ON bits. A line without modem lines reads as 0.
BOOL WINAPI GetCommModemStatus(HANDLE port, LPDWORD status);

// EV_RING or 0. Edges are counted from the call on that sets the mask first: by the driver, which
// misses none, or where it cannot or has not counted one yet, as changes of the level seen every
// millisecond during a wait.
// Setting the mask ends a pending WaitCommEvent with no event.
BOOL WINAPI SetCommMask(HANDLE port, DWORD mask);

// Overlapped ports only. TRUE when an edge has been counted since the mask was set first or the
// last wait ended; else FALSE with ERROR_IO_PENDING. One wait at a time, others give ERROR_BUSY;
// with the mask 0 ERROR_INVALID_PARAMETER.
BOOL WINAPI WaitCommEvent(HANDLE port, LPDWORD events, LPOVERLAPPED overlapped);

// One read and one write at a time may be pending on a port, others give ERROR_BUSY. An
// overlapped operation needs an event that serves no other pending one; it reports ERROR_IO_PENDING
// unless it is done at once. A read that times out is done, with 0 bytes. A line that went away:
// ERROR_DEVICE_NOT_CONNECTED.
BOOL WINAPI ReadFile(HANDLE port, LPVOID buffer, DWORD length, LPDWORD bytes_read,
                     LPOVERLAPPED overlapped);
BOOL WINAPI WriteFile(HANDLE port, LPCVOID buffer, DWORD length, LPDWORD bytes_written,
                      LPOVERLAPPED overlapped);

// Result of an overlapped operation; FALSE with ERROR_IO_INCOMPLETE when it is still pending and
// `wait` is FALSE.
BOOL WINAPI GetOverlappedResult(HANDLE port, LPOVERLAPPED overlapped, LPDWORD bytes, BOOL wait);

}  // extern "C"

#endif
