// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_FIELD_H
#define VT63X_SIMULATOR_FIELD_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulator/air_faults.h"
#include "simulator/air_frame.h"
#include "simulator/card.h"

namespace vt63x {

// What the chip's antenna receives when cards answer.
struct Reception {
  // Where cards send different bits the bit is 1: both halves of it carry the subcarrier. Of
  // answers of different length the longer one goes on alone.
  AirFrame frame;
  // The first bit in which cards differ.
  std::optional<std::size_t> collision;
};

// The cards in front of the antenna. Frames reach all of them at once. The field itself is
// switched by the chip; without it nothing reaches the cards and nobody answers.
//
// One thread at a time.
class Field {
 public:
  static constexpr std::size_t kMaxCards = 16;

  // Puts a card in, which is not null. Null, and in `error` a line without full stop, when a card
  // with its identifier is there or there is no room. The card stays in place in memory until it is
  // taken out.
  Card* Add(std::unique_ptr<Card> card, std::string& error);
  // For callers who know that it fits.
  Card* Add(std::unique_ptr<Card> card);
  // Takes a card out; null when it is not there.
  std::unique_ptr<Card> Remove(const CardIdentifier& identifier);
  const std::vector<std::unique_ptr<Card>>& cards() const { return cards_; }

  AirFaults& faults() { return faults_; }

  bool is_on() const { return is_on_; }
  // Switched off, the cards forget everything but their memory.
  void Switch(bool on);

  std::optional<Reception> Exchange(const AirFrame& frame);
  // Whether a card has accepted the key.
  bool Claim(const KeyClaim& claim);

 private:
  std::vector<std::unique_ptr<Card>> cards_;
  AirFaults faults_;
  bool is_on_ = false;
};

}  // namespace vt63x

#endif
