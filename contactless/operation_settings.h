// SPDX-License-Identifier: MIT

#ifndef VT63X_CONTACTLESS_OPERATION_SETTINGS_H
#define VT63X_CONTACTLESS_OPERATION_SETTINGS_H

// The settings of OperationControl as tables, to be held against the chip's register list.

#include <cstdint>
#include <span>

#include "frontend/status.h"

namespace vt63x {

// One register access of a setting.
enum class AttributeAccess : std::uint8_t {
  kWrite,   // register <- value
  kMerge,   // read and write: register <- (old & mask) | constant | (value << shift)
  kSwitch,  // change of bits: the bits of `mask` are set when the value is 1, else cleared
};

// Where the value comes from.
enum class AttributeSource : std::uint8_t {
  kNone,  // 0
  kParamA,
  kParamB,
  kBuffer0,
  kBuffer1,
  kBuffer2,
  kBuffer3,
  kSpeedCode,  // the serial interface speed code of param_a
};

struct RegisterAction {
  AttributeAccess access;
  std::uint8_t address;
  std::uint8_t mask;  // kMerge: the bits to keep; kSwitch: the bits to change
  std::uint8_t constant;
  AttributeSource source;
  std::uint8_t shift;
};

struct ByteRange {
  std::uint8_t lowest;
  std::uint8_t highest;
};

// What follows the register actions of a setting.
enum class Sequel : std::uint8_t { kNone, kTypeAModulation, kCrcCalculation };

struct Setting {
  std::uint8_t group;
  std::uint8_t attribute;
  ByteRange param_a;
  ByteRange param_b;
  bool reads_timer_buffer;  // 4 bytes: prescaler low, high, reload low, high
  std::span<const RegisterAction> actions;
  Sequel sequel;
};

// A value of 16 bits or less that can be read back.
struct Reading {
  std::uint8_t group;
  std::uint8_t attribute;
  std::uint8_t high_address;  // read first, into param_b; kNoRegister: param_b becomes 0
  std::uint8_t low_address;   // read second, into param_a
};
inline constexpr std::uint8_t kNoRegister = 0xFF;

// A row of a protocol default table: register <- (old & keep) | set.
struct DefaultRow {
  std::uint8_t address;  // kEndOfDefaults: no row, the end of the table
  std::uint8_t keep;
  std::uint8_t set;
};
inline constexpr std::uint8_t kEndOfDefaults = 0xC3;

// The setting or reading of that group and attribute, null when there is none.
const Setting* FindSetting(std::uint8_t group, std::uint8_t attribute);
const Reading* FindReading(std::uint8_t group, std::uint8_t attribute);

// What becomes of a group and attribute that have no setting or no reading: HFL_NOT_SUPPORTED for
// what exists but works in the other direction only, else HFL_INVALID_PARAMETER.
HFLSTATUS StatusWithoutSetting(std::uint8_t group, std::uint8_t attribute);
HFLSTATUS StatusWithoutReading(std::uint8_t group, std::uint8_t attribute);

// Register values of the serial interface speeds; index 0 to 8.
inline constexpr std::uint8_t kHighestSpeedIndex = 8;
std::uint8_t SpeedCode(std::uint8_t index);

// Ends with the row kEndOfDefaults. Version 0 lacks the registers 0x28 and 0x29.
const DefaultRow* TypeADefaults(std::uint8_t version);

}  // namespace vt63x

#endif
