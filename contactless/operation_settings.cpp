// SPDX-License-Identifier: MIT

#include "contactless/operation_settings.h"

#include <algorithm>
#include <iterator>

#include "frontend/chip_registers.h"

namespace vt63x {
namespace {

constexpr ByteRange kAny{0x00, 0xFF};
constexpr ByteRange kOnOff{0, 1};

// The bits that stay when those of `changed` are replaced.
constexpr std::uint8_t Keep(std::uint8_t changed) { return static_cast<std::uint8_t>(~changed); }

// Transmit and receive: CRC on, the speed in bits 4 to 6, the others 0 but for bit 0x08, which
// stays.
constexpr RegisterAction kTypeASpeeds[] = {
    {AttributeAccess::kMerge, reg::kTransmitMode, 0x08, reg::kCrcOn, AttributeSource::kParamA, 4},
    {AttributeAccess::kMerge, reg::kReceiveMode, 0x08, reg::kCrcOn, AttributeSource::kParamB, 4}};
constexpr RegisterAction kSerialSpeed[] = {
    {AttributeAccess::kWrite, reg::kSerialSpeed, 0, 0, AttributeSource::kSpeedCode, 0}};
constexpr RegisterAction kRouting[] = {
    {AttributeAccess::kMerge, 0x16, 0xC0, 0x0D, AttributeSource::kNone, 0},
    {AttributeAccess::kMerge, 0x17, 0x3F, 0x40, AttributeSource::kNone, 0},
    {AttributeAccess::kWrite, 0x31, 0, 0x18, AttributeSource::kNone, 0},
    {AttributeAccess::kSwitch, reg::kReceiveMode, 0x04, 0, AttributeSource::kNone, 0}};

constexpr RegisterAction kTimerSetUp[] = {
    {AttributeAccess::kSwitch, reg::kTimerMode, reg::kTimerAutomaticStart, 0,
     AttributeSource::kParamA, 0},
    {AttributeAccess::kSwitch, reg::kTimerMode, reg::kTimerRestart, 0, AttributeSource::kParamB, 0},
    {AttributeAccess::kWrite, reg::kPrescalerLow, 0, 0, AttributeSource::kBuffer0, 0},
    {AttributeAccess::kMerge, reg::kTimerMode, Keep(reg::kPrescalerHighMask), 0,
     AttributeSource::kBuffer1, 0},
    {AttributeAccess::kWrite, reg::kReloadLow, 0, 0, AttributeSource::kBuffer2, 0},
    {AttributeAccess::kWrite, reg::kReloadHigh, 0, 0, AttributeSource::kBuffer3, 0}};
constexpr RegisterAction kTimerStart[] = {{AttributeAccess::kSwitch, reg::kTimerMode,
                                           reg::kTimerAutomaticStart, 0, AttributeSource::kParamA,
                                           0}};
constexpr RegisterAction kTimerRestart[] = {{AttributeAccess::kSwitch, reg::kTimerMode,
                                             reg::kTimerRestart, 0, AttributeSource::kParamA, 0}};
constexpr RegisterAction kTimerGating[] = {{AttributeAccess::kMerge, reg::kTimerMode,
                                            Keep(reg::kTimerGatingMask), 0,
                                            AttributeSource::kParamA, 5}};
constexpr RegisterAction kTimerPrescaler[] = {
    {AttributeAccess::kWrite, reg::kPrescalerLow, 0, 0, AttributeSource::kParamA, 0},
    {AttributeAccess::kMerge, reg::kTimerMode, Keep(reg::kPrescalerHighMask), 0,
     AttributeSource::kParamB, 0}};
constexpr RegisterAction kTimerReload[] = {
    {AttributeAccess::kWrite, reg::kReloadLow, 0, 0, AttributeSource::kParamA, 0},
    {AttributeAccess::kWrite, reg::kReloadHigh, 0, 0, AttributeSource::kParamB, 0}};

constexpr RegisterAction kCrcPreset[] = {{AttributeAccess::kMerge, reg::kMode,
                                          Keep(reg::kCrcPresetMask), 0, AttributeSource::kParamA,
                                          0}};
constexpr RegisterAction kCrcBitOrder[] = {
    {AttributeAccess::kSwitch, reg::kMode, reg::kCrcHighestFirst, 0, AttributeSource::kParamA, 0}};

constexpr Setting kSettings[] = {
    {1, 3, kOnOff, kOnOff, false, kTypeASpeeds, Sequel::kTypeAModulation},
    {2, 1, {0, kHighestSpeedIndex}, kAny, false, kSerialSpeed, Sequel::kNone},
    {5, 0x11, {0, 0}, {0x11, 0x11}, false, kRouting, Sequel::kNone},
    {6, 0, kOnOff, kOnOff, true, kTimerSetUp, Sequel::kNone},
    {6, 1, kOnOff, kAny, false, kTimerStart, Sequel::kNone},
    {6, 2, kOnOff, kAny, false, kTimerRestart, Sequel::kNone},
    {6, 3, {0, 3}, kAny, false, kTimerGating, Sequel::kNone},
    {6, 4, kAny, {0, 15}, false, kTimerPrescaler, Sequel::kNone},
    {6, 5, kAny, kAny, false, kTimerReload, Sequel::kNone},
    {7, 0, {0, 3}, kAny, false, kCrcPreset, Sequel::kNone},
    {7, 2, kAny, kAny, false, kCrcBitOrder, Sequel::kNone},
    {7, 3, {0, 64}, kAny, false, {}, Sequel::kCrcCalculation},
};

constexpr Reading kReadings[] = {
    {0, 0, kNoRegister, reg::kVersion},
    {6, 6, reg::kCounterHigh, reg::kCounterLow},
    {7, 1, reg::kCrcHigh, reg::kCrcLow},
};

struct Attribute {
  std::uint8_t group;
  std::uint8_t attribute;
};

constexpr Attribute kReadOnly[] = {{6, 6}, {7, 1}};
constexpr Attribute kWriteOnly[] = {{1, 3}, {2, 1}, {5, 0x11}, {6, 0}, {6, 1}, {6, 2},
                                    {6, 3}, {6, 4}, {6, 5},    {7, 0}, {7, 3}};

constexpr std::uint8_t kIdentityGroup = 0;

constexpr std::uint8_t kSpeedCodes[] = {0xEB, 0xCB, 0xAB, 0x9A, 0x79, 0x5A, 0x3A, 0x1C, 0x14};
static_assert(std::size(kSpeedCodes) == kHighestSpeedIndex + 1);

constexpr DefaultRow kDefaultsVersion0[] = {
    {0x15, 0xFF, 0x40},    {0x18, 0x00, 0x55}, {reg::kModulationWidth, 0x00, 0x26},
    {0x19, 0x00, 0x4D},    {0x26, 0x00, 0x59}, {0x27, 0x00, 0xF4},
    {kEndOfDefaults, 0, 0}};
constexpr DefaultRow kDefaults[] = {
    {0x15, 0xFF, 0x40}, {0x18, 0x00, 0x55}, {reg::kModulationWidth, 0x00, 0x26},
    {0x19, 0x00, 0x4D}, {0x26, 0x00, 0x59}, {0x27, 0x00, 0xF4},
    {0x28, 0x00, 0x3F}, {0x29, 0x00, 0x11}, {kEndOfDefaults, 0, 0}};

template <typename Row, std::size_t n>
const Row* Find(const Row (&rows)[n], std::uint8_t group, std::uint8_t attribute) {
  const Row* const row = std::find_if(
      rows, rows + n, [=](const Row& r) { return r.group == group && r.attribute == attribute; });
  return row == rows + n ? nullptr : row;
}

}  // namespace

const Setting* FindSetting(std::uint8_t group, std::uint8_t attribute) {
  return Find(kSettings, group, attribute);
}

const Reading* FindReading(std::uint8_t group, std::uint8_t attribute) {
  return Find(kReadings, group, attribute);
}

HFLSTATUS StatusWithoutSetting(std::uint8_t group, std::uint8_t attribute) {
  const bool read_only = group == kIdentityGroup || Find(kReadOnly, group, attribute) != nullptr;
  return read_only ? HFL_NOT_SUPPORTED : HFL_INVALID_PARAMETER;
}

HFLSTATUS StatusWithoutReading(std::uint8_t group, std::uint8_t attribute) {
  const bool write_only = Find(kWriteOnly, group, attribute) != nullptr;
  return write_only ? HFL_NOT_SUPPORTED : HFL_INVALID_PARAMETER;
}

std::uint8_t SpeedCode(std::uint8_t index) { return kSpeedCodes[index]; }

const DefaultRow* TypeADefaults(std::uint8_t version) {
  return version == 0 ? kDefaultsVersion0 : kDefaults;
}

}  // namespace vt63x
