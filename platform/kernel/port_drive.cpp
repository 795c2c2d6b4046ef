// SPDX-License-Identifier: MIT

// How a pending operation of a port makes progress.

#include <algorithm>
#include <cstring>

#include "platform/kernel/port.h"

namespace vt63x::kernel {
namespace {

// Drivers leave no bounded way to wait for a modem line: the one request that waits ends with the
// next change and not before. A waiter looks this often instead.
constexpr std::chrono::milliseconds kRingInterval{1};

// What one timed read takes at most.
constexpr std::size_t kTimedReadSize = 256;

}  // namespace

void Port::Drive(OperationId id, Deadline until) {
  const LockGuard lock(mutex_);
  Slot& slot = SlotOf(id.kind);
  while (slot.operation.Is(id)) {
    if (!slot.driven) {
      DriveOnce(slot, until);
    } else if (!until.Passed()) {
      WaitUntil(changed_, mutex_, until);
    }
    if (until.Passed()) return;
  }
}

// Waits first and tries then: a fresh read that nothing has arrived for would else cost a try in
// vain.
void Port::DriveOnce(Slot& slot, Deadline until) {
  if (gone_) return Complete(slot.operation, ERROR_DEVICE_NOT_CONNECTED);
  const OperationId id = slot.operation.id();
  const Deadline end = std::min(until, slot.operation.deadline);
  const Clock::time_point now = Clock::now();
  LineHealth health = LineHealth::kUp;
  if (!end.Passed(now)) {
    if (CanReadTimed(slot.operation, end, now)) return ReadTimed(slot);
    health = WaitForLine(slot, end);
  }
  if (!slot.operation.Is(id)) return;
  const DWORD done = slot.operation.done;
  Attempt(slot.operation);
  // Bytes that arrived before the line went are taken first.
  const bool stuck = slot.operation.Is(id) && slot.operation.done == done;
  if (stuck && health == LineHealth::kGone) {
    Complete(slot.operation, ERROR_DEVICE_NOT_CONNECTED);
  }
}

// A timed read that came back empty is not repeated: waiting for the rest is exact to the
// microsecond, and closing the port can cut it short.
bool Port::CanReadTimed(const Operation& operation, Deadline end, Clock::time_point now) const {
  if (operation.kind != OperationKind::kRead || !operation.timed_read) return false;
  const std::chrono::milliseconds span = line_->TimedReadSpan();
  if (span == std::chrono::milliseconds::zero()) return false;
  return end.IsNever() || end.Remaining(now) >= span;
}

// Reads into memory of its own, because the operation may be broken off meanwhile and its buffer
// be gone. What arrived then goes to the read that has taken its place, as far as it has room.
void Port::ReadTimed(Slot& slot) {
  std::array<std::uint8_t, kTimedReadSize> bytes;
  const DWORD room = slot.operation.length - slot.operation.done;
  const std::size_t size = std::min<std::size_t>(room, bytes.size());
  LineSource& line = *line_;  // stays while a thread is in it
  Enter(slot);
  const Transfer transfer = line.TimedRead(bytes.data(), size);
  Leave(slot);
  Operation& operation = slot.operation;
  if (!operation.pending) return;
  const std::size_t taken =
      std::min<std::size_t>(transfer.bytes, operation.length - operation.done);
  if (taken != 0) std::memcpy(operation.buffer + operation.done, bytes.data(), taken);
  operation.timed_read = taken != 0;
  if (taken < bytes.size()) return Judge(operation, {taken, transfer.error});
  operation.done += static_cast<DWORD>(taken);
  Attempt(operation);  // there may be more
}

LineHealth Port::WaitForLine(Slot& slot, Deadline end) {
  if (slot.operation.kind == OperationKind::kCommEvent) {
    WaitUntil(changed_, mutex_, std::min(end, Deadline::After(kRingInterval)));
    return LineHealth::kUp;
  }
  const bool reading = slot.operation.kind == OperationKind::kRead;
  LineSource& line = *line_;
  Enter(slot);
  const LineHealth health = reading ? line.WaitReadable(end) : line.WaitWritable(end);
  Leave(slot);
  return health;
}

void Port::Enter(Slot& slot) {
  slot.driven = true;
  ++threads_in_line_;
  mutex_.unlock();
}

void Port::Leave(Slot& slot) {
  mutex_.lock();
  slot.driven = false;
  --threads_in_line_;
  changed_.NotifyAll();
  if (closed_ && threads_in_line_ == 0) line_.reset();
}

// Moves what can be moved without waiting and completes the operation when it has what it wants,
// has failed or has run out of time.
void Port::Attempt(Operation& operation) {
  if (operation.kind == OperationKind::kCommEvent) return AttemptEvent(operation);
  if (operation.done == operation.length) return Complete(operation, ERROR_SUCCESS);
  Judge(operation, Try(operation));
}

Transfer Port::Try(const Operation& operation) {
  const DWORD rest = operation.length - operation.done;
  return operation.kind == OperationKind::kRead
             ? line_->Read(operation.buffer + operation.done, rest)
             : line_->Write(operation.data + operation.done, rest);
}

void Port::Judge(Operation& operation, const Transfer& transfer) {
  if (Settle(operation, transfer) || !operation.deadline.Passed()) return;
  // A thread may be kept from running: what came back empty may have been tried long ago. Only a
  // try made after the deadline proves that the bytes were not there in time.
  if (Settle(operation, Try(operation))) return;
  const bool reading = operation.kind == OperationKind::kRead;
  Complete(operation, reading ? ERROR_SUCCESS : ERROR_SEM_TIMEOUT);
}

bool Port::Settle(Operation& operation, const Transfer& transfer) {
  operation.done += static_cast<DWORD>(transfer.bytes);
  const bool settled = transfer.error != ERROR_SUCCESS || operation.done >= operation.wanted;
  if (settled) Complete(operation, transfer.error);
  return settled;
}

void Port::AttemptEvent(Operation& operation) {
  RingState now;
  const DWORD error = line_->Ring(&now);
  if (error != ERROR_SUCCESS) return Complete(operation, error);
  if (!ring_.Rang(now)) return;
  *operation.events = EV_RING;
  operation.done = sizeof(DWORD);
  Complete(operation, ERROR_SUCCESS);
}

}  // namespace vt63x::kernel
