// SPDX-License-Identifier: MIT

#include "simulator/block_card.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <tuple>

#include "simulator/value_block.h"
#include "test_reader.h"

namespace vt63x {
namespace {

constexpr Key kOtherKey = {0xB0, 0xB1, 0xB2, 0xB3, 0xB4, 0xB5};

// A block card alone in the field, and what a reader does with it.
class BlockCardTest : public testing::Test, protected ReaderBench {
 protected:
  explicit BlockCardTest(const char* name = "01020304")
      : ReaderBench({name}), card(static_cast<BlockCard*>(field.cards()[0].get())) {}

  // From anywhere: selected, and the key accepted.
  bool Open(std::uint8_t block, const Key& key = kKey, std::uint8_t command = 0x60) {
    const auto levels = reader.Activate(0x52);
    const auto again = levels ? levels : reader.Activate(0x52);  // the first one was unexpected
    return again && reader.Authenticate(command, block, key, *again);
  }
  ReaderAnswer Send(const Bytes& bytes) { return reader.Transceive(bytes); }
  bool Write(std::uint8_t block, const Bytes& content) {
    return Send({0xA0, block}).IsNibble(0xA) && Send(content).IsNibble(0xA);
  }
  Bytes Stored(std::size_t block) const {
    const auto bytes = card->memory().subspan(16 * block, 16);
    return {bytes.begin(), bytes.end()};
  }
  // The three condition bits of the four blocks of a sector, as its trailer holds them.
  static Bytes Trailer(const std::array<unsigned, 4>& conditions) {
    unsigned c1 = 0, c2 = 0, c3 = 0;
    for (unsigned block = 0; block < 4; ++block) {
      c1 |= (conditions[block] >> 2 & 1) << block;
      c2 |= (conditions[block] >> 1 & 1) << block;
      c3 |= (conditions[block] & 1) << block;
    }
    Bytes trailer(kKey.begin(), kKey.end());
    for (const unsigned byte : {(~c2 & 15) << 4 | (~c1 & 15), c1 << 4 | (~c3 & 15), c3 << 4 | c2}) {
      trailer.push_back(static_cast<std::uint8_t>(byte));
    }
    trailer.push_back(0x69);
    trailer.insert(trailer.end(), kOtherKey.begin(), kOtherKey.end());
    return trailer;
  }

