// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_CARD_H
#define VT63X_SIMULATOR_CARD_H

// A simulated contactless card: the states, the anticollision and the selection that every card of
// ISO/IEC 14443-3 type A has. What a selected card understands is for the kinds of cards to say.
//
// States (clause 6.3): idle, ready, active and halt, with starred twins of ready and active for a
// card that was woken out of halt. From every state a frame that is damaged, unexpected or meant
// for another card leads back to where the card was woken, idle or halt, in silence; the next
// request is then answered again. A card answers at once.
//
// No cipher is in here: a card that has accepted a key expects frames that are marked as
// enciphered, and a frame with the wrong mark is a damaged one to it.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "simulator/air_frame.h"
#include "simulator/card_identifier.h"

namespace vt63x {

// What a reader proves itself with to a card: all of it in clear.
struct KeyClaim {
  bool key_b = false;
  std::uint8_t block = 0;
  std::array<std::uint8_t, 6> key{};
  CardIdentifier::Level identifier{};  // of the card that is meant: its first level
  bool enciphered = false;             // sent within an authenticated session
};

// What a selected card makes of a command.
struct CardReply {
  enum class Kind {
    kData,         // `frame`, and the card stays selected
    kAcknowledge,  // the 4 bits 0xA
    kSilence,      // done, and nothing to say
    kRefusal,      // the 4 bits 0x4; the card is no longer selected
    kNotUnderstood,
  };
  Kind kind = Kind::kNotUnderstood;
  AirFrame frame{};
};

// One thread at a time.
class Card {
 public:
  enum class State { kIdle, kReady, kActive, kHalt };

  static constexpr std::uint8_t kAcknowledge = 0xA;
  static constexpr std::uint8_t kRefusal = 0x4;

  virtual ~Card() = default;
  Card(const Card&) = delete;
  Card& operator=(const Card&) = delete;

  const CardIdentifier& identifier() const { return identifier_; }
  State state() const { return state_; }
  bool starred() const { return starred_; }
  // As it is named in options and lists.
  virtual const char* type_name() const = 0;
  // Why the last change of its memory could not be stored, for the user; empty when it was.
  virtual std::string store_error() const { return {}; }

  // The answer to a frame in the air, or silence.
  std::optional<AirFrame> OnFrame(const AirFrame& frame);
  // Whether the claim convinces the card. If it does not, or the card is not selected, it was an
  // unexpected frame.
  bool OnKeyClaim(const KeyClaim& claim);
  // The field is gone: only what is in the memory remains.
  void PowerOff();

 protected:
  // `atqa` is the first byte of the answer to a request without the two highest bits, which say
  // how long the identifier is; the second byte is 0. `sak` is the answer to the selection of the
  // last level; the cascade bit 0x04 must be clear.
  Card(const CardIdentifier& identifier, std::uint8_t atqa, std::uint8_t sak);

  std::array<std::uint8_t, 2> Atqa() const;
  std::uint8_t sak() const { return sak_; }

 private:
  // `data` is a command with its CRC taken off, at least one byte and never a halt.
  virtual CardReply OnCommand(std::span<const std::uint8_t> data);
  virtual bool AcceptsKey(const KeyClaim& claim);
  // Whether frames to the card have to be enciphered.
  virtual bool InSession() const { return false; }
  // The card is no longer selected.
  virtual void OnDeselect() {}

  std::optional<AirFrame> OnShortFrame(std::uint8_t code);
  std::optional<AirFrame> OnAnticollision(const AirFrame& frame);
  std::optional<AirFrame> OnSelect(const AirFrame& frame);
  std::optional<AirFrame> OnActive(const AirFrame& frame);
  std::array<std::uint8_t, 5> LevelWithCheckByte() const;
  void Enter(State state);
  void FallBack();
  void Halt();

  const CardIdentifier identifier_;
  const std::uint8_t atqa_;
  const std::uint8_t sak_;
  State state_ = State::kIdle;
  bool starred_ = false;
  std::size_t level_ = 0;  // while ready: the cascade level to be selected next
};

// "idle", "ready*" and so on.
const char* StateName(Card::State state, bool starred);

}  // namespace vt63x

#endif
