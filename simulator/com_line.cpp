// SPDX-License-Identifier: MIT

#include "simulator/com_line.h"

#include <cstdint>

#include "simulator/serial_speed.h"

namespace vt63x {
namespace {

constexpr DWORD kStopPollMs = 100;
constexpr DWORD kWriteTimeoutMs = 5000;  // a line that takes nothing must not hold the chip

std::string OpenErrorText(DWORD error) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
      return "there is no such port";
    case ERROR_ACCESS_DENIED:
      return "the port is in use, or access to it is denied";
    case ERROR_INVALID_PARAMETER:
      return "not a serial port";
    default:
      return "error " + std::to_string(error);
  }
}

// The rate by which a port knows what the chip makes of its clock.
std::uint32_t UsualRate(std::uint32_t rate) {
  for (const std::uint32_t usual :
       {9600U, 14400U, 19200U, 38400U, 57600U, 115200U, 128000U, 230400U, 460800U, 921600U}) {
    if (RatesMatch(rate, usual)) return usual;
  }
  return rate;
}

// An operation that the system has accepted or ended at once.
bool Started(BOOL result) { return result != FALSE || GetLastError() == ERROR_IO_PENDING; }

}  // namespace

ComLine::ComLine(ChipSerialPort& port, AccessObserver* observer)
    : port_(port), observer_(observer) {}

ComLine::~ComLine() {
  for (const HANDLE handle : {handle_, event_, write_event_}) {
    if (handle != nullptr) CloseHandle(handle);
  }
}

bool ComLine::Open(const std::string& name, std::string& error) {
  event_ = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  write_event_ = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  std::string port_name = name;
  if (name.find('/') != std::string::npos) {
    SetEnvironmentVariableA("VT63X_COM1", name.c_str());
    port_name = "COM1";
  }
  if (port_name.ends_with(':')) port_name.pop_back();
  // The long form, without which there are COM1 to COM9 only.
  const std::string device = "\\\\.\\" + port_name;
  const HANDLE handle = CreateFileA(device.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {  // NOLINT(performance-no-int-to-ptr)
    error = name + ": " + OpenErrorText(GetLastError());
    return false;
  }
  handle_ = handle;
  COMMTIMEOUTS timeouts{MAXDWORD, MAXDWORD, kStopPollMs, 0, kWriteTimeoutMs};
  if (FollowRate() && SetCommTimeouts(handle_, &timeouts) != FALSE) return true;
  error = name + ": the port refuses its settings (error " + std::to_string(GetLastError()) + ")";
  return false;
}

// Gives the port the bit rate that the chip has.
bool ComLine::FollowRate() {
  const std::uint32_t rate = UsualRate(port_.BitRate());
  if (rate == rate_) return true;
  // The last answer is still on its way at the old rate: one byte, ten bits.
  if (rate_ != 0) Sleep(1 + 10'000 / rate_);
  DCB settings{};
  settings.DCBlength = sizeof settings;
  settings.BaudRate = rate;
  settings.fBinary = 1;
  settings.fDtrControl = DTR_CONTROL_DISABLE;
  settings.fRtsControl = RTS_CONTROL_DISABLE;
  settings.ByteSize = 8;
  settings.Parity = NOPARITY;
  settings.StopBits = ONESTOPBIT;
  if (SetCommState(handle_, &settings) == FALSE) return false;
  rate_ = rate;
  return true;
}

bool ComLine::Send(const LineAnswer& answer) {
  if (answer.delay_ms != 0) Sleep(answer.delay_ms);
  if (answer.count == 0) return true;
  OVERLAPPED record{};
  record.hEvent = write_event_;
  const auto count = static_cast<DWORD>(answer.count);
  DWORD written = 0;
  if (!Started(WriteFile(handle_, answer.bytes.data(), count, nullptr, &record))) return false;
  return GetOverlappedResult(handle_, &record, &written, TRUE) != FALSE;
}

ComLine::End ComLine::Serve(const std::atomic<bool>& stop) {
  while (!stop) {
    read_ = {};
    read_.hEvent = event_;
    if (!Started(ReadFile(handle_, &byte_, 1, nullptr, &read_))) return End::kFailed;
    // Some drivers let a read outlast its time-out.
    while (WaitForSingleObject(event_, kStopPollMs) == WAIT_TIMEOUT) {
      if (stop) return End::kStopped;
    }
    DWORD count = 0;
    if (GetOverlappedResult(handle_, &read_, &count, FALSE) == FALSE) return End::kFailed;
    if (count == 0) continue;
    const LineAnswer answer = port_.OnByte(byte_);
    if (observer_ != nullptr && answer.access) observer_->OnAccess(answer);
    if (answer.hang_up) return End::kHungUp;
    if (!Send(answer)) return End::kFailed;
    if (!FollowRate()) return End::kFailed;
  }
  return End::kStopped;
}

}  // namespace vt63x