  BlockCard* card;
  const Bytes data = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
};

TEST_F(BlockCardTest, DeliveredCardHoldsIdentifierAndTransportTrailers) {
  ASSERT_TRUE(Open(0));
  EXPECT_TRUE(Send({0x30, 0x00}).Is({1, 2, 3, 4, 4, 0x08, 0x04, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  for (std::uint8_t trailer = 3; trailer < 64; trailer += 4) {
    ASSERT_TRUE(Open(trailer));
    // Key A hidden, key B readable.
    EXPECT_TRUE(
        Send({0x30, trailer})
            .Is({0, 0, 0, 0, 0, 0, 0xFF, 0x07, 0x80, 0x69, 0x3C, 0x9A, 0x5E, 0x71, 0xB2, 0xD4}));
  }
}

TEST_F(BlockCardTest, WhatIsNotAllowedIsRefusedWhatIsNotUnderstoodIsNotAndBothDeselect) {
  struct Row {
    bool refused;
    Bytes command;
  };
  for (const auto& [refused, command] : {
           Row{true, {0x30, 8}},     // another sector
           Row{true, {0x30, 64}},    // no such block
           Row{true, {0x30, 0xFF}},  // nor this
           Row{true, {0xC0, 4}},     // no number there
           Row{true, {0xC2, 7}},     // a trailer
           Row{true, {0xB0, 4}},     // no number loaded
           Row{false, {0x31, 4}},
           Row{false, {0xA2, 4, 0, 0, 0, 0}},
           Row{false, {0x30}},
           Row{false, {0x30, 4, 0}},
           Row{false, {0x60, 4}},
       }) {
    ASSERT_TRUE(Open(4));
    const ReaderAnswer answer = Send(command);
    EXPECT_TRUE(refused ? answer.IsNibble(0x4) : answer.timeout) << testing::PrintToString(command);
    EXPECT_EQ(card->state(), Card::State::kIdle);
    EXPECT_TRUE(Send({0x30, 4}).timeout);
  }
  ASSERT_TRUE(Open(0));
  EXPECT_TRUE(Send({0xA0, 0}).IsNibble(0x4));
}

TEST_F(BlockCardTest, DataOfAnotherLengthIsNotWritten) {
  for (const std::size_t size : {15u, 17u}) {
    ASSERT_TRUE(Open(4));
    ASSERT_TRUE(Send({0xA0, 4}).IsNibble(0xA));
    EXPECT_TRUE(Send(Bytes(size, 0x55)).timeout) << size;
    EXPECT_EQ(Stored(4), Bytes(16, 0));
  }
}

TEST_F(BlockCardTest, WithoutASessionEveryCommandIsRefused) {
  for (const std::uint8_t command : Bytes{0x30, 0xA0, 0xB0, 0xC0, 0xC1, 0xC2}) {
    ASSERT_TRUE(reader.Activate());
    EXPECT_TRUE(Send({command, 4}).IsNibble(0x4)) << unsigned{command};
  }
}

TEST_F(BlockCardTest, WrongKeySilencesTheCardAndEndsTheSession) {
  ASSERT_TRUE(Open(4));
  EXPECT_FALSE(reader.Authenticate(0x60, 8, kOtherKey, {1, 2, 3, 4}));
  EXPECT_EQ(chip.Read(0x08) & 0x08, 0);
  EXPECT_EQ(card->state(), Card::State::kIdle);
}

TEST_F(BlockCardTest, KeyIsForTheCardAndTheSectorThatAreNamed) {
  ASSERT_TRUE(reader.Activate());
  EXPECT_FALSE(reader.Authenticate(0x60, 4, kKey, {1, 2, 3, 5}));
  ASSERT_TRUE(reader.Activate());
  EXPECT_FALSE(reader.Authenticate(0x60, 64, kKey, {1, 2, 3, 4}));
  ASSERT_TRUE(Open(4));
  ASSERT_TRUE(reader.Authenticate(0x60, 8, kKey, {1, 2, 3, 4}));  // within the session
  EXPECT_TRUE(Send({0x30, 8}).Is(Bytes(16, 0)));
  EXPECT_TRUE(Send({0x30, 4}).IsNibble(0x4));
  ASSERT_TRUE(Open(4));
  ASSERT_TRUE(Send({0xA0, 4}).IsNibble(0xA));
  EXPECT_FALSE(reader.Authenticate(0x60, 4, kKey, {1, 2, 3, 4}));  // data was to come
}

TEST_F(BlockCardTest, KeyBThatCanBeReadIsAcceptedAndOpensNothing) {
  for (const std::uint8_t command : Bytes{0x30, 0xA0}) {
    ASSERT_TRUE(Open(4, kKey, 0x61));
    EXPECT_TRUE(Send({command, 4}).IsNibble(0x4));
  }
}

// The reader leaves the session, the card does not know.
TEST_F(BlockCardTest, PlainFrameInASessionEndsIt) {
  ASSERT_TRUE(Open(4));
  chip.Write(0x08, 0x00);
  EXPECT_TRUE(Send({0x30, 4}).timeout);
  EXPECT_EQ(card->state(), Card::State::kIdle);
}

// What a condition lets key A and key B do.
struct Allowed {
  const char* key_a;
  const char* key_b;
};

// r read, w write, i increment, d decrement, restore and transfer.
TEST_F(BlockCardTest, DataConditionsAreKept) {
  constexpr Allowed kRows[8] = {{"rwid", "rwid"}, {"rd", "rd"}, {"r", "r"},     {"", "rw"},
                                {"r", "rw"},      {"", "r"},    {"rd", "rwid"}, {"", ""}};
  const Bytes number = {7, 0, 0, 0, 0xF8, 0xFF, 0xFF, 0xFF, 7, 0, 0, 0, 4, 0xFB, 4, 0xFB};
  for (unsigned condition = 0; condition < 8; ++condition) {
    const auto sector = static_cast<std::uint8_t>(4 * condition + 4);
    ASSERT_TRUE(Open(sector));
    ASSERT_TRUE(Write(sector, number));
    // 011 for the trailer: key B cannot be read.
    ASSERT_TRUE(Write(static_cast<std::uint8_t>(sector + 3), Trailer({condition, 0, 0, 3})));
    for (const bool key_b : {false, true}) {
      std::string allowed;
      for (const auto& [letter, command] :
           {std::pair{'r', 0x30}, {'w', 0xA0}, {'i', 0xC1}, {'d', 0xC0}}) {
        ASSERT_TRUE(key_b ? Open(sector, kOtherKey, 0x61) : Open(sector));
        const ReaderAnswer answer = Send({static_cast<std::uint8_t>(command), sector});
        if (!answer.IsNibble(0x4)) allowed += letter;
      }
      EXPECT_EQ(allowed, key_b ? kRows[condition].key_b : kRows[condition].key_a)
          << condition << (key_b ? " B" : " A");
    }
  }
}

// a write key A, r and w the condition bits, k and b read and write key B. A key B that can be read
// opens nothing.
TEST_F(BlockCardTest, TrailerConditionsAreKept) {
  constexpr Allowed kRows[8] = {{"arkb", ""}, {"arwkb", ""}, {"rk", ""}, {"r", "arwb"},
                                {"r", "arb"}, {"r", "rw"},   {"r", "r"}, {"r", "r"}};
  for (std::uint8_t sector = 0; sector < 16; ++sector) {
    const unsigned condition = sector / 2;
    const bool key_b = sector % 2 != 0;
    const auto block = static_cast<std::uint8_t>(4 * sector + 3);
    Bytes content = Trailer({0, 0, 0, condition});
    ASSERT_TRUE(Open(block));
    ASSERT_TRUE(Write(block, content));
    const auto open = [&] { return key_b ? Open(block, kOtherKey, 0x61) : Open(block); };
    ASSERT_TRUE(open());
    const ReaderAnswer answer = Send({0x30, block});
    const Bytes read = answer.IsNibble(0x4) ? Bytes(16, 0) : answer.bytes;
    ASSERT_EQ(read.size(), 16u);
    EXPECT_EQ(Bytes(read.begin(), read.begin() + 6), Bytes(6, 0)) << "key A is shown";
    ASSERT_TRUE(open());
    content[0] = content[9] = content[15] = 0xEE;
    if (Send({0xA0, block}).IsNibble(0xA)) Send(content);
    const Bytes now = Stored(block);
    std::string allowed;
    if (now[0] == 0xEE) allowed += 'a';
    if (read[9] == 0x69) allowed += 'r';
    if (now[9] == 0xEE) allowed += 'w';
    if (read[15] == 0xB5) allowed += 'k';
    if (now[15] == 0xEE) allowed += 'b';
    EXPECT_EQ(allowed, key_b ? kRows[condition].key_b : kRows[condition].key_a) << unsigned{sector};
  }
}

TEST_F(BlockCardTest, TrailerWithDisagreeingCopiesLocksItsSectorAndNoOther) {
  ASSERT_TRUE(Open(4));
  Bytes torn = Trailer({0, 0, 0, 1});
  torn[6] ^= 0x10;
  ASSERT_TRUE(Write(7, torn));
  EXPECT_TRUE(Send({0x30, 4}).IsNibble(0x4));
  EXPECT_FALSE(Open(4));
  EXPECT_TRUE(Open(8));
}

class LargeCardTest : public BlockCardTest {
 protected:
  LargeCardTest() : BlockCardTest("01020304050607:ostrel256") {}
};

TEST_F(LargeCardTest, EveryBlockHasItsPlace) {
  for (unsigned block = 1; block < 256; ++block) {
    const auto number = static_cast<std::uint8_t>(block);
    ASSERT_TRUE(Open(number)) << block;
    ASSERT_TRUE(block % 4 == 3 || Write(number, Bytes(16, number))) << block;
  }
  for (std::uint8_t block = 1; block != 0; ++block) {
    EXPECT_EQ(Stored(block)[0], block % 4 == 3 ? kKey[0] : block);
    EXPECT_EQ(Stored(block)[15], block % 4 == 3 ? kKey[5] : block);
  }
}

TEST(PageCard, WritesOnePageAndReadsFourRoundTheEnd) {
  ReaderBench bench({"01020304050607:ostrel-page"});
  TestReader& reader = bench.reader;
  ASSERT_TRUE(reader.Activate());
  EXPECT_TRUE(reader.Transceive({0xA2, 0x3F, 0xA, 0xB, 0xC, 0xD}).IsNibble(0xA));
  EXPECT_TRUE(reader.Transceive({0xA2, 0x03, 5, 6, 7, 8}).IsNibble(0xA));
  EXPECT_TRUE(
      reader.Transceive({0x30, 0x3F}).Is({0xA, 0xB, 0xC, 0xD, 1, 2, 3, 4, 5, 6, 7, 0, 0, 0, 0, 0}));
  EXPECT_TRUE(reader.Transceive({0x30, 0x03}).Is({5, 6, 7, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  for (const Bytes& refused :
       {Bytes{0xA2, 0x02, 0, 0, 0, 0}, Bytes{0xA2, 0x40, 0, 0, 0, 0}, Bytes{0x30, 0x40}}) {
    EXPECT_TRUE(reader.Transceive(refused).IsNibble(0x4)) << unsigned{refused[1]};
    ASSERT_TRUE(reader.Activate());
  }
}

class NumberTest : public BlockCardTest {
 protected:
  // Block 4 holds the number, with 0x11 for its address; a session is open.
  void Hold(std::int32_t value) {
    ASSERT_TRUE(Open(4));
    const auto block = PackValue({value, 0x11});
    ASSERT_TRUE(Write(4, {block.begin(), block.end()}));
  }
  // Both steps; the answer of the second.
  ReaderAnswer Step(std::uint8_t command, const Bytes& amount) {
    EXPECT_TRUE(Send({command, 4}).IsNibble(0xA));
    return Send(amount);
  }
  std::int32_t ValueAt(std::uint8_t block) {
    const Bytes stored = Stored(block);
    const auto value = UnpackValue(BlockView(stored.data(), 16));
    EXPECT_TRUE(value && value->address == 0x11);
    return value ? value->value : 0;
  }
};

TEST_F(NumberTest, ArithmeticIsSilentAndTakesEffectWithTheTransfer) {
  // `result`: none: does not fit
  using Case = std::tuple<std::int32_t, std::uint8_t, Bytes, std::optional<std::int32_t>>;
  constexpr std::int32_t kMin = -0x7FFFFFFF - 1;
  for (const auto& [start, command, amount, result] : {
           Case{100, 0xC0, {0x00, 0x01, 0, 0}, -156},
           Case{-5, 0xC2, {9, 9, 9, 9}, -5},
           Case{0x7FFFFFFE, 0xC1, {1, 0, 0, 0}, 0x7FFFFFFF},
           Case{0x7FFFFFFF, 0xC1, {1, 0, 0, 0}, std::nullopt},
           Case{-0x7FFFFFFF, 0xC0, {1, 0, 0, 0}, kMin},
           Case{kMin, 0xC0, {1, 0, 0, 0}, std::nullopt},
           Case{kMin, 0xC1, {0xFF, 0xFF, 0xFF, 0xFF}, 0x7FFFFFFF},
       }) {
    Hold(start);
    const ReaderAnswer answer = Step(command, amount);
    EXPECT_TRUE(result ? answer.timeout : answer.IsNibble(0x4));
    EXPECT_EQ(ValueAt(4), start);
    if (!result) continue;
    EXPECT_TRUE(Send({0xB0, 6}).IsNibble(0xA));
    EXPECT_EQ(ValueAt(6), result);
    EXPECT_EQ(ValueAt(4), start);
  }
}

TEST_F(NumberTest, LoadedNumberDoesNotOutliveTheSelection) {
  Hold(100);
  EXPECT_TRUE(Step(0xC1, {1, 0, 0, 0}).timeout);
  ASSERT_TRUE(Open(4));
  EXPECT_TRUE(Send({0xB0, 4}).IsNibble(0x4));
  EXPECT_EQ(ValueAt(4), 100);
}

TEST_F(NumberTest, AnyBitThatDisagreesMakesABlockNoNumber) {
  auto block = PackValue({0x12345678, 0x11});
  EXPECT_TRUE(UnpackValue(block));
  for (unsigned bit = 0; bit < 128; ++bit) {
    const auto mask = static_cast<std::uint8_t>(1U << bit % 8);
    block[bit / 8] ^= mask;
    EXPECT_FALSE(UnpackValue(block)) << bit;
    block[bit / 8] ^= mask;
  }
}

}  // namespace
}  // namespace vt63x
