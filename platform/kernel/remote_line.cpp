// SPDX-License-Identifier: MIT

#include "platform/kernel/remote_line.h"

#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/kernel/poll_until.h"
#include "platform/kernel/slow_call.h"
#include "platform/kernel/tcp_connect.h"
#include "platform/kernel/tty_settings.h"

namespace vt63x::kernel {
namespace {

using rfc2217::ComPort;
using rfc2217::Negotiation;

constexpr std::chrono::seconds kOpenLimit{5};
constexpr std::chrono::seconds kAnswerLimit{2};
constexpr std::chrono::milliseconds kPurgeLimit{500};  // of a server that does not confirm

// As a driver's: what finds no room is lost.
constexpr std::size_t kInputSize = 64 * 1024;
constexpr std::size_t kOutputSize = 64 * 1024;

constexpr std::uint8_t Code(ComPort command) { return static_cast<std::uint8_t>(command); }
constexpr std::uint8_t AnswerTo(ComPort command) { return Code(command) + rfc2217::kFromServer; }

}  // namespace

DWORD RemoteLine::Open(const std::string& name, std::unique_ptr<LineSource>* line) {
  const auto remote = ParseRemoteName(name);
  if (!remote) return ERROR_INVALID_PARAMETER;
  const Deadline deadline = Deadline::After(kOpenLimit);
  std::unique_ptr<RemoteLine> opened(new RemoteLine);
  opened->wake_ = FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!opened->wake_.valid()) return ERROR_NOT_ENOUGH_MEMORY;
  DWORD error = ERROR_SUCCESS;
  RunSlowCall([&] {
    error = ConnectTcp(*remote, deadline, &opened->socket_);
    if (error == ERROR_SUCCESS) error = opened->Negotiate(deadline);
  });
  if (error == ERROR_SUCCESS) *line = std::move(opened);
  return error;
}

// The server must agree to carry the port's settings; the rest it may do as it likes.
DWORD RemoteLine::Negotiate(Deadline deadline) {
  rfc2217::AppendNegotiation(outgoing_, Negotiation::kWill, rfc2217::kOptionComPort);
  for (const std::uint8_t option : {rfc2217::kOptionBinary, rfc2217::kOptionSuppressGoAhead}) {
    rfc2217::AppendNegotiation(outgoing_, Negotiation::kWill, option);
    rfc2217::AppendNegotiation(outgoing_, Negotiation::kDo, option);
  }
  TakeInUntil([this] { return accepted_ || refused_; }, deadline);
  if (lost_) return ERROR_ACCESS_DENIED;
  if (!accepted_) return ERROR_NOT_SUPPORTED;
  const std::pair<ComPort, std::uint8_t> settings[] = {
      {ComPort::kSetDataSize, 8},
      {ComPort::kSetParity, rfc2217::kNoParity},
      {ComPort::kSetStopSize, rfc2217::kOneStopBit},
      {ComPort::kSetControl, rfc2217::kControlNoFlow},
      {ComPort::kSetLineStateMask, 0},
      {ComPort::kSetModemStateMask, 0xFF},
  };
  for (const auto& [command, value] : settings) {
    rfc2217::AppendComPort(outgoing_, Code(command), value);
  }
  // Stale input goes, as when a device is opened. Some servers agree to all of this before they
  // look whether their port is free, and close then.
  PurgeInput();
  TakeInUntil([this] { return !Purging(); }, purge_limit_);
  return lost_ ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

template <typename Done>
bool RemoteLine::TakeInUntil(const Done& done, Deadline deadline) {
  while (true) {
    Flush();
    TakeIn();
    if (done()) return true;
    if (lost_ || deadline.Passed()) return false;
    WaitFor(POLLIN, deadline);
  }
}

// Reads the socket empty, or as much as there is room for twice over: a server that never stops
// sending must not hold this thread.
void RemoteLine::TakeIn() {
  std::uint8_t bytes[4096];
  for (std::size_t taken = 0; taken < 2 * kInputSize && !lost_;) {
    const ssize_t count = recv(socket_.get(), bytes, sizeof bytes, 0);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) break;
    if (count <= 0) {
      lost_ = true;
      break;
    }
    decoder_.Take({bytes, static_cast<std::size_t>(count)}, *this);
    if (static_cast<std::size_t>(count) < sizeof bytes) break;  // that was all
    taken += static_cast<std::size_t>(count);
  }
  if (Purging() && purge_limit_.Passed()) purges_unconfirmed_ = 0;
}

