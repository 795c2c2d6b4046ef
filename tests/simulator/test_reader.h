// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_SIMULATOR_TEST_READER_H
#define VT63X_TESTS_SIMULATOR_TEST_READER_H

// A small reader that drives the simulated chip by its registers, written for these tests alone.

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "simulator/card_options.h"
#include "simulator/chip.h"

namespace vt63x {

using Bytes = std::vector<std::uint8_t>;
using Key = std::array<std::uint8_t, 6>;

inline constexpr Key kKey = {0x3C, 0x9A, 0x5E, 0x71, 0xB2, 0xD4};  // of a card as delivered

struct ReaderAnswer {
  bool timeout = false;  // and nothing else
  Bytes bytes;
  unsigned last_bits = 0;
  std::uint8_t error = 0;

  bool operator==(const ReaderAnswer&) const = default;
  bool Is(const Bytes& expected) const { return *this == ReaderAnswer{false, expected}; }
  // A frame of four bits, where a CRC was expected.
  bool IsNibble(std::uint8_t value) const { return *this == ReaderAnswer{false, {value}, 4, 0x04}; }
};

// `Registers` can Read and Write: the chip itself or a line that leads to one.
template <typename Registers>
class ReaderOf {
 public:
  explicit ReaderOf(Registers& registers) : chip(registers) { SetUp(); }

  // Field on, receiver on, and a timer of about a millisecond that starts by itself.
  void SetUp() {
    for (const auto& [address, value] : std::initializer_list<std::pair<int, int>>{
             {0x14, 0x83}, {0x01, 0x00}, {0x2A, 0x80}, {0x2B, 0x43}, {0x2C, 0x00}, {0x2D, 0x64}}) {
      chip.Write(static_cast<std::uint8_t>(address), static_cast<std::uint8_t>(value));
    }
  }

  void Crc(bool on) {
    chip.Write(0x12, on ? 0x80 : 0x00);
    chip.Write(0x13, on ? 0x80 : 0x00);
  }

  ReaderAnswer Transceive(const Bytes& data, std::uint8_t framing = 0) {
    chip.Write(0x01, 0x0C);
    Load(data);
    chip.Write(0x0D, static_cast<std::uint8_t>(framing | 0x80));
    return Wait(0x21);
  }

  // Empties FIFO and requests, then fills the FIFO.
  void Load(const Bytes& data) {
    chip.Write(0x04, 0x7F);
    chip.Write(0x0A, 0x80);
    for (const std::uint8_t byte : data) chip.Write(0x09, byte);
  }

  // Until one of the requests is there; with the timer running one of them always is in the end.
  ReaderAnswer Wait(std::uint8_t requests) {
    constexpr int kEnough = 100'000;
    int polls = 0;
    while ((chip.Read(0x04) & requests) == 0 && polls < kEnough) ++polls;
    EXPECT_LT(polls, kEnough);
    ReaderAnswer answer;
    answer.timeout = (chip.Read(0x04) & 0x01) != 0;
    if (answer.timeout) return answer;
    const unsigned level = chip.Read(0x0A);
    answer.last_bits = chip.Read(0x0C) & 0x07U;
    answer.error = chip.Read(0x06);
    for (unsigned index = 0; index < level; ++index) answer.bytes.push_back(chip.Read(0x09));
    return answer;
  }

  ReaderAnswer Request(std::uint8_t code = 0x26) {
    chip.Write(0x08, 0x00);
    Crc(false);
    chip.Write(0x0E, 0x80);
    return Transceive({code}, 0x07);
  }

