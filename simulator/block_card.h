// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_BLOCK_CARD_H
#define VT63X_SIMULATOR_BLOCK_CARD_H

// The block-oriented Ostrel card: sectors of four blocks of 16 bytes, all alike, the last of each
// its trailer with the keys and the access conditions.
//
// A key is accepted for the sector of a block and opens that sector alone, until the next key or
// until the card is no longer selected. What the conditions do not allow, and what makes no sense
// (a block that is not there, a number where there is none, a result that does not fit), is
// refused, and the card is then no longer selected. In detail:
//
//  - Block 0 holds the identifier and is never changed.
//  - Key A reads as zeros, key B too unless it may be read. A key B that may be read opens nothing,
//    though it is accepted: it is data, not a key.
//  - A write to a trailer changes those of its three parts that it may; when it may change none it
//    is refused.
//  - A trailer whose condition bits and their inverted copies disagree locks its sector for good:
//    no key is accepted.
//  - Increment, decrement and restore load a number register, transfer stores it; it is empty again
//    once the card is no longer selected. The address byte of a number travels with it.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "simulator/access_conditions.h"
#include "simulator/card.h"
#include "simulator/card_image.h"
#include "simulator/value_block.h"

namespace vt63x {

inline constexpr std::array<std::uint8_t, 6> kDefaultKey = {0x3C, 0x9A, 0x5E, 0x71, 0xB2, 0xD4};

class BlockCard final : public Card {
 public:
  enum class Size { k64Blocks, k256Blocks };

  // A card as it is delivered, in the file of that name or, when it is empty, without one. Null and
  // a line for the user in `error` when the file is not to be had or not this card's.
  static std::unique_ptr<BlockCard> Make(const CardIdentifier& identifier, Size size,
                                         const std::string& file, std::string& error);

  const char* type_name() const override;
  // As they are, keys included.
  std::span<const std::uint8_t> memory() const { return image_.bytes(); }
  std::string store_error() const override { return image_.store_error(); }

 private:
  using Data = std::span<const std::uint8_t>;
  struct Command;
  static const Command kCommands[];

  BlockCard(const CardIdentifier& identifier, Size size, std::vector<std::uint8_t> fresh);
  std::vector<std::uint8_t> Delivered() const;

  CardReply OnCommand(Data data) override;
  bool AcceptsKey(const KeyClaim& claim) override;
  bool InSession() const override { return key_ != kNever; }
  void OnDeselect() override;

  CardReply Read(std::uint8_t block);
  CardReply BeginWrite(std::uint8_t block);
  CardReply FinishWrite(Data data);
  CardReply BeginIncrement(std::uint8_t block);
  CardReply FinishIncrement(Data data);
  CardReply BeginDecrement(std::uint8_t block);
  CardReply FinishDecrement(Data data);
  CardReply BeginRestore(std::uint8_t block);
  CardReply FinishRestore(Data data);
  CardReply Transfer(std::uint8_t block);

  CardReply ReadTrailer(BlockView trailer, const TrailerConditions& conditions) const;
  CardReply WriteTrailer(Data data);
  CardReply BeginNumber(std::uint8_t block, KeySet DataConditions::*condition,
                        CardReply (BlockCard::*finish)(Data));
  CardReply LoadNumber(std::optional<std::int32_t> value);

  BlockView Block(std::size_t block) const;
  BlockView TrailerOf(std::size_t block) const { return Block(block | 3U); }
  // Whether the key accepted opens the sector of this block.
  bool IsOpen(std::uint8_t block) const;
  bool MayUse(std::uint8_t block, KeySet DataConditions::*condition) const;
  TrailerConditions OpenTrailer(std::uint8_t block) const;
  KeySet UsableKey(std::uint8_t block) const;

  const Size size_;
  CardImage image_;
  KeySet key_ = kNever;  // the key accepted
  unsigned sector_ = 0;  // that it opens
  std::optional<ValueBlock> number_;
  CardReply (BlockCard::*second_step_)(Data) = nullptr;
  std::uint8_t step_block_ = 0;  // the block of the first step
};

}  // namespace vt63x

#endif
