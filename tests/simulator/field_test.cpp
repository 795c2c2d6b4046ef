#include "simulator/field.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>

#include "test_reader.h"

namespace vt63x {
namespace {

std::string RandomIdentifier(std::mt19937& random) {
  static constexpr std::size_t kSizes[] = {8, 14, 20};
  std::string text(kSizes[random() % 3], '0');
  for (char& digit : text) digit = "0123456789ABCDEF"[random() % 16];
  return text;
}

// Two cards that agree up to one bit of their level: the reception ends with that bit.
TEST(Collision, IsFoundAndResolvedAtEveryBit) {
  for (unsigned bit = 0; bit < 32; ++bit) {
    CardIdentifier::Level low = {0x5A, 0x3C, 0x96, 0x0F};
    low[bit / 8] = static_cast<std::uint8_t>(low[bit / 8] & ~(1U << bit % 8));
    CardIdentifier::Level high = low;
    high[bit / 8] = static_cast<std::uint8_t>(high[bit / 8] | 1U << bit % 8);
    Chip chip;
    for (const auto& level : {low, high}) chip.field().Add(CardNamed(HexText(level) + ":plain"));
    TestReader reader(chip);
    ASSERT_EQ(reader.Request().bytes, Bytes({0x08, 0x00}));

    chip.Write(0x0E, 0x00);
    const ReaderAnswer answer = reader.Transceive({0x93, 0x20});
    EXPECT_EQ(answer.error, 0x08) << bit;
    EXPECT_EQ(answer.last_bits, (bit + 1) % 8) << bit;
    EXPECT_EQ(answer.bytes.size(), bit / 8 + 1) << bit;
    EXPECT_EQ(chip.Read(0x0E), (bit + 1) % 32) << bit;  // 32 is written 0
    EXPECT_EQ(answer.bytes.back(), high[bit / 8] & ((2U << bit % 8) - 1)) << bit;

    EXPECT_EQ(reader.Resolve(0x93), high) << bit;
  }
}

// Five known bits: the answer starts at bit 5 of the first byte.
TEST(Collision, CountsFromTheReceiveAlignment) {
  Chip chip;
  for (const char* uid : {"1F000000:plain", "9F000000:plain"}) chip.field().Add(CardNamed(uid));
  TestReader reader(chip);
  reader.Request();
  chip.Write(0x0E, 0x00);
  const ReaderAnswer answer = reader.Transceive({0x93, 0x25, 0x1F}, 0x55);
  EXPECT_EQ(answer.error, 0x08);
  EXPECT_EQ(answer.bytes, Bytes({0x80}));
  EXPECT_EQ(answer.last_bits, 0u);
  EXPECT_EQ(chip.Read(0x0E), 0x08);
}

TEST(Collision, KeptValuesAreDeliveredToTheEnd) {
  Chip chip;
  for (const char* uid : {"01020304", "01020304050607:ostrel256"}) {
    chip.field().Add(CardNamed(uid));
  }
  TestReader reader(chip);
  const ReaderAnswer answer = reader.Request();  // 04 00 and 42 00
  EXPECT_EQ(answer.error, 0x08);
  EXPECT_EQ(answer.bytes, Bytes({0x46, 0x00}));
  EXPECT_EQ(answer.last_bits, 0u);
  EXPECT_EQ(chip.Read(0x0E), 0x80 | 0x02);
  EXPECT_NE(chip.Read(0x04) & 0x02, 0);
}

TEST(Field, EveryCardOfARandomFieldIsFoundOnce) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    Chip chip;
    const std::size_t count = 1 + random() % 8;
    std::string error;
    while (chip.field().cards().size() < count) {
      auto card = CardNamed(RandomIdentifier(random) + ":plain");
      if (card != nullptr) chip.field().Add(std::move(card), error);
    }
    std::set<Bytes> expected;
    for (const auto& card : chip.field().cards()) {
      Bytes levels;
      for (std::size_t level = 0; level < card->identifier().LevelCount(); ++level) {
        const auto bytes = card->identifier().LevelBytes(level);
        levels.insert(levels.end(), bytes.begin(), bytes.end());
      }
      expected.insert(levels);
    }
    TestReader reader(chip);
    std::set<Bytes> found;
    while (const auto levels = reader.Activate()) {
      ASSERT_TRUE(found.insert(*levels).second) << round;
      ASSERT_TRUE(reader.Halt());
    }
    ASSERT_EQ(found, expected) << round;
  }
}

TEST(Field, WithoutFieldCardsForgetTheirStateAndNobodyAnswers) {
  for (const auto& [address, off, on] :
       {std::array<std::uint8_t, 3>{0x14, 0x80, 0x81}, {0x01, 0x10, 0x00}}) {
    Chip chip;
    const Card* const card = chip.field().Add(CardNamed("01020304"));
    TestReader reader(chip);
    ASSERT_TRUE(reader.Activate());
    chip.Write(address, off);
    EXPECT_EQ(card->state(), Card::State::kIdle);
    EXPECT_TRUE(chip.Read(0x01) == 0x10 || reader.Request().timeout);
    chip.Write(address, on);
    EXPECT_TRUE(reader.Activate());
  }
}

TEST(Field, CardThatWasTakenOutComesBackIdle) {
  Chip chip;
  TestReader reader(chip);
  const CardIdentifier identifier = chip.field().Add(CardNamed("01020304"))->identifier();
  ASSERT_TRUE(reader.Activate());
  std::unique_ptr<Card> card = chip.field().Remove(identifier);
  ASSERT_TRUE(card);
  EXPECT_EQ(chip.field().Remove(identifier), nullptr);
  chip.field().Add(std::move(card));
  EXPECT_TRUE(reader.Activate());
}

