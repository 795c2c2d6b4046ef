// SPDX-License-Identifier: MIT

#include "serial/serial_bus.h"

#include "frontend/wrapper_call.h"

namespace vt63x {
namespace {

// A transfer's event, closed when the transfer is over.
class TransferEvent {
 public:
  TransferEvent() : handle_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}
  ~TransferEvent() {
    if (handle_ != nullptr) CloseHandle(handle_);
  }
  TransferEvent(const TransferEvent&) = delete;
  TransferEvent& operator=(const TransferEvent&) = delete;

  HANDLE handle() const { return handle_; }

 private:
  HANDLE handle_;
};

HANDLE Port(const bus_byte_param* param) { return *static_cast<HANDLE*>(param->self->members); }

// Waits for a pending transfer. The port's own time-outs bound the wait.
HFLSTATUS Finish(HANDLE port, OVERLAPPED* overlapped, DWORD* count) {
  if (WaitForSingleObject(overlapped->hEvent, INFINITE) != WAIT_OBJECT_0) return HFL_NOT_READY;
  GetOverlappedResult(port, overlapped, count, FALSE);
  return HFL_SUCCESS;
}

HFLSTATUS WriteByte(bus_byte_param* param) {
  const TransferEvent event;
  if (event.handle() == nullptr) return HFL_NO_EVENT;
  const HANDLE port = Port(param);
  OVERLAPPED ovr_wr{};
  ovr_wr.hEvent = event.handle();
  const std::uint8_t buffer = param->data;
  DWORD bytes_sent = 0;
  const BOOL done = WriteFile(port, &buffer, 1, &bytes_sent, &ovr_wr);
  // A pending write counts as sent once it is over: the port has taken the byte.
  if (!done && GetLastError() == ERROR_IO_PENDING) return Finish(port, &ovr_wr, &bytes_sent);
  return bytes_sent == 0 ? HFL_LINK_FAILED : HFL_SUCCESS;
}

HFLSTATUS ReadByte(bus_byte_param* param) {
  const TransferEvent event;
  if (event.handle() == nullptr) return HFL_NO_EVENT;
  const HANDLE port = Port(param);
  OVERLAPPED ovr_rd{};
  ovr_rd.hEvent = event.handle();
  std::uint8_t buffer = 0;
  DWORD bytes_read = 0;
  const BOOL done = ReadFile(port, &buffer, 1, &bytes_read, &ovr_rd);
  if (!done && GetLastError() == ERROR_IO_PENDING) {
    const HFLSTATUS status = Finish(port, &ovr_rd, &bytes_read);
    if (status != HFL_SUCCESS) return status;
  }
  if (bytes_read == 0) return HFL_LINK_FAILED;
  param->data = buffer;
  return HFL_SUCCESS;
}

}  // namespace

void SerialBusOpen(SerialBusCore* core, HANDLE* handle) {
  core->WriteByte = WriteByte;
  core->ReadByte = ReadByte;
  core->members = handle;
}

void SerialBusWrapper::Init(SerialBusOpenFunction open) { open(&core, &handle); }

HFLSTATUS SerialBusWrapper::WriteByte(bus_byte_param* param) {
  return CallSlot(core, core.WriteByte, param);
}

HFLSTATUS SerialBusWrapper::ReadByte(bus_byte_param* param) {
  return CallSlot(core, core.ReadByte, param);
}

}  // namespace vt63x