  // The four bytes of one level, with every collision decided in favour of 1; nothing when no card
  // answers or the check byte is wrong.
  std::optional<CardIdentifier::Level> Resolve(std::uint8_t select_code) {
    Crc(false);
    chip.Write(0x0E, 0x00);
    AirFrame known;
    for (int pass = 0; pass < 40; ++pass) {
      const std::size_t rest = known.bit_count % 8;
      const auto nvb = static_cast<std::uint8_t>(0x20 + known.bit_count / 8 * 16 + rest);
      Bytes frame = {select_code, nvb};
      frame.insert(frame.end(), known.Bytes().begin(), known.Bytes().end());
      const ReaderAnswer answer = Transceive(frame, static_cast<std::uint8_t>(rest << 4 | rest));
      if (answer.timeout || (answer.error & ~0x08) != 0) return std::nullopt;
      const AirFrame received = AirFrame::OfBytes(answer.bytes);
      const std::size_t missing = answer.last_bits == 0 ? 0 : 8 - answer.last_bits;
      for (std::size_t bit = rest; bit + missing < received.bit_count; ++bit) {
        known.AppendBit(received.Bit(bit));
      }
      if (answer.error != 0) continue;
      const auto& bytes = known.bytes;
      if ((bytes[0] ^ bytes[1] ^ bytes[2] ^ bytes[3]) != bytes[4]) return std::nullopt;
      return CardIdentifier::Level{bytes[0], bytes[1], bytes[2], bytes[3]};
    }
    return std::nullopt;
  }

  // The SAK.
  std::optional<std::uint8_t> Select(std::uint8_t select_code, const CardIdentifier::Level& level) {
    Crc(true);
    const std::uint8_t check = level[0] ^ level[1] ^ level[2] ^ level[3];
    const ReaderAnswer answer =
        Transceive({select_code, 0x70, level[0], level[1], level[2], level[3], check});
    if (answer.timeout || answer.error != 0 || answer.bytes.size() != 1) return std::nullopt;
    return answer.bytes[0];
  }

  // All levels of one card, from the request on: the bytes of its levels one after the other.
  std::optional<Bytes> Activate(std::uint8_t request = 0x26) {
    if (Request(request).timeout) return std::nullopt;
    Bytes levels;
    for (const std::uint8_t code : std::initializer_list<std::uint8_t>{0x93, 0x95, 0x97}) {
      const auto level = Resolve(code);
      if (!level) return std::nullopt;
      levels.insert(levels.end(), level->begin(), level->end());
      const auto sak = Select(code, *level);
      if (!sak) return std::nullopt;
      if ((*sak & 0x04) == 0) return levels;
    }
    return std::nullopt;
  }

  bool Halt() { return Transceive({0x50, 0x00}).timeout; }

  // Whether the session is on afterwards.
  bool Authenticate(std::uint8_t command, std::uint8_t block, const Key& key, const Bytes& first) {
    Bytes data = {command, block};
    data.insert(data.end(), key.begin(), key.end());
    data.insert(data.end(), first.begin(), first.begin() + 4);
    chip.Write(0x01, 0x00);
    Load(data);
    chip.Write(0x01, 0x0E);
    return !Wait(0x11).timeout && (chip.Read(0x08) & 0x08) != 0;
  }

  Registers& chip;
};

using TestReader = ReaderOf<Chip>;

// Accesses: "2A=80" writes, "04?21" reads and expects 21, "07?08/18" expects 8 of the bits 18.
inline void Play(Chip& chip, const std::string& script) {
  std::istringstream words(script);
  for (std::string word; words >> word;) {
    const auto byte_at = [&](std::size_t at) {
      return static_cast<std::uint8_t>(std::stoul(word.substr(at, 2), nullptr, 16));
    };
    if (word[2] == '=') {
      chip.Write(byte_at(0), byte_at(3));
    } else {
      const int mask = word.size() > 5 ? byte_at(6) : 0xFF;
      EXPECT_EQ(chip.Read(byte_at(0)) & mask, byte_at(3)) << word << " in " << script;
    }
  }
}

// A card named as in options, which must be right.
inline std::unique_ptr<Card> CardNamed(const std::string& text) {
  std::string error;
  const auto option = ParseCardOption(text, error);
  return option ? MakeCard(*option, error) : nullptr;
}

// A chip with cards in its field, and a reader at its registers.
struct ReaderBench {
  explicit ReaderBench(const std::vector<std::string>& cards = {}) {
    for (const std::string& card : cards) field.Add(CardNamed(card));
  }
  void SetAirFault(const std::string& text) {
    std::string error;
    field.faults().Set(*ParseAirFault(text, error));
  }

  Chip chip;
  Field& field = chip.field();
  TestReader reader{chip};
};

}  // namespace vt63x

#endif
