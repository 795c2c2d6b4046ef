// SPDX-License-Identifier: MIT

#include "platform/kernel/timeout_plan.h"

#include <algorithm>

namespace vt63x::kernel {
namespace {

using std::chrono::milliseconds;

// The three forms of read time-outs.
enum class ReadForm { kWhatIsThere, kFirstByte, kAllBytes, kUnsupported };

ReadForm FormOf(const COMMTIMEOUTS& t) {
  const DWORD multiplier = t.ReadTotalTimeoutMultiplier;
  const DWORD constant = t.ReadTotalTimeoutConstant;
  if (t.ReadIntervalTimeout == 0) return ReadForm::kAllBytes;
  if (t.ReadIntervalTimeout != MAXDWORD) return ReadForm::kUnsupported;
  if (multiplier == 0 && constant == 0) return ReadForm::kWhatIsThere;
  if (multiplier == MAXDWORD && constant != 0 && constant != MAXDWORD) return ReadForm::kFirstByte;
  return ReadForm::kUnsupported;
}

// Milliseconds of a total time-out; the sum fits into 64 bits for all arguments.
milliseconds Total(DWORD multiplier, DWORD length, DWORD constant) {
  const std::uint64_t total = std::uint64_t{multiplier} * length + constant;
  const auto longest = static_cast<std::uint64_t>(kLongestLimit.count());
  return milliseconds(static_cast<std::int64_t>(std::min(total, longest)));
}

}  // namespace

bool IsSupported(const COMMTIMEOUTS& timeouts) {
  return FormOf(timeouts) != ReadForm::kUnsupported;
}

TransferPlan PlanRead(const COMMTIMEOUTS& t, DWORD length) {
  const DWORD multiplier = t.ReadTotalTimeoutMultiplier;
  const DWORD constant = t.ReadTotalTimeoutConstant;
  switch (FormOf(t)) {
    case ReadForm::kFirstByte:
      return {std::min<DWORD>(length, 1), milliseconds(constant)};
    case ReadForm::kAllBytes:
      if (multiplier == 0 && constant == 0) return {length, std::nullopt};
      return {length, Total(multiplier, length, constant)};
    case ReadForm::kWhatIsThere:
    case ReadForm::kUnsupported:
      break;
  }
  return {0, milliseconds(0)};
}

TransferPlan PlanWrite(const COMMTIMEOUTS& t, DWORD length) {
  const DWORD multiplier = t.WriteTotalTimeoutMultiplier;
  const DWORD constant = t.WriteTotalTimeoutConstant;
  if (multiplier == 0 && constant == 0) return {length, kDefaultWriteLimit};
  return {length, Total(multiplier, length, constant)};
}

}  // namespace vt63x::kernel
