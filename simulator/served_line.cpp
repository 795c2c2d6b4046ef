// SPDX-License-Identifier: MIT

#include "simulator/served_line.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <time.h>

#include <algorithm>
#include <cerrno>

#include "simulator/uart.h"

namespace vt63x {
namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kOrphanTime = 200'000'000;  // see Serve
constexpr std::int64_t kNever = LineDevice::kNever;

std::int64_t Now() {
  timespec time;
  ::clock_gettime(CLOCK_MONOTONIC, &time);
  return std::int64_t{time.tv_sec} * kSecond + time.tv_nsec;
}

}  // namespace

ServedLine::ServedLine(LineDevice& device, ChipSerialPort& port, const Options& options)
    : device_(device), port_(port), options_(options), pace_(options.pace) {}

bool ServedLine::Open(std::string& error) {
  stop_.Reset(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
  if (!stop_) {
    error = "no event to be had from the system";
    return false;
  }
  return true;
}

void ServedLine::Stop() {
  const int saved_errno = errno;  // a signal handler must leave it alone
  const std::uint64_t one = 1;
  // Fails only when the event is set already.
  [[maybe_unused]] const ssize_t written = ::write(stop_.get(), &one, sizeof one);
  errno = saved_errno;
}

ServedLine::End ServedLine::Serve() {
  // The default would let the system wake this thread up to 50 microseconds late, on purpose.
  if (options_.pace) ::prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
  while (true) {
    Events events;
    if (!Wait(Now(), events)) return End::kFailed;
    if (events.side != 0) options_.side_input->OnReadable();
    if ((events.client & (POLLERR | POLLHUP)) != 0 && !device_.SurvivesError()) return End::kHungUp;
    if ((events.client & POLLOUT) != 0) device_.SendRest();
    const std::int64_t now = Now();
    if (device_.due() <= now) device_.OnTime();
    host_rate_fresh_ = false;
    // A last byte and the closing after it may show in either order.
    bool more = events.client != 0 || events.change != 0;
    while (more) more = TakeBytes(now) && events.change != 0;
    const bool changed = events.change != 0 || device_.HasChange();
    if ((changed && !FollowClient()) || !RunChip(now)) {
      device_.HangUp();
      return End::kHungUp;
    }
    // The system may bring a client's last bytes some time after its closing.
    if (now < orphans_until_) outgoing_.Clear();
    Deliver(now);
    if (events.stop != 0) return End::kStopped;
  }
}

// Until something happens or the next planned byte is due. False when the system refuses.
bool ServedLine::Wait(std::int64_t now, Events& events) {
  // While the queue is full the client's bytes wait in the device.
  short client_events = incoming_.room() > 0 ? POLLIN : 0;
  if (device_.HasUnsent()) client_events |= POLLOUT;
  pollfd polled[] = {{device_.client_fd(), client_events, 0},
                     {device_.change_fd(), POLLIN, 0},
                     {stop_.get(), POLLIN, 0},
                     {options_.side_input != nullptr ? options_.side_input->fd() : -1, POLLIN, 0}};
  std::int64_t due = device_.due();
  if (!incoming_.empty()) due = incoming_.Front().complete_at;
  if (!outgoing_.empty()) due = std::min(due, outgoing_.Front().deliver_at);
  const std::int64_t left = std::max<std::int64_t>(due - now, 0);
  const timespec timeout{left / kSecond, left % kSecond};
  if (::ppoll(polled, std::size(polled), due == kNever ? nullptr : &timeout, nullptr) < 0) {
    return errno == EINTR;
  }
  events = {polled[0].revents, polled[1].revents, polled[2].revents, polled[3].revents};
  return true;
}

// Keeps the answers to a client that has closed away from the next one. False when the line is to
// go away.
bool ServedLine::FollowClient() {
  const LineDevice::Change change = device_.TakeChange();
  if (change == LineDevice::Change::kOpened) orphans_until_ = 0;
  if (change == LineDevice::Change::kNone || change == LineDevice::Change::kOpened) return true;
  if (device_.IsLocked()) return true;
  // Whose the bytes taken last are cannot be told when a new client is there already; it waits for
  // its answers.
  const bool nobody_is_there = change == LineDevice::Change::kClosed;
  orphans_until_ = nobody_is_there ? Now() + kOrphanTime : 0;
  if (nobody_is_there && !RunChip(kNever)) return false;
  outgoing_.Clear();
  device_.DropUnreadAnswers();
  if (nobody_is_there) device_.EndExclusiveUse();
  return true;
}

// What the client has sent, in part. False when there was nothing or there is no room for it.
bool ServedLine::TakeBytes(std::int64_t now) {
  std::uint8_t bytes[256];
  const std::size_t count = device_.Read({bytes, std::min(sizeof bytes, incoming_.room())});
  if (count == 0) return false;
  host_rate_ = device_.HostRate();
  host_rate_fresh_ = true;
  for (std::size_t index = 0; index < count; ++index) {
    incoming_.Push({bytes[index], host_rate_, pace_.CompleteAt(now, host_rate_)});
  }
  return true;
}

// Hands the chip the bytes that have reached it by `until` and plans its answers. False when the
// line is to go away.
bool ServedLine::RunChip(std::int64_t until) {
  while (!incoming_.empty() && incoming_.Front().complete_at <= until) {
    const IncomingByte in = incoming_.Front();
    incoming_.Pop();
    const auto heard = HearByte(in.byte, in.rate, port_.BitRate());
    if (!heard) continue;
    const LineAnswer answer = port_.OnByte(*heard);
    if (options_.observer != nullptr && answer.access) options_.observer->OnAccess(answer);
    if (answer.hang_up) return false;
    if (outgoing_.room() < answer.count) Deliver(until);
    for (std::size_t index = 0; index < answer.count; ++index) {
      const std::uint32_t delay_ms = index == 0 ? answer.delay_ms : 0;
      const std::int64_t deliver_at = pace_.DeliverAt(in.complete_at, answer.rate, delay_ms);
      if (!outgoing_.Push({answer.bytes[index], answer.rate, deliver_at})) ++lost_answers_;
    }
  }
  return true;
}

void ServedLine::Deliver(std::int64_t now) {
  if (outgoing_.empty() || outgoing_.Front().deliver_at > now) return;
  if (options_.pace) now = Now();
  if (!host_rate_fresh_) host_rate_ = device_.HostRate();
  std::uint8_t bytes[kOutgoingSize];
  std::size_t count = 0;
  while (!outgoing_.empty() && outgoing_.Front().deliver_at <= now) {
    const OutgoingByte out = outgoing_.Front();
    outgoing_.Pop();
    if (options_.pace) {
      const std::int64_t late = now - out.deliver_at;
      ++report_.answers;
      report_.total_late += late;
      report_.most_late = std::max(report_.most_late, late);
    }
    const auto heard = HearByte(out.byte, out.rate, host_rate_);
    if (heard) bytes[count++] = *heard;
  }
  if (count > 0) lost_answers_ += count - device_.Write({bytes, count});
}

}  // namespace vt63x
