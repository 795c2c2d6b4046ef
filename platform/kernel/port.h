// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_PORT_H
#define VT63X_PLATFORM_KERNEL_PORT_H

// An open serial port: a line, its time-outs, and at most one pending read, write and wait for a
// comm event.
//
// Beginning an operation records it and tries what costs nothing. It makes progress only inside
// Drive, on a thread that waits for its event or asks for its result; of several such threads one
// works and the others wait for it. The work that may block is done with the lock released.
//
// Once the line is gone, every call fails with ERROR_DEVICE_NOT_CONNECTED without touching it.
//
// Results are Win32 errors, ERROR_SUCCESS and ERROR_IO_PENDING included. Any thread may call any
// function.

#include <windows.h>

#include <array>
#include <memory>
#include <optional>

#include "platform/kernel/event.h"
#include "platform/kernel/kernel_object.h"
#include "platform/kernel/line_source.h"
#include "platform/kernel/timeout_plan.h"
#include "threading/mutex.h"

namespace vt63x::kernel {

// What every operation is called with. The record belongs to the caller and stays in place until
// the operation is complete; the event is null for a call that waits itself.
struct OperationCall {
  OVERLAPPED* record = nullptr;
  std::shared_ptr<Event> event;
};

class Port final : public KernelObject,
                   public OperationOwner,
                   public std::enable_shared_from_this<Port> {
 public:
  static constexpr ObjectKind kKind = ObjectKind::kPort;

  Port(std::unique_ptr<LineSource> line, bool overlapped);

  bool overlapped() const { return overlapped_; }

  DWORD Configure(const DCB& settings);
  DWORD SetTimeouts(const COMMTIMEOUTS& timeouts);
  DWORD Purge(DWORD flags);
  DWORD ModemStatus(DWORD* status);
  DWORD SetMask(DWORD mask);

  // The buffers and `events` belong to the caller and stay in place until completion.
  DWORD BeginRead(OperationCall call, void* buffer, DWORD length);
  DWORD BeginWrite(OperationCall call, const void* data, DWORD length);
  DWORD BeginEventWait(OperationCall call, DWORD* events);

  // Outcome of the operation of a record, with the bytes it moved; ERROR_IO_INCOMPLETE when it is
  // pending still after it was tried, or waited for.
  DWORD Result(OVERLAPPED* record, DWORD* bytes, bool wait);

  void Drive(OperationId id, Deadline until) override;
  void Abandon(OperationId id) override;

  // Breaks off what is pending and gives the line back. Waits for threads that work on the line,
  // which takes a moment.
  void Close() override;

 private:
  struct Operation {
    OperationKind kind = OperationKind::kRead;
    std::uint64_t serial = 0;
    bool pending = false;
    OperationCall call;
    std::uint8_t* buffer = nullptr;      // read
    const std::uint8_t* data = nullptr;  // write
    DWORD* events = nullptr;             // event wait
    DWORD length = 0;
    DWORD wanted = 0;
    DWORD done = 0;
    Deadline deadline = Deadline::Never();
    bool timed_read = true;  // no timed read has come back empty

    bool Is(OperationId id) const { return pending && serial == id.serial; }
    OperationId id() const { return {kind, serial}; }
  };

  // One for each kind. A thread that works on the line for an operation that was broken off holds
  // the slot a moment longer than the operation.
  struct Slot {
    Operation operation;
    bool driven = false;
  };

  Slot& SlotOf(OperationKind kind) REQUIRES(mutex_) {
    return slots_[static_cast<std::size_t>(kind)];
  }

  // port.cpp
  DWORD Usable() const REQUIRES(mutex_);
  DWORD Noted(DWORD error) REQUIRES(mutex_);
  DWORD Begin(Operation operation) REQUIRES(mutex_);
  void Complete(Operation& operation, DWORD error) REQUIRES(mutex_);
  std::optional<OperationId> PendingOf(const OVERLAPPED* record) EXCLUDES(mutex_);

  // port_drive.cpp; the first three give the lock back while they wait
  void DriveOnce(Slot& slot, Deadline until) REQUIRES(mutex_);
  void ReadTimed(Slot& slot) REQUIRES(mutex_);
  LineHealth WaitForLine(Slot& slot, Deadline end) REQUIRES(mutex_);
  bool CanReadTimed(const Operation& operation, Deadline end, Clock::time_point now) const
      REQUIRES(mutex_);
  void Enter(Slot& slot) RELEASE(mutex_);
  void Leave(Slot& slot) ACQUIRE(mutex_);
  void Attempt(Operation& operation) REQUIRES(mutex_);
  void AttemptEvent(Operation& operation) REQUIRES(mutex_);
  Transfer Try(const Operation& operation) REQUIRES(mutex_);
  void Judge(Operation& operation, const Transfer& transfer) REQUIRES(mutex_);
  bool Settle(Operation& operation, const Transfer& transfer)
      REQUIRES(mutex_);  // true: it is completed

  const bool overlapped_;
  Mutex mutex_;
  Condition changed_;  // an operation completed, or a slot is no longer driven
  std::unique_ptr<LineSource> line_ GUARDED_BY(mutex_);  // null once closed
  bool closed_ GUARDED_BY(mutex_) = false;
  bool gone_ GUARDED_BY(mutex_) = false;
  int threads_in_line_ GUARDED_BY(mutex_) = 0;
  COMMTIMEOUTS timeouts_ GUARDED_BY(mutex_);
  DWORD mask_ GUARDED_BY(mutex_) = 0;
  RingWatch ring_ GUARDED_BY(mutex_);  // while the mask is set
  std::uint64_t last_serial_ GUARDED_BY(mutex_) = 0;
  std::array<Slot, 3> slots_ GUARDED_BY(mutex_);
};

// Makes a handle of a line, which CreateFileA does with the line it opened. Null when no handle is
// left.
HANDLE MakePortHandle(std::unique_ptr<LineSource> line, bool overlapped);

}  // namespace vt63x::kernel

#endif