void RemoteLine::Flush() {
  if (outgoing_.empty() || lost_) return;
  const ssize_t count = send(socket_.get(), outgoing_.data(), outgoing_.size(), MSG_NOSIGNAL);
  if (count > 0) outgoing_.erase(0, static_cast<std::size_t>(count));
  if (count < 0 && errno != EAGAIN && errno != EINTR) lost_ = true;
  has_unsent_ = !outgoing_.empty();
}

DWORD RemoteLine::Configure(DWORD bit_rate) {
  rfc2217::AppendBaudRate(outgoing_, Code(ComPort::kSetBaudRate), bit_rate);
  for (const std::uint8_t off : {rfc2217::kControlDtrOff, rfc2217::kControlRtsOff}) {
    rfc2217::AppendComPort(outgoing_, Code(ComPort::kSetControl), off);
  }
  ++rates_unconfirmed_;
  bool answered = false;
  RunSlowCall([&] {
    answered =
        TakeInUntil([this] { return rates_unconfirmed_ == 0; }, Deadline::After(kAnswerLimit));
  });
  rates_unconfirmed_ = 0;
  if (lost_) return ERROR_DEVICE_NOT_CONNECTED;
  if (!answered) return ERROR_SEM_TIMEOUT;
  return IsCloseTo(confirmed_rate_, bit_rate) ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
}

Transfer RemoteLine::Read(void* buffer, std::size_t size) {
  if (!has_data_) {
    Flush();
    TakeIn();
  }
  const std::size_t count = std::min(size, data_.size() - next_);
  if (count == 0) return {0, lost_ ? DWORD{ERROR_DEVICE_NOT_CONNECTED} : DWORD{ERROR_SUCCESS}};
  std::memcpy(buffer, data_.data() + next_, count);
  next_ += count;
  if (next_ == data_.size()) {
    data_.clear();
    next_ = 0;
    has_data_ = false;
  }
  return {count, ERROR_SUCCESS};
}

Transfer RemoteLine::Write(const void* data, std::size_t size) {
  Flush();
  if (lost_) return {0, ERROR_DEVICE_NOT_CONNECTED};
  if (outgoing_.size() >= kOutputSize) return {};
  const std::size_t count = std::min(size, kOutputSize - outgoing_.size());
  rfc2217::AppendData(outgoing_, {static_cast<const std::uint8_t*>(data), count});
  Flush();
  return {count, ERROR_SUCCESS};
}

LineHealth RemoteLine::WaitFor(short events, Deadline deadline) {
  // What the socket did not take goes with the next attempt, whatever that is for.
  if (has_unsent_) events |= POLLOUT;
  pollfd waited[] = {{socket_.get(), events, 0}, {wake_.get(), POLLIN, 0}};
  PollUntil(waited, deadline);
  // What arrived before the loss is read first, and reading is what finds the loss.
  return lost_ ? LineHealth::kGone : LineHealth::kUp;
}

LineHealth RemoteLine::WaitReadable(Deadline deadline) {
  return has_data_ ? LineHealth::kUp : WaitFor(POLLIN, deadline);
}

LineHealth RemoteLine::WaitWritable(Deadline deadline) { return WaitFor(POLLOUT, deadline); }

void RemoteLine::Interrupt() { eventfd_write(wake_.get(), 1); }

bool RemoteLine::Purging() { return purges_unconfirmed_ > 0; }

