// SPDX-License-Identifier: MIT

#include "contactless/iso14443a.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "tests/contactless/scripted_registers.h"

namespace vt63x {
namespace {

constexpr std::uint8_t kUid[4] = {0x9C, 0x35, 0xE1, 0x4B};

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

const std::string kAnswer = "9C35E14B03";  // the UID and its BCC

// The UID with its BCC from `first_bit` on, placed as the chip delivers it: bits below the first
// one of a partly known byte are 0.
std::string RestOfUid(int first_bit) {
  Bytes rest = BytesOf(kAnswer.substr(static_cast<std::size_t>(first_bit / 8 * 2)));
  rest[0] = static_cast<std::uint8_t>(rest[0] & (0xFF << first_bit % 8));
  return HexOf(rest);
}

// The first `bits` bits of the UID in as many bytes as they need, the rest 0.
Bytes KnownPart(int bits) {
  Bytes known(kUid, kUid + (bits + 7) / 8);
  if (bits % 8 != 0) known.back() = static_cast<std::uint8_t>(known.back() & ~(0xFF << bits % 8));
  return known;
}

// The anticollision frame of level 1 with that many known bits.
std::string AskFrame(int known) {
  return "93" + HexOf({static_cast<std::uint8_t>(0x20 + known / 8 * 16 + known % 8)}) +
         HexOf(KnownPart(known));
}

// Anticollision and select of the levels, each with the same UID.
std::string Levels(int first, int last) {
  std::string frames;
  for (int level = first; level <= last; ++level) {
    const std::string code = std::to_string(91 + 2 * level);
    frames += (frames.empty() ? "" : " ") + code + "20 " + code + "70" + kAnswer;
  }
  return frames;
}

TEST(Iso14443ATest, RequestMakesExactlyTheseAccesses) {
  Bench bench;
  std::uint8_t atqa[4] = {0xA7, 0xA7, 0xA7, 0xA7};
  bench.chip.Answer("0400");
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
    const char* answer;
    HFLSTATUS status;
    Bytes atqa;
    int fail_from = 0;
  };
  for (const Case& c :
       {Case{"-", HFL_NO_ANSWER, {0, 0}}, Case{"4603:08", HFL_COLLISION, {0x46, 0x03}},
        Case{"4603/5:08", HFL_PROTOCOL_ERROR, {0x46, 0x03}},
        Case{"04", HFL_PROTOCOL_ERROR, {0x04, 0xA7}}, Case{".", HFL_PROTOCOL_ERROR, {0xA7, 0xA7}},
        Case{"010203", HFL_BUFFER_SIZE, {0, 0}}, Case{"0400:02", HFL_PARITY_ERROR, {0, 0}},
        // Before the command of a request the ATQA is left alone, a failed one clears it.
        Case{"0400", 0x5A5A, {0xA7, 0xA7}, 5}, Case{"0400", 0x5A5A, {0, 0}, 6},
        Case{"0400", 0x5A5A, {0, 0}, 28}, Case{"0400", 0x5A5A, {0x04, 0x00}, 29}}) {
    Bench bench;
    bench.chip.fail_from = c.fail_from;
    std::uint8_t atqa[3] = {0xA7, 0xA7, 0xA7};
    bench.chip.Answer(c.answer);
    req_p param{0x26, atqa, nullptr};
    EXPECT_EQ(bench.component.Request(&param), c.status);
    EXPECT_EQ(Bytes(atqa, atqa + 2), c.atqa) << c.answer << c.fail_from;
    EXPECT_EQ(atqa[2], 0xA7);
    EXPECT_TRUE(c.fail_from != 0 || bench.chip.trace.ends_with("S0D=00"));
  }
}

TEST(Iso14443ATest, ActivationOfASingleCardMakesExactlyTheseAccesses) {
  Bench bench;
  bench.chip.Answer(kAnswer + " 08");
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

// Every number of bits that a caller may know of the first level, and a collision at each: what
// the chip delivers up to there is kept and sent.
TEST(Iso14443ATest, AnyNumberOfBitsKnownOrReceivedIsSentAndCompleted) {
  for (int bits = 0; bits <= 32; ++bits) {
    SCOPED_TRACE(bits);
    const std::string select = "9370" + kAnswer;
    Bench knowing;
    std::ranges::copy(KnownPart(bits), knowing.uid.begin());
    std::fill(knowing.uid.begin() + (bits + 7) / 8, knowing.uid.begin() + 4, std::uint8_t{0});
    knowing.chip.Answer(bits < 32 ? RestOfUid(bits) + " 08" : "08");
    EXPECT_EQ(knowing.Activate(static_cast<std::uint8_t>(bits)), HFL_SUCCESS);
    EXPECT_TRUE(knowing.HasUid());
    EXPECT_EQ(knowing.param.bit_count, 32);
    EXPECT_EQ(knowing.chip.sent, bits < 32 ? AskFrame(bits) + " " + select : select);
    EXPECT_EQ(knowing.chip.framing[0], bits < 32 ? bits % 8 * 17 : 0);
    if (bits == 0) continue;
    Bench colliding;
    colliding.chip.Answer(HexOf(KnownPart(bits)) + "/" + std::to_string(bits % 8) + ":08 " +
                          RestOfUid(bits) + " 08");
    EXPECT_EQ(colliding.Activate(), HFL_SUCCESS);
    EXPECT_EQ(colliding.param.collision, 0x81);
    EXPECT_TRUE(colliding.HasUid());
    EXPECT_EQ(colliding.chip.sent, "9320 " + AskFrame(bits) + " " + select);
    EXPECT_EQ(colliding.chip.framing[1], bits % 8 * 17);
  }
}

// 33 cards that differ in every bit: 32 collisions of one bit each, then the check byte alone.
TEST(Iso14443ATest, CollisionAtEveryBitInTurnEndsWithTheLastCard) {
  Bench bench;
  std::string answers;
  for (int bits = 1; bits <= 32; ++bits) {
    const auto bit = static_cast<std::uint8_t>(kUid[(bits - 1) / 8] & (1 << (bits - 1) % 8));
    answers += HexOf({bit}) + "/" + std::to_string(bits % 8) + ":08 ";
  }
  bench.chip.Answer(answers + "03 08");
  EXPECT_EQ(bench.Activate(), HFL_SUCCESS);
  EXPECT_TRUE(bench.HasUid());
  EXPECT_EQ(bench.chip.framing.size(), 34u);
}

TEST(Iso14443ATest, ImpossibleAnswersEndTheLevelWithoutASelect) {
  struct Case {
    std::uint8_t known;
    std::string answer;  // again and again
    HFLSTATUS status;
    std::size_t frames = 1;
  };
  const std::string wrong = "9C35E14B00";  // its check byte
  for (const Case& c :
       {Case{0, wrong, HFL_CHECK_BYTE}, Case{0, ".", HFL_CHECK_BYTE},
        // The four bytes that never came would all be 0 and so match their check byte.
        Case{0, "00", HFL_CHECK_BYTE}, Case{0, "00000000", HFL_CHECK_BYTE},
        Case{0, "0000000000/3", HFL_CHECK_BYTE}, Case{12, wrong, HFL_WRONG_ANSWER_SIZE},
        Case{12, "./3:08", HFL_WRONG_ANSWER_SIZE}, Case{31, "000000", HFL_WRONG_ANSWER_SIZE},
        Case{0, "000000000000", HFL_BUFFER_SIZE},
        Case{0, HexOf(Bytes(255, 0x11)) + ":08", HFL_BUFFER_SIZE}, Case{0, "-", HFL_NO_ANSWER},
        Case{0, wrong + ":01", HFL_PROTOCOL_ERROR},
        // 41 bits, one too many.
        Case{12, wrong + "/1", HFL_WRONG_ANSWER_SIZE},
        // 35 and 40 bits known: no frame can say so.
        Case{0, wrong + ":08", HFL_INVALID_PARAMETER},
        Case{0, wrong + "/3:08", HFL_INVALID_PARAMETER},
        // Collisions that add no bit; with 12 known the shared byte arrives with its 4 known ones.
        Case{0, ".:08", HFL_WRONG_ANSWER_SIZE, 32},
        Case{12, "00/4:08", HFL_WRONG_ANSWER_SIZE, 32}}) {
    Bench bench;
    std::fill_n(bench.uid.begin(), 4, std::uint8_t{0});
    std::string answers;
    for (int i = 0; i < 100; ++i) answers += c.answer + " ";
    bench.chip.Answer(answers);
    SCOPED_TRACE(c.answer);
    EXPECT_EQ(bench.Activate(c.known), c.status);
    EXPECT_EQ(bench.chip.framing.size(), c.frames);
    EXPECT_EQ(bench.param.bit_count, c.known);
    EXPECT_EQ(Bytes(bench.uid.begin() + 4, bench.uid.end()), Bytes(12, 0xA7));
    EXPECT_TRUE(bench.chip.trace.ends_with("S0D=00 S0E=80"));
  }
}

TEST(Iso14443ATest, CascadeBitLeadsThroughTheLevelsAndAFailureKeepsThoseCompleted) {
  using Case =
      std::tuple<std::uint8_t, std::string, HFLSTATUS, std::string, std::uint8_t, std::uint8_t>;
  const std::string& u = kAnswer;
  for (const auto& [known, answers, status, sent, bit_count, sak] : {
           Case{0, u + " 20", HFL_SUCCESS, Levels(1, 1), 32, 0x20},
           Case{0, u + " 04 " + u + " 20", HFL_SUCCESS, Levels(1, 2), 64, 0x20},
           Case{0, u + " 04 " + u + " 24 " + u + " 00", HFL_SUCCESS, Levels(1, 3), 96, 0x00},
           Case{0, u + " 04 " + u + " 04 " + u + " 04", HFL_SUCCESS, Levels(1, 3), 96, 0x04},
           // The select answer must be one complete byte.
           Case{0, u + " 04 " + u + " -", HFL_NO_ANSWER, Levels(1, 2), 32, 0x04},
           Case{0, u + " 04 " + u + " .", HFL_WRONG_ANSWER_SIZE, Levels(1, 2), 32, 0x04},
           Case{0, u + " 04 " + u + " 08/4", HFL_WRONG_ANSWER_SIZE, Levels(1, 2), 32, 0x04},
           // Going on from there selects level 1 again, without its anticollision.
           Case{32, "04 " + u + " 00", HFL_SUCCESS, "9370" + u + " " + Levels(2, 2), 64, 0x00},
       }) {
    Bench bench;
    if (known != 0) std::ranges::copy(kUid, bench.uid.begin());
    bench.chip.Answer(answers);
    EXPECT_EQ(bench.Activate(known), status) << answers;
    EXPECT_EQ(bench.chip.sent, sent);
    EXPECT_EQ(bench.param.bit_count, bit_count) << answers;
    EXPECT_EQ(bench.param.sak, sak) << answers;
    EXPECT_TRUE(status != HFL_SUCCESS || bench.uid[bit_count / 8] == 0xA7) << answers;
  }
}

TEST(Iso14443ATest, SelectSendsTheLevelsOfTheBitCount) {
  const std::string rest = "70A7A7A7A700";
  for (const auto& [bit_count, status, sent] :
       {std::tuple{0, HFL_SUCCESS, std::string()},
        std::tuple{31, HFL_INVALID_PARAMETER, std::string()},
        std::tuple{96, HFL_SUCCESS, "93" + rest + " 95" + rest + " 97" + rest},
        std::tuple{128, HFL_INVALID_PARAMETER, std::string()}}) {
    Bench bench;
    bench.chip.Answer("08 08 08");
    bench.param.bit_count = static_cast<std::uint8_t>(bit_count);
    EXPECT_EQ(bench.component.Select(&bench.param), status);
    EXPECT_EQ(bench.param.bit_count, bit_count);
    EXPECT_EQ(bench.param.self, bench.garbage);
    EXPECT_EQ(bench.chip.sent, sent);
    EXPECT_EQ(bench.chip.accesses == 0, sent.empty());
  }
}

TEST(Iso14443ATest, HaltSucceedsBySilenceOnly) {
  for (const auto& [answer, status] :
       {std::pair{"-", HFL_SUCCESS}, std::pair{"0A", HFL_BUFFER_SIZE},
        std::pair{"0A/4:04", HFL_BUFFER_SIZE}, std::pair{".:02", HFL_PARITY_ERROR}}) {
    Bench bench;
    bench.chip.Answer(answer);
    hlt_p param{bench.garbage};
    EXPECT_EQ(bench.component.Halt(&param), status) << answer;
    EXPECT_EQ(bench.chip.sent, "5000");
    EXPECT_EQ(param.self, bench.garbage);
  }
}

}  // namespace
}  // namespace vt63x
