// SPDX-License-Identifier: MIT

#include "simulator/air_faults.h"

#include <algorithm>
#include <iterator>

namespace vt63x {
namespace {

struct AirFaultName {
  std::string_view name;
  AirFaultKind kind;
};

constexpr AirFaultName kNames[] = {
    {"lost", AirFaultKind::kLost},
    {"short", AirFaultKind::kShort},
    {"crc", AirFaultKind::kCrc},
    {"parity", AirFaultKind::kParity},
};

// What is left of it; perhaps nothing.
void CutInHalf(AirFrame& answer) {
  const std::size_t bytes = answer.ByteCount();
  answer.Truncate(bytes > 1 ? bytes / 2 * 8 : answer.bit_count / 2);
}

}  // namespace

std::optional<AirFault> ParseAirFault(std::string_view text, std::string& error) {
  std::string_view name = text;
  const std::optional<std::string_view> range = CutAt(name, '@');
  const auto* const row = std::ranges::find(kNames, name, &AirFaultName::name);
  if (row == std::end(kNames)) {
    error = "unknown fault in the air " + Quoted(name) + "; known are";
    for (const AirFaultName& known : kNames) error.append(1, ' ').append(known.name);
    return std::nullopt;
  }
  AirFault fault{row->kind, {}};
  if (!ParseFaultRange(range, "answer", fault.answers, error)) return std::nullopt;
  return fault;
}

bool AirFaults::Spoil(AirFrame& answer) {
  bool lost = false;
  for (Counted& counted : faults_) {
    if (!counted.ConcernsNext()) continue;
    switch (counted.fault.kind) {
      case AirFaultKind::kLost:
        lost = true;
        break;
      case AirFaultKind::kShort:
        CutInHalf(answer);
        break;
      case AirFaultKind::kCrc:
        if (answer.has_crc) answer.bytes[answer.ByteCount() - 1] ^= 0x01;
        break;
      case AirFaultKind::kParity:
        answer.parity_ok = false;
        break;
    }
  }
  return !lost && answer.bit_count > 0;
}

bool AirFaults::Pass() {
  bool intact = true;
  for (Counted& counted : faults_) intact = !counted.ConcernsNext() && intact;
  return intact;
}

}  // namespace vt63x
