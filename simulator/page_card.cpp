// SPDX-License-Identifier: MIT

#include "simulator/page_card.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vt63x {

PageCard::PageCard(const CardIdentifier& identifier, CardImage image)
    : Card(identifier, 0x10, 0x00), image_(std::move(image)) {}

std::unique_ptr<PageCard> PageCard::Make(const CardIdentifier& identifier, const std::string& file,
                                         std::string& error) {
  std::vector<std::uint8_t> fresh(kPageCount * kPageSize);
  std::ranges::copy(identifier.bytes(), fresh.begin());
  std::optional<CardImage> image(CardImage{fresh});
  if (!file.empty()) {
    image = CardImage::Open(file, std::move(fresh), kFirstFreePage * kPageSize, error);
  }
  if (!image) return nullptr;
  return std::unique_ptr<PageCard>(new PageCard(identifier, *std::move(image)));
}

CardReply PageCard::OnCommand(std::span<const std::uint8_t> data) {
  constexpr std::uint8_t kRead = 0x30;
  constexpr std::uint8_t kPageWrite = 0xA2;
  const bool is_read = data[0] == kRead && data.size() == 2;
  const bool is_write = data[0] == kPageWrite && data.size() == 2 + kPageSize;
  if (!is_read && !is_write) return {};
  const std::size_t page = data[1];
  if (page >= kPageCount) return {CardReply::Kind::kRefusal};
  if (is_read) return Read(page);
  const bool written = page >= kFirstFreePage && image_.Change(page * kPageSize, data.subspan(2));
  return {written ? CardReply::Kind::kAcknowledge : CardReply::Kind::kRefusal};
}

CardReply PageCard::Read(std::size_t page) const {
  std::array<std::uint8_t, 4 * kPageSize> pages{};
  const std::span<const std::uint8_t> all = image_.bytes();
  for (std::size_t index = 0; index < pages.size(); ++index) {
    pages[index] = all[(page * kPageSize + index) % all.size()];
  }
  return {CardReply::Kind::kData, AirFrame::WithCrcA(pages)};
}

}  // namespace vt63x
