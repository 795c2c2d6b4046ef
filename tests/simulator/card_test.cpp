// SPDX-License-Identifier: MIT

#include "simulator/card.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

#include "simulator/air_frame.h"
#include "simulator/crc16.h"
#include "test_reader.h"

namespace vt63x {
namespace {

using State = Card::State;

AirFrame Short(std::uint8_t code) { return AirFrame::OfBits(code, 7); }
AirFrame WithCrc(const Bytes& bytes) { return AirFrame::WithCrcA(bytes); }

AirFrame WrongParity(AirFrame frame) {
  frame.parity_ok = false;
  return frame;
}
AirFrame Enciphered(AirFrame frame) {
  frame.enciphered = true;
  return frame;
}

// What a reader may send to the card 01020304, whose check byte is 04.
std::vector<std::pair<const char*, AirFrame>> Frames() {
  return {
      {"REQA", Short(0x26)},
      {"WUPA", Short(0x52)},
      {"request of another kind", Short(0x35)},
      {"REQA with wrong parity", WrongParity(Short(0x26))},
      {"anticollision", AirFrame::OfBytes(Bytes{0x93, 0x20})},
      {"anticollision of another card", AirFrame::OfBytes(Bytes{0x93, 0x30, 0x02})},
      {"select", WithCrc({0x93, 0x70, 1, 2, 3, 4, 4})},
      {"select of another card", WithCrc({0x93, 0x70, 1, 2, 3, 5, 5})},
      {"select with a wrong check byte", WithCrc({0x93, 0x70, 1, 2, 3, 4, 5})},
      {"select without CRC", AirFrame::OfBytes(Bytes{0x93, 0x70, 1, 2, 3, 4, 4, 0, 0})},
      {"select of the next level", WithCrc({0x95, 0x70, 1, 2, 3, 4, 4})},
      {"halt", WithCrc({0x50, 0x00})},
      {"halt with wrong parity", WrongParity(WithCrc({0x50, 0x00}))},
      {"halt enciphered", Enciphered(WithCrc({0x50, 0x00}))},
      {"unknown command", WithCrc({0x77})},
      {"nothing but a CRC", WithCrc({})},
  };
}

// Brings a new card where it is wanted, starred or not.
void Lead(Card& card, State state, bool starred) {
  const Bytes select = {0x93, 0x70, 1, 2, 3, 4, 4};
  if (starred || state == State::kHalt) {
    for (const AirFrame& frame : {Short(0x26), WithCrc(select), WithCrc({0x50, 0x00})}) {
      card.OnFrame(frame);
    }
  }
  if (state == State::kReady || state == State::kActive) card.OnFrame(Short(0x52));
  if (state == State::kActive) card.OnFrame(WithCrc(select));
  ASSERT_EQ(card.state(), state);
  ASSERT_EQ(card.starred(), starred);
}

// Where each frame leads from each state: i idle, r ready, a active, h halt; upper case when the
// card answers. The starred states differ only in that they fall back to halt.
TEST(CardStates, EveryFrameLeadsWhereItShould) {
  using Row = std::tuple<State, bool, const char*>;
  const Row rows[] = {
      {State::kIdle, false, "RRiiiiiiiiiiiiii"},   {State::kReady, false, "iiiiRiAiiiiiiiii"},
      {State::kActive, false, "iiiiiiiiiiihiiii"}, {State::kHalt, false, "hRhhhhhhhhhhhhhh"},
      {State::kReady, true, "hhhhRhAhhhhhhhhh"},   {State::kActive, true, "hhhhhhhhhhhhhhhh"},
  };
  for (const auto& [state, starred, next] : rows) {
    std::size_t column = 0;
    for (const auto& [name, frame] : Frames()) {
      const auto card = CardNamed("01020304:plain");
      Lead(*card, state, starred);
      const bool answered = card->OnFrame(frame).has_value();
      const char letter = "irah"[static_cast<std::size_t>(card->state())];
      EXPECT_EQ(answered ? static_cast<char>(letter - 'a' + 'A') : letter, next[column++])
          << name << " in " << StateName(state, starred);
    }
  }
}

// Every count of known bits, answered with exactly the others.
TEST(CardAnticollision, AnswersTheBitsTheReaderLeftOut) {
  const AirFrame own = AirFrame::OfBytes(Bytes{0x5A, 0xC3, 0x0F, 0x99, 0x5A ^ 0xC3 ^ 0x0F ^ 0x99});
  for (std::size_t known = 0; known < 40; ++known) {
    const auto card = CardNamed("5AC30F99:plain");
    card->OnFrame(Short(0x26));
    const auto nvb = static_cast<std::uint8_t>(0x20 + known / 8 * 16 + known % 8);
    AirFrame frame = AirFrame::OfBytes(Bytes{0x93, nvb});
    for (std::size_t bit = 0; bit < known; ++bit) frame.AppendBit(own.Bit(bit));

    const auto answer = card->OnFrame(frame);
    ASSERT_TRUE(answer) << known;
    ASSERT_EQ(answer->bit_count, 40 - known);
    for (std::size_t bit = known; bit < 40; ++bit) {
      ASSERT_EQ(answer->Bit(bit - known), own.Bit(bit)) << known << " " << bit;
    }
    if (known == 0) continue;
    const std::size_t last = 16 + known - 1;  // the frame with its last bit wrong
    frame.bytes[last / 8] = static_cast<std::uint8_t>(frame.bytes[last / 8] ^ (1U << last % 8));
    EXPECT_FALSE(card->OnFrame(frame)) << known;
    EXPECT_EQ(card->state(), State::kIdle);
  }
}

TEST(CardAnticollision, FrameThatDoesNotMatchItsCountIsNotAnswered) {
  for (const Bytes& bytes :
       {Bytes{0x93, 0x1F}, Bytes{0x93, 0x28, 0x01}, Bytes{0x93, 0x68}, Bytes{0x93, 0x30},
        Bytes{0x93, 0x20, 0x01}, Bytes{0x93, 0xFF}, Bytes{0x93}, Bytes{}}) {
    const auto card = CardNamed("01020304:plain");
    card->OnFrame(Short(0x26));
    EXPECT_FALSE(card->OnFrame(AirFrame::OfBytes(bytes))) << bytes.size();
    EXPECT_EQ(card->state(), State::kIdle);
  }
}

TEST(CardLevels, EachSizeShowsItsLevelsAndItsSize) {
  using Case = std::tuple<const char*, std::uint8_t, Bytes>;
  for (const auto& [uid, atqa, levels] : {
           Case{"01020304", 0x04, {1, 2, 3, 4}},
           Case{"01020304050607", 0x44, {0x88, 1, 2, 3, 4, 5, 6, 7}},
           Case{"0102030405060708090A", 0x84, {0x88, 1, 2, 3, 0x88, 4, 5, 6, 7, 8, 9, 10}},
       }) {
    ReaderBench bench({uid});
    EXPECT_TRUE(bench.reader.Request().Is({atqa, 0x00}));
    bench.reader.Request();  // unexpected, and so the way back to idle
    EXPECT_EQ(bench.reader.Activate(), levels);
  }
}

// ISO/IEC 14443-3, Annex B: the CRC behind the data, as sent.
TEST(CrcA, MatchesTheExamplesOfTheStandard) {
  const std::uint8_t zeros[] = {0x00, 0x00, 0xA0, 0x1E};
  const std::uint8_t mixed[] = {0x12, 0x34, 0x26, 0xCF};
  for (const auto& sent : {std::span(zeros), std::span(mixed)}) {
    const AirFrame frame = AirFrame::WithCrcA(sent.first(2));
    EXPECT_TRUE(std::ranges::equal(frame.Bytes(), sent));
  }
}

TEST(CrcA, DamageInAnyBitBreaksIt) {
  const std::uint8_t data[] = {0x30, 0x04};
  AirFrame frame = AirFrame::WithCrcA(data);
  for (std::size_t bit = 0; bit < frame.bit_count; ++bit) {
    const auto mask = static_cast<std::uint8_t>(1U << bit % 8);
    frame.bytes[bit / 8] ^= mask;
    EXPECT_FALSE(frame.EndsWithCrcA()) << bit;
    frame.bytes[bit / 8] ^= mask;
  }
  EXPECT_TRUE(frame.EndsWithCrcA());
  frame.Truncate(frame.bit_count - 1);
  EXPECT_FALSE(frame.EndsWithCrcA());
  EXPECT_FALSE(AirFrame{}.EndsWithCrcA());
}

TEST(AirFrame, TooManyBytesAreLeftOut) {
  const AirFrame frame = AirFrame::OfBytes(std::vector<std::uint8_t>(100, 0xFF));
  EXPECT_EQ(frame.bit_count, AirFrame::kMaxBytes * 8);
}

}  // namespace
}  // namespace vt63x
