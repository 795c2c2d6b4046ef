// SPDX-License-Identifier: MIT

#include "contactless/card_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>

#include "tests/contactless/scripted_registers.h"

namespace vt63x {
namespace {

// Down to the registers.
struct Bench {
  explicit Bench(const std::string& answers) {
    exchange.Init(ExchangeOpen, &chip, 1);
    memory.Init(&exchange, trxbuffer.data());
    chip.Answer(answers);
  }
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

  ScriptedRegisters chip;
  ExchangeWrapper exchange;
  CardMemoryWrapper memory;
  Bytes trxbuffer = Bytes(255);
  CardMemoryCore* const garbage = reinterpret_cast<CardMemoryCore*>(0x1234);
  Bytes data = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0xA7, 0xA7};
  ostrel_p param{0, 0x07, data.data(), 0, 0x55, garbage};
};

const std::string kAck = "0A/4:04";
const std::string kNak = "04/4:04";

TEST(CardMemoryTest, EveryCommandSendsItsFramesAndJudgesItsAnswers) {
  const std::string sixteen = "000102030405060708090A0B0C0D0E0F";
  using Case =
      std::tuple<std::uint8_t, std::uint8_t, std::string, HFLSTATUS, std::string, std::uint8_t>;
  for (const auto& [command, length, answers, status, frames, flags] : {
           Case{0x30, 99, kNak, HFL_UNEXPECTED_ANSWER, "3007", 0x04},
           Case{0xA0, 16, kAck + " " + kAck, HFL_SUCCESS, "A007 " + sixteen, 0x02},
           Case{0xA0, 16, kNak, HFL_CARD_REFUSED, "A007", 0x02},
           Case{0xA0, 16, "12", HFL_UNEXPECTED_ANSWER, "A007", 0x02},
           Case{0xA0, 16, kAck + " " + kNak, HFL_CARD_REFUSED, "A007 " + sixteen, 0x02},
           Case{0xA0, 16, kAck + " -", HFL_NO_ANSWER, "A007 " + sixteen, 0x02},
           Case{0xA2, 4, kAck, HFL_SUCCESS, "A20700010203", 0x02},
           Case{0xB0, 200, kAck, HFL_SUCCESS, "B007", 0x02},
           Case{0xC0, 4, kAck + " " + kAck, HFL_SUCCESS, "C007 00010203", 0x03},
           Case{0xC0, 4, kAck + " -", HFL_SUCCESS, "C007 00010203", 0x03},
           Case{0xC1, 4, kAck + " -", HFL_SUCCESS, "C107 00010203", 0x01},
           Case{0xC1, 4, kAck + " " + kAck, HFL_UNEXPECTED_ANSWER, "C107 00010203", 0x01},
           Case{0xC2, 77, kAck + " -", HFL_SUCCESS, "C207 00000000", 0x01},
       }) {
    Bench bench(answers);
    SCOPED_TRACE(testing::Message() << std::hex << int{command});
    EXPECT_EQ(bench.Command(command, length), status);
    EXPECT_EQ(bench.chip.sent, frames);
    EXPECT_EQ(bench.param.length, 0);
    EXPECT_EQ(bench.param.answer_flags, flags);
    EXPECT_EQ(bench.param.data, command == 0xC2 ? nullptr : bench.data.data());
    EXPECT_EQ(bench.param.self, bench.garbage);
  }
}

TEST(CardMemoryTest, ReadDeliversUpToSixteenBytesAndNoMore) {
  for (const int count : {0, 16, 17, 32, 33}) {
    Bench bench(count == 0 ? "." : HexOf(Bytes(static_cast<std::size_t>(count), 0x5C)));
    const bool fits = count <= 16;
    EXPECT_EQ(bench.Exchange(0x30, 1, kAnswerData), fits ? HFL_SUCCESS : HFL_BUFFER_SIZE);
    // Of more than 32 bytes Exchange knows, which leaves the length alone.
    EXPECT_EQ(bench.param.length, fits ? count : count == 33 ? 1 : 0);
    EXPECT_EQ(std::count(bench.data.begin(), bench.data.end(), 0x5C), fits ? count : 0);
    EXPECT_EQ(bench.data[16], 0xA7);
  }
  Bench nowhere(HexOf(Bytes(16, 0x5C)));
  nowhere.param.data = nullptr;
  EXPECT_EQ(nowhere.Command(0x30, 0), HFL_BUFFER_SIZE);
}

TEST(CardMemoryTest, WrongLengthsAndUnknownCommandsSendNothing) {
  using Case = std::tuple<std::uint8_t, std::uint8_t, HFLSTATUS>;
  for (const auto& [command, length, status] :
       {Case{0xA0, 15, HFL_INVALID_PARAMETER}, Case{0xA0, 17, HFL_INVALID_PARAMETER},
        Case{0xA2, 3, HFL_INVALID_PARAMETER}, Case{0xA2, 5, HFL_INVALID_PARAMETER},
        Case{0xC0, 0, HFL_INVALID_PARAMETER}, Case{0xC1, 255, HFL_INVALID_PARAMETER},
        Case{0x00, 4, HFL_UNKNOWN_COMMAND}, Case{0x31, 0, HFL_UNKNOWN_COMMAND},
        Case{0xA1, 4, HFL_UNKNOWN_COMMAND}, Case{0xC3, 4, HFL_UNKNOWN_COMMAND}}) {
    Bench bench("");
    EXPECT_EQ(bench.Command(command, length), status) << int{command};
    EXPECT_EQ(bench.chip.sent, "");
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
    Bench bench(HexOf({static_cast<std::uint8_t>(byte)}) + "/4:04");
    EXPECT_EQ(bench.Exchange(0xA2, 4, kAnswerAcknowledge), expected) << byte;
    EXPECT_EQ(bench.param.length, 0);
  }
}

// The three kinds of answer against every set of allowed ones.
TEST(CardMemoryTest, OnlyAllowedAnswersAreAccepted) {
  for (int flags = 0; flags < 8; ++flags) {
    for (const auto& [answer, flag, otherwise] : {std::tuple{std::string("-"), 1, HFL_NO_ANSWER},
                                                  {kAck, 2, HFL_UNEXPECTED_ANSWER},
                                                  {"12", 4, HFL_UNEXPECTED_ANSWER},
                                                  {"1200:04", 0, HFL_CRC_ERROR}}) {
      Bench bench(answer);
      EXPECT_EQ(bench.Exchange(0x30, 0, static_cast<std::uint8_t>(flags)),
                (flags & flag) != 0 ? HFL_SUCCESS : otherwise)
          << answer << ' ' << flags;
    }
  }
}

// An exchange that calls any number of bytes a short answer.
struct OddExchange final : ExchangeInterface {
  explicit OddExchange(std::uint16_t bytes) : count(bytes) {}
  void SetWaitCallback(set_wait_callback_param*) override {}
  HFLSTATUS Transceive(transceive_param* param) override {
    param->receive_buffer[0] = 0x0A;
    param->receive_length = count;
    return HFL_SHORT_ANSWER;
  }
  HFLSTATUS Transmit(transmit_param*) override { return HFL_NOT_SUPPORTED; }
  HFLSTATUS Receive(receive_param*) override { return HFL_NOT_SUPPORTED; }
  HFLSTATUS Authenticate(transmit_param*) override { return HFL_NOT_SUPPORTED; }
  const std::uint16_t count;
};

TEST(CardMemoryTest, ShortAnswerIsOneByte) {
  for (const std::uint16_t count : std::initializer_list<std::uint16_t>{0, 1, 2}) {
    Bench bench("");
    OddExchange odd(count);
    bench.memory.Init(&odd, bench.trxbuffer.data());
    EXPECT_EQ(bench.Exchange(0x30, 0, 0x07), count == 1 ? HFL_SUCCESS : HFL_UNEXPECTED_ANSWER);
  }
}

TEST(CardMemoryTest, FramesAreLimitedAndNeverEmpty) {
  using Case = std::tuple<std::uint8_t, std::uint8_t, bool, HFLSTATUS, const char*, std::uint8_t>;
  for (const auto& [command, length, has_data, status, frames, length_left] :
       {Case{0x00, 17, true, HFL_OVERFLOW, "", 0}, Case{0xA0, 255, true, HFL_OVERFLOW, "", 0},
        Case{0x00, 0, true, HFL_BUFFER_SIZE, "", 0}, Case{0x00, 4, false, HFL_BUFFER_SIZE, "", 0},
        Case{0x00, 2, true, HFL_CRC_ERROR, "0001", 2},
        Case{0xA2, 3, false, HFL_CRC_ERROR, "A207", 3}}) {
    Bench bench(".:04");
    if (!has_data) bench.param.data = nullptr;
    EXPECT_EQ(bench.Exchange(command, length, 0x07), status);
    EXPECT_EQ(bench.chip.sent, frames);
    EXPECT_EQ(bench.param.length, length_left);
  }
}

TEST(CardMemoryTest, TwoStepCommandTakesAcknowledgeFirstAndTheCallersFlagsThen) {
  Bench bench(kAck + " 77");
  bench.param.command = 0xC1;
  bench.param.length = 2;
  bench.param.answer_flags = kAnswerData;
  EXPECT_EQ(bench.memory.CardTwoStepCommand(&bench.param), HFL_SUCCESS);
  EXPECT_EQ(bench.chip.sent, "C107 0001");
  EXPECT_EQ(bench.data[0], 0x77);
  EXPECT_EQ(bench.param.length, 0);
}

TEST(CardMemoryTest, AuthenticationSendsCommandBlockKeyAndUid) {
  for (const std::uint8_t command : Bytes{0x60, 0x61}) {
    Bench bench(".@10");
    EXPECT_EQ(bench.Command(command, 10), HFL_AUTHENTICATION_FAILED);
    bench.param.data = nullptr;
    EXPECT_EQ(bench.Command(command, 10), HFL_INVALID_PARAMETER);
    EXPECT_EQ(bench.chip.sent, HexOf({command}) + "0700010203040506070809");
  }
}

}  // namespace
}  // namespace vt63x
