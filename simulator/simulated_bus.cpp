// SPDX-License-Identifier: MIT

#include "simulator/simulated_bus.h"

#include <algorithm>
#include <utility>

#include "simulator/uart.h"

namespace vt63x {

SimulatedBus::SimulatedBus(Chip& chip, std::vector<Fault> faults)
    : port_(chip, std::move(faults)) {}

HFLSTATUS SimulatedBus::WriteByte(bus_byte_param* param) {
  if (hung_up_) return HFL_LINK_FAILED;
  Record(true, param->data);
  const auto heard = HearByte(param->data, host_rate_, port_.BitRate());
  if (!heard) return HFL_SUCCESS;
  const LineAnswer answer = port_.OnByte(*heard);
  if (answer.hang_up) {
    hung_up_ = true;
    pending_.clear();
    return HFL_SUCCESS;  // the byte itself was sent
  }
  Queue(answer);
  return HFL_SUCCESS;
}

HFLSTATUS SimulatedBus::ReadByte(bus_byte_param* param) {
  if (hung_up_) return HFL_LINK_FAILED;
  if (pending_.empty() || pending_.front().due_ms > now_ms_ + kReadTimeoutMs) {
    now_ms_ += kReadTimeoutMs;
    return HFL_LINK_FAILED;
  }
  now_ms_ = std::max(now_ms_, pending_.front().due_ms);
  param->data = pending_.front().byte;
  pending_.pop_front();
  Record(false, param->data);
  return HFL_SUCCESS;
}

void SimulatedBus::Purge() {
  while (!pending_.empty() && pending_.front().due_ms <= now_ms_) pending_.pop_front();
}

void SimulatedBus::StartRecording(std::size_t limit) {
  recording_.clear();
  recording_limit_ = limit;
}

void SimulatedBus::Queue(const LineAnswer& answer) {
  for (std::size_t index = 0; index < answer.count; ++index) {
    const auto heard = HearByte(answer.bytes[index], answer.rate, host_rate_);
    if (!heard || pending_.size() >= kBufferSize) continue;
    const std::uint64_t after = pending_.empty() ? 0 : pending_.back().due_ms;
    pending_.push_back({*heard, std::max(after, now_ms_ + answer.delay_ms)});
  }
}

void SimulatedBus::Record(bool to_chip, std::uint8_t byte) {
  if (recording_.size() < recording_limit_) recording_.push_back({to_chip, byte});
}

}  // namespace vt63x
