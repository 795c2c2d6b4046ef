// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_RFC2217_DEVICE_H
#define VT63X_SIMULATOR_RFC2217_DEVICE_H

// The serial port of a board as an access server offers it: RFC 2217 on a TCP port, for one client
// at a time. A second one is turned away by closing its connection. The settings that the last
// client made stay. Of the modem lines there is the ring indicator alone.
//
// A client that says nothing of RFC 2217 has no use for the board and is turned away after a while.
// One that has vanished without a word (its host is off, the network in between cut) is noticed by
// the system's probes of a silent connection, within 20 s.

#include <algorithm>
#include <string>

#include "rfc2217/telnet.h"
#include "simulator/line_device.h"
#include "simulator/ring_indicator.h"
#include "simulator/unique_fd.h"

namespace vt63x {

class Rfc2217Device final : public LineDevice, public RingIndicator, private rfc2217::Listener {
 public:
  static constexpr std::int64_t kGreetingTime = 5'000'000'000;

  // How long a client may take, in nanoseconds, until it speaks of RFC 2217.
  explicit Rfc2217Device(std::int64_t greeting_time = kGreetingTime)
      : greeting_time_(greeting_time) {}

  // Listens on "host:port", "[address]:port" for IPv6; port 0 takes any that is free. False and a
  // line for the user in `error` on failure.
  bool Open(const std::string& address, std::string& error);

  // "rfc2217://host:port".
  const std::string& path() const override { return path_; }
  int client_fd() const override { return client_.get(); }
  int change_fd() const override { return listener_.get(); }
  bool HasChange() const override { return client_gone_; }
  Change TakeChange() override;
  bool SurvivesError() override;
  std::uint32_t HostRate() const override { return rate_; }
  std::size_t Read(std::span<std::uint8_t> buffer) override;
  std::size_t Write(std::span<const std::uint8_t> bytes) override;
  bool HasUnsent() const override { return !outgoing_.empty(); }
  void SendRest() override;
  std::int64_t due() const override { return std::min(pulse_end_, greeting_end_); }
  void OnTime() override;
  void HangUp() override;

  void SetRing(bool on) override;
  void PulseRing(std::uint32_t milliseconds) override;

 private:
  bool Accept();
  void LoseClient();
  void OnData(rfc2217::Bytes data) override;
  void OnNegotiation(rfc2217::Negotiation what, std::uint8_t option) override;
  void OnComPort(std::uint8_t command, rfc2217::Bytes value) override;
  void Answer(rfc2217::ComPort command, std::uint8_t value);
  void AnswerControl(std::uint8_t value);
  void NotifyModem(std::uint8_t changes);

  std::string path_;
  UniqueFd listener_;
  UniqueFd client_;
  bool client_gone_ = false;  // and TakeChange has not said so yet
  rfc2217::Decoder decoder_;
  std::string outgoing_;          // what the socket has not taken yet
  std::span<std::uint8_t> into_;  // what is left of the buffer of Read

  std::uint32_t rate_ = 9600;
  bool dtr_ = false;
  bool rts_ = false;
  bool ring_ = false;
  std::uint8_t modem_mask_ = 0;
  std::int64_t pulse_end_ = kNever;
  const std::int64_t greeting_time_;
  std::int64_t greeting_end_ = kNever;  // kNever: the client has spoken of it, or there is none
  bool agreed_[2][256] = {};            // per side, ours first: options that are agreed on
};

}  // namespace vt63x

#endif
