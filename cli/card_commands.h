// SPDX-License-Identifier: MIT

#ifndef VT63X_CLI_CARD_COMMANDS_H
#define VT63X_CLI_CARD_COMMANDS_H

// `wcf card`: cards in front of the chip. Every command sets the chip up, finds a card and selects
// it; memory commands authenticate before they touch the block.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/exit_code.h"
#include "cli/session.h"

namespace vt63x {

using Bytes = std::vector<std::uint8_t>;

enum class CardAction {
  kScan,          // every card in the field: identifier, ATQA, SAK
  kHalt,          // selects and halts
  kAuthenticate,  // block
  kRead,          // block
  kWrite,         // block, 16 bytes
  kWritePage,     // page, 4 bytes
  kDecrement,     // value block, operand; the result goes to target
  kIncrement,
  kRestore,   // value block to target
  kTransfer,  // whatever the card's transfer buffer holds to the block
};

struct CardOptions {
  CardAction action = CardAction::kScan;
  int block = 0;               // or page, 0 to 255
  Bytes data;                  // of a write
  std::uint32_t operand = 0;   // of decrement and increment
  std::optional<int> target;   // block that takes a value; the block itself if none is given
  std::optional<Bytes> key_a;  // 6 bytes; without any key, the delivery key as key A
  std::optional<Bytes> key_b;
  std::optional<Bytes> identifier;  // 4, 7 or 10 bytes: this card; without, any
  bool json = false;                // an object a line instead of the result lines
};

// Bytes of exactly `count` pairs of hexadecimal digits; nothing for any other text.
std::optional<Bytes> BytesFromHex(const std::string& text, std::size_t count);

// On an open session.
ExitCode RunCardCommand(Session& session, const CardOptions& options);

}  // namespace vt63x

#endif