TEST(Field, TakesEachCardOnceAndNoMoreThanItHolds) {
  Field field;
  std::string error;
  ASSERT_NE(field.Add(CardNamed("01020304"), error), nullptr);
  EXPECT_EQ(field.Add(CardNamed("01020304:plain"), error), nullptr);
  EXPECT_NE(error.find("already"), std::string::npos);
  for (std::size_t index = 1; index < Field::kMaxCards; ++index) {
    ASSERT_NE(field.Add(CardNamed("010203" + std::to_string(10 + index) + ":plain")), nullptr);
  }
  EXPECT_EQ(field.Add(CardNamed("0A0B0C0D"), error), nullptr);
  EXPECT_NE(error.find("16 cards"), std::string::npos);
  EXPECT_NE(field.Remove(field.cards()[3]->identifier()), nullptr);
  EXPECT_NE(field.Add(CardNamed("0A0B0C0D"), error), nullptr);
}

// What a fault makes of the answer to a request, of a selection and of an acknowledge.
TEST(AirFaults, SpoilTheAnswersTheyName) {
  struct Case {
    const char* fault;
    ReaderAnswer request, sak, acknowledge;
  };
  const ReaderAnswer lost{true, {}, 0, 0};
  for (const Case& c : {
           Case{"lost", lost, lost, lost},
           Case{"short", {false, {0x04}, 0, 0}, {false, {0x08}, 0, 0x04}, {false, {0x02}, 2, 0x04}},
           Case{"crc",
                {false, {0x04, 0x00}, 0, 0},
                {false, {0x08}, 0, 0x04},
                {false, {0x0A}, 4, 0x04}},
           Case{"parity",
                {false, {0x04, 0x00}, 0, 0x02},
                {false, {0x08}, 0, 0x02},
                {false, {0x0A}, 4, 0x06}},
       }) {
    Chip chip;
    chip.field().Add(CardNamed("01020304"));
    TestReader reader(chip);
    std::string error;
    const auto set = [&](const std::string& text) {
      chip.field().faults().Set(*ParseAirFault(text, error));
    };
    const auto expect = [&](const ReaderAnswer& answer, const ReaderAnswer& expected) {
      EXPECT_EQ(answer.timeout, expected.timeout) << c.fault;
      EXPECT_EQ(answer.error, expected.timeout ? answer.error : expected.error) << c.fault;
      EXPECT_EQ(answer.bytes, expected.bytes) << c.fault;
      EXPECT_EQ(answer.last_bits, expected.timeout ? answer.last_bits : expected.last_bits);
    };
    set(std::string(c.fault) + "@1+1");
    expect(reader.Request(), c.request);
    set(std::string(c.fault) + "@2+1");  // counted from now: behind the anticollision
    ASSERT_TRUE(reader.Resolve(0x93));
    reader.Crc(true);
    expect(reader.Transceive({0x93, 0x70, 1, 2, 3, 4, 4}), c.sak);
    ASSERT_TRUE(reader.Authenticate(0x60, 4, {0x3C, 0x9A, 0x5E, 0x71, 0xB2, 0xD4}, {1, 2, 3, 4}));
    set(c.fault);
    expect(reader.Transceive({0xA0, 0x04}), c.acknowledge);
    chip.field().faults().Clear();
    EXPECT_TRUE(reader.Transceive(Bytes(16, 0x55)).IsNibble(0xA)) << c.fault;
  }
}

TEST(AirFaults, KeyWhoseAcceptanceIsLostOpensNothing) {
  Chip chip;
  chip.field().Add(CardNamed("01020304"));
  TestReader reader(chip);
  std::string error;
  ASSERT_TRUE(reader.Activate());
  chip.field().faults().Set(*ParseAirFault("parity@1+1", error));
  EXPECT_FALSE(reader.Authenticate(0x60, 4, {0x3C, 0x9A, 0x5E, 0x71, 0xB2, 0xD4}, {1, 2, 3, 4}));
}

TEST(AirFaults, CollisionInALostPartIsNone) {
  Chip chip;
  for (const char* uid : {"01020384:plain", "01020304:plain"}) chip.field().Add(CardNamed(uid));
  TestReader reader(chip);
  reader.Request();
  std::string error;
  chip.field().faults().Set(*ParseAirFault("short", error));
  EXPECT_TRUE(reader.Transceive({0x93, 0x20}).Is({1, 2}));
}

TEST(AirFaults, EachFaultCountsForItself) {
  AirFaults faults;
  std::string error;
  for (const char* text : {"lost@1+1", "crc@2+1"}) faults.Set(*ParseAirFault(text, error));
  EXPECT_FALSE(faults.Pass());
  EXPECT_FALSE(faults.Pass());
  EXPECT_TRUE(faults.Pass());
}

TEST(AirFaults, WrongTextsAreRefusedWithAReason) {
  struct Case {
    const char* text;
    const char* reason;
  };
  for (const Case& c : {
           Case{"", "unknown fault in the air ''; known are lost short crc parity"},
           Case{"silence", "unknown fault"},
           Case{"crc@0", "first answer"},
           Case{"crc@1+", "count"},
       }) {
    std::string error;
    EXPECT_FALSE(ParseAirFault(c.text, error)) << c.text;
    EXPECT_NE(error.find(c.reason), std::string::npos) << error;
  }
}

}  // namespace
}  // namespace vt63x
