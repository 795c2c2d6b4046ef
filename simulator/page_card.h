// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_PAGE_CARD_H
#define VT63X_SIMULATOR_PAGE_CARD_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "simulator/card.h"
#include "simulator/card_image.h"

namespace vt63x {

// The page-oriented Ostrel card: 64 pages of 4 bytes, open to everybody. Pages 0 to 2 hold the
// identifier and zeros behind it and are never changed. A read gives four pages, with page 0 behind
// the last; a page that is not there or not to be changed is refused, and the card is then no
// longer selected.
class PageCard final : public Card {
 public:
  static constexpr std::size_t kPageSize = 4;
  static constexpr std::size_t kPageCount = 64;
  static constexpr std::size_t kFirstFreePage = 3;

  // A card as it is delivered, in the file of that name or, when it is empty, without one. Null and
  // a line for the user in `error` when the file is not to be had or not this card's.
  static std::unique_ptr<PageCard> Make(const CardIdentifier& identifier, const std::string& file,
                                        std::string& error);

  const char* type_name() const override { return "ostrel-page"; }
  std::span<const std::uint8_t> memory() const { return image_.bytes(); }
  std::string store_error() const override { return image_.store_error(); }

 private:
  PageCard(const CardIdentifier& identifier, CardImage image);

  CardReply OnCommand(std::span<const std::uint8_t> data) override;
  CardReply Read(std::size_t page) const;

  CardImage image_;
};

// A card that can be found and selected and understands nothing else.
class PlainCard final : public Card {
 public:
  explicit PlainCard(const CardIdentifier& identifier) : Card(identifier, 0x08, 0x00) {}

  const char* type_name() const override { return "plain"; }
};

}  // namespace vt63x

#endif
