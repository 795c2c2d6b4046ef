// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_CARD_READER_H
#define VT63X_SHELL_CARD_READER_H

// A card in front of the chip, driven one operation at a time: what stands behind the buttons of
// the card reader dialog and behind `wcf card`. Chip set-up and timer values live here.
//
// Each operation sets the chip's timer, runs, and gives one result line. Each takes
// AppState::stack_lock for its accesses to the chip and not while it gives its line.

#include <cstdint>
#include <functional>

#include "frontend/status.h"
#include "shell/state/app_state.h"

namespace vt63x {

inline constexpr std::uint8_t REQUEST_REQA = 0x26;  // ISO/IEC 14443-3, 6.4.1: cards in idle
inline constexpr std::uint8_t REQUEST_WUPA = 0x52;  // and in halt

// The key of a card as it is delivered, in hexadecimal.
inline constexpr char DEFAULT_KEY_TEXT[] = "3C9A5E71B2D4";

class CardReader {
 public:
  // Where the reader reports; both stay usable as long as it does.
  struct Output {
    std::function<void(const char* line)> line;           // a result, without line end
    std::function<void(HFLSTATUS status)> set_up_failed;  // a step of SetUp
    std::function<void(HFLSTATUS status)> timer_failed;  // before an operation; it has its line too
  };

  CardReader(const action_param* action, Output output);

  // Resets the chip and prepares it for type A at 106 kbps. A host that is not at 9600 bps goes
  // there with the reset and both then to 115200 bps. Goes on after a failing step; the first such
  // status is the result.
  HFLSTATUS SetUp();

  HFLSTATUS Request(std::uint8_t request_code);
  // All cascade levels; fills uid, sak and bit_count.
  HFLSTATUS AnticollisionSelect();
  HFLSTATUS Halt();
  // `command` 0x60 for key A, 0x61 for key B; `key` is 6 bytes. Authenticates with the first four
  // bytes of uid.
  HFLSTATUS Authenticate(std::uint8_t command, const std::uint8_t* key);
  // 16 bytes of the block. Where a read fails, `data` holds the four bytes that set the timer and
  // zeros.
  HFLSTATUS Read(std::uint8_t* data);
  HFLSTATUS Write(const std::uint8_t* data);      // 16 bytes
  HFLSTATUS WritePage(const std::uint8_t* data);  // 4 bytes
  // `command` 0xC0 decrement, 0xC1 increment, 0xC2 restore, 0xB0 transfer; `operand` counts for
  // the first two.
  HFLSTATUS Value(std::uint8_t command, std::uint32_t operand);

  std::uint8_t atqa[2] = {};
  std::uint8_t sak = 0;
  std::uint8_t uid[12] = {};   // 4 bytes for each cascade level, cascade tags in place
  std::uint8_t bit_count = 0;  // 32 for each level of uid; 0 when none was selected
  std::uint8_t collision = 0;  // bit 0x01: the last anticollision met one
  std::uint8_t block = 0;      // block or page that the memory operations address

 private:
  void SetTimer(std::uint8_t* buffer, std::uint8_t reload);
  void SetTimer(std::uint8_t reload);
  HFLSTATUS WriteData(const char* name, std::uint8_t command, const std::uint8_t* data,
                      std::uint8_t length);
  HFLSTATUS CardCommand(std::uint8_t command, std::uint8_t* data, std::uint8_t length);
  void LogSelection(HFLSTATUS status);

  const action_param* action_;
  Output output_;
};

// The bytes of the identifier itself, without cascade tags: 4, 7 or 10 by a bit count of 32, 64 or
// 96, none for any other. `identifier` has room for 10.
int IdentifierBytes(const std::uint8_t* uid, std::uint8_t bit_count, std::uint8_t* identifier);

}  // namespace vt63x

#endif
