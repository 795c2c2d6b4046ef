// SPDX-License-Identifier: MIT

// The texts that name faults and cards.

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <tuple>

#include "simulator/air_faults.h"
#include "simulator/card_options.h"
#include "simulator/faults.h"

namespace vt63x {
namespace {

constexpr std::uint64_t kAll = FaultRange::kAll;

TEST(FaultTexts, ThoseWithinTheLimitsAreTaken) {
  using Case = std::tuple<const char*, FaultKind, std::uint32_t, std::uint64_t, std::uint64_t>;
  for (const auto& [text, kind, value, first, count] : {
           Case{"silence", FaultKind::kSilence, 0, 1, kAll},
           Case{"wrong-echo@7+1", FaultKind::kWrongEcho, 0, 7, 1},
           Case{"delay=1", FaultKind::kDelay, 1, 1, kAll},
           Case{"delay=60000@2+3", FaultKind::kDelay, 60000, 2, 3},
           Case{"rubbish", FaultKind::kRubbish, 1, 1, kAll},
           Case{"rubbish=2147483646@9", FaultKind::kRubbish, 2147483646, 9, kAll},
           Case{"hang-up@18446744073709551615+1", FaultKind::kHangUp, 0, kAll, 1},
       }) {
    std::string error;
    const auto fault = ParseFault(text, error);
    ASSERT_TRUE(fault) << error;
    EXPECT_EQ(fault->kind, kind) << text;
    EXPECT_EQ(fault->value, value) << text;
    EXPECT_EQ(fault->accesses.first, first) << text;
    EXPECT_EQ(fault->accesses.count, count) << text;
  }
}

TEST(FaultTexts, RangeCoversExactlyTheAccessesNamed) {
  for (const auto& [text, expected] :
       {std::pair{"silence", "xxxxxx"}, std::pair{"silence@3", "..xxxx"},
        std::pair{"silence@3+2", "..xx.."},
        std::pair{"silence@6+18446744073709551615", ".....x"}}) {
    std::string error, marks;
    const auto fault = ParseFault(text, error);
    ASSERT_TRUE(fault) << error;
    for (std::uint64_t access = 1; access <= 6; ++access) {
      marks += fault->accesses.Concerns(access) ? 'x' : '.';
    }
    EXPECT_EQ(marks, expected) << text;
  }
}

TEST(CardTexts, ThoseThatNameCardsAreTaken) {
  using Case = std::tuple<const char*, const char*, const char*, const char*>;
  for (const auto& [text, uid, type, file] : {
           Case{"0a0B0c0D", "0A0B0C0D", "ostrel64", ""},
           Case{"01020304050607:plain", "01020304050607", "plain", ""},
           Case{"01020304=a:b=c", "01020304", "ostrel64", "a:b=c"},
           Case{"0102030405060708090A:ostrel-page=x", "0102030405060708090A", "ostrel-page", "x"},
       }) {
    std::string error;
    const auto option = ParseCardOption(text, error);
    ASSERT_TRUE(option) << error;
    EXPECT_EQ(option->identifier.Text(), uid);
    EXPECT_EQ(option->type, type);
    EXPECT_EQ(option->file, file);
  }
}

struct Refusal {
  const char* text;
  const char* reason;
};

template <typename Parse>
void ExpectRefused(Parse parse, std::initializer_list<Refusal> refusals) {
  for (const auto& [text, reason] : refusals) {
    std::string error;
    EXPECT_FALSE(parse(text, error)) << text;
    EXPECT_NE(error.find(reason), std::string::npos) << text << ": " << error;
  }
}

TEST(OptionTexts, WrongOnesAreRefusedWithAReason) {
  ExpectRefused(ParseFault, {{"", "unknown fault"},
                             {"Silence", "unknown fault"},
                             {"silence=", "takes no value"},
                             {"delay", "needs a number"},
                             {"delay=0", "needs a number"},
                             {"delay=60001", "needs a number"},
                             {"delay=5ms", "needs a number"},
                             {"rubbish=0", "needs a number"},
                             {"rubbish=2147483647", "needs a number"},
                             {"silence@0", "first access"},
                             {"silence@18446744073709551616", "first access"},
                             {"silence@+2", "first access"},
                             {"silence@1+0", "count"},
                             {"silence@1+2+3", "count"}});
  ExpectRefused(ParseAirFault,
                {{"", "unknown fault in the air ''; known are lost short crc parity"},
                 {"silence", "unknown fault"},
                 {"crc@0", "first answer"},
                 {"crc@1+", "count"}});
  ExpectRefused(ParseCardOption,
                {{"", "has 0 digits"},
                 {"0102030:plain", "has 7 digits"},

                 {"0102030405060708090A0B", "has 22 digits"},
                 {"0102030G", "hexadecimal"},

                 {"88020304", "cascade tag"},
                 {"01020388050607", "cascade tag"},
                 {"01020304:gold", "unknown kind of card 'gold'; known are ostrel64 ostrel256"},
                 {"01020304:", "unknown kind of card ''"},
                 {"01020304=", "no file"},
                 {"01020304:plain=x", "no memory"}});
}

}  // namespace
}  // namespace vt63x
