// SPDX-License-Identifier: MIT

#include "platform/kernel/port.h"

#include <utility>

#include "platform/kernel/handle_table.h"
#include "platform/kernel/tty_settings.h"

namespace vt63x::kernel {
namespace {

constexpr DWORD kPurgeFlags = PURGE_RXCLEAR | PURGE_TXCLEAR;

// The longest that closing waits for threads inside the line: many times what a timed read takes,
// so that only a driver that hangs is left behind.
constexpr std::chrono::seconds kCloseLimit{1};

constexpr COMMTIMEOUTS kReadWhatIsThere = {MAXDWORD, 0, 0, 0, 0};

DWORD BytesOf(const OVERLAPPED& record) { return static_cast<DWORD>(record.InternalHigh); }
DWORD ErrorOf(const OVERLAPPED& record) { return static_cast<DWORD>(record.Internal); }

Deadline DeadlineOf(const TransferPlan& plan) {
  return plan.limit ? Deadline::After(*plan.limit) : Deadline::Never();
}

}  // namespace

Port::Port(std::unique_ptr<LineSource> line, bool overlapped)
    : KernelObject(kKind),
      overlapped_(overlapped),
      line_(std::move(line)),
      timeouts_(kReadWhatIsThere) {}

DWORD Port::Usable() const {
  if (closed_) return ERROR_INVALID_HANDLE;
  return gone_ ? ERROR_DEVICE_NOT_CONNECTED : ERROR_SUCCESS;
}

DWORD Port::Noted(DWORD error) {
  if (error == ERROR_DEVICE_NOT_CONNECTED) gone_ = true;
  return error;
}

DWORD Port::Configure(const DCB& settings) {
  if (!IsSupported(settings)) return ERROR_INVALID_PARAMETER;
  const LockGuard lock(mutex_);
  const DWORD error = Usable();
  return error != ERROR_SUCCESS ? error : Noted(line_->Configure(settings.BaudRate));
}

DWORD Port::SetTimeouts(const COMMTIMEOUTS& timeouts) {
  if (!IsSupported(timeouts)) return ERROR_INVALID_PARAMETER;
  const LockGuard lock(mutex_);
  const DWORD error = Usable();
  if (error == ERROR_SUCCESS) timeouts_ = timeouts;
  return error;
}

DWORD Port::Purge(DWORD flags) {
  if (flags == 0 || (flags & ~kPurgeFlags) != 0) return ERROR_INVALID_PARAMETER;
  const LockGuard lock(mutex_);
  DWORD error = Usable();
  if (error == ERROR_SUCCESS && (flags & PURGE_TXCLEAR) != 0) error = line_->PurgeOutput();
  if (error == ERROR_SUCCESS && (flags & PURGE_RXCLEAR) != 0) error = line_->PurgeInput();
  return Noted(error);
}

DWORD Port::ModemStatus(DWORD* status) {
  const LockGuard lock(mutex_);
  const DWORD error = Usable();
  return error != ERROR_SUCCESS ? error : Noted(line_->ModemStatus(status));
}

DWORD Port::SetMask(DWORD mask) {
  if (mask != 0 && mask != EV_RING) return ERROR_INVALID_PARAMETER;
  const LockGuard lock(mutex_);
  Operation& wait = SlotOf(OperationKind::kCommEvent).operation;
  if (wait.pending) {
    *wait.events = 0;
    wait.done = sizeof(DWORD);
    Complete(wait, ERROR_SUCCESS);
  }
  const DWORD error = Usable();
  if (error != ERROR_SUCCESS) return error;
  const bool counting = mask_ != 0;
  mask_ = mask;
  // An edge that came while the event was asked for already is still to be reported.
  if (mask_ == 0 || counting) return ERROR_SUCCESS;
  RingState now;
  const DWORD ring_error = line_->Ring(&now);
  ring_.Start(now);
  return Noted(ring_error);
}

DWORD Port::BeginRead(OperationCall call, void* buffer, DWORD length) {
  const LockGuard lock(mutex_);
  const TransferPlan plan = PlanRead(timeouts_, length);
  Operation operation;
  operation.kind = OperationKind::kRead;
  operation.call = std::move(call);
  operation.buffer = static_cast<std::uint8_t*>(buffer);
  operation.length = length;
  operation.wanted = plan.wanted;
  operation.deadline = DeadlineOf(plan);
  return Begin(std::move(operation));
}

DWORD Port::BeginWrite(OperationCall call, const void* data, DWORD length) {
  const LockGuard lock(mutex_);
  const TransferPlan plan = PlanWrite(timeouts_, length);
  Operation operation;
  operation.kind = OperationKind::kWrite;
  operation.call = std::move(call);
  operation.data = static_cast<const std::uint8_t*>(data);
  operation.length = length;
  operation.wanted = plan.wanted;
  operation.deadline = DeadlineOf(plan);
  return Begin(std::move(operation));
}

DWORD Port::BeginEventWait(OperationCall call, DWORD* events) {
  const LockGuard lock(mutex_);
  if (mask_ == 0) return ERROR_INVALID_PARAMETER;
  Operation operation;
  operation.kind = OperationKind::kCommEvent;
  operation.call = std::move(call);
  operation.events = events;
  return Begin(std::move(operation));
}

DWORD Port::Begin(Operation operation) {
  const DWORD error = Usable();
  if (error != ERROR_SUCCESS) return error;
  Slot& slot = SlotOf(operation.kind);
  if (slot.operation.pending && !slot.driven) Attempt(slot.operation);  // perhaps it is over
  if (slot.operation.pending) return ERROR_BUSY;
  if (gone_) return ERROR_DEVICE_NOT_CONNECTED;
  if (operation.call.event != nullptr && !operation.call.event->Reset()) return ERROR_BUSY;

  OVERLAPPED* const record = operation.call.record;
  record->Internal = STATUS_PENDING;
  record->InternalHigh = 0;
  operation.serial = ++last_serial_;
  operation.pending = true;
  slot.operation = std::move(operation);

  // A read that may wait is left to the waiter, whose one call then waits and reads.
  const bool left_to_waiter =
      slot.operation.kind == OperationKind::kRead && slot.operation.wanted != 0;
  if (!left_to_waiter) Attempt(slot.operation);
  if (!slot.operation.pending) return ErrorOf(*record);
  const std::shared_ptr<Event>& event = slot.operation.call.event;
  if (event != nullptr) event->Attach(shared_from_this(), slot.operation.id());
  return ERROR_IO_PENDING;
}

std::optional<OperationId> Port::PendingOf(const OVERLAPPED* record) {
  const LockGuard lock(mutex_);
  for (const Slot& slot : slots_) {
    const Operation& operation = slot.operation;
    if (operation.pending && operation.call.record == record) return operation.id();
  }
  return std::nullopt;
}

DWORD Port::Result(OVERLAPPED* record, DWORD* bytes, bool wait) {
  if (const std::optional<OperationId> id = PendingOf(record)) {
    Drive(*id, wait ? Deadline::Never() : Deadline::At(Clock::time_point{}));
  }
  const LockGuard lock(mutex_);
  *bytes = BytesOf(*record);
  const DWORD error = ErrorOf(*record);
  return error == STATUS_PENDING ? ERROR_IO_INCOMPLETE : error;
}

void Port::Complete(Operation& operation, DWORD error) {
  operation.pending = false;
  operation.call.record->InternalHigh = operation.done;
  operation.call.record->Internal = Noted(error);
  if (operation.call.event != nullptr) operation.call.event->Signal();
  operation.call = {};
  changed_.NotifyAll();
}

void Port::Abandon(OperationId id) {
  const LockGuard lock(mutex_);
  Operation& operation = SlotOf(id.kind).operation;
  if (!operation.Is(id)) return;
  operation.pending = false;
  operation.call = {};
  changed_.NotifyAll();
}

void Port::Close() {
  const Deadline limit = Deadline::After(kCloseLimit);
  const LockGuard lock(mutex_);
  closed_ = true;
  for (Slot& slot : slots_) {
    if (slot.operation.pending) Complete(slot.operation, ERROR_OPERATION_ABORTED);
  }
  line_->Interrupt();
  while (threads_in_line_ != 0 && !limit.Passed()) WaitUntil(changed_, mutex_, limit);
  if (threads_in_line_ == 0) line_.reset();
}

HANDLE MakePortHandle(std::unique_ptr<LineSource> line, bool overlapped) {
  return Handles().Add(std::make_shared<Port>(std::move(line), overlapped));
}

}  // namespace vt63x::kernel
