// SPDX-License-Identifier: MIT

#ifndef VT63X_CONTACTLESS_CARD_MEMORY_H
#define VT63X_CONTACTLESS_CARD_MEMORY_H

// CardMemory speaks the memory commands of Ostrel cards to a selected card, with the CRC that the
// select has left on. A card answers with data, with a 4-bit acknowledge (0xA) or refusal, or not
// at all.

#include <cstdint>

#include "contactless/exchange.h"
#include "frontend/status.h"

namespace vt63x {

struct CardMemoryCore;

// Bits of ostrel_p::answer_flags: the answers that the card may give.
inline constexpr std::uint8_t kAnswerSilence = 0x01;
inline constexpr std::uint8_t kAnswerAcknowledge = 0x02;
inline constexpr std::uint8_t kAnswerData = 0x04;

struct ostrel_p {
  std::uint8_t command;       // CardExchange: 0 for a frame without command and address
  std::uint8_t address;       // block or page
  std::uint8_t* data;         // to send, or 16 bytes for what is read; may be null where nothing is
  std::uint8_t length;        // in: bytes to send, at most 16; out: bytes read, else mostly 0
  std::uint8_t answer_flags;  // set by CardCommand
  CardMemoryCore* self;
};

struct card_memory_members {
  std::uint8_t* trxbuffer;  // 255 bytes of whoever built the stack; valid during one operation
};

struct CardMemoryCore {
  // One frame and its answer. HFL_OVERFLOW above 16 bytes of data and HFL_BUFFER_SIZE for an empty
  // frame, both before anything is sent; HFL_BUFFER_SIZE for more than 16 bytes read or read data
  // without a place to put them; HFL_UNEXPECTED_ANSWER for an answer that `answer_flags` does not
  // allow or a malformed acknowledge; HFL_CARD_REFUSED; HFL_NO_ANSWER unless silence is allowed.
  // `length` is 0 after all of these. Other statuses come from Exchange and leave `length` alone.
  HFLSTATUS (*CardExchange)(ostrel_p*);
  // The command alone, which the card must acknowledge, then the data. `length` is 0 afterwards.
  HFLSTATUS (*CardTwoStepCommand)(ostrel_p*);
  // One of the card commands below; the numbers are the bytes of `data` (any other `length` is
  // HFL_INVALID_PARAMETER). HFL_UNKNOWN_COMMAND, with `length` 0, for everything else.
  //   0x30 read block (16 out)   0x60, 0x61 authenticate with key A, B (10: key, first 4
  //   0xA0 write block (16)                 identifier bytes; `length` is not looked at)
  //   0xA2 write page (4)        0xC0 decrement (4)   0xC2 restore (none; `data` becomes null)
  //   0xB0 transfer (none)       0xC1 increment (4)
  // An authentication without data is HFL_INVALID_PARAMETER.
  HFLSTATUS (*CardCommand)(ostrel_p*);
  card_memory_members* members;
  void* owner;
  ExchangeCore* lower;
};

class CardMemoryInterface {
 public:
  virtual HFLSTATUS CardExchange(ostrel_p* param) = 0;
  virtual HFLSTATUS CardTwoStepCommand(ostrel_p* param) = 0;
  virtual HFLSTATUS CardCommand(ostrel_p* param) = 0;

 protected:
  CardMemoryInterface() = default;
  ~CardMemoryInterface() = default;
  CardMemoryInterface(const CardMemoryInterface&) = delete;
  CardMemoryInterface& operator=(const CardMemoryInterface&) = delete;
};

// Fills `core` for use over `lower` with the exchange buffer `trxbuffer`.
void CardMemoryOpen(CardMemoryCore* core, card_memory_members* members, ExchangeCore* lower,
                    std::uint8_t* trxbuffer);

// CardMemory's way down, Transceive and Authenticate alone: `owner` is the CardMemoryWrapper.
struct ExchangeForwarder : ExchangeCore {
  ExchangeForwarder();
};

class CardMemoryWrapper final : public CardMemoryInterface {
 public:
  // Once, before any operation. `trxbuffer`, 255 bytes, outlives the wrapper.
  void Init(ExchangeInterface* lower_exchange, std::uint8_t* trxbuffer);

  HFLSTATUS CardExchange(ostrel_p* param) override;
  HFLSTATUS CardTwoStepCommand(ostrel_p* param) override;
  HFLSTATUS CardCommand(ostrel_p* param) override;

  ExchangeInterface* lower = nullptr;
  CardMemoryCore core{};
  card_memory_members members{};

 private:
  ExchangeForwarder forwarder_;
};

}  // namespace vt63x

#endif
