// SPDX-License-Identifier: MIT

#include "simulator/rfc2217_device.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>
#include <system_error>

namespace vt63x {
namespace {

using rfc2217::ComPort;
using rfc2217::Negotiation;

constexpr std::size_t kOutgoingSize = 64 * 1024;  // for a client that does not read
constexpr int kOurSide = 0;
constexpr int kTheirSide = 1;

// Values of kSetControl (RFC 2217, section 3) that change or ask for something here.
enum Control : std::uint8_t {
  kAskFlow = 0,
  kNoFlow = 1,
  kAskBreak = 4,
  kBreakOff = 6,
  kAskDtr = 7,
  kDtrOn = 8,
  kDtrOff = 9,
  kAskRts = 10,
  kRtsOn = 11,
  kRtsOff = 12,
  kAskInFlow = 13,
  kNoInFlow = 14,
};

std::int64_t Now() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

bool Fail(std::string& error, const std::string& address, const std::string& what) {
  error = address + ": " + what;
  return false;
}

std::string ErrnoText() { return std::generic_category().message(errno); }

void Switch(int socket, int level, int option, int value) {
  ::setsockopt(socket, level, option, &value, sizeof value);
}

// Has the system find out within 20 s that the other end is not there any more: it asks after 10 s
// of silence, every 3 s, three times; and what was sent is acknowledged within 15 s.
void WatchForLoss(int socket) {
  Switch(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
  Switch(socket, IPPROTO_TCP, TCP_KEEPIDLE, 10);
  Switch(socket, IPPROTO_TCP, TCP_KEEPINTVL, 3);
  Switch(socket, IPPROTO_TCP, TCP_KEEPCNT, 3);
  Switch(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, 15'000);
}

// Of the port that the system has given; 0 when it does not say.
int PortOf(int socket) {
  sockaddr_storage bound{};
  socklen_t size = sizeof bound;
  char port[NI_MAXSERV] = "";
  if (::getsockname(socket, reinterpret_cast<sockaddr*>(&bound), &size) != 0) return 0;
  ::getnameinfo(reinterpret_cast<sockaddr*>(&bound), size, nullptr, 0, port, sizeof port,
                NI_NUMERICSERV);
  return std::atoi(port);
}

bool KnowsOption(std::uint8_t option) {
  return option == rfc2217::kOptionBinary || option == rfc2217::kOptionSuppressGoAhead ||
         option == rfc2217::kOptionComPort;
}

}  // namespace

bool Rfc2217Device::Open(const std::string& address, std::string& error) {
  const std::size_t colon = address.rfind(':');
  if (colon == std::string::npos || colon == 0) return Fail(error, address, "is not HOST:PORT");
  std::string host = address.substr(0, colon);
  if (host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);

  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_PASSIVE;
  addrinfo* found = nullptr;
  const int code = ::getaddrinfo(host.c_str(), address.substr(colon + 1).c_str(), &hints, &found);
  if (code != 0) return Fail(error, address, ::gai_strerror(code));
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> list(found, ::freeaddrinfo);

  listener_.Reset(::socket(list->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!listener_) return Fail(error, address, ErrnoText());
  Switch(listener_.get(), SOL_SOCKET, SO_REUSEADDR, 1);
  if (::bind(listener_.get(), list->ai_addr, list->ai_addrlen) != 0 ||
      ::listen(listener_.get(), SOMAXCONN) != 0) {
    return Fail(error, address, ErrnoText());
  }
  path_ = "rfc2217://" + address.substr(0, colon + 1) + std::to_string(PortOf(listener_.get()));
  return true;
}

LineDevice::Change Rfc2217Device::TakeChange() {
  // A client that has closed and sent nothing before it makes room for the next.
  char byte = 0;
  if (client_ && ::recv(client_.get(), &byte, 1, MSG_PEEK) == 0) LoseClient();
  const bool closed = std::exchange(client_gone_, false);
  const bool opened = Accept();
  if (closed) return opened ? Change::kReplaced : Change::kClosed;
  return opened ? Change::kOpened : Change::kNone;
}

bool Rfc2217Device::Accept() {
  bool opened = false;
  while (true) {
    UniqueFd client(::accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!client) return opened;
    if (client_) continue;  // turned away
    Switch(client.get(), IPPROTO_TCP, TCP_NODELAY, 1);
    WatchForLoss(client.get());
    client_ = std::move(client);
    greeting_end_ = Now() + greeting_time_;
    decoder_ = {};
    outgoing_.clear();
    modem_mask_ = 0xFF;  // until the client says otherwise
    for (auto& side : agreed_) std::ranges::fill(side, false);
    opened = true;
  }
}

void Rfc2217Device::LoseClient() {
  client_.Reset();
  outgoing_.clear();
  greeting_end_ = kNever;
  client_gone_ = true;
}

bool Rfc2217Device::SurvivesError() {
  LoseClient();
  return true;
}

// What is read as data is never more than what came.
std::size_t Rfc2217Device::Read(std::span<std::uint8_t> buffer) {
  std::uint8_t bytes[4096];
  const std::size_t size = std::min(sizeof bytes, buffer.size());
  if (!client_ || size == 0) return 0;
  const ssize_t count = ::recv(client_.get(), bytes, size, 0);
  if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) LoseClient();
  if (count <= 0) return 0;
  into_ = buffer;
  decoder_.Take({bytes, static_cast<std::size_t>(count)}, *this);
  SendRest();
  return buffer.size() - into_.size();
}

std::size_t Rfc2217Device::Write(std::span<const std::uint8_t> bytes) {
  if (!client_) return bytes.size();  // as on a line that nobody listens to
  const std::size_t room = kOutgoingSize - std::min(kOutgoingSize, outgoing_.size());
  const std::size_t count = std::min(bytes.size(), room);
  rfc2217::AppendData(outgoing_, bytes.first(count));
  SendRest();
  return count;
}

void Rfc2217Device::SendRest() {
  if (outgoing_.empty() || !client_) return;
  const ssize_t count = ::send(client_.get(), outgoing_.data(), outgoing_.size(), MSG_NOSIGNAL);
  if (count > 0) outgoing_.erase(0, static_cast<std::size_t>(count));
  if (count < 0 && errno != EAGAIN && errno != EINTR) LoseClient();
}

void Rfc2217Device::HangUp() {
  client_.Reset();
  listener_.Reset();
}

void Rfc2217Device::SetRing(bool on) {
  pulse_end_ = kNever;
  if (on == ring_) return;
  ring_ = on;
  NotifyModem(on ? 0 : rfc2217::kModemRingEnded);
}

void Rfc2217Device::PulseRing(std::uint32_t milliseconds) {
  SetRing(true);
  pulse_end_ = Now() + std::int64_t{milliseconds} * 1'000'000;
}

void Rfc2217Device::OnTime() {
  const std::int64_t now = Now();
  if (now >= pulse_end_) SetRing(false);
  if (now >= greeting_end_) LoseClient();
}

// Two notices in a row, on and off, however short the pulse: none is merged with the next.
void Rfc2217Device::NotifyModem(std::uint8_t changes) {
  const std::uint8_t state = (ring_ ? rfc2217::kModemRing : 0) | changes;
  constexpr std::uint8_t kOfRing = rfc2217::kModemRing | rfc2217::kModemRingEnded;
  if (!client_ || (modem_mask_ & kOfRing) == 0) return;
  Answer(ComPort::kNotifyModemState, state & modem_mask_);
  SendRest();
}

void Rfc2217Device::OnData(rfc2217::Bytes data) {
  std::ranges::copy(data, into_.begin());
  into_ = into_.subspan(data.size());
}

// Agrees once to what it knows, and turns the rest down; never answers an answer.
void Rfc2217Device::OnNegotiation(Negotiation what, std::uint8_t option) {
  if (option == rfc2217::kOptionComPort) greeting_end_ = kNever;
  const bool asks_us = what == Negotiation::kDo || what == Negotiation::kDont;
  const bool wanted = what == Negotiation::kDo || what == Negotiation::kWill;
  bool& agreed = agreed_[asks_us ? kOurSide : kTheirSide][option];
  if (wanted == agreed || outgoing_.size() >= kOutgoingSize) return;
  agreed = wanted && KnowsOption(option);
  const Negotiation yes = asks_us ? Negotiation::kWill : Negotiation::kDo;
  const Negotiation no = asks_us ? Negotiation::kWont : Negotiation::kDont;
  rfc2217::AppendNegotiation(outgoing_, agreed ? yes : no, option);
  if (agreed && option == rfc2217::kOptionComPort) NotifyModem(0);
}

void Rfc2217Device::Answer(ComPort command, std::uint8_t value) {
  rfc2217::AppendComPort(
      outgoing_,
      static_cast<std::uint8_t>(static_cast<std::uint8_t>(command) + rfc2217::kFromServer), value);
}

// The port has eight data bits, no parity, one stop bit and no flow control, and says so whatever
// it is asked for.
void Rfc2217Device::OnComPort(std::uint8_t command, rfc2217::Bytes value) {
  greeting_end_ = kNever;
  if (outgoing_.size() >= kOutgoingSize) return;
  const std::uint8_t first = value.empty() ? std::uint8_t{0} : value[0];
  switch (static_cast<ComPort>(command)) {
    case ComPort::kSetBaudRate: {
      const std::uint32_t rate = rfc2217::BaudRateOf(value);
      if (rate != 0) rate_ = rate;
      rfc2217::AppendBaudRate(outgoing_, static_cast<std::uint8_t>(command + rfc2217::kFromServer),
                              rate_);
      return;
    }
    case ComPort::kSetDataSize:
      return Answer(ComPort::kSetDataSize, 8);
    case ComPort::kSetParity:
      return Answer(ComPort::kSetParity, rfc2217::kNoParity);
    case ComPort::kSetStopSize:
      return Answer(ComPort::kSetStopSize, rfc2217::kOneStopBit);
    case ComPort::kSetControl:
      return AnswerControl(first);
    case ComPort::kSetModemStateMask:
      modem_mask_ = first;
      Answer(ComPort::kSetModemStateMask, first);
      return NotifyModem(0);
    case ComPort::kNotifyModemState:
      return Answer(ComPort::kNotifyModemState, ring_ ? rfc2217::kModemRing : std::uint8_t{0});
    case ComPort::kSetLineStateMask:
      return Answer(ComPort::kSetLineStateMask, first);
    case ComPort::kPurgeData:
      // Bytes go on as they come: there are none to throw away here.
      return Answer(ComPort::kPurgeData, first);
    default:
      return;
  }
}

void Rfc2217Device::AnswerControl(std::uint8_t value) {
  if (value == kDtrOn || value == kDtrOff) dtr_ = value == kDtrOn;
  if (value == kRtsOn || value == kRtsOff) rts_ = value == kRtsOn;
  std::uint8_t answer = value;
  if (value == kAskDtr) answer = dtr_ ? kDtrOn : kDtrOff;
  if (value == kAskRts) answer = rts_ ? kRtsOn : kRtsOff;
  if (value == kAskBreak || value == kBreakOff) answer = kBreakOff;
  if (value == kAskFlow || (value > kNoFlow && value < kAskBreak)) answer = kNoFlow;
  if (value >= kAskInFlow) answer = kNoInFlow;
  Answer(ComPort::kSetControl, answer);
}

}  // namespace vt63x
