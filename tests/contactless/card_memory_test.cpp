// SPDX-License-Identifier: MIT

#include "contactless/card_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>

#include "tests/contactless/scripted_registers.h"

namespace vt63x {
namespace {

using Frames = std::vector<Bytes>;

// A prepared outcome of one Transceive.
struct Outcome {
  HFLSTATUS status;
  Bytes bytes;
};

// An exchange that records frames and plays back outcomes, then silence.
class ScriptedExchange final : public ExchangeInterface {
 public:
  Frames sent;
  Frames authentications;
  std::deque<Outcome> outcomes;
  HFLSTATUS authentication_status = HFL_SUCCESS;

  HFLSTATUS Transceive(transceive_param* param) override {
    sent.emplace_back(param->send_buffer, param->send_buffer + param->send_length);
    EXPECT_EQ(param->receive_length, 32);
    Outcome outcome{HFL_NO_ANSWER, {}};
    if (!outcomes.empty()) {
      outcome = outcomes.front();
      outcomes.pop_front();
    }
    std::copy(outcome.bytes.begin(), outcome.bytes.end(), param->receive_buffer);
    param->receive_length = static_cast<std::uint16_t>(outcome.bytes.size());
    return outcome.status;
  }
  HFLSTATUS Authenticate(transmit_param* param) override {
    authentications.emplace_back(param->data, param->data + param->length);
    return authentication_status;
  }
  void SetWaitCallback(set_wait_callback_param*) override { ADD_FAILURE(); }
  HFLSTATUS Transmit(transmit_param*) override { return Unexpected(); }
  HFLSTATUS Receive(receive_param*) override { return Unexpected(); }

 private:
  static HFLSTATUS Unexpected() {
    ADD_FAILURE();
    return HFL_NOT_SUPPORTED;
  }
};

struct Bench {
  Bench() { memory.Init(&exchange, trxbuffer.data()); }
  HFLSTATUS Command(std::uint8_t command, std::uint8_t length) {
    param.command = command;
    param.length = length;
    return memory.CardCommand(&param);
  }
  HFLSTATUS Exchange(std::uint8_t command, std::uint8_t length, std::uint8_t flags) {
    param.command = command;
    param.length = length;
    param.answer_flags = flags;
    return memory.CardExchange(&param);
  }

