// SPDX-License-Identifier: MIT

#include "simulator/access_conditions.h"

namespace vt63x {
namespace {

// Rows by C1 C2 C3.
constexpr std::array<DataConditions, 8> kData = {{
    {kEither, kEither, kEither, kEither},  // 000
    {kEither, kNever, kNever, kEither},    // 001
    {kEither, kNever, kNever, kNever},     // 010
    {kKeyB, kKeyB, kNever, kNever},        // 011
    {kEither, kKeyB, kNever, kNever},      // 100
    {kKeyB, kNever, kNever, kNever},       // 101
    {kEither, kKeyB, kKeyB, kEither},      // 110
    {kNever, kNever, kNever, kNever},      // 111
}};

constexpr std::array<TrailerConditions, 8> kTrailer = {{
    {kKeyA, kKeyA, kNever, kKeyA, kKeyA},       // 000
    {kKeyA, kKeyA, kKeyA, kKeyA, kKeyA},        // 001
    {kNever, kKeyA, kNever, kKeyA, kNever},     // 010
    {kKeyB, kEither, kKeyB, kNever, kKeyB},     // 011
    {kKeyB, kEither, kNever, kNever, kKeyB},    // 100
    {kNever, kEither, kKeyB, kNever, kNever},   // 101
    {kNever, kEither, kNever, kNever, kNever},  // 110
    {kNever, kEither, kNever, kNever, kNever},  // 111
}};

}  // namespace

std::optional<unsigned> ConditionOf(BlockView trailer, unsigned block) {
  const unsigned c1 = trailer[7] >> 4, c2 = trailer[8] & 0x0FU, c3 = trailer[8] >> 4;
  const unsigned not_c1 = trailer[6] & 0x0FU, not_c2 = trailer[6] >> 4, not_c3 = trailer[7] & 0x0FU;
  if ((c1 ^ not_c1) != 0x0F || (c2 ^ not_c2) != 0x0F || (c3 ^ not_c3) != 0x0F) return std::nullopt;
  const auto bit = [block](unsigned bits) { return (bits >> block) & 1; };
  return 4 * bit(c1) + 2 * bit(c2) + bit(c3);
}

const DataConditions& DataConditionsOf(unsigned condition) { return kData[condition % 8]; }

const TrailerConditions& TrailerConditionsOf(unsigned condition) { return kTrailer[condition % 8]; }

}  // namespace vt63x
