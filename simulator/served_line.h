// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_SERVED_LINE_H
#define VT63X_SIMULATOR_SERVED_LINE_H

// A simulated chip on a device that clients open as their serial port. Bytes cross it
// between the rate that the client has set and the chip's own, changed or lost where the two
// differ. The client's rate is taken when its bytes are read and when an answer is delivered late.
//
// Without pace a byte takes no time. With pace it takes ten bit times in either direction at its
// sender's rate.
//
// The line outlives its clients: one closes, the next opens. The answers that the last one left
// unread are thrown away a moment after its closing; a half-sent write stays with the chip. Nothing
// a client does holds the line up; answers that a client does not read are lost once its buffer is
// full.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "simulator/access_observer.h"
#include "simulator/fixed_queue.h"
#include "simulator/line_device.h"
#include "simulator/line_pace.h"
#include "simulator/serial_port.h"
#include "simulator/unique_fd.h"

namespace vt63x {

// Something else that the serving thread looks after.
class SideInput {
 public:
  // Readable when there is something to do; -1 when there will not be any more.
  virtual int fd() const = 0;
  // Called when it is readable, or at its end. Must not wait.
  virtual void OnReadable() = 0;

 protected:
  SideInput() = default;
  ~SideInput() = default;
  SideInput(const SideInput&) = delete;
  SideInput& operator=(const SideInput&) = delete;
};

// How late answers were handed to the client, against the times planned, in nanoseconds.
struct PaceReport {
  std::uint64_t answers = 0;  // bytes
  std::int64_t total_late = 0;
  std::int64_t most_late = 0;
};

class ServedLine {
 public:
  struct Options {
    bool pace = false;
    AccessObserver* observer = nullptr;  // the caller's; outlives the line
    SideInput* side_input = nullptr;     // so is this
  };
  enum class End { kStopped, kHungUp, kFailed };

  // `device`, which is open, and `port` are the caller's and outlive the line.
  ServedLine(LineDevice& device, ChipSerialPort& port, const Options& options);

  // Once, before anything else. False and a line for the user in `error` on failure.
  bool Open(std::string& error);

  // Serves in the caller's thread until Stop, or until a fault takes the line away, or until the
  // system refuses to wait for it.
  End Serve();

  // From any thread and from a signal handler, also before Serve. What the client has done by then
  // is still taken note of; Serve does not wait for anything more. The device stays; a stopped
  // line is not served again.
  void Stop();

  // After Serve has returned.
  const PaceReport& pace_report() const { return report_; }
  std::uint64_t lost_answers() const { return lost_answers_; }  // bytes

 private:
  // Bytes under way. A client that sends more than the first has to wait; an answer that finds no
  // room is lost.
  static constexpr std::size_t kIncomingSize = 4096;
  static constexpr std::size_t kOutgoingSize = 1024;

  struct IncomingByte {
    std::uint8_t byte;
    std::uint32_t rate;
    std::int64_t complete_at;
  };
  struct OutgoingByte {
    std::uint8_t byte;
    std::uint32_t rate;
    std::int64_t deliver_at;
  };

  // What a wait has found: poll's events.
  struct Events {
    short client = 0;
    short change = 0;
    short stop = 0;
    short side = 0;
  };

  bool Wait(std::int64_t now, Events& events);
  bool FollowClient();
  bool TakeBytes(std::int64_t now);
  bool RunChip(std::int64_t until);
  void Deliver(std::int64_t now);

  LineDevice& device_;
  ChipSerialPort& port_;
  const Options options_;
  UniqueFd stop_;
  LinePace pace_;
  FixedQueue<IncomingByte, kIncomingSize> incoming_;
  FixedQueue<OutgoingByte, kOutgoingSize> outgoing_;
  std::int64_t orphans_until_ = 0;  // until then bytes are of the client that has closed
  std::uint32_t host_rate_ = 0;     // the client's, when last asked for
  bool host_rate_fresh_ = false;
  PaceReport report_;
  std::uint64_t lost_answers_ = 0;
};

}  // namespace vt63x

#endif