DWORD RemoteLine::PurgeInput() {
  rfc2217::AppendComPort(outgoing_, Code(ComPort::kPurgeData), rfc2217::kPurgeInput);
  ++purges_unconfirmed_;
  purge_limit_ = Deadline::After(kPurgeLimit);
  data_.clear();
  next_ = 0;
  has_data_ = false;
  Flush();
  return lost_ ? ERROR_DEVICE_NOT_CONNECTED : ERROR_SUCCESS;
}

DWORD RemoteLine::PurgeOutput() {
  // Commands that have not left yet must stay, so the data among them does as well.
  rfc2217::AppendComPort(outgoing_, Code(ComPort::kPurgeData), rfc2217::kPurgeOutput);
  Flush();
  return lost_ ? ERROR_DEVICE_NOT_CONNECTED : ERROR_SUCCESS;
}

DWORD RemoteLine::ModemStatus(DWORD* status) {
  Flush();
  TakeIn();
  TakeIn();  // the end of the connection, which may stand behind the bytes that the first one took
  *status = modem_state_ & DWORD{MS_CTS_ON | MS_DSR_ON | MS_RING_ON | MS_RLSD_ON};
  return lost_ ? ERROR_DEVICE_NOT_CONNECTED : ERROR_SUCCESS;
}

DWORD RemoteLine::Ring(RingState* state) {
  Flush();
  TakeIn();
  *state = {rings_, false};
  return lost_ ? ERROR_DEVICE_NOT_CONNECTED : ERROR_SUCCESS;
}

void RemoteLine::OnData(rfc2217::Bytes data) {
  if (Purging()) return;
  const std::size_t room = kInputSize - std::min(kInputSize, data_.size());
  const rfc2217::Bytes taken = data.first(std::min(room, data.size()));
  data_.insert(data_.end(), taken.begin(), taken.end());
  has_data_ = !data_.empty();
}

// Both ends take bytes as they are. To anything else the server offers or asks: no.
void RemoteLine::OnNegotiation(Negotiation what, std::uint8_t option) {
  if (option == rfc2217::kOptionComPort) {
    accepted_ = accepted_ || what == Negotiation::kDo;
    refused_ = refused_ || what == Negotiation::kDont;
    return;
  }
  const bool known = option == rfc2217::kOptionBinary || option == rfc2217::kOptionSuppressGoAhead;
  if (known || outgoing_.size() >= kOutputSize) return;
  if (what == Negotiation::kWill) {
    rfc2217::AppendNegotiation(outgoing_, Negotiation::kDont, option);
  } else if (what == Negotiation::kDo) {
    rfc2217::AppendNegotiation(outgoing_, Negotiation::kWont, option);
  }
}

void RemoteLine::OnComPort(std::uint8_t command, rfc2217::Bytes value) {
  if (command == AnswerTo(ComPort::kSetBaudRate)) {
    confirmed_rate_ = rfc2217::BaudRateOf(value);
    rates_unconfirmed_ = std::max(0, rates_unconfirmed_ - 1);
  } else if (command == AnswerTo(ComPort::kPurgeData)) {
    const bool of_input = !value.empty() && value[0] == rfc2217::kPurgeInput;
    if (of_input) purges_unconfirmed_ = std::max(0, purges_unconfirmed_ - 1);
  } else if (command == AnswerTo(ComPort::kNotifyModemState) && !value.empty()) {
    TakeModemState(value[0]);
  }
}

// A UART counts a ring when it ends, and so does this: a pulse is one. One that fell between two
// notices shows as its end alone; some servers tell levels only.
void RemoteLine::TakeModemState(std::uint8_t state) {
  const bool was_on = (modem_state_ & rfc2217::kModemRing) != 0;
  const bool is_on = (state & rfc2217::kModemRing) != 0;
  if ((was_on && !is_on) || (state & rfc2217::kModemRingEnded) != 0) ++rings_;
  modem_state_ = state;
}

}  // namespace vt63x::kernel
