// SPDX-License-Identifier: MIT

#include "simulator/field.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>

#include "simulator/field_command.h"
#include "test_reader.h"

namespace vt63x {
namespace {

// Two cards that agree up to one bit of their level: the reception ends with that bit.
TEST(Collision, IsFoundAndResolvedAtEveryBit) {
  for (unsigned bit = 0; bit < 32; ++bit) {
    CardIdentifier::Level low = {0x5A, 0x3C, 0x96, 0x0F};
    low[bit / 8] = static_cast<std::uint8_t>(low[bit / 8] & ~(1U << bit % 8));
    CardIdentifier::Level high = low;
    high[bit / 8] = static_cast<std::uint8_t>(high[bit / 8] | 1U << bit % 8);
    ReaderBench bench({HexText(low) + ":plain", HexText(high) + ":plain"});
    ASSERT_EQ(bench.reader.Request().bytes, Bytes({0x08, 0x00}));

    bench.chip.Write(0x0E, 0x00);
    const ReaderAnswer answer = bench.reader.Transceive({0x93, 0x20});
    EXPECT_EQ(answer.error, 0x08) << bit;
    EXPECT_EQ(answer.last_bits, (bit + 1) % 8) << bit;
    EXPECT_EQ(answer.bytes.size(), bit / 8 + 1) << bit;
    EXPECT_EQ(bench.chip.Read(0x0E), (bit + 1) % 32) << bit;  // 32 is written 0
    EXPECT_EQ(answer.bytes.back(), high[bit / 8] & ((2U << bit % 8) - 1)) << bit;

    EXPECT_EQ(bench.reader.Resolve(0x93), high) << bit;
  }
}

// Five known bits: the answer starts at bit 5 of the first byte.
TEST(Collision, CountsFromTheReceiveAlignment) {
  ReaderBench bench({"1F000000:plain", "9F000000:plain"});
  bench.reader.Request();
  bench.chip.Write(0x0E, 0x00);
  EXPECT_EQ(bench.reader.Transceive({0x93, 0x25, 0x1F}, 0x55),
            (ReaderAnswer{false, {0x80}, 0, 0x08}));
  EXPECT_EQ(bench.chip.Read(0x0E), 0x08);
}

TEST(Collision, KeptValuesAreDeliveredToTheEnd) {
  ReaderBench bench({"01020304", "01020304050607:ostrel256"});
  // 04 00 and 42 00
  EXPECT_EQ(bench.reader.Request(), (ReaderAnswer{false, {0x46, 0x00}, 0, 0x08}));
  EXPECT_EQ(bench.chip.Read(0x0E), 0x80 | 0x02);
  EXPECT_NE(bench.chip.Read(0x04) & 0x02, 0);
}

TEST(Field, WithoutFieldCardsForgetTheirStateAndNobodyAnswers) {
  for (const auto& [address, off, on] :
       {std::array<std::uint8_t, 3>{0x14, 0x80, 0x81}, {0x01, 0x10, 0x00}}) {
    ReaderBench bench({"01020304"});
    ASSERT_TRUE(bench.reader.Activate());
    bench.chip.Write(address, off);
    EXPECT_EQ(bench.field.cards()[0]->state(), Card::State::kIdle);
    EXPECT_TRUE(bench.chip.Read(0x01) == 0x10 || bench.reader.Request().timeout);
    bench.chip.Write(address, on);
    EXPECT_TRUE(bench.reader.Activate());
  }
}

TEST(Field, CardThatWasTakenOutComesBackIdle) {
  ReaderBench bench({"01020304"});
  const CardIdentifier identifier = bench.field.cards()[0]->identifier();
  ASSERT_TRUE(bench.reader.Activate());
  std::unique_ptr<Card> card = bench.field.Remove(identifier);
  ASSERT_TRUE(card);
  EXPECT_EQ(bench.field.Remove(identifier), nullptr);
  bench.field.Add(std::move(card));
  EXPECT_TRUE(bench.reader.Activate());
}

TEST(Field, TakesEachCardOnceAndNoMoreThanItHolds) {
  Field field;
  std::string error;
  for (std::size_t index = 0; index < Field::kMaxCards; ++index) {
    ASSERT_NE(field.Add(CardNamed("010203" + std::to_string(10 + index) + ":plain")), nullptr);
  }
  EXPECT_EQ(field.Add(CardNamed("0A0B0C0D"), error), nullptr);
  EXPECT_NE(error.find("16 cards"), std::string::npos);
  EXPECT_NE(field.Remove(field.cards()[3]->identifier()), nullptr);
  EXPECT_EQ(field.Add(CardNamed("01020310"), error), nullptr);
  EXPECT_NE(error.find("already"), std::string::npos);
  EXPECT_NE(field.Add(CardNamed("0A0B0C0D")), nullptr);
}

// What a fault makes of the answer to a request, of a selection and of an acknowledge.
TEST(AirFaults, SpoilTheAnswersTheyName) {
  using Case = std::tuple<const char*, ReaderAnswer, ReaderAnswer, ReaderAnswer>;
  const ReaderAnswer lost{true, {}, 0, 0};
  const ReaderAnswer intact{false, {0x04, 0x00}, 0, 0};
  const ReaderAnswer no_crc{false, {0x08}, 0, 0x04};
  for (const auto& [fault, request, sak, acknowledge] : {
           Case{"lost", lost, lost, lost},
           Case{"short", {false, {0x04}, 0, 0}, no_crc, {false, {0x02}, 2, 0x04}},
           Case{"crc", intact, no_crc, {false, {0x0A}, 4, 0x04}},
           Case{"parity",
                {false, {0x04, 0x00}, 0, 0x02},
                {false, {0x08}, 0, 0x02},
                {false, {0x0A}, 4, 0x06}},
       }) {
    ReaderBench bench({"01020304"});
    TestReader& reader = bench.reader;
    bench.SetAirFault(std::string(fault) + "@1+1");
    EXPECT_EQ(reader.Request(), request) << fault;
    bench.SetAirFault(std::string(fault) + "@2+1");  // counted from now: behind the anticollision
    ASSERT_TRUE(reader.Resolve(0x93));
    reader.Crc(true);
    EXPECT_EQ(reader.Transceive({0x93, 0x70, 1, 2, 3, 4, 4}), sak) << fault;
    ASSERT_TRUE(reader.Authenticate(0x60, 4, kKey, {1, 2, 3, 4}));
    bench.SetAirFault(fault);
    EXPECT_EQ(reader.Transceive({0xA0, 0x04}), acknowledge) << fault;
    bench.field.faults().Clear();
    EXPECT_TRUE(reader.Transceive(Bytes(16, 0x55)).IsNibble(0xA)) << fault;
  }
}

TEST(AirFaults, KeyWhoseAcceptanceIsLostOpensNothing) {
  ReaderBench bench({"01020304"});
  ASSERT_TRUE(bench.reader.Activate());
  bench.SetAirFault("parity@1+1");
  EXPECT_FALSE(bench.reader.Authenticate(0x60, 4, kKey, {1, 2, 3, 4}));
}

TEST(AirFaults, CollisionInALostPartIsNone) {
  ReaderBench bench({"01020384:plain", "01020304:plain"});
  bench.reader.Request();
  bench.SetAirFault("short");
  EXPECT_TRUE(bench.reader.Transceive({0x93, 0x20}).Is({1, 2}));
}

TEST(AirFaults, EachFaultCountsForItself) {
  ReaderBench bench;
  for (const char* text : {"lost@1+1", "crc@2+1"}) bench.SetAirFault(text);
  for (const bool intact : {false, false, true}) EXPECT_EQ(bench.field.faults().Pass(), intact);
}

TEST(FieldCommand, CardsComeAndGo) {
  ReaderBench bench;
  auto& [chip, field, reader] = bench;
  EXPECT_EQ(RunFieldCommand(field, "card add 01020304"), "ok\n");
  EXPECT_EQ(RunFieldCommand(field, "  card add\t01020304050607:plain \r"), "ok\n");
  ASSERT_EQ(reader.Activate(), Bytes({1, 2, 3, 4}));  // 1 wins over 0 in the first bit
  EXPECT_TRUE(reader.Halt());
  ASSERT_EQ(reader.Activate(0x52), Bytes({1, 2, 3, 4}));
  EXPECT_EQ(RunFieldCommand(field, "field list"),
            "01020304 ostrel64 active*\n01020304050607 plain idle\nok\n");
  EXPECT_EQ(RunFieldCommand(field, "card remove 01020304"), "ok\n");
  EXPECT_TRUE(reader.Transceive({0x30, 0x00}).timeout);
  EXPECT_EQ(reader.Activate(), Bytes({0x88, 1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(RunFieldCommand(field, "card add 01020304"), "ok\n");
}

TEST(FieldCommand, FaultsAreSetAndTakenBack) {
  ReaderBench bench({"01020304"});
  auto& [chip, field, reader] = bench;
  EXPECT_EQ(RunFieldCommand(field, "air lost@1+1"), "ok\n");
  EXPECT_TRUE(reader.Request().timeout);
  reader.Request();  // back to idle
  EXPECT_EQ(RunFieldCommand(field, "air short"), "ok\n");
  EXPECT_EQ(reader.Request().bytes, Bytes({0x04}));
  reader.Request();
  EXPECT_EQ(RunFieldCommand(field, "air none"), "ok\n");
  EXPECT_TRUE(reader.Request().Is({0x04, 0x00}));
}

TEST(FieldCommand, WrongLinesAreRefusedAndChangeNothing) {
  Field field;
  field.Add(CardNamed("01020304"));
  using Case = std::tuple<const char*, const char*>;
  for (const auto& [line, reason] : {
           Case{"help", "unknown command; known are 'card add'"},
           Case{"card", "unknown command"},
           Case{"card addition", "unknown command"},
           Case{"card add", "has 0 digits"},
           Case{"card add 01020304", "already"},
           Case{"card add 0102", "has 4 digits"},
           Case{"card add 05060708=/no/such/folder/file", "no such directory"},
           Case{"card remove 05060708", "not in the field"},
           Case{"card remove", "has 0 digits"},
           Case{"field list all", "nothing goes behind"},
           Case{"air", "unknown fault"},
           Case{"air crc@x", "first answer"},
       }) {
    const std::string reply = RunFieldCommand(field, line);
    EXPECT_TRUE(reply.starts_with("error: ") && reply.ends_with("\n")) << reply;
    EXPECT_NE(reply.find(reason), std::string::npos) << reply;
    EXPECT_EQ(field.cards().size(), 1u);
  }
  EXPECT_EQ(RunFieldCommand(field, "  "), "");
}

}  // namespace
}  // namespace vt63x
