// SPDX-License-Identifier: MIT

#include "simulator/chip_timer.h"

#include <algorithm>

namespace vt63x {
namespace {

// 13.56 MHz: 339 periods are 25 microseconds.
constexpr std::int64_t kPeriods = 339;
constexpr std::int64_t kPeriodsNs = 25'000;

std::int64_t StepPeriods(const ChipTimer::Settings& settings) {
  return 2 * std::int64_t{settings.prescaler} + 1;
}

// Rounded up: the timer is never early.
std::int64_t DurationNs(const ChipTimer::Settings& settings) {
  const std::int64_t periods = StepPeriods(settings) * (std::int64_t{settings.reload} + 1);
  return (periods * kPeriodsNs + kPeriods - 1) / kPeriods;
}

}  // namespace

void ChipTimer::Start(const Settings& settings, std::int64_t now) {
  settings_ = settings;
  start_ = now;
  running_ = true;
}

void ChipTimer::Stop(std::int64_t now) {
  stopped_at_ = Counter(now);
  running_ = false;
}

bool ChipTimer::TakeExpiry(std::int64_t now) {
  const std::int64_t duration = DurationNs(settings_);
  if (!running_ || now - start_ < duration) return false;
  if (settings_.restarts) {
    start_ = now - (now - start_) % duration;
  } else {
    running_ = false;
    stopped_at_ = 0;
  }
  return true;
}

std::uint16_t ChipTimer::Counter(std::int64_t now) const {
  if (!running_) return stopped_at_;
  // A day is more than any count takes, and the product then fits.
  constexpr std::int64_t kDayNs = 86'400'000'000'000;
  const std::int64_t elapsed = std::min(now - start_, kDayNs);
  const std::int64_t steps = elapsed * kPeriods / kPeriodsNs / StepPeriods(settings_);
  return static_cast<std::uint16_t>(std::max<std::int64_t>(settings_.reload - steps, 0));
}

}  // namespace vt63x
