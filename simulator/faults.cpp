// SPDX-License-Identifier: MIT

#include "simulator/faults.h"

#include <algorithm>
#include <utility>

namespace vt63x {
namespace {

enum class ValueRule { kNone, kOptional, kRequired };

struct FaultName {
  std::string_view name;
  FaultKind kind;
  ValueRule rule;
  std::uint64_t low, high, preset;  // of the value
};

constexpr std::uint32_t kMaxDelayMs = 60'000;
// Seeds beyond would repeat the sequences of those below.
constexpr std::uint32_t kMaxSeed = std::minstd_rand::modulus - 1;

constexpr FaultName kNames[] = {
    {"silence", FaultKind::kSilence, ValueRule::kNone, 0, 0, 0},
    {"wrong-echo", FaultKind::kWrongEcho, ValueRule::kNone, 0, 0, 0},
    {"delay", FaultKind::kDelay, ValueRule::kRequired, 1, kMaxDelayMs, 0},
    {"rubbish", FaultKind::kRubbish, ValueRule::kOptional, 1, kMaxSeed, 1},
    {"hang-up", FaultKind::kHangUp, ValueRule::kNone, 0, 0, 0},
};

const FaultName* FindName(std::string_view name) {
  const auto* found = std::find_if(std::begin(kNames), std::end(kNames),
                                   [&](const FaultName& row) { return row.name == name; });
  return found == std::end(kNames) ? nullptr : found;
}

bool ParseValue(const FaultName& row, std::optional<std::string_view> text, Fault& fault,
                std::string& error) {
  const std::string name(row.name);
  fault.value = static_cast<std::uint32_t>(row.preset);
  if (!text && row.rule != ValueRule::kRequired) return true;
  if (row.rule == ValueRule::kNone) {
    error = name + " takes no value";
    return false;
  }
  const auto value = ParseNumber(text.value_or(""), row.low, row.high);
  if (!value) {
    error = name + " needs a number from " + std::to_string(row.low) + " to " +
            std::to_string(row.high) + ", as in " + name + "=" + std::to_string(row.high);
    return false;
  }
  fault.value = static_cast<std::uint32_t>(*value);
  return true;
}

}  // namespace

std::optional<Fault> ParseFault(std::string_view text, std::string& error) {
  std::string_view name = text;
  const std::optional<std::string_view> range = CutAt(name, '@');
  const std::optional<std::string_view> value = CutAt(name, '=');
  const FaultName* const row = FindName(name);
  if (row == nullptr) {
    error = "unknown fault " + Quoted(name) + "; known are";
    for (const FaultName& known : kNames) error.append(1, ' ').append(known.name);
    return std::nullopt;
  }
  Fault fault;
  fault.kind = row->kind;
  if (!ParseValue(*row, value, fault, error)) return std::nullopt;
  if (!ParseFaultRange(range, "access", fault.accesses, error)) return std::nullopt;
  return fault;
}

FaultPlan::FaultPlan(std::vector<Fault> faults) : faults_(std::move(faults)) {
  generators_.reserve(faults_.size());
  for (const Fault& fault : faults_) generators_.emplace_back(fault.value);
}

void FaultPlan::Apply(const Access& access, LineAnswer& answer) {
  bool silent = false;
  for (std::size_t index = 0; index < faults_.size(); ++index) {
    const Fault& fault = faults_[index];
    if (!fault.accesses.Concerns(access.number)) continue;
    switch (fault.kind) {
      case FaultKind::kSilence:
        silent = true;
        break;
      case FaultKind::kWrongEcho:
        if (access.is_write) answer.bytes[0] = access.address ^ 0x01;
        break;
      case FaultKind::kDelay:
        answer.delay_ms += fault.value;
        break;
      case FaultKind::kRubbish:
        Spoil(generators_[index], answer);
        break;
      case FaultKind::kHangUp:
        answer.hang_up = true;
        break;
    }
  }
  if (silent || answer.hang_up) answer.count = 0;
}

void FaultPlan::Spoil(std::minstd_rand& random, LineAnswer& answer) {
  // The low bits of this generator are the weak ones.
  const auto next = [&](unsigned limit) { return static_cast<unsigned>(random() >> 8) % limit; };
  const unsigned kind = next(3);
  if (kind == 0) {
    answer.bytes[0] = static_cast<std::uint8_t>(answer.bytes[0] ^ (1 + next(255)));
    return;
  }
  const std::size_t extra = std::min<std::size_t>(1 + next(3), answer.bytes.size() - answer.count);
  const std::size_t at = kind == 1 ? 0 : answer.count;
  std::copy_backward(answer.bytes.begin() + static_cast<std::ptrdiff_t>(at),
                     answer.bytes.begin() + static_cast<std::ptrdiff_t>(answer.count),
                     answer.bytes.begin() + static_cast<std::ptrdiff_t>(answer.count + extra));
  for (std::size_t i = at; i < at + extra; ++i) {
    answer.bytes[i] = static_cast<std::uint8_t>(next(256));
  }
  answer.count += extra;
}

}  // namespace vt63x
