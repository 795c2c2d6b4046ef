// SPDX-License-Identifier: MIT

#include "simulator/field.h"

#include <algorithm>
#include <utility>

namespace vt63x {
namespace {

// Lays another answer over what is received already.
void Superimpose(const AirFrame& answer, Reception& reception) {
  AirFrame& frame = reception.frame;
  const std::size_t common = std::min(frame.bit_count, answer.bit_count);
  std::size_t differing = 0;
  while (differing < common && frame.Bit(differing) == answer.Bit(differing)) ++differing;
  if (differing < common) {
    reception.collision = std::min(reception.collision.value_or(differing), differing);
  }
  AirFrame merged;
  for (std::size_t bit = 0; bit < std::max(frame.bit_count, answer.bit_count); ++bit) {
    const bool one = bit < frame.bit_count && frame.Bit(bit);
    merged.AppendBit(one || (bit < answer.bit_count && answer.Bit(bit)));
  }
  merged.parity_ok = frame.parity_ok && answer.parity_ok;
  merged.has_crc = frame.has_crc || answer.has_crc;
  merged.enciphered = frame.enciphered || answer.enciphered;
  frame = merged;
}

}  // namespace

Card* Field::Add(std::unique_ptr<Card> card, std::string& error) {
  const auto same = [&](const auto& other) { return other->identifier() == card->identifier(); };
  if (std::ranges::any_of(cards_, same)) {
    error = "the card " + card->identifier().Text() + " is in the field already";
    return nullptr;
  }
  if (cards_.size() == kMaxCards) {
    error =
        "there are " + std::to_string(kMaxCards) + " cards in the field, which are all it takes";
    return nullptr;
  }
  return cards_.emplace_back(std::move(card)).get();
}

Card* Field::Add(std::unique_ptr<Card> card) {
  std::string ignored;
  return Add(std::move(card), ignored);
}

std::unique_ptr<Card> Field::Remove(const CardIdentifier& identifier) {
  const auto found = std::ranges::find_if(
      cards_, [&](const auto& card) { return card->identifier() == identifier; });
  if (found == cards_.end()) return nullptr;
  std::unique_ptr<Card> card = std::move(*found);
  cards_.erase(found);
  card->PowerOff();
  return card;
}

void Field::Switch(bool on) {
  if (is_on_ && !on) {
    for (const auto& card : cards_) card->PowerOff();
  }
  is_on_ = on;
}

std::optional<Reception> Field::Exchange(const AirFrame& frame) {
  std::optional<Reception> reception;
  if (!is_on_) return reception;
  for (const auto& card : cards_) {
    const auto answer = card->OnFrame(frame);
    if (!answer) continue;
    if (reception) {
      Superimpose(*answer, *reception);
    } else {
      reception = Reception{*answer, std::nullopt};
    }
  }
  if (reception && !faults_.Spoil(reception->frame)) reception.reset();
  if (reception && reception->collision >= reception->frame.bit_count) {
    reception->collision.reset();  // in a part that did not arrive
  }
  return reception;
}

bool Field::Claim(const KeyClaim& claim) {
  if (!is_on_) return false;
  bool accepted = false;
  for (const auto& card : cards_) accepted = card->OnKeyClaim(claim) || accepted;
  return accepted && faults_.Pass();
}

}  // namespace vt63x
