// SPDX-License-Identifier: MIT

// The comm functions of the Win32 subset: arguments and handles are checked here, the rest is the
// port's.

#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/kernel/handle_table.h"
#include "platform/kernel/last_error.h"
#include "platform/kernel/port.h"
#include "platform/kernel/port_name.h"
#include "platform/kernel/remote_line.h"
#include "platform/kernel/tcp_connect.h"
#include "platform/kernel/tty_line.h"

namespace vt63x::kernel {
namespace {

// Where the program was started: a relative device is one of there, whatever directory it is in
// now.
const std::filesystem::path start_directory = [] {
  std::error_code error;
  return std::filesystem::current_path(error);
}();

DWORD OpenLine(const std::string& device, std::unique_ptr<LineSource>* line) {
  return IsRemoteName(device) ? RemoteLine::Open(device, line)
                              : TtyLine::Open((start_directory / device).string(), line);
}

HANDLE FailOpen(DWORD error) {
  SetLastError(error);
  return INVALID_HANDLE_VALUE;  // NOLINT(performance-no-int-to-ptr)
}

template <typename Action>
BOOL OnPort(HANDLE handle, bool arguments_valid, Action action) {
  const std::shared_ptr<Port> port = FindObject<Port>(handle);
  if (port == nullptr) return Finish(ERROR_INVALID_HANDLE);
  return Finish(arguments_valid ? action(*port) : ERROR_INVALID_PARAMETER);
}

// Begins and finishes an operation of a port that is not overlapped.
template <typename Begin>
DWORD RunWaiting(Port& port, DWORD* bytes, Begin begin) {
  OVERLAPPED record{};
  const DWORD error = begin(OperationCall{&record, nullptr});
  if (error != ERROR_SUCCESS && error != ERROR_IO_PENDING) return error;
  return port.Result(&record, bytes, true);
}

template <typename Begin>
DWORD RunOverlapped(OVERLAPPED* record, DWORD* bytes, Begin begin) {
  if (record->hEvent == nullptr) return ERROR_INVALID_PARAMETER;
  std::shared_ptr<Event> event = FindObject<Event>(record->hEvent);
  if (event == nullptr) return ERROR_INVALID_HANDLE;
  const DWORD error = begin(OperationCall{record, std::move(event)});
  if (error == ERROR_SUCCESS && bytes != nullptr) *bytes = static_cast<DWORD>(record->InternalHigh);
  return error;
}

template <typename Begin>
DWORD Run(Port& port, OVERLAPPED* record, DWORD* bytes, Begin begin) {
  if (port.overlapped() != (record != nullptr)) return ERROR_INVALID_PARAMETER;
  if (record != nullptr) return RunOverlapped(record, bytes, begin);
  return bytes == nullptr ? ERROR_INVALID_PARAMETER : RunWaiting(port, bytes, begin);
}

}  // namespace
}  // namespace vt63x::kernel

namespace kernel = vt63x::kernel;

HANDLE WINAPI CreateFileA(LPCSTR name, DWORD access, DWORD share_mode,
                          LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
                          HANDLE template_file) {
  if (name == nullptr || access != (GENERIC_READ | GENERIC_WRITE) || share_mode != 0 ||
      security != nullptr || disposition != OPEN_EXISTING || (flags & ~FILE_FLAG_OVERLAPPED) != 0 ||
      template_file != nullptr) {
    return kernel::FailOpen(ERROR_INVALID_PARAMETER);
  }
  const int number = kernel::PortNumber(name);
  if (number == 0) return kernel::FailOpen(ERROR_FILE_NOT_FOUND);
  const char* const variable = std::getenv(kernel::PortVariable(number).c_str());
  const std::string device = kernel::PortDevice(number, variable);
  std::unique_ptr<kernel::LineSource> line;
  const DWORD error = kernel::OpenLine(device, &line);
  if (error != ERROR_SUCCESS) return kernel::FailOpen(error);
  const HANDLE handle = kernel::MakePortHandle(std::move(line), flags != 0);
  return handle != nullptr ? handle : kernel::FailOpen(ERROR_NOT_ENOUGH_MEMORY);
}

BOOL WINAPI SetCommState(HANDLE port, DCB* settings) {
  return kernel::OnPort(port, settings != nullptr,
                        [&](kernel::Port& p) { return p.Configure(*settings); });
}

BOOL WINAPI SetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts) {
  return kernel::OnPort(port, timeouts != nullptr,
                        [&](kernel::Port& p) { return p.SetTimeouts(*timeouts); });
}

BOOL WINAPI PurgeComm(HANDLE port, DWORD flags) {
  return kernel::OnPort(port, true, [&](kernel::Port& p) { return p.Purge(flags); });
}

BOOL WINAPI GetCommModemStatus(HANDLE port, LPDWORD status) {
  return kernel::OnPort(port, status != nullptr,
                        [&](kernel::Port& p) { return p.ModemStatus(status); });
}

BOOL WINAPI SetCommMask(HANDLE port, DWORD mask) {
  return kernel::OnPort(port, true, [&](kernel::Port& p) { return p.SetMask(mask); });
}

BOOL WINAPI WaitCommEvent(HANDLE port, LPDWORD events, LPOVERLAPPED overlapped) {
  return kernel::OnPort(port, events != nullptr && overlapped != nullptr, [&](kernel::Port& p) {
    return kernel::Run(p, overlapped, nullptr, [&](kernel::OperationCall call) {
      return p.BeginEventWait(std::move(call), events);
    });
  });
}

BOOL WINAPI ReadFile(HANDLE port, LPVOID buffer, DWORD length, LPDWORD bytes_read,
                     LPOVERLAPPED overlapped) {
  if (bytes_read != nullptr) *bytes_read = 0;
  return kernel::OnPort(port, buffer != nullptr || length == 0, [&](kernel::Port& p) {
    return kernel::Run(p, overlapped, bytes_read, [&](kernel::OperationCall call) {
      return p.BeginRead(std::move(call), buffer, length);
    });
  });
}

BOOL WINAPI WriteFile(HANDLE port, LPCVOID buffer, DWORD length, LPDWORD bytes_written,
                      LPOVERLAPPED overlapped) {
  if (bytes_written != nullptr) *bytes_written = 0;
  return kernel::OnPort(port, buffer != nullptr || length == 0, [&](kernel::Port& p) {
    return kernel::Run(p, overlapped, bytes_written, [&](kernel::OperationCall call) {
      return p.BeginWrite(std::move(call), buffer, length);
    });
  });
}

BOOL WINAPI GetOverlappedResult(HANDLE port, LPOVERLAPPED overlapped, LPDWORD bytes, BOOL wait) {
  return kernel::OnPort(port, overlapped != nullptr && bytes != nullptr, [&](kernel::Port& p) {
    return p.Result(overlapped, bytes, wait != FALSE);
  });
}
