// SPDX-License-Identifier: MIT

#include "contactless/iso14443a.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/contactless/scripted_registers.h"

namespace vt63x {
namespace {

using Frames = std::vector<Bytes>;

constexpr std::uint8_t kUid[4] = {0x9C, 0x35, 0xE1, 0x4B};
constexpr std::uint8_t kBcc = 0x9C ^ 0x35 ^ 0xE1 ^ 0x4B;

struct Bench {
  Bench() { component.Init(Iso14443AOpen, &chip, 1); }
  HFLSTATUS Activate(std::uint8_t known_bits = 0) {
    param.bit_count = known_bits;
    return component.AnticollisionSelect(&param);
  }
  bool HasUid() const { return std::equal(kUid, kUid + 4, uid.begin()); }

  ScriptedRegisters chip;
  Iso14443AWrapper component;
  Iso14443ACore* const garbage = reinterpret_cast<Iso14443ACore*>(0x1234);
  Bytes uid = Bytes(16, 0xA7);  // 12 and 4 guard bytes
  sel_p param{0x93, uid.data(), 0, 0x55, 0x80, garbage};
};

// The UID with its BCC from `first_bit` on, placed as the chip delivers it: bits below the first
// one of a partly known byte are 0.
Bytes RestOfUid(int first_bit) {
  Bytes all(kUid, kUid + 4);
  all.push_back(kBcc);
  Bytes rest(all.begin() + first_bit / 8, all.end());
  rest[0] = static_cast<std::uint8_t>(rest[0] & (0xFF << first_bit % 8));
  return rest;
}

// The first `bits` bits of the UID, the rest 0.
Bytes KnownPart(int bits) {
  Bytes known(4, 0);
  std::copy_n(kUid, bits / 8, known.begin());
  if (bits % 8 != 0) {
    const auto at = static_cast<std::size_t>(bits / 8);
    known[at] = static_cast<std::uint8_t>(kUid[at] & ~(0xFF << bits % 8));
  }
  return known;
}

// The anticollision frame of level 1 with that many known bits.
Bytes AskFrame(int known) {
  const Bytes part = KnownPart(known);
  Bytes frame = {0x93, static_cast<std::uint8_t>(0x20 + known / 8 * 16 + known % 8)};
  frame.insert(frame.end(), part.begin(), part.begin() + (known + 7) / 8);
  return frame;
}

TEST(Iso14443ATest, RequestMakesExactlyTheseAccesses) {
  Bench bench;
  std::uint8_t atqa[4] = {0xA7, 0xA7, 0xA7, 0xA7};
  bench.chip.answers = {Complete({0x04, 0x00})};
  req_p param{0x52, atqa, bench.garbage};
  EXPECT_EQ(bench.component.Request(&param), HFL_SUCCESS);
  EXPECT_EQ(bench.chip.trace,
            "M08-08 S0E=80 M12-80 M13-80 S0D=07 "
            "G01 S01=0C S04=21 S05=00 S0A=80 G02 S02=23 G03 S03=00 W09=52 M0D+80 G04 G05 M02-23 "
            "M03-00 G0A G0C G06 R09*2 S04=20 S05=00 S0A=80 S04=01 S0D=00");
  EXPECT_EQ(Bytes(atqa, atqa + 4), Bytes({0x04, 0x00, 0xA7, 0xA7}));
  EXPECT_EQ(param.self, bench.garbage);
}

TEST(Iso14443ATest, RequestTakesTwoCompleteBytesOrNothing) {
  struct Case {
    ChipAnswer answer;
    HFLSTATUS status;
    Bytes atqa;
  };
  for (const Case& c : {Case{Silence(), HFL_NO_ANSWER, {0, 0}},
                        Case{Collided({0x46, 0x03}, 0), HFL_COLLISION, {0x46, 0x03}},
                        Case{Collided({0x46, 0x03}, 5), HFL_PROTOCOL_ERROR, {0x46, 0x03}},
                        Case{Complete({0x04}), HFL_PROTOCOL_ERROR, {0x04, 0xA7}},
                        Case{Complete({}), HFL_PROTOCOL_ERROR, {0xA7, 0xA7}},
                        Case{Complete({1, 2, 3}), HFL_BUFFER_SIZE, {0, 0}},
                        Case{{0x20, 2, 0, 0x02, {4, 0}}, HFL_PARITY_ERROR, {0, 0}}}) {
    Bench bench;
    std::uint8_t atqa[3] = {0xA7, 0xA7, 0xA7};
    bench.chip.answers = {c.answer};
    req_p param{0x26, atqa, nullptr};
    EXPECT_EQ(bench.component.Request(&param), c.status);
    EXPECT_EQ(Bytes(atqa, atqa + 2), c.atqa);
    EXPECT_EQ(atqa[2], 0xA7);
    EXPECT_TRUE(bench.chip.trace.ends_with("S0D=00"));
  }
}

TEST(Iso14443ATest, ActivationOfASingleCardMakesExactlyTheseAccesses) {
  Bench bench;
  bench.chip.answers = {Complete(RestOfUid(0)), Complete({0x08})};
  EXPECT_EQ(bench.Activate(), HFL_SUCCESS);
  EXPECT_EQ(bench.chip.trace,
            "M12-80 M13-80 S0E=00 S0D=00 "
            "G01 S01=0C S04=21 S05=00 S0A=80 G02 S02=23 G03 S03=00 W09=93,20 M0D+80 G04 G05 "
            "M02-23 M03-00 G0A G0C G06 R09*5 S04=20 S05=00 S0A=80 S04=01 "
            "S0D=00 S0E=80 M12+80 M13+80 "
            "G01 S01=0C S04=21 S05=00 S0A=80 G02 S02=23 G03 S03=00 W09=93,70,9C,35,E1,4B,03 "
            "M0D+80 G04 G05 M02-23 M03-00 G0A G0C G06 R09*1 S04=20 S05=00 S0A=80 S04=01");
  EXPECT_EQ(Bytes(bench.uid.begin(), bench.uid.begin() + 5), Bytes({0x9C, 0x35, 0xE1, 0x4B, 0xA7}));
  EXPECT_EQ(bench.param.bit_count, 32);
  EXPECT_EQ(bench.param.sak, 0x08);
  EXPECT_EQ(bench.param.collision, 0x80);
  EXPECT_EQ(bench.param.self, bench.garbage);
}

// Every number of bits that a caller may know of the first level.
TEST(Iso14443ATest, AnyNumberOfKnownBitsIsSentAndCompleted) {
  for (int known = 0; known <= 32; ++known) {
    SCOPED_TRACE(known);
    Bench bench;
    std::ranges::copy(KnownPart(known), bench.uid.begin());
    if (known < 32) bench.chip.answers.push_back(Complete(RestOfUid(known)));
    bench.chip.answers.push_back(Complete({0x08}));
    EXPECT_EQ(bench.Activate(static_cast<std::uint8_t>(known)), HFL_SUCCESS);
    EXPECT_TRUE(bench.HasUid());
    EXPECT_EQ(bench.param.bit_count, 32);
    ASSERT_EQ(bench.chip.sent.size(), known < 32 ? 2u : 1u);
    if (known == 32) continue;
    EXPECT_EQ(bench.chip.sent[0], AskFrame(known));
    EXPECT_EQ(bench.chip.framing[0], known % 8 * 17);
  }
}

// A collision at every bit of the level: what the chip delivers up to there is kept and sent.
TEST(Iso14443ATest, CollisionAtAnyBitIsResolvedByALongerKnownPart) {
  for (int bits = 1; bits <= 32; ++bits) {
    SCOPED_TRACE(bits);
    Bench bench;
    Bytes received = KnownPart(bits);
    received.resize(static_cast<std::size_t>(bits + 7) / 8);
    bench.chip.answers = {Collided(received, static_cast<std::uint8_t>(bits % 8)),
                          Complete(RestOfUid(bits)), Complete({0x08})};
    EXPECT_EQ(bench.Activate(), HFL_SUCCESS);
    EXPECT_EQ(bench.param.collision, 0x81);
    EXPECT_TRUE(bench.HasUid());
    EXPECT_EQ(bench.chip.sent[1], AskFrame(bits));
    EXPECT_EQ(bench.chip.framing[1], bits % 8 * 17);
  }
}

// 33 cards that differ in every bit: 32 collisions of one bit each, then the check byte alone.
TEST(Iso14443ATest, CollisionAtEveryBitInTurnEndsWithTheLastCard) {
  Bench bench;
  for (int bits = 1; bits <= 32; ++bits) {
    const auto byte = static_cast<std::size_t>((bits - 1) / 8);
    const std::uint8_t bit = static_cast<std::uint8_t>(kUid[byte] & (1 << (bits - 1) % 8));
    bench.chip.answers.push_back(Collided({bit}, static_cast<std::uint8_t>(bits % 8)));
  }
  bench.chip.answers.push_back(Complete({kBcc}));
  bench.chip.answers.push_back(Complete({0x08}));
  EXPECT_EQ(bench.Activate(), HFL_SUCCESS);
  EXPECT_TRUE(bench.HasUid());
  EXPECT_EQ(bench.chip.sent.size(), 34u);
}

TEST(Iso14443ATest, CollisionsThatAddNoBitEndAfter32Frames) {
  for (const std::uint8_t known : Bytes{0, 12}) {
    Bench bench;
    std::fill_n(bench.uid.begin(), 4, std::uint8_t{0});
    // With 12 bits known the shared byte arrives with its 4 known bits only.
    const ChipAnswer nothing = known == 0 ? Collided({}, 0) : Collided({0x00}, 4);
    bench.chip.answers.assign(100, nothing);
    EXPECT_EQ(bench.Activate(known), HFL_WRONG_ANSWER_SIZE);
    EXPECT_EQ(bench.chip.sent.size(), 32u);
    EXPECT_EQ(bench.param.bit_count, known);
    EXPECT_TRUE(bench.chip.trace.ends_with("S04=01 S0D=00 S0E=80"));
  }
}

TEST(Iso14443ATest, ImpossibleAnswersEndTheLevelWithoutASelect) {
  struct Case {
    std::uint8_t known;
    ChipAnswer answer;
    HFLSTATUS status;
  };
  const Bytes five = {0x9C, 0x35, 0xE1, 0x4B, 0x00};  // wrong check byte
  for (const Case& c :
       {Case{0, Complete(five), HFL_CHECK_BYTE}, Case{0, Complete({}), HFL_CHECK_BYTE},
        // The four bytes that never came would all be 0 and so match their check byte.
        Case{0, Complete({0}), HFL_CHECK_BYTE}, Case{0, Complete({0, 0, 0, 0}), HFL_CHECK_BYTE},
        Case{0, {0x20, 5, 3, 0, {0, 0, 0, 0, 0}}, HFL_CHECK_BYTE},
        Case{12, Complete(five), HFL_WRONG_ANSWER_SIZE},
        Case{12, Collided({}, 3), HFL_WRONG_ANSWER_SIZE},
        Case{31, Complete({0, 0, 0}), HFL_WRONG_ANSWER_SIZE},
        Case{0, Complete(Bytes(6, 0)), HFL_BUFFER_SIZE},
        Case{0, {0x20, 255, 0, 0x08, Bytes(255, 0x11)}, HFL_BUFFER_SIZE},
        Case{0, Silence(), HFL_NO_ANSWER}, Case{0, {0x20, 5, 0, 0x01, five}, HFL_PROTOCOL_ERROR},
        // 41 bits, one too many.
        Case{12, {0x20, 5, 1, 0, five}, HFL_WRONG_ANSWER_SIZE},
        // 35 and 40 bits known: no frame can say so.
        Case{0, Collided(five, 0), HFL_INVALID_PARAMETER},
        Case{0, Collided(five, 3), HFL_INVALID_PARAMETER}}) {
    Bench bench;
    std::fill_n(bench.uid.begin(), 4, std::uint8_t{0});
    bench.chip.answers.assign(1, c.answer);
    SCOPED_TRACE(testing::Message()
                 << int{c.known} << " known, level " << int{c.answer.fifo_level});
    EXPECT_EQ(bench.Activate(c.known), c.status);
    EXPECT_EQ(bench.chip.sent.size(), 1u);
    EXPECT_EQ(bench.param.bit_count, c.known);
    EXPECT_EQ(Bytes(bench.uid.begin() + 4, bench.uid.end()), Bytes(12, 0xA7));
    EXPECT_TRUE(bench.chip.trace.ends_with("S0D=00 S0E=80"));
  }
}

TEST(Iso14443ATest, CascadeBitLeadsThroughTheLevelsAndNoFurther) {
  struct Case {
    std::vector<std::uint8_t> saks;
    std::uint8_t bit_count;
  };
  for (const Case& c : {Case{{0x20}, 32}, Case{{0x04, 0x20}, 64}, Case{{0x04, 0x24, 0x00}, 96},
                        Case{{0x04, 0x04, 0x04}, 96}}) {
    Bench bench;
    for (const std::uint8_t sak : c.saks) {
      bench.chip.answers.push_back(Complete(RestOfUid(0)));
      bench.chip.answers.push_back(Complete({sak}));
    }
    EXPECT_EQ(bench.Activate(), HFL_SUCCESS);
    EXPECT_EQ(bench.param.bit_count, c.bit_count);
    EXPECT_EQ(bench.param.sak, c.saks.back());
    ASSERT_EQ(bench.chip.sent.size(), 2 * c.saks.size());
    for (std::size_t level = 0; level < c.saks.size(); ++level) {
      const auto code = static_cast<std::uint8_t>(0x93 + 2 * level);
      EXPECT_EQ(bench.chip.sent[2 * level], Bytes({code, 0x20}));
      EXPECT_EQ(bench.chip.sent[2 * level + 1], Bytes({code, 0x70, 0x9C, 0x35, 0xE1, 0x4B, kBcc}));
    }
    EXPECT_EQ(bench.uid[c.saks.size() * 4], 0xA7);
  }
}

TEST(Iso14443ATest, FailureAtAHigherLevelKeepsTheLevelsCompleted) {
  // The select answer must be one complete byte.
  for (const auto& [answer, status] :
       {std::pair{Silence(), HFL_NO_ANSWER}, std::pair{Complete({}), HFL_WRONG_ANSWER_SIZE},
        std::pair{ChipAnswer{0x20, 1, 4, 0, {0x08}}, HFL_WRONG_ANSWER_SIZE}}) {
    Bench bench;
    bench.chip.answers = {Complete(RestOfUid(0)), Complete({0x04}), Complete(RestOfUid(0)), answer};
    EXPECT_EQ(bench.Activate(), status);
    EXPECT_EQ(bench.param.bit_count, 32);
    EXPECT_EQ(bench.param.sak, 0x04);

    // Going on from there selects level 1 again and runs the anticollision of level 2 alone.
    bench.chip.sent.clear();
    bench.chip.answers = {Complete({0x04}), Complete(RestOfUid(0)), Complete({0x00})};
    EXPECT_EQ(bench.Activate(32), HFL_SUCCESS);
    EXPECT_EQ(bench.param.bit_count, 64);
    ASSERT_EQ(bench.chip.sent.size(), 3u);
    EXPECT_EQ(bench.chip.sent[1], Bytes({0x95, 0x20}));
  }
}

TEST(Iso14443ATest, SelectSendsTheLevelsOfTheBitCount) {
  struct Case {
    std::uint8_t bit_count;
    HFLSTATUS status;
    std::vector<std::uint8_t> codes;
  };
  for (const Case& c :
       {Case{0, HFL_SUCCESS, {}}, Case{31, HFL_INVALID_PARAMETER, {}},
        Case{96, HFL_SUCCESS, {0x93, 0x95, 0x97}}, Case{128, HFL_INVALID_PARAMETER, {}}}) {
    Bench bench;
    bench.chip.answers.assign(3, Complete({0x08}));
    bench.param.bit_count = c.bit_count;
    EXPECT_EQ(bench.component.Select(&bench.param), c.status);
    EXPECT_EQ(bench.param.bit_count, c.bit_count);
    EXPECT_EQ(bench.param.self, bench.garbage);
    std::vector<std::uint8_t> codes;
    for (const Bytes& frame : bench.chip.sent) codes.push_back(frame[0]);
    EXPECT_EQ(codes, c.codes);
    EXPECT_EQ(bench.chip.accesses == 0, c.codes.empty());
  }
}

TEST(Iso14443ATest, HaltSucceedsBySilenceOnly) {
  struct Case {
    ChipAnswer answer;
    HFLSTATUS status;
  };
  for (const Case& c :
       {Case{Silence(), HFL_SUCCESS}, Case{Complete({0x0A}), HFL_BUFFER_SIZE},
        Case{Acknowledge(0x0A), HFL_BUFFER_SIZE}, Case{{0x20, 0, 0, 0x02, {}}, HFL_PARITY_ERROR}}) {
    Bench bench;
    bench.chip.answers = {c.answer};
    hlt_p param{bench.garbage};
    EXPECT_EQ(bench.component.Halt(&param), c.status);
    EXPECT_EQ(bench.chip.sent, Frames({{0x50, 0x00}}));
    EXPECT_EQ(param.self, bench.garbage);
  }
}

// The operations by number, so that tests can go through all of them.
HFLSTATUS Operate(Iso14443AInterface& component, int operation, std::uint8_t* atqa) {
  std::uint8_t uid[12] = {};
  req_p request{0x26, atqa, nullptr};
  sel_p select{0x93, uid, static_cast<std::uint8_t>(operation == 2 ? 64 : 0), 0, 0, nullptr};
  hlt_p halt{nullptr};
  if (operation == 0) return component.Request(&request);
  if (operation == 1) return component.AnticollisionSelect(&select);
  if (operation == 2) return component.Select(&select);
  return component.Halt(&halt);
}

TEST(Iso14443ATest, AnyFailingAccessEndsTheOperationWithItsStatus) {
  const std::deque<ChipAnswer> answers[] = {
      {Complete({0x04, 0x00})},
      {Collided({0x04}, 3), Complete(RestOfUid(3)), Complete({0x04}), Complete(RestOfUid(0)),
       Complete({0x00})},
      {Complete({0x04}), Complete({0x00})},
      {Complete({})}};
  const int at_least[] = {29, 100, 40, 20};
  for (int operation = 0; operation < 4; ++operation) {
    ExpectEveryFailingAccessToEndIt(
        [&](ScriptedRegisters& chip) { chip.answers = answers[operation]; },
        [&](ScriptedRegisters& chip) {
          Iso14443AWrapper component;
          component.Init(Iso14443AOpen, &chip, 1);
          std::uint8_t atqa[2] = {0xA7, 0xA7};
          const HFLSTATUS status = Operate(component, operation, atqa);
          // Before the command of a request the ATQA is left alone, later it is cleared.
          if (operation == 0 && status == chip.fail_status) {
            EXPECT_EQ(atqa[0], chip.accesses <= 5 ? 0xA7 : chip.accesses < 29 ? 0x00 : 0x04);
          }
          return status;
        },
        at_least[operation]);
  }
}

TEST(Iso14443ATest, EveryOperationNeedsTheReadyByteAndUsesTheWaitCallback) {
  HFLSTATUS status = 0x0BAD;
  for (int operation = 0; operation < 4; ++operation) {
    Bench bench;
    std::uint8_t atqa[2] = {0xA7, 0xA7};
    bench.component.members = 0;
    EXPECT_EQ(Operate(bench.component, operation, atqa),
              operation == 3 ? HFL_NOT_SUPPORTED : HFL_NOT_READY);
    EXPECT_EQ(bench.chip.accesses, 0);
    EXPECT_EQ(atqa[0], 0xA7);
    bench.component.members = 1;
    bench.chip.answers = {Complete({})};
    set_wait_callback_param install{GiveUpWaiting, &status, nullptr};
    bench.component.SetWaitCallback(&install);
    EXPECT_EQ(Operate(bench.component, operation, atqa), 0x0BAD);
  }
}

}  // namespace
}  // namespace vt63x