  ScriptedExchange exchange;
  CardMemoryWrapper memory;
  Bytes trxbuffer = Bytes(255);
  CardMemoryCore* const garbage = reinterpret_cast<CardMemoryCore*>(0x1234);
  Bytes data = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0xA7, 0xA7};
  ostrel_p param{0, 0x07, data.data(), 0, 0x55, garbage};
};

const Outcome kAck{HFL_SHORT_ANSWER, {0x0A}};
const Outcome kNak{HFL_SHORT_ANSWER, {0x04}};
const Outcome kSilent{HFL_NO_ANSWER, {}};
const Outcome kAnswer{HFL_SUCCESS, {0x12}};

TEST(CardMemoryTest, EveryCommandSendsItsFramesAndJudgesItsAnswers) {
  const Bytes sixteen = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  struct Case {
    std::uint8_t command, length;
    std::deque<Outcome> outcomes;
    HFLSTATUS status;
    Frames frames;
    std::uint8_t flags;
  };
  for (const Case& c : {
           Case{0x30, 99, {kNak}, HFL_UNEXPECTED_ANSWER, {{0x30, 7}}, 0x04},
           Case{0xA0, 16, {kAck, kAck}, HFL_SUCCESS, {{0xA0, 7}, sixteen}, 0x02},
           Case{0xA0, 16, {kNak}, HFL_CARD_REFUSED, {{0xA0, 7}}, 0x02},
           Case{0xA0, 16, {kAnswer}, HFL_UNEXPECTED_ANSWER, {{0xA0, 7}}, 0x02},
           Case{0xA0, 16, {kAck, kNak}, HFL_CARD_REFUSED, {{0xA0, 7}, sixteen}, 0x02},
           Case{0xA0, 16, {kAck, kSilent}, HFL_NO_ANSWER, {{0xA0, 7}, sixteen}, 0x02},
           Case{0xA2, 4, {kAck}, HFL_SUCCESS, {{0xA2, 7, 0, 1, 2, 3}}, 0x02},
           Case{0xB0, 200, {kAck}, HFL_SUCCESS, {{0xB0, 7}}, 0x02},
           Case{0xC0, 4, {kAck, kAck}, HFL_SUCCESS, {{0xC0, 7}, {0, 1, 2, 3}}, 0x03},
           Case{0xC0, 4, {kAck, kSilent}, HFL_SUCCESS, {{0xC0, 7}, {0, 1, 2, 3}}, 0x03},
           Case{0xC1, 4, {kAck, kSilent}, HFL_SUCCESS, {{0xC1, 7}, {0, 1, 2, 3}}, 0x01},
           Case{0xC1, 4, {kAck, kAck}, HFL_UNEXPECTED_ANSWER, {{0xC1, 7}, {0, 1, 2, 3}}, 0x01},
           Case{0xC2, 77, {kAck, kSilent}, HFL_SUCCESS, {{0xC2, 7}, {0, 0, 0, 0}}, 0x01},
       }) {
    Bench bench;
    bench.exchange.outcomes = c.outcomes;
    SCOPED_TRACE(testing::Message() << std::hex << int{c.command});
    EXPECT_EQ(bench.Command(c.command, c.length), c.status);
    EXPECT_EQ(bench.exchange.sent, c.frames);
    EXPECT_TRUE(bench.exchange.outcomes.empty());
    EXPECT_EQ(bench.param.length, 0);
    EXPECT_EQ(bench.param.answer_flags, c.flags);
    EXPECT_EQ(bench.param.data, c.command == 0xC2 ? nullptr : bench.data.data());
    EXPECT_EQ(bench.param.self, bench.garbage);
  }
}

TEST(CardMemoryTest, ReadDeliversUpToSixteenBytesAndNoMore) {
  for (const int count : {0, 16, 17, 32}) {
    Bench bench;
    bench.exchange.outcomes = {{HFL_SUCCESS, Bytes(static_cast<std::size_t>(count), 0x5C)}};
    const bool fits = count <= 16;
    EXPECT_EQ(bench.Command(0x30, 0), fits ? HFL_SUCCESS : HFL_BUFFER_SIZE);
    EXPECT_EQ(bench.param.length, fits ? count : 0);
    EXPECT_EQ(std::count(bench.data.begin(), bench.data.end(), 0x5C), fits ? count : 0);
    EXPECT_EQ(bench.data[16], 0xA7);
  }
  Bench nowhere;
  nowhere.param.data = nullptr;
  nowhere.exchange.outcomes = {{HFL_SUCCESS, Bytes(16, 0x5C)}};
  EXPECT_EQ(nowhere.Command(0x30, 0), HFL_BUFFER_SIZE);
}

TEST(CardMemoryTest, WrongLengthsAndUnknownCommandsSendNothing) {
  struct Case {
    std::uint8_t command, length;
    HFLSTATUS status;
  };
  for (const Case& c :
       {Case{0xA0, 15, HFL_INVALID_PARAMETER}, Case{0xA0, 17, HFL_INVALID_PARAMETER},
        Case{0xA2, 3, HFL_INVALID_PARAMETER}, Case{0xA2, 5, HFL_INVALID_PARAMETER},
        Case{0xC0, 0, HFL_INVALID_PARAMETER}, Case{0xC1, 255, HFL_INVALID_PARAMETER},
        Case{0x00, 4, HFL_UNKNOWN_COMMAND}, Case{0x31, 0, HFL_UNKNOWN_COMMAND},
        Case{0xA1, 4, HFL_UNKNOWN_COMMAND}, Case{0xC3, 4, HFL_UNKNOWN_COMMAND}}) {
    Bench bench;
    EXPECT_EQ(bench.Command(c.command, c.length), c.status) << int{c.command};
    EXPECT_TRUE(bench.exchange.sent.empty());
  }
}

TEST(CardMemoryTest, EveryAcknowledgeByteIsJudgedByItsNibbles) {
  for (int byte = 0; byte < 256; ++byte) {
    const int low = byte % 16;
    const int high = byte / 16;
    HFLSTATUS expected = HFL_UNEXPECTED_ANSWER;
    if (high == 0 || high == low) {
      // 1, 4 and 5 refuse; every nibble with bit 2 or bit 8 acknowledges; 0 is nothing.
      if (low == 1 || low == 4 || low == 5) {
        expected = HFL_CARD_REFUSED;
      } else if (low != 0) {
        expected = HFL_SUCCESS;
      }
    }
    Bench bench;
    bench.exchange.outcomes = {{HFL_SHORT_ANSWER, {static_cast<std::uint8_t>(byte)}}};
    EXPECT_EQ(bench.Exchange(0xA2, 4, kAnswerAcknowledge), expected) << byte;
    EXPECT_EQ(bench.param.length, 0);
  }
}

// The three kinds of answer against every set of allowed ones.
TEST(CardMemoryTest, OnlyAllowedAnswersAreAccepted) {
  for (int flags = 0; flags < 8; ++flags) {
    const auto status_of = [flags](const Outcome& outcome) {
      Bench bench;
      bench.exchange.outcomes = {outcome};
      return bench.Exchange(0x30, 0, static_cast<std::uint8_t>(flags));
    };
    EXPECT_EQ(status_of(kSilent), (flags & 1) != 0 ? HFL_SUCCESS : HFL_NO_ANSWER);
    EXPECT_EQ(status_of(kAck), (flags & 2) != 0 ? HFL_SUCCESS : HFL_UNEXPECTED_ANSWER);
    EXPECT_EQ(status_of(kAnswer), (flags & 4) != 0 ? HFL_SUCCESS : HFL_UNEXPECTED_ANSWER);
    EXPECT_EQ(status_of({HFL_SHORT_ANSWER, {}}), HFL_UNEXPECTED_ANSWER);
    EXPECT_EQ(status_of({HFL_SHORT_ANSWER, {0x0A, 0x0A}}), HFL_UNEXPECTED_ANSWER);
    EXPECT_EQ(status_of({HFL_CRC_ERROR, {}}), HFL_CRC_ERROR);
  }
}

TEST(CardMemoryTest, FramesAreLimitedAndNeverEmpty) {
  struct Case {
    std::uint8_t command, length;
    bool has_data;
    HFLSTATUS status;
    Frames frames;
    std::uint8_t length_left;
  };
  for (const Case& c :
       {Case{0x00, 17, true, HFL_OVERFLOW, {}, 0}, Case{0xA0, 255, true, HFL_OVERFLOW, {}, 0},
        Case{0x00, 0, true, HFL_BUFFER_SIZE, {}, 0}, Case{0x00, 4, false, HFL_BUFFER_SIZE, {}, 0},
        Case{0x00, 2, true, HFL_CRC_ERROR, {{0, 1}}, 2},
        Case{0xA2, 3, false, HFL_CRC_ERROR, {{0xA2, 7}}, 3}}) {
    Bench bench;
    bench.exchange.outcomes = {{HFL_CRC_ERROR, {}}};
    if (!c.has_data) bench.param.data = nullptr;
    EXPECT_EQ(bench.Exchange(c.command, c.length, 0x07), c.status);
    EXPECT_EQ(bench.exchange.sent, c.frames);
    EXPECT_EQ(bench.param.length, c.length_left);
  }
}

TEST(CardMemoryTest, TwoStepCommandTakesAcknowledgeFirstAndTheCallersFlagsThen) {
  Bench bench;
  bench.exchange.outcomes = {kAck, {HFL_SUCCESS, {0x77}}};
  bench.param.command = 0xC1;
  bench.param.length = 2;
  bench.param.answer_flags = kAnswerData;
  EXPECT_EQ(bench.memory.CardTwoStepCommand(&bench.param), HFL_SUCCESS);
  EXPECT_EQ(bench.exchange.sent, Frames({{0xC1, 7}, {0, 1}}));
  EXPECT_EQ(bench.data[0], 0x77);
  EXPECT_EQ(bench.param.length, 0);
}

TEST(CardMemoryTest, AuthenticationSendsCommandBlockKeyAndUid) {
  for (const std::uint8_t command : Bytes{0x60, 0x61}) {
    Bench bench;
    bench.exchange.authentication_status = HFL_AUTHENTICATION_FAILED;
    EXPECT_EQ(bench.Command(command, 10), HFL_AUTHENTICATION_FAILED);
    bench.param.data = nullptr;
    EXPECT_EQ(bench.Command(command, 10), HFL_INVALID_PARAMETER);
    EXPECT_EQ(bench.exchange.authentications, Frames({{command, 7, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9}}));
    EXPECT_TRUE(bench.exchange.sent.empty());
  }
}

// The whole stack down to the registers.
TEST(CardMemoryTest, AnyFailingAccessEndsTheCommandWithItsStatus) {
  struct Case {
    std::uint8_t command, length;
    std::deque<ChipAnswer> answers;
    int at_least;
  };
  for (const Case& c :
       {Case{0x30, 0, {Complete(Bytes(16, 1))}, 23}, Case{0x60, 10, {{0x10, 0, 0, 0, {}}}, 21},
        Case{0xA0, 16, {Acknowledge(0x0A), Acknowledge(0x0A)}, 48},
        Case{0xC2, 0, {Acknowledge(0x0A), Silence()}, 40}}) {
    ExpectEveryFailingAccessToEndIt([&](ScriptedRegisters& chip) { chip.answers = c.answers; },
                                    [&](ScriptedRegisters& chip) {
                                      Bytes buffer(255);
                                      Bytes data(16);
                                      ExchangeWrapper exchange;
                                      exchange.Init(ExchangeOpen, &chip, 1);
                                      CardMemoryWrapper memory;
                                      memory.Init(&exchange, buffer.data());
                                      ostrel_p param{c.command, 0, data.data(),
                                                     c.length,  0, nullptr};
                                      return memory.CardCommand(&param);
                                    },
                                    c.at_least);
  }
}

}  // namespace
}  // namespace vt63x
